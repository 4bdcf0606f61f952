// The text of a cell: what a user may type there, and what is copied from it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace veltrac {

// The decimals that the table shows.
inline constexpr int kShownDecimals = 4;

// True for "nan" and an empty text.
bool isMissingText(std::string_view text);
// A cell's number: point or comma; a missing value as NaN. Nothing where the text is no number that a cell
// can hold.
std::optional<float> cellNumber(std::string_view text);

// The shortest text that gives the very number back; "nan" for a missing value.
std::string exactText(float value);

// How far from a number that was typed a value may lie to be meant by it: one with as many decimals as the
// table shows was read there, so that it finds what shows so; any other finds exactly itself, 0.
double searchTolerance(std::string_view typed);

}  // namespace veltrac
