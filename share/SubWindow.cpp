#include "share/SubWindow.h"

#include <QCloseEvent>

#include "share/JobProgress.h"

SubWindow::SubWindow(QWidget* parent) : QMainWindow(parent)
{
    setAttribute(Qt::WA_DeleteOnClose);
}

bool SubWindow::mayClose()
{
    return true;
}

void SubWindow::closeEvent(QCloseEvent* event)
{
    if (JobProgress::isRunning() || !mayClose()) {
        event->ignore();
        return;
    }
    event->accept();
    emit windowGone(this);
}
