// How a long job tells how far it is and hears that it is to stop.
#pragma once

#include <cstdint>
#include <functional>

namespace veltrac {

// Called with the share done; false cancels the job. An empty one never cancels. Jobs call it every few
// thousand samples.
using Progress = std::function<bool(std::uint64_t done, std::uint64_t total)>;

// How a job that can be cancelled ended; failures are exceptions. A cancelled job leaves nothing behind.
enum class JobOutcome { Done, Cancelled };

inline bool goesOn(const Progress& progress, std::uint64_t done, std::uint64_t total)
{
    return !progress || progress(done, total);
}

}  // namespace veltrac
