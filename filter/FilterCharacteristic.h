// What a filter does to each frequency, as points of a curve.
#pragma once

#include <vector>

#include "filter/fid.h"

namespace veltrac {

// All columns are as long as `frequencies`, which do not fall, from 0 to half of the sampling frequency.
struct FilterCharacteristic
{
    std::vector<double> frequencies;  // Hz
    std::vector<float> gain;
    std::vector<float> gainDb;  // not below -200
    std::vector<float> phase;   // 0 to 1 for 0 to 2 pi; NaN where the gain is 0
    // A stroke down from each frequency of half power on the gain's curve, NaN elsewhere.
    std::vector<float> marks;
    std::vector<float> marksDb;
    std::vector<double> halfPower;  // Hz, rising
};

// Evaluated at more than 4000 frequencies, one half evenly spaced and the other by equal factors, so that
// neither a linear nor a logarithmic axis shows corners; and at those of half power. Of a filter that is run
// forward and back the gain is squared, and there is no phase: zero.
FilterCharacteristic characteristicOf(const FidFilter* filter, double samplingHz, bool zeroPhase = false);

}  // namespace veltrac
