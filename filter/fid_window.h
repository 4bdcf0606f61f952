// Low-pass filters whose coefficients are a window's own shape.
#pragma once

#include <optional>
#include <vector>

#include "filter/fid_spec.h"

namespace veltrac {

// Symmetric coefficients of sum 1 with half power at the frequency (a fraction of the sampling rate).
// Returns nothing when that would take more than about a million points.
std::optional<std::vector<double>> makeWindow(FidFamily family, double frequency);

}  // namespace veltrac
