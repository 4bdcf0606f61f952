// Lengths of a spectrum: what a request comes to before anything is computed.
#pragma once

#include <cstdint>

#include "calc/SpectrumRequest.h"

namespace veltrac {

// What a request comes to.
struct SpectrumPlan
{
    std::uint32_t used = 0;      // samples of the range that take part (of one segment where averaged)
    std::uint32_t length = 0;    // of the transform
    std::uint32_t bins = 0;      // length / 2: bin k stands in sample k, bin 0 in none
    std::uint32_t segments = 1;  // 0 where the range is shorter than one
    double resolution = 0.0;     // Hz
    double highest = 0.0;        // Hz
    std::uint64_t bytes = 0;     // of memory
};

// The greatest length up to m of factors 2, 3 and 5 if it drops at most a thousandth, else the greatest
// without a prime factor above 37; the least of 2, 3 and 5 from m on.
std::uint32_t shortenedLength(std::uint32_t m);
std::uint32_t paddedLength(std::uint32_t m);

SpectrumPlan planSpectrum(const SpectrumRequest& request);

// From the first sample of a segment of `used` samples to the next one's.
std::uint32_t segmentHop(std::uint32_t used, int overlapPercent);

// Columns of the target: 2 or 3.
std::uint32_t spectrumColumns(const SpectrumRequest& request);

}  // namespace veltrac
