// A ts-file's header texts as UTF-8.
//
// The file says nothing of an encoding: texts are read as UTF-8 where they are valid, else as Windows-1252,
// so that files of older programs show their umlauts.
#pragma once

#include <string>
#include <string_view>

namespace veltrac {

// A header text without trailing blanks and control characters. Null gives an empty one.
std::string headerUtf8(const char* bytes);

// The description of a column with its unit, "Amplitude of Force [N]", cut to the bytes that the field has.
// The unit, which may be empty, outlives the cut.
std::string fittingDescription(std::string_view text, std::string_view unit);

}  // namespace veltrac
