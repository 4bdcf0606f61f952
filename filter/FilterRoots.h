// Poles and zeros of a filter in the z-plane.
#pragma once

#include <complex>
#include <vector>

#include "filter/fid.h"

namespace veltrac {

struct FilterRoots
{
    std::vector<std::complex<double>> poles;
    std::vector<std::complex<double>> zeros;
    bool isComplete = true;  // false: a block was too long to be solved
};

// Those at the origin, which only delay, left out. Blocks of order 1 and 2 are solved directly; longer ones,
// windows, up to kMostRoots points by O. Aberth's iteration ("Iteration methods for finding all zeros of a
// polynomial simultaneously", Math. Comp. 27 (1973)).
inline constexpr int kMostRoots = 400;
FilterRoots rootsOf(const FidFilter* filter);

}  // namespace veltrac
