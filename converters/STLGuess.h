// Guesses at names, units, head and time of a smart tool log, from its first lines.
#pragma once

#include "converters/STLSample.h"

namespace veltrac {

// In small letters, as far as they are ASCII.
std::string lowered(std::string_view text);

// The last line of texts before the data gives the names; a line of units may stand between, and units in
// brackets behind the names are units too.
void guessNames(STLFormat& format, const std::vector<STLRow>& rows, std::size_t firstData);
// Without any names, a first row of rising years, or of whole numbers in equal steps, above rows of another
// kind is names, which the user is asked to check.
void guessNumericNames(STLFormat& format, const std::vector<STLRow>& rows, std::size_t firstData);

// Names that stand in a line with more cells than the data have, or in a remark, right above the data.
void guessNamesAbove(STLFormat& format, const STLSample& sample);

// Units in brackets, behind names or alone, without their brackets.
void splitUnits(STLFormat& format);

// Keys and values above the data, and what those that are known say: start, step, description.
void guessHead(STLFormat& format, const STLSample& sample);

// The keys of a head that mean something to the import.
enum class STLKey { Other, Start, Date, Time, Interval, Rate, Description, Tool, Name, Unit };
STLKey keyOf(const std::string& key);

// Seconds of "10 ms", "1 s", "5 min", "1 h"; a bare number is seconds.
std::optional<double> readInterval(std::string_view text, const STLCells& cells);
// Hertz of "360 Hz", "1 kHz", "250".
std::optional<double> readRate(std::string_view text, const STLCells& cells);

// Columns of texts that are numbers, each with the same unit behind it: they become columns of numbers.
void findSuffixes(STLFormat& format, const std::vector<STLRow>& data);

// Makes columns of dates, stamps and times out of numbers whose digits are those (20240312, 202403120958).
void findCompactDates(STLFormat& format, const std::vector<STLRow>& data);

// Where the time comes from, how its dates are meant, and which columns are values then.
void guessTime(STLFormat& format, const std::vector<STLRow>& data);

}  // namespace veltrac
