// Finds out how a text file of measurements is written.
#pragma once

#include <filesystem>

#include "converters/STLFormat.h"

namespace veltrac {

// Looks at lines from the start, the middle and the end and tries every separator and decimal sign; the
// reading under which most lines agree in their count of cells, and most cells mean something, wins.
// Throws STLError (UTF-16, no line of numbers, too many columns) and std::system_error.
STLFormat detectFormat(const std::filesystem::path& file);

// The same with separator and decimal sign given by the user; the rest is found again.
STLFormat detectFormat(const std::filesystem::path& file, char separator, char decimal);

// Reads names and units of the columns again, from the lines that the format names.
void takeNames(const std::filesystem::path& file, STLFormat& format);

}  // namespace veltrac
