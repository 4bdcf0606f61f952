#include "share/hydaction.h"

#include <QMenu>
#include <QWhatsThis>

#include "share/ActionIcon.h"
#include "share/Resources.h"

using namespace veltrac;

HydAction::HydAction(const QString& image, const QKeySequence& shortcut, QObject* receiver, const char* slot,
                     const QString& menuText, const QString& toolTip, const QString& whatsThis)
    : QAction(receiver)
{
    loadResources();
    if (!image.isEmpty())
        setIcon(actionIcon(image));
    setText(menuText);
    if (!toolTip.isEmpty()) {
        setToolTip(toolTip);
        setStatusTip(toolTip);
    }
    if (!whatsThis.isEmpty())
        setWhatsThis(whatsThis);
    setShortcut(shortcut);
    connect(this, SIGNAL(triggered()), receiver, slot);
}

void veltrac::addWhatsThis(QMenu* menu)
{
    QAction* const action = QWhatsThis::createAction(menu);
    action->setText(QStringLiteral("&What's this?"));
    action->setStatusTip(QStringLiteral("Click on a button, a field or a head to read what it is for"));
    action->setIcon(QIcon());
    // Without it, Shift+F1 tells about what has the focus.
    action->setShortcut(QKeySequence());
    menu->addAction(action);
}

QString veltrac::whatsThisText(const QString& image, const QString& text)
{
    if (image.isEmpty())
        return QStringLiteral("<p>%1</p>").arg(text);
    return QStringLiteral("<p><img src=\":img_%1\" width=\"22\" height=\"22\"> %2</p>").arg(image, text);
}
