// How the numbers of a column go from row to row, in the rows that are looked at.
#pragma once

#include "converters/STLSample.h"

namespace veltrac {

// Each of the three places that are looked at may begin before the end of the one before.
inline constexpr std::size_t kPlaceRows = 200;
inline constexpr std::size_t kMostBreaks = 2;

// How a column of numbers goes from row to row.
struct STLCourse
{
    std::size_t risen = 0;
    std::size_t fallen = 0;
    std::size_t pairs = 0;

    std::size_t breaks() const { return pairs >= kPlaceRows ? kMostBreaks : 0; }
    bool neverFalls() const { return risen > 0 && fallen <= breaks(); }
    bool alwaysRises() const { return pairs > 0 && pairs - risen <= breaks(); }
    bool alwaysFalls() const { return pairs > 0 && pairs - fallen <= breaks(); }
};

STLCourse courseOf(const std::vector<STLRow>& rows, std::size_t column);

// Whether all cells of a column are whole numbers within these bounds.
bool areWhole(const std::vector<STLRow>& data, std::size_t column, double least, double most);

}  // namespace veltrac
