// May a file of the user's be written? Asked here by every window that writes one, with one wording for each
// answer.
#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace veltrac {

// The ts-files of a directory, for file dialogs.
inline const QString kTsFileFilter = QStringLiteral("*.ts, *.Ts, *.TS, *.tS");

// Two names of one file, by way of links too, are one file.
bool isSameFile(const QString& a, const QString& b);

// Tells in a box why a file may not be changed or replaced: a window has it open for writing, or its rights
// protect it. True, without a box, where it may.
bool mayWrite(QWidget* window, const QString& title, const QString& file);
// The same for a file that is renamed or removed, which asks nothing of the file's own rights.
bool mayMove(QWidget* window, const QString& title, const QString& file);

// The question whether an older file is to be overwritten; true where there is none.
bool mayOverwrite(QWidget* window, const QString& title, const QString& file);

// What a window wants to save.
struct SaveRequest
{
    QString title;
    QString suggestion;
    QString filter;
    QString suffix;  // "eps"; ts-files of digits alone get their numbered name
    // Whether the file is one that the window reads, which is not to be replaced.
    std::function<bool(const QString& file)> isSource = {};
    // A file that the window itself has registered as open for writing.
    QString own = {};
};

// A name as a save dialog can suggest it: there, double quotes stand around names of their own.
QString saveSuggestion(const QString& name);

// Asks for a file name and gives it the suffix, whatever dots it has; only then an older file of that name is
// asked about, after all refusals. Empty where the user cancelled, keeps the old one, or was refused.
QString askSaveName(QWidget* window, const SaveRequest& request);

}  // namespace veltrac
