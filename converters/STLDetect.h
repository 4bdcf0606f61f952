// Finds out how a text file of measurements is written.
#pragma once

#include "converters/PlainText.h"
#include "converters/STLFormat.h"

namespace veltrac {

// Looks at lines from the start, the middle and the end and tries every separator and decimal sign; the
// reading under which most lines agree in their count of cells, and most cells mean something, wins.
// Throws STLError (no line of numbers, binary data, too many columns) and std::system_error.
STLFormat detectFormat(const PlainText& text);

// The same with separator, decimal sign and what stands between thousands (0: nothing) given by the user; the
// rest is found again.
STLFormat detectFormat(const PlainText& text, char separator, char decimal, char grouping);

// Reads names and units of the columns again, from the lines that the format names.
void takeNames(const PlainText& text, STLFormat& format);

}  // namespace veltrac
