// What stands above the data of a smart tool log as keys and values.
#pragma once

#include "converters/STLSample.h"

namespace veltrac {

// Keys and values above the data, and what those that are known say: start, step, description.
void guessHead(STLFormat& format, const STLSample& sample);

// The keys of a head that mean something to the import.
enum class STLKey { Other, Start, Date, Time, Interval, Rate, Description, Tool, Name, Unit };
STLKey keyOf(const std::string& key);

// Whether a line is a known key and its value, behind a remark sign or not: "; Samplerate: 1 kHz".
bool tellsKey(std::string_view line);

// Where the value begins behind a known key without a sign between them, "Sample Rate 8000"; npos elsewhere.
std::size_t endOfBareKey(std::string_view text);

// Seconds of "10 ms", "1 s", "5 min", "1 h"; a bare number is seconds.
std::optional<double> readInterval(std::string_view text, const STLCells& cells);
// Hertz of "360 Hz", "1 kHz", "250".
std::optional<double> readRate(std::string_view text, const STLCells& cells);

}  // namespace veltrac
