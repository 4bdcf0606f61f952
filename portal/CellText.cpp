#include "portal/CellText.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "core/FileTime.h"

namespace veltrac {

namespace {

constexpr double kHalfAStep = 0.5e-4;  // of the shown decimals

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n\v\f";
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

bool isLetter(char c, char small)
{
    return c == small || c == small - 'a' + 'A';
}

}  // namespace

bool isMissingText(std::string_view text)
{
    const std::string_view word = trimmed(text);
    return word.empty() ||
           (word.size() == 3 && isLetter(word[0], 'n') && isLetter(word[1], 'a') && isLetter(word[2], 'n'));
}

std::optional<float> cellNumber(std::string_view text)
{
    if (isMissingText(text))
        return std::numeric_limits<float>::quiet_NaN();
    const std::optional<double> number = wholeNumber(text);
    if (!number || std::abs(*number) > static_cast<double>(std::numeric_limits<float>::max()))
        return std::nullopt;
    return static_cast<float>(*number);
}

std::string exactText(float value)
{
    if (std::isnan(value))
        return "nan";
    char text[32];
    return {text, std::to_chars(std::begin(text), std::end(text), value).ptr};
}

double searchTolerance(std::string_view typed)
{
    const std::string_view number = trimmed(typed);
    const std::size_t mark = number.find_last_of(".,");
    return mark != std::string_view::npos && number.size() - mark - 1 == std::size_t{kShownDecimals}
               ? kHalfAStep
               : 0.0;
}

}  // namespace veltrac
