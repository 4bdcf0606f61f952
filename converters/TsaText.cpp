#include "converters/TsaText.h"

#include <algorithm>
#include <charconv>

#include "core/Characters.h"
#include "core/TextNumbers.h"

namespace veltrac {

namespace {

constexpr int kYearBase = 1900;
constexpr int kLastYear = kYearBase + 255;  // a stamp keeps one byte of it

// "12" of a key; a spelling that no column number has ("0", "012", "1x") is none.
std::optional<std::uint32_t> columnOf(std::string_view digits)
{
    if (digits.empty())
        return 0;
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size() || digits.front() == '0')
        return std::nullopt;
    return number;
}

// The digits up to `stop` (0: all that follow), taken off the text's front.
std::optional<int> takePart(std::string_view& text, char stop)
{
    int part = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), part);
    if (error != std::errc() || part < 0)
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (stop == '\0')
        return part;
    if (text.empty() || text.front() != stop)
        return std::nullopt;
    text.remove_prefix(1);
    return part;
}

}  // namespace

TsaLine tsaLineKind(std::string_view line)
{
    const auto word = std::find_if_not(line.begin(), line.end(), isTsaSeparator);
    if (word == line.end())
        return TsaLine::Empty;
    if (*word == '%')
        return TsaLine::Header;
    if (*word == ';')
        return TsaLine::Comment;
    return line.front() == '\t' ? TsaLine::Tabbed : TsaLine::Data;
}

std::optional<TsaKey> parseTsaKey(std::string_view line)
{
    const auto word = std::find_if_not(line.begin(), line.end(), isTsaSeparator);
    const auto wordEnd = std::find_if(word, line.end(), isTsaSeparator);
    const std::string_view token(word, wordEnd);
    if (token.size() < 2 || token.front() != '%')
        return std::nullopt;
    const std::optional<std::uint32_t> number = columnOf(token.substr(2));
    if (!number)
        return std::nullopt;
    return TsaKey{token[1], *number,
                  std::string_view(wordEnd == line.end() ? wordEnd : wordEnd + 1, line.end())};
}

std::string_view tsaText(std::string_view value)
{
    return value.substr(0, value.find_first_of("\t\f\r\n"));
}

std::int64_t tsaCount(std::string_view value)
{
    const auto word = std::find_if_not(value.begin(), value.end(), isTsaSeparator);
    std::string_view text(word, value.end());
    if (text.size() > 1 && text.front() == '+' && isDigit(text[1]))
        text.remove_prefix(1);
    std::int64_t count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (error == std::errc::result_out_of_range)
        return text.front() == '-' ? INT64_MIN : INT64_MAX;
    return count;
}

double tsaNumber(std::string_view value)
{
    const std::string_view text = tsaText(value);
    return parseNumber(text.data(), text.data() + text.size(), DecimalMark::Both).value;
}

std::optional<std::array<int, 7>> tsaStamp(std::string_view value)
{
    value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
    const auto year = takePart(value, '.');
    const auto month = year ? takePart(value, '.') : year;
    const auto day = month ? takePart(value, '-') : month;
    const auto hour = day ? takePart(value, ':') : day;
    const auto minute = hour ? takePart(value, ':') : hour;
    const auto second = minute ? takePart(value, '\0') : minute;
    if (!second || *year > kLastYear || *month < 1 || *month > 12 || *day < 1 || *day > 31 || *hour > 23 ||
        *minute > 59 || *second > 60)
        return std::nullopt;
    return std::array<int, 7>{0, *second, *minute, *hour, *day, *month, *year};
}

}  // namespace veltrac
