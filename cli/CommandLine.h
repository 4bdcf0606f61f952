// The command line of veltrac-cli: verbs, options, exit status.
#pragma once

namespace veltrac {

// Exit status: all done; some files failed; wrong usage.
inline constexpr int kAllDone = 0;
inline constexpr int kSomeFailed = 1;
inline constexpr int kWrongUsage = 2;

// The whole program. Ends the process where a signal has stopped it.
int runCommandLine(int count, char** words);

}  // namespace veltrac
