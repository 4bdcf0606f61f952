// Lengths of time and sizes of files, as the import windows tell them.
#pragma once

#include <cstdint>
#include <string>

namespace veltrac {

// "0.3 s", "12 min", "30.4 d"
std::string lengthText(double seconds);
// The same with four digits: "1.000 s"; and two lengths in one unit: "0.98 to 1.07 s".
std::string stepLength(double seconds);
std::string stepRange(double least, double greatest);

// "0.8 MB"
std::string sizeText(std::uint64_t bytes);

}  // namespace veltrac
