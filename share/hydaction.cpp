#include "share/hydaction.h"

#include <QIcon>

#include "share/Resources.h"

HydAction::HydAction(const QString& image, const QKeySequence& shortcut, QObject* receiver, const char* slot,
                     const QString& menuText, const QString& toolTip, const QString& whatsThis)
    : QAction(receiver)
{
    loadResources();
    if (!image.isEmpty())
        setIcon(QIcon(QStringLiteral(":/img_") + image));
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

QString whatsThisText(const QString& image, const QString& text)
{
    if (image.isEmpty())
        return QStringLiteral("<p>%1</p>").arg(text);
    return QStringLiteral("<p><img src=\":/img_%1\" width=\"22\" height=\"22\"> %2</p>").arg(image, text);
}
