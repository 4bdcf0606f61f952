// Brings back old values that a failed save or calculation has left in a file of their own.
#pragma once

#include <QString>

class QWidget;

namespace veltrac {

// Asks for the file of old values, tells what it holds, asks once more and puts it into the ts-file of that
// path. True where the ts-file was written; a failure is told in a box.
bool askAndRestoreOldValues(QWidget* parent, const QString& path);

}  // namespace veltrac
