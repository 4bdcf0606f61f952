// Where the rows of a log begin to be set out in another way, as they do where tables were joined.
#pragma once

#include "converters/STLSample.h"

namespace veltrac {

// The number of the first line from which on two and more columns have other widths, or other counts of
// decimals, which all rows before had alike and all rows behind have alike; 0 where there is none. Of several
// such lines the first one.
std::uint64_t changeOfLayout(const STLSample& sample, const STLFormat& format);

}  // namespace veltrac
