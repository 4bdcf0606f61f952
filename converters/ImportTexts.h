// What all text imports say and ask in the same words.
#pragma once

#include <QString>

#include <filesystem>

class QLabel;
class QWidget;

namespace veltrac {

// A file name between the screen and the system.
std::filesystem::path pathOf(const QString& file);
QString shown(const std::string& file);

// Asks the overwrite question; true where the user gives the old file up.
bool askOverwrite(QWidget* parent, const QString& file);

// True where `file` may be made: it is not there, or no window has it open for writing and the user gives
// it up. Says why where a window has it.
bool clearTarget(QWidget* parent, const QString& file);

// What a window says after a job that was cancelled, and where a field is wrong.
extern const QString kCancelled;
extern const QString kMarkedField;

// A label for texts of any length, which can be copied.
QLabel* wrappedLabel();
// The same for what is wrong, hidden as long as it is empty; showText() fills it.
QLabel* warningLabel();
void showText(QLabel* label, const QString& text);

// What went wrong, of the exception in flight.
QString importFailure();

}  // namespace veltrac
