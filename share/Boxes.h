// The program's message boxes, with its own button texts.
//
// Texts are plain: a file name with a '<' in it is shown as it is.
#pragma once

#include <QMessageBox>

class QDialog;
class QFormLayout;
class QPushButton;

namespace veltrac {

// A box with one button, which Enter and Escape press.
void showBox(QMessageBox::Icon icon, QWidget* parent, const QString& title, const QString& text,
             const QString& button = QStringLiteral("Ok"));

// A question with "&Yes" (the default) and "&No" (Escape); true for "&Yes".
bool askYesNo(QMessageBox::Icon icon, QWidget* parent, const QString& title, const QString& text);

// Puts a button that accepts a dialog and one that cancels it below its form, neither with a desktop's icon;
// returns the former.
QPushButton* addFormButtons(QDialog& dialog, QFormLayout& form, const QString& accept);

}  // namespace veltrac
