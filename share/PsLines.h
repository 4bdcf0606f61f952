// How PostscriptDriver composes its lines.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <string>

namespace veltrac {

// No line with a text is longer.
inline constexpr std::size_t kPsLineLength = 128;

// As printf; wide enough for any number in "%.1f".
template <typename... Values>
std::string formatted(const char* format, Values... values)
{
    char buffer[512];
    const int length = std::snprintf(buffer, sizeof buffer, format, values...);
    return {buffer, std::min<std::size_t>(static_cast<std::size_t>(std::max(length, 0)), sizeof buffer - 1)};
}

// What is not finite has no place on paper.
inline bool areFinite(std::initializer_list<float> numbers)
{
    return std::all_of(numbers.begin(), numbers.end(), [](float number) { return std::isfinite(number); });
}

// A line without a text in parentheses, made shorter: in each number trailing zeros behind the point, a point
// at the end and a lone zero before the point go ("100.0" is "100", "0.50" is ".5"); a run of blanks is one.
std::string compactedLine(const std::string& line);

// head(text)tail, the text cut between two of its glyphs so that the line keeps its length. `standard` is a
// standardText().
std::string textLine(const std::string& head, const std::string& standard, const std::string& tail);

}  // namespace veltrac
