#include "share/ActionRow.h"

#include <QWidget>

#include "share/hydaction.h"

namespace veltrac {

QAction* makeAction(QWidget* window, QObject* receiver, const char* image, const char* shortcut,
                    const char* slot, const char* text, const char* tip, const char* whatsThis,
                    bool checkable)
{
    const QString picture = QString::fromUtf8(image);
    const QString about = QString::fromUtf8(*whatsThis != '\0' ? whatsThis : tip);
    auto* const action = new HydAction(picture, QKeySequence(QString::fromUtf8(shortcut)), receiver, slot,
                                       QString::fromUtf8(text), QString::fromUtf8(tip),
                                       about.isEmpty() ? about : whatsThisText(picture, about));
    action->setCheckable(checkable);
    window->addAction(action);
    return action;
}

}  // namespace veltrac
