#include "portal/DragSelection.h"

#include <QCursor>
#include <QMouseEvent>
#include <QWidget>

#include "share/QtCompat.h"

namespace veltrac {

namespace {

constexpr int kDragMs = 50;

}  // namespace

DragSelection::DragSelection(QWidget* viewport) : QObject(viewport), m_viewport(viewport)
{
    viewport->installEventFilter(this);
}

void DragSelection::stop()
{
    m_isDragging = false;
    m_timer.stop();
}

bool DragSelection::eventFilter(QObject* /*watched*/, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonRelease)
        stop();
    if (event->type() != QEvent::MouseMove)
        return false;
    const auto* const mouse = static_cast<QMouseEvent*>(event);
    if (!m_isDragging || (mouse->buttons() & Qt::LeftButton) == 0)
        return false;
    if (m_viewport->rect().contains(mousePlace(*mouse)))
        m_timer.stop();
    else if (!m_timer.isActive())
        m_timer.start(kDragMs, this);
    emit x_dragged(mousePlace(*mouse));
    return true;
}

void DragSelection::timerEvent(QTimerEvent* /*event*/)
{
    emit x_dragged(m_viewport->mapFromGlobal(QCursor::pos()));
}

}  // namespace veltrac
