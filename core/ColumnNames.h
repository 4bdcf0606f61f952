// Names for columns that are made beside others.
#pragma once

#include <span>
#include <string>

namespace veltrac {

inline constexpr std::size_t kColumnNameLength = 11;  // bytes that are shown

// The name, cut to 11 bytes at a whole character; where it is taken already, with a number at its end:
// "Temperatu~2".
std::string columnNameApart(const std::string& wanted, std::span<const std::string> taken);

}  // namespace veltrac
