#include "cli/StopSignals.h"

#include <csignal>
#include <cstdlib>
#include <initializer_list>

namespace veltrac {

namespace {

volatile std::sig_atomic_t g_stopSignal = 0;

extern "C" void noteStop(int signal)
{
    g_stopSignal = signal;
}

}  // namespace

void noteStopSignals()
{
    struct sigaction action = {};
    action.sa_handler = noteStop;
    // The second one finds the default again.
    action.sa_flags = SA_RESETHAND;
    sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        // What whoever started us had ignored stays so (nohup).
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
    action.sa_flags = 0;
    sigaction(kStopWorker, &action, nullptr);
    // A file that grows too large is an error of the write, told like any other.
    std::signal(SIGXFSZ, SIG_IGN);
}

bool stopAsked() noexcept
{
    return g_stopSignal != 0;
}

void endBySignal()
{
    const int signal = g_stopSignal;
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    std::_Exit(128 + signal);
}

}  // namespace veltrac
