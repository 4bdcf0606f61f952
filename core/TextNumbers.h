// Numbers in text files, read and written as the C library does in its "C" locale, only quicker.
#pragma once

#include <cstddef>
#include <cstdint>

namespace veltrac {

struct ParsedNumber
{
    double value;     // 0 where there is no number
    const char* end;  // behind the number's last character; `first` where there is none
};

enum class DecimalMark : unsigned char { Point, Comma, Both };

// Reads the number at the beginning of [first, last) as atof() does: a sign ("+1" too), a fraction, an
// exponent, "inf", "nan", hexadecimal, white space before it; text behind the number ends it. Correctly
// rounded. A decimal mark that is not asked for ends the number.
ParsedNumber parseNumber(const char* first, const char* last, DecimalMark mark = DecimalMark::Point);

// What formatSixDigits() and formatUnsigned() write at most.
inline constexpr std::size_t kNumberRoom = 24;

// Writes a number as a text stream does by default, "%g": six significant digits, correctly rounded, no
// trailing zeros, "inf" and "nan" in words. Returns the end of the text. It may use all of kNumberRoom
// bytes at `out`, beyond that end too.
char* formatSixDigits(float v, char* out);

// Writes a whole number in decimal; returns the end of the text.
char* formatUnsigned(std::uint64_t v, char* out);

}  // namespace veltrac
