// The one way out for the filter library's messages.
#pragma once

namespace veltrac {

// Formats a message into 1024 bytes, hands it to the installed handler and writes it to standard error.
// Returns to the caller on purpose: a report never ends the program, each caller gives up by itself.
[[gnu::format(printf, 1, 2)]] void fidReport(const char* format, ...);

}  // namespace veltrac
