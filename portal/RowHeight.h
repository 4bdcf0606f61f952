// How high the rows of the program's tables may be made.
#pragma once

namespace veltrac {

inline constexpr int kLeastRowHeight = 18;     // pixels
inline constexpr int kGreatestRowHeight = 30;  // pixels

}  // namespace veltrac
