// Formula files of Ts-Edit: small texts that hold one formula.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace veltrac {

// The longest formula that the compiler and the files take, in bytes.
inline constexpr std::size_t kFormulaBytes = 255;

// Writes the formula, by way of a pending file: the old one stays until it is whole. Throws
// std::system_error.
void writeFormulaFile(const std::filesystem::path& file, const std::string& formula);

// The formula of a file, leading blanks included: the line below the last one that holds "Composed", in
// whatever case. Nothing where there is none. Lines are read up to 255 bytes, so a file of any size and
// content does no harm. Throws std::system_error where it cannot be opened.
std::optional<std::string> readFormulaFile(const std::filesystem::path& file);

}  // namespace veltrac
