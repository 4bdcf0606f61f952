// The line styles 0 to 9 of all drivers, in points (dash, gap, dash, …), zero-terminated.
#pragma once

#include <array>

namespace veltrac {

using DashPattern = std::array<int, 9>;

inline constexpr std::array<DashPattern, 10> kDashPatterns{{
    {},
    {12, 3},
    {12, 3, 3, 3},
    {12, 3, 3, 3, 3, 3},
    {2, 3},
    {12, 3, 12, 3, 3, 3, 3, 3},
    {24, 4},
    {24, 4, 4, 4},
    {24, 3, 7, 3},
    {6, 6},
}};

// Styles outside the table are solid.
constexpr const DashPattern& dashPattern(int style)
{
    const bool known = style >= 0 && style < static_cast<int>(kDashPatterns.size());
    return kDashPatterns[known ? static_cast<std::size_t>(style) : 0U];
}

}  // namespace veltrac
