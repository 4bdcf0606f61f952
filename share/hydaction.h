// An action with an icon of the program's own.
#pragma once

#include <QAction>
#include <QKeySequence>

class QMenu;

class HydAction : public QAction
{
    Q_OBJECT

public:
    // The icon is the resource ":/img_" + image; an empty image gives none. `receiver` is the parent too, and
    // `slot` (written with SLOT()) is what triggered() calls. Tool tip and what's-this text may be empty.
    HydAction(const QString& image, const QKeySequence& shortcut, QObject* receiver, const char* slot,
              const QString& menuText, const QString& toolTip = QString(),
              const QString& whatsThis = QString());
};

namespace veltrac {

// An entry that lets a click on anything in the window tell what it is for.
void addWhatsThis(QMenu* menu);

// A what's-this text: an HTML paragraph that begins with the action's image, if it has one.
QString whatsThisText(const QString& image, const QString& text);

}  // namespace veltrac
