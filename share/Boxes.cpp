#include "share/Boxes.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFontMetrics>
#include <QFormLayout>
#include <QGridLayout>
#include <QGuiApplication>
#include <QPushButton>

namespace veltrac {

namespace {

// Qt sizes a box for its text alone; with a short one the window manager would cut a long title.
void letTitleFit(QMessageBox& box)
{
    constexpr int kFrameButtons = 130;  // what a title bar needs beside the title
    if (auto* const grid = qobject_cast<QGridLayout*>(box.layout()))
        grid->addItem(
            new QSpacerItem(QFontMetrics(box.font()).horizontalAdvance(box.windowTitle()) + kFrameButtons, 0),
            grid->rowCount(), 0, 1, grid->columnCount());
}

// A box may come up in the middle of work that shows the wait cursor: now the user is waited for.
void execWithArrow(QMessageBox& box)
{
    letTitleFit(box);
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

QPushButton* addFormButtons(QDialog& dialog, QFormLayout& form, const QString& accept)
{
    auto* const buttons = new QDialogButtonBox(&dialog);
    QPushButton* const ok = buttons->addButton(accept, QDialogButtonBox::AcceptRole);
    buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    form.addRow(buttons);
    return ok;
}

}  // namespace veltrac
