// What the main window does with one ts-file of the working directory beside opening it.
#pragma once

#include <QString>

class QWidget;

namespace veltrac {

// Asks for a name and copies the file byte for byte; returns the new name, or an empty one where nothing was
// copied. A file that is there already is kept.
QString copyTsFile(QWidget* window, const QString& file);

// Asks for another name; returns it, or an empty one where the file keeps its own.
QString renameTsFile(QWidget* window, const QString& file);

// Whether a file can be opened and is a ring file.
bool isRingFile(const QString& file);

// Asks for a name and writes what a ring file holds into an ordinary one, the oldest sample first; returns
// its name, or an empty one where none was made.
QString unfoldTsFile(QWidget* window, const QString& file);

}  // namespace veltrac
