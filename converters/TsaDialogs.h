// The tsa import and export as the main window starts them: with questions, progress and a report.
#pragma once

#include <QString>

#include <cstdint>

class QWidget;

namespace veltrac {

struct TsaOutcome
{
    bool done = false;
    QString file;    // the file that was made, where one was
    QString status;  // one line for the status bar; never empty
};

// Asks which tsa text to read; empty where the user cancels.
QString chooseTsaFile(QWidget* parent);

// Makes the ts-file of a tsa text in the working directory. Asks for missing counts and before an old file
// goes; a box says what was lost, where something was. A failed or cancelled import changes nothing.
TsaOutcome importTsa(QWidget* parent, const QString& tsaFile);

// Asks for a name and writes a ts-file there as tsa text.
TsaOutcome exportTsa(QWidget* parent, const QString& tsFile);
// The same for samples first to last (from 1).
TsaOutcome exportTsaInterval(QWidget* parent, const QString& tsFile, std::uint32_t first, std::uint32_t last);
// Writes to a target that is known. Asks before an old file is replaced.
TsaOutcome exportTsaTo(QWidget* parent, const QString& tsFile, const QString& target, std::uint32_t first,
                       std::uint32_t last);

}  // namespace veltrac
