// The names above a table of blanks, matched to its columns by the places where they stand.
#pragma once

#include <string_view>
#include <vector>

#include "converters/STLSample.h"

namespace veltrac {

// The name of each column, empty for those that have none: the words of `line` that stand above it, one blank
// apart. Columns whose cells reach below each other's share a name, which the first one bears. Nothing where
// the words do not begin or end where columns do.
std::vector<std::string_view> namesByPlace(std::string_view line, const std::vector<STLRow>& data,
                                           const STLFormat& format);

}  // namespace veltrac
