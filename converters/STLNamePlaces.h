// The names above a table of blanks, matched to its columns by the places where they stand.
#pragma once

#include <string_view>
#include <vector>

#include "converters/STLSample.h"

namespace veltrac {

// Whether words stand in columns: single blanks alone, as between those of a program that does not count
// them, do not tell.
bool areSetOut(std::string_view line);

// The name of each column, empty for those that have none: the words of `line` that stand above it, one blank
// apart. Columns whose cells reach below each other's share a name, which the first one bears. Nothing where
// the words do not begin or end where columns do, nor where they are one short and single blanks part them.
std::vector<std::string_view> namesByPlace(std::string_view line, const std::vector<STLRow>& data,
                                           const STLFormat& format);

// The same for rows whose columns, but perhaps the first, end below each other: each name ends there too, and
// may be of several words. Empty where some name does not.
std::vector<std::string_view> namesByEnds(std::string_view line, const std::vector<STLRow>& data,
                                          const STLFormat& format);

}  // namespace veltrac
