#include "share/Boxes.h"

#include <QPushButton>

void showBox(QMessageBox::Icon icon, QWidget* parent, const QString& title, const QString& text,
             const QString& button)
{
    QMessageBox box(icon, title, text, QMessageBox::NoButton, parent);
    box.setTextFormat(Qt::PlainText);
    QPushButton* const ok = box.addButton(button, QMessageBox::AcceptRole);
    box.setDefaultButton(ok);
    box.setEscapeButton(ok);
    box.exec();
}

bool askYesNo(QMessageBox::Icon icon, QWidget* parent, const QString& title, const QString& text)
{
    QMessageBox box(icon, title, text, QMessageBox::NoButton, parent);
    box.setTextFormat(Qt::PlainText);
    QPushButton* const yes = box.addButton(QStringLiteral("&Yes"), QMessageBox::YesRole);
    QPushButton* const no = box.addButton(QStringLiteral("&No"), QMessageBox::NoRole);
    box.setDefaultButton(yes);
    box.setEscapeButton(no);
    box.exec();
    return box.clickedButton() == yes;
}
