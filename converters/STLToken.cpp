#include "converters/STLToken.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "converters/TimeStamps.h"
#include "core/TextNumbers.h"

namespace {

constexpr std::size_t kLongestNumber = 64;

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::string_view withoutTail(std::string_view cell)
{
    while (!cell.empty() && (isBlank(cell.back()) || cell.back() == '\r'))
        cell.remove_suffix(1);
    return cell;
}

std::string_view trimmed(std::string_view cell)
{
    while (!cell.empty() && isBlank(cell.front()))
        cell.remove_prefix(1);
    return withoutTail(cell);
}

// AM and PM belong to the time before them, although a blank stands between.
bool isHalfOfDay(std::string_view cell, std::string_view before)
{
    return cell.size() == 2 && ((cell[0] | 0x20) == 'a' || (cell[0] | 0x20) == 'p') &&
           (cell[1] | 0x20) == 'm' && before.find(':') != std::string_view::npos;
}

void splitAtBlanks(std::string_view line, std::vector<std::string_view>& out)
{
    std::size_t i = 0;
    while (true) {
        while (i < line.size() && isBlank(line[i]))
            ++i;
        if (i == line.size())
            return;
        const bool quoted = line[i] == '"' && line.find('"', i + 1) != std::string_view::npos;
        const std::size_t end =
            quoted ? line.find('"', i + 1) : std::min(line.find_first_of(" \t", i), line.size());
        const std::string_view cell = quoted ? line.substr(i + 1, end - i - 1) : line.substr(i, end - i);
        if (!out.empty() && isHalfOfDay(cell, out.back()))
            out.back() = {out.back().data(), static_cast<std::size_t>(cell.data() + 2 - out.back().data())};
        else
            out.push_back(cell);
        i = quoted ? end + 1 : end;
    }
}

constexpr std::uint64_t kOnes = 0x0101010101010101U;

// The high bit of the first byte that is `wanted`, perhaps of later ones too; 0 where none is (Warren,
// "Hacker's Delight", section 6-1).
std::uint64_t firstOf(std::uint64_t word, char wanted)
{
    word ^= kOnes * static_cast<unsigned char>(wanted);
    return (word - kOnes) & ~word & kOnes << 7;
}

// The next `wanted`. Cells are a few bytes long, eight of which are looked at in one word.
const char* findSign(const char* p, const char* end, char wanted)
{
    if constexpr (std::endian::native == std::endian::little) {
        for (; end - p >= 8; p += 8) {
            std::uint64_t word = 0;
            std::memcpy(&word, p, 8);
            if (const std::uint64_t found = firstOf(word, wanted))
                return p + std::countr_zero(found) / 8;
        }
    }
    return std::find(p, end, wanted);
}

// Up to eight bytes of text in a word, the first one lowest.
std::uint64_t wordOf(const char* p, std::size_t size)
{
    if (size < 4) {
        const auto at = [p](std::size_t i) {
            return std::uint64_t{static_cast<unsigned char>(p[i])} << 8 * i;
        };
        return at(0) | at(size / 2) | at(size - 1);
    }
    std::uint32_t head = 0;
    std::uint32_t tail = 0;
    std::memcpy(&head, p, 4);
    std::memcpy(&tail, p + size - 4, 4);
    return head | std::uint64_t{tail} << 8 * (size - 4);
}

// Eight digits in a word, the first one lowest, and how many of them stand behind the decimal sign.
struct PlainNumber
{
    std::uint64_t digits;
    std::size_t places;
};

// What nearly all numbers are: up to eight digits, perhaps with a decimal sign. Found without a branch that
// depends on the digits: numbers of changing length are what a processor cannot foresee.
std::optional<PlainNumber> plainNumber(std::string_view text, char decimal)
{
    if (std::endian::native != std::endian::little || text.size() > 8)
        return std::nullopt;
    std::uint64_t word = wordOf(text.data(), text.size());
    std::size_t count = text.size();
    std::size_t places = 0;
    if (const std::uint64_t sign = firstOf(word, decimal) & ((std::uint64_t{2} << (8 * count - 1)) - 1)) {
        const int at = std::countr_zero(sign) & ~7;
        const std::uint64_t before = (std::uint64_t{1} << at) - 1;
        word = (word & before) | (word >> 8 & ~before);
        places = --count - static_cast<std::size_t>(at) / 8;
    }
    if (count == 0)
        return std::nullopt;
    // Zeros before the first digit.
    word = (word ^ kOnes * '0') << 8 * (8 - count);
    if (((word + kOnes * 0x76) | word) & kOnes << 7)
        return std::nullopt;
    return PlainNumber{word, places};
}

// Digits are added up in pairs, pairs in fours, fours in eights; one division rounds once.
double valueOf(const PlainNumber& number)
{
    static constexpr std::array<double, 9> kTens = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8};
    const std::uint64_t pairs = number.digits * 10 + (number.digits >> 8);
    const std::uint64_t eights = ((pairs & 0x000000FF000000FFU) * 0x000F424000000064U +
                                  (pairs >> 16 & 0x000000FF000000FFU) * 0x0000271000000001U) >>
                                 32;
    return static_cast<double>(eights) / kTens[number.places];
}

// The text behind a number's own sign; empty where no number begins so.
std::string_view digitsOf(std::string_view cell, char decimal)
{
    if (!cell.empty() && (cell.front() == '+' || cell.front() == '-'))
        cell.remove_prefix(1);
    return !cell.empty() && (isDigit(cell.front()) || cell.front() == decimal) ? cell : std::string_view();
}

// A cell in quotes: separators inside it are text.
const char* endOfQuoted(const char* from, const char* end, char separator)
{
    return std::find(std::find(from + 1, end, '"'), end, separator);
}

std::string_view unquoted(std::string_view cell)
{
    cell = withoutTail(cell);
    return cell.size() >= 2 && cell.back() == '"' ? trimmed(cell.substr(1, cell.size() - 2)) : cell;
}

// A number without its grouping signs; nothing where they do not stand before each three digits.
std::optional<std::string_view> ungrouped(std::string_view cell, const STLCells& cells,
                                          std::array<char, kLongestNumber>& buffer)
{
    std::size_t count = 0;
    std::size_t digits = 0;
    std::size_t groups = 0;
    std::size_t i = 0;
    for (; i < cell.size() && cell[i] != cells.decimal && cell[i] != 'e' && cell[i] != 'E'; ++i) {
        if (cell[i] == cells.grouping) {
            if (groups++ == 0 ? digits < 1 || digits > 3 : digits != 3)
                return std::nullopt;
            digits = 0;
            continue;
        }
        digits += isDigit(cell[i]) ? 1 : 0;
        if (count == buffer.size())
            return std::nullopt;
        buffer[count++] = cell[i];
    }
    if ((groups > 0 && digits != 3) || cell.size() - i > buffer.size() - count)
        return std::nullopt;
    count += cell.copy(buffer.data() + count, cell.size() - i, i);
    return std::string_view(buffer.data(), count);
}

}  // namespace

std::size_t splitCells(std::string_view line, char separator, std::vector<std::string_view>& out)
{
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    if (separator == ' ') {
        out.clear();
        splitAtBlanks(line, out);
        return out.size();
    }
    // Most lines have as many cells as the one before.
    std::size_t count = 0;
    const auto put = [&](std::string_view cell) {
        if (count < out.size())
            out[count] = cell;
        else
            out.push_back(cell);
        ++count;
    };
    const char* const end = line.data() + line.size();
    for (const char* from = line.data();;) {
        while (from != end && isBlank(*from) && *from != separator)
            ++from;
        if (from != end && *from == '"') {
            const char* const stop = endOfQuoted(from, end, separator);
            put(unquoted({from, static_cast<std::size_t>(stop - from)}));
            from = stop;
        } else {
            const char* const stop = findSign(from, end, separator);
            put(withoutTail({from, static_cast<std::size_t>(stop - from)}));
            from = stop;
        }
        if (from == end)
            break;
        ++from;
    }
    out.resize(count);
    return count;
}

std::optional<double> readNumber(std::string_view cell, const STLCells& cells)
{
    const std::string_view digits = digitsOf(cell, cells.decimal);
    if (digits.empty())
        return std::nullopt;
    if (const auto plain = plainNumber(digits, cells.decimal))
        return cell.front() == '-' ? -valueOf(*plain) : valueOf(*plain);

    std::array<char, kLongestNumber> buffer;
    if (cells.grouping != 0 && cell.find(cells.grouping) != std::string_view::npos) {
        const std::optional<std::string_view> plain = ungrouped(cell, cells, buffer);
        if (!plain)
            return std::nullopt;
        cell = *plain;
    }
    const char* const last = cell.data() + cell.size();
    const ParsedNumber number =
        parseNumber(cell.data(), last, cells.decimal == ',' ? DecimalMark::Comma : DecimalMark::Point);
    return number.end == last ? std::optional(number.value) : std::nullopt;
}

bool isNumber(std::string_view cell, const STLCells& cells)
{
    const std::string_view digits = digitsOf(cell, cells.decimal);
    return !digits.empty() && (plainNumber(digits, cells.decimal) || readNumber(cell, cells));
}

bool isMissing(std::string_view cell, const STLCells& cells)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return cell.empty() ||
           std::any_of(cells.missing.begin(), cells.missing.end(), [&](const std::string& marker) {
               return marker.size() == cell.size() &&
                      std::equal(cell.begin(), cell.end(), marker.begin(),
                                 [&](char a, char b) { return lower(a) == lower(b); });
           });
}

STLToken readToken(std::string_view cell, const STLCells& cells)
{
    if (const auto number = readNumber(cell, cells))
        return {STLKind::Number, cell, *number};
    if (isMissing(cell, cells))
        return {STLKind::Missing, cell, 0.0};
    if (!isDigit(cell.front()))
        return {STLKind::Text, cell, 0.0};
    if (readTime(cell))
        return {STLKind::Time, cell, 0.0};
    if (const auto stamp = readStamp(cell))
        return {stamp->time ? STLKind::Stamp : STLKind::Date, cell, 0.0};
    return {STLKind::Text, cell, 0.0};
}
