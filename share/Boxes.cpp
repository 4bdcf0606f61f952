#include "share/Boxes.h"

#include <QGuiApplication>
#include <QPushButton>

namespace {

// A box may come up in the middle of work that shows the wait cursor: now the user is waited for.
void execWithArrow(QMessageBox& box)
{
    QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
    box.exec();
    QGuiApplication::restoreOverrideCursor();
}

}  // namespace

void showBox(QMessageBox::Icon icon, QWidget* parent, const QString& title, const QString& text,
             const QString& button)
{
    QMessageBox box(icon, title, text, QMessageBox::NoButton, parent);
    box.setTextFormat(Qt::PlainText);
    QPushButton* const ok = box.addButton(button, QMessageBox::AcceptRole);
    box.setDefaultButton(ok);
    box.setEscapeButton(ok);
    execWithArrow(box);
}

bool askYesNo(QMessageBox::Icon icon, QWidget* parent, const QString& title, const QString& text)
{
    QMessageBox box(icon, title, text, QMessageBox::NoButton, parent);
    box.setTextFormat(Qt::PlainText);
    QPushButton* const yes = box.addButton(QStringLiteral("&Yes"), QMessageBox::YesRole);
    QPushButton* const no = box.addButton(QStringLiteral("&No"), QMessageBox::NoRole);
    box.setDefaultButton(yes);
    box.setEscapeButton(no);
    execWithArrow(box);
    return box.clickedButton() == yes;
}
