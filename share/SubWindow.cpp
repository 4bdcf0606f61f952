#include "share/SubWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QScreen>

#include "share/JobProgress.h"

namespace veltrac {

SubWindow::SubWindow(QWidget* parent) : QMainWindow(parent)
{
    // By the name that windowGone() gives it, for connections that wait in the queue.
    qRegisterMetaType<subWindow>("subWindow");
    setAttribute(Qt::WA_DeleteOnClose);
}

void SubWindow::offerRange(const SampleRange& /*range*/) {}

bool SubWindow::mayClose()
{
    return true;
}

void SubWindow::setVisible(bool visible)
{
    // On a small screen a window would hide its own buttons.
    constexpr QSize kFrame(12, 44);  // what a window manager puts around a window
    if (visible && !m_wasShown && !isMaximized() && !isFullScreen())
        resize(size().boundedTo(screen()->availableSize() - kFrame));
    m_wasShown = m_wasShown || visible;
    QMainWindow::setVisible(visible);
}

void SubWindow::closeEvent(QCloseEvent* event)
{
    // A dialog that is open works for a window; the session's end may ask all of them to close.
    if (JobProgress::isRunning() || QApplication::activeModalWidget() != nullptr || !mayClose()) {
        event->ignore();
        return;
    }
    event->accept();
    emit windowGone(this);
}

}  // namespace veltrac
