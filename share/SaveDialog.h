// Where a picture or a hard copy is to be saved.
#pragma once

#include <QString>

class QWidget;

namespace veltrac {

// The ts-files of a directory, for file dialogs.
inline const QString kTsFileFilter = QStringLiteral("*.ts, *.Ts, *.TS, *.tS");

// A name as a save dialog can suggest it: there, double quotes stand around names of their own.
QString saveSuggestion(const QString& name);

// Asks for a file name, `suggestion` first. A name without the suffix ("eps") gets it, whatever dots it has,
// and only then an older file of that name is asked about. Empty where the user cancelled or keeps the old
// one.
QString askSaveName(QWidget* window, const QString& title, const QString& suggestion, const QString& filter,
                    const QString& suffix);

}  // namespace veltrac
