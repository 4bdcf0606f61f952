// Names and descriptions of the columns that a text import makes, and whether its result fits into a file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace veltrac {

inline constexpr std::size_t kColumnTextLength = 45;

// Names of at most 11 bytes, each one once and none that means time: "Temperatu~2".
std::vector<std::string> uniqueColumnNames(const std::vector<std::string>& wanted);

// "Force [kN]" in at most 45 bytes.
std::string nameWithUnit(const std::string& name, const std::string& unit);

// Throws STLError where a ts-file cannot hold that much.
void requireFits(std::uint64_t samples, std::uint32_t columns);

}  // namespace veltrac
