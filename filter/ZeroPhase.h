// Filtering forward and back over a range: no frequency is delayed, and the gain is squared.
//
// Each end is reflected in its value (odd), as far as the filter rings, and each of the two runs begins
// settled on the far end of that. F. Gustafsson, "Determining the initial states in forward-backward
// filtering", IEEE Trans. SP 44 (1996), compares this with other ends; all are guesses of what lies outside
// of the range.
#pragma once

#include <cstdint>

#include "core/Progress.h"
#include "core/SourceColumn.h"
#include "filter/fid.h"

class TSFILE;

namespace veltrac {

// After how many samples the response to an impulse stays below a millionth of its greatest; at most
// kMostRinging, which is what is reflected at most.
inline constexpr std::uint32_t kMostRinging = 1U << 20;
std::uint32_t ringingOf(const FidFilter* filter);

// Fills a work file of two columns with the source and what becomes of it; as runFilter(). What the first
// pass gives stands in column 2 until the second has been over it, so memory does not grow with the range;
// the 32-bit floats in between are off by less than a ten-millionth of the largest value.
JobOutcome runZeroPhase(const SourceColumn& source, TSFILE& work, const FidFilter* filter,
                        std::uint32_t& missing, const Progress& progress);

// The first value of a column that is neither missing nor infinite; 0 where there is none.
float firstFinite(const SourceColumn& source);

}  // namespace veltrac
