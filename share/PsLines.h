// How PostscriptDriver composes its lines.
#pragma once

#include <string>

// No line with a text is longer.
inline constexpr std::size_t kPsLineLength = 128;

// A line without a text in parentheses, made shorter: in each number trailing zeros behind the point, a point
// at the end and a lone zero before the point go ("100.0" is "100", "0.50" is ".5"); a run of blanks is one.
std::string compactedLine(const std::string& line);

// head(text)tail, the text cut between two of its glyphs so that the line keeps its length. `standard` is a
// standardText().
std::string textLine(const std::string& head, const std::string& standard, const std::string& tail);
