#include "portal/QuitSignals.h"

#include <QApplication>
#include <QProgressDialog>
#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace veltrac {

namespace {

constexpr std::array kSignals = {SIGTERM, SIGHUP};

// A handler may do next to nothing: it writes a byte into a pipe that the event loop reads.
std::array<int, 2> pipeEnds = {-1, -1};

void wake(int /*signal*/)
{
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(pipeEnds[1], &byte, 1);
}

}  // namespace

QuitSignals::QuitSignals(QObject* parent) : QObject(parent)
{
    if (::pipe2(pipeEnds.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    auto* const notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &QuitSignals::quit);
    for (const int signal : kSignals)
        std::signal(signal, wake);
}

QuitSignals::~QuitSignals()
{
    if (pipeEnds[0] < 0)
        return;
    for (const int signal : kSignals)
        std::signal(signal, SIG_DFL);
    for (int& end : pipeEnds) {
        ::close(end);
        end = -1;
    }
}

void QuitSignals::quit()
{
    char byte = 0;
    while (::read(pipeEnds[0], &byte, 1) > 0) {
    }
    for (QWidget* const window : QApplication::topLevelWidgets())
        if (auto* const job = qobject_cast<QProgressDialog*>(window))
            job->cancel();
    QCoreApplication::quit();
}

}  // namespace veltrac
