// Ctrl+C and SIGTERM end a job cleanly: it is cancelled, which leaves whole files or none.
#pragma once

#include <csignal>

namespace veltrac {

// What a worker is told to stop by, as often as may be.
inline constexpr int kStopWorker = SIGUSR1;

// From here on SIGINT, SIGTERM and SIGHUP are noted; another one, some seconds later, kills.
void noteStopSignals();
bool stopAsked() noexcept;
// Ends the process by the signal that was noted, so that whoever started it sees it.
[[noreturn]] void endBySignal();

}  // namespace veltrac
