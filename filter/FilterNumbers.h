// A filter in a few numbers.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "filter/FilterCharacteristic.h"
#include "filter/FilterResponse.h"

namespace veltrac {

// Rows of a name and a number with its unit: the frequencies of half power, the greatest gain and where it
// is, the greatest delay within the pass band, the overshoot of a step and when it has come to rest within a
// hundredth.
std::vector<std::pair<std::string, std::string>> filterNumbers(const FilterCharacteristic& characteristic,
                                                               const std::vector<float>& delays,
                                                               const FilterResponses& responses);

}  // namespace veltrac
