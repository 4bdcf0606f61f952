// What a filter does in time: group delay, responses to an impulse and a step.
#pragma once

#include <vector>

#include "filter/FilterTypes.h"
#include "filter/fid.h"

namespace veltrac {

// By how many samples the filter delays a slow change of a tone's strength, at a frequency given as a
// fraction of the sampling rate: minus the derivative of the phase. Exact, block by block: of B(z) = sum of
// b(k) z^-k it is the real part of (sum of k b(k) z^-k) / B(z) (J. O. Smith, "Introduction to Digital
// Filters", section "Numerical computation of group delay"). NaN where a block is 0.
double groupDelay(const FidFilter* filter, double frequency);

// The delay at each of the frequencies, in seconds.
std::vector<float> groupDelays(const FidFilter* filter, const std::vector<double>& frequencies,
                               double samplingHz);

struct FilterResponses
{
    std::vector<double> seconds;  // from the impulse or step; of zero phase also before it
    std::vector<float> impulse;   // of a single sample of 1
    std::vector<float> step;      // of ones from 0 on
};

// As long as the filter rings, at most kMostShown samples.
inline constexpr std::uint32_t kMostShown = 200'000;
FilterResponses responsesOf(const FidFilter* filter, double samplingHz, FilterPass pass);

}  // namespace veltrac
