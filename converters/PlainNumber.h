// What nearly all numbers of a log are: few digits, perhaps a sign and a decimal sign.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "core/Characters.h"

namespace veltrac {

// Digits and how many of them stand behind the decimal sign.
struct PlainNumber
{
    // So many characters are at most 15 digits, which are exact in a double, and so is the power of ten: one
    // division rounds once.
    static constexpr std::size_t kMostCharacters = 15;

    std::uint64_t digits = 0;
    std::size_t places = 0;

    double value() const
    {
        static constexpr std::array<double, kMostCharacters + 1> kTens = {
            1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
        return static_cast<double>(digits) / kTens[places];
    }
};

// Takes digits, perhaps with a decimal sign, from [at, end), and leaves `at` behind them; nothing where none
// begins there or where it is too long to be plain.
inline std::optional<PlainNumber> takePlainNumber(const char*& at, const char* end, char decimal)
{
    const char* const from = at;
    PlainNumber number;
    const auto takeDigits = [&] {
        for (; at != end && isDigit(*at); ++at)
            number.digits = number.digits * 10 + static_cast<unsigned char>(*at - '0');
    };
    takeDigits();
    if (at != end && *at == decimal) {
        const char* const point = at++;
        takeDigits();
        number.places = static_cast<std::size_t>(at - point) - 1;
        if (at - from == 1)
            return std::nullopt;
    }
    const auto length = static_cast<std::size_t>(at - from);
    return length == 0 || length > PlainNumber::kMostCharacters ? std::nullopt : std::optional(number);
}

}  // namespace veltrac
