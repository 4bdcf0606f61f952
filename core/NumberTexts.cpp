#include "core/NumberTexts.h"

#include <charconv>
#include <cstdio>

namespace veltrac {

namespace {

std::string formatted(double number, int digits, std::chars_format format)
{
    char text[400];
    const auto [end, error] = std::to_chars(text, text + sizeof text, number, format, digits);
    return error == std::errc() ? std::string(text, end) : std::string();
}

}  // namespace

std::string groupedDigits(std::uint64_t number)
{
    std::string text = std::to_string(number);
    for (std::size_t i = text.size(); i > 3;)
        text.insert(i -= 3, 1, ' ');
    return text;
}

std::string generalNumber(double number, int digits)
{
    return formatted(number, digits, std::chars_format::general);
}

std::string significantNumber(double number, int digits)
{
    char text[64];
    std::snprintf(text, sizeof text, "%#.*g", digits, number);
    std::string shown = text;
    if (!shown.empty() && shown.back() == '.')
        shown.pop_back();
    return shown;
}

std::string fixedNumber(double number, int decimals)
{
    return formatted(number, decimals, std::chars_format::fixed);
}

std::string counted(std::uint64_t count, const std::string& singular)
{
    return groupedDigits(count) + " " + singular + (count == 1 ? "" : "s");
}

}  // namespace veltrac
