// The lines of a tsa text: what kind each one is, and what its header keys say (docs/tsa.md).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace veltrac {

// Longer lines are cut here.
inline constexpr std::size_t kTsaHeaderWidth = 256;
inline constexpr std::size_t kTsaDataWidth = 2048;

enum class TsaLine { Empty, Header, Comment, Tabbed, Data };

// What a line is, by its first word. A data line that begins with a tab is passed over, and so is Tabbed.
TsaLine tsaLineKind(std::string_view line);

// The words of a line stand between these. A comma is no separator: it is a decimal point.
inline bool isTsaSeparator(char c)
{
    return c == ' ' || c == '\t' || c == '\f' || c == '\r' || c == '\n';
}

// A header line taken apart: "%N12 Speed" is key 'N', number 12, value "Speed".
struct TsaKey
{
    char key;
    std::uint32_t number;    // 0: none, as in "%N"
    std::string_view value;  // what follows one separator
};

// Nothing where the line's first word is no key: "%Samples", "%N012", "%".
std::optional<TsaKey> parseTsaKey(std::string_view line);

// A value as text: up to a tab, a form feed or a carriage return.
std::string_view tsaText(std::string_view value);
// The first word of a value as a whole number, as atoi() reads it, held within 64 bits.
std::int64_t tsaCount(std::string_view value);
// A sample time; a decimal comma is accepted. 0 where there is none.
double tsaNumber(std::string_view value);
// "yyyy.mm.dd-hh:mm:ss" as a column stamp: 0, second, minute, hour, day, month, year. Nothing where a part
// is missing or impossible.
std::optional<std::array<int, 7>> tsaStamp(std::string_view value);

}  // namespace veltrac
