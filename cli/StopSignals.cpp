#include "cli/StopSignals.h"

#include <time.h>

#include <csignal>
#include <cstdlib>
#include <initializer_list>

namespace veltrac {

namespace {

constexpr std::sig_atomic_t kImpatience = 1;  // seconds

volatile std::sig_atomic_t g_stopSignal = 0;
volatile std::sig_atomic_t g_stopSecond = 0;  // when it came

// Schedulers and timeout(1) send the same signal twice in a row, to the process and to its group; one that
// comes later is a user who does not want to wait.
void noteStop(int signal)
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const auto second = static_cast<std::sig_atomic_t>(now.tv_sec);
    if (g_stopSignal == 0) {
        g_stopSignal = signal;
        g_stopSecond = second;
    } else if (second - g_stopSecond > kImpatience && signal != kStopWorker) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
}

}  // namespace

void noteStopSignals()
{
    struct sigaction action = {};
    action.sa_handler = noteStop;
    sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        // What whoever started us had ignored stays so (nohup).
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
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
