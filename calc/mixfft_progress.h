// How a transform tells how far it is.
#pragma once

#include <cstdint>
#include <functional>

namespace veltrac {

// Told (done, total) a hundred times in a transform and at least every tenth of a second; false stops it.
using FftProgress = std::function<bool(std::uint64_t, std::uint64_t)>;

// Tells a listener, if there is one, every hundredth of the work, and more often where that takes long.
class FftMeter
{
public:
    FftMeter(const FftProgress& progress, std::uint64_t total);

    // False when the listener wants to stop.
    bool add(std::uint64_t steps);

private:
    const FftProgress& m_progress;
    std::uint64_t m_total;
    std::uint64_t m_between;  // steps from one report to the next
    std::uint64_t m_done = 0;
    std::uint64_t m_next;
};

}  // namespace veltrac
