#include "share/SubWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QScreen>

#include "share/JobProgress.h"

namespace veltrac {

SubWindow::SubWindow(QWidget* parent) : ReadingWindow(parent)
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

bool SubWindow::askToClose()
{
    // A dialog that is open works for a window; the session's end may ask all of them to close.
    if (JobProgress::isRunning() || QApplication::activeModalWidget() != nullptr)
        return false;
    m_closeIsAgreed = m_closeIsAgreed || mayClose();
    return m_closeIsAgreed;
}

void SubWindow::setVisible(bool visible)
{
    if (visible && !m_wasShown) {
        fitToScreen(*this);
        explainByTips(*this);
    }
    m_wasShown = m_wasShown || visible;
    ReadingWindow::setVisible(visible);
}

void SubWindow::closeEvent(QCloseEvent* event)
{
    if (!askToClose()) {
        event->ignore();
        return;
    }
    event->accept();
    emit windowGone(this);
}

void fitToScreen(QWidget& window)
{
    if (!window.isMaximized() && !window.isFullScreen())
        window.resize(window.size().boundedTo(window.screen()->availableSize()));
}

}  // namespace veltrac
