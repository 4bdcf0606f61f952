// Tables whose columns stand below each other, with empty cells.
#pragma once

#include <vector>

#include "converters/STLSample.h"

namespace veltrac {

// Where the columns of a table of fixed widths begin; empty where the lines are none: their words do not end
// or begin below each other, or nothing is empty, so that blanks tell the cells apart as well.
std::vector<std::size_t> fixedEdges(const STLSample& sample, char decimal);

}  // namespace veltrac
