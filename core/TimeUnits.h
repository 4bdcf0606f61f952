// Units of time as people and loggers write them.
#pragma once

#include <string_view>

namespace veltrac {

// Seconds of a unit in small letters, as "ms", "min", "hours", "sek", "µs" (UTF-8 or Windows-1252); 0 where
// the word is none.
double secondsOfUnit(std::string_view word) noexcept;

}  // namespace veltrac
