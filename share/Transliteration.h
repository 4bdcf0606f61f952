// Texts for PostScript fonts in their standard encoding, and for places that hold only ASCII.
#pragma once

#include <string>
#include <string_view>

namespace veltrac {

// A UTF-8 text in Adobe's StandardEncoding (PostScript Language Reference Manual, appendix E), one byte a
// glyph. Characters that it lacks are written in other words by one table (µ: u, °: deg, ü: ue, ²: ^2; what
// the table lacks: ?); bytes that are not UTF-8 count as Latin-1; control characters become blanks.
std::string standardText(std::string_view utf8);

// The same in printable ASCII.
std::string asciiText(std::string_view utf8);

// One byte of standardText() as it is written inside a PostScript string: escaped where needed.
std::string escapedGlyph(char glyph);

}  // namespace veltrac
