#include "portal/EmptyHint.h"

#include <QAction>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

#include "portal/MainActions.h"

namespace veltrac {

QWidget* makeEmptyHint(const MainActions& actions, QWidget* area)
{
    auto* const hint = new QWidget(area);
    auto* const column = new QVBoxLayout(hint);
    auto* const text =
        new QLabel(QStringLiteral("There is no ts-file in this directory.\n"
                                  "Drop texts of measurements, ts-files or a directory here, or:"),
                   hint);
    text->setAlignment(Qt::AlignCenter);
    column->addWidget(text);
    actions.addDirectoryActions(hint);
    for (QAction* const action : hint->actions()) {
        auto* const button = new QToolButton(hint);
        button->setDefaultAction(action);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setAutoRaise(true);
        column->addWidget(button, 0, Qt::AlignHCenter);
    }
    auto* const middle = new QVBoxLayout(area);
    middle->addWidget(hint, 0, Qt::AlignCenter);
    return hint;
}

}  // namespace veltrac
