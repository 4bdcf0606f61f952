// A run of a file's samples.
#pragma once

#include <cstdint>

namespace veltrac {

// From the oldest sample on, which is number 1 (in a ring file, too); both ends included. None where `last`
// is 0.
struct SampleRange
{
    std::uint32_t first = 1;
    std::uint32_t last = 0;

    bool isEmpty() const noexcept { return last == 0; }
    std::uint32_t count() const noexcept { return isEmpty() ? 0 : last - first + 1; }
};

}  // namespace veltrac
