// The program's message boxes, with its own button texts.
//
// Texts are plain: a file name with a '<' in it is shown as it is.
#pragma once

#include <QMessageBox>

namespace veltrac {

// A box with one button, which Enter and Escape press.
void showBox(QMessageBox::Icon icon, QWidget* parent, const QString& title, const QString& text,
             const QString& button = QStringLiteral("Ok"));

// A question with "&Yes" (the default) and "&No" (Escape); true for "&Yes".
bool askYesNo(QMessageBox::Icon icon, QWidget* parent, const QString& title, const QString& text);

}  // namespace veltrac
