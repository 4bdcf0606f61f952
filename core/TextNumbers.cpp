#include "core/TextNumbers.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#include <string>
#include <system_error>

#include <locale.h>

#include "core/Characters.h"

namespace veltrac {

namespace {

__extension__ using Wide = unsigned __int128;

// -- Reading --

constexpr std::array<double, 23> kExactTens = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                               1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                               1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::uint64_t kExactMantissa = std::uint64_t{1} << 53;
constexpr int kMostDigits = 19;  // that fit into 64 bits, whatever they are

// The C routine, for what the quick ways leave: hexadecimal, leading white space, results out of range.
ParsedNumber parseByLibrary(const char* first, const std::string& text)
{
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    char* end = nullptr;
    const double value = strtod_l(text.c_str(), &end, cLocale);
    return {value, first + (end - text.c_str())};
}

// The text as the library takes it: with points for marks, and nothing for a mark that is none.
char asLibrary(char c, DecimalMark mark)
{
    if (c == ',' && mark != DecimalMark::Point)
        return '.';
    return c == '.' && mark == DecimalMark::Comma ? '\1' : c;
}

ParsedNumber parseSlowly(const char* first, const char* last, DecimalMark mark)
{
    constexpr std::ptrdiff_t kShort = 64;
    std::array<char, kShort> shortText;
    const std::ptrdiff_t length = std::min(last - first, kShort);
    std::transform(first, first + length, shortText.begin(), [mark](char c) { return asLibrary(c, mark); });
    if (length < kShort) {
        double value = 0.0;
        const char* const begin = shortText.data();
        const char* const end = begin + length;
        const auto [stop, error] = std::from_chars(begin, end, value);
        // "0x10" is read up to its x.
        if (error == std::errc() && (stop == end || (*stop != 'x' && *stop != 'X')))
            return {value, first + (stop - begin)};
    }
    std::string text(first, last);
    std::transform(text.begin(), text.end(), text.begin(), [mark](char c) { return asLibrary(c, mark); });
    return parseByLibrary(first, text);
}

// -- Writing --

// 10^exponent = mantissa * 2^shift, the mantissa's highest bit set, cut where it is not exact.
struct Ten
{
    std::uint64_t mantissa;
    int shift;
    bool exact;
};

constexpr int kLowestTen = -33;    // scales the largest float down to six digits
constexpr int kHighestTen = 50;    // and this the smallest one up
constexpr int kLowestFloat = -45;  // decimal exponents of floats
constexpr int kHighestFloat = 38;

constexpr Ten positiveTen(int exponent)
{
    Wide power = 1;
    for (int i = 0; i < exponent; ++i)
        power *= 5;
    int shift = exponent;
    bool exact = true;
    while (power >> 64 != 0) {
        exact = exact && (power & 1) == 0;
        power >>= 1;
        ++shift;
    }
    while (power >> 63 == 0) {
        power <<= 1;
        --shift;
    }
    return {static_cast<std::uint64_t>(power), shift, exact};
}

// Long division of a power of two, bit by bit.
constexpr Ten negativeTen(int exponent)
{
    Wide divisor = 1;
    for (int i = 0; i < exponent; ++i)
        divisor *= 5;
    std::uint64_t quotient = 0;
    Wide remainder = 1;
    int shift = -exponent;
    while (quotient >> 63 == 0) {
        remainder <<= 1;
        quotient <<= 1;
        --shift;
        if (remainder >= divisor) {
            remainder -= divisor;
            quotient |= 1;
        }
    }
    return {quotient, shift, false};
}

constexpr auto kTens = [] {
    std::array<Ten, kHighestTen - kLowestTen + 1> tens{};
    for (int e = kLowestTen; e <= kHighestTen; ++e)
        tens[static_cast<std::size_t>(e - kLowestTen)] = e >= 0 ? positiveTen(e) : negativeTen(-e);
    return tens;
}();

constexpr const Ten& ten(int exponent)
{
    return kTens[static_cast<std::size_t>(exponent - kLowestTen)];
}

// The doubles next to 10^(k+1): no float but the power itself lies between the two.
constexpr auto kNextTens = [] {
    std::array<double, kHighestFloat - kLowestFloat + 2> tens{
        1e-44, 1e-43, 1e-42, 1e-41, 1e-40, 1e-39, 1e-38, 1e-37, 1e-36, 1e-35, 1e-34, 1e-33, 1e-32,
        1e-31, 1e-30, 1e-29, 1e-28, 1e-27, 1e-26, 1e-25, 1e-24, 1e-23, 1e-22, 1e-21, 1e-20, 1e-19,
        1e-18, 1e-17, 1e-16, 1e-15, 1e-14, 1e-13, 1e-12, 1e-11, 1e-10, 1e-9,  1e-8,  1e-7,  1e-6,
        1e-5,  1e-4,  1e-3,  1e-2,  1e-1,  1e0,   1e1,   1e2,   1e3,   1e4,   1e5,   1e6,   1e7,
        1e8,   1e9,   1e10,  1e11,  1e12,  1e13,  1e14,  1e15,  1e16,  1e17,  1e18,  1e19,  1e20,
        1e21,  1e22,  1e23,  1e24,  1e25,  1e26,  1e27,  1e28,  1e29,  1e30,  1e31,  1e32,  1e33,
        1e34,  1e35,  1e36,  1e37,  1e38,  1e39,  1e40};
    return tens;
}();

constexpr auto kPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

void putPair(std::uint32_t v, char* out)
{
    std::memcpy(out, kPairs.data() + 2 * v, 2);
}

constexpr int kDigits = 6;
constexpr std::uint32_t kTooManyDigits = 1'000'000;

struct Decimal
{
    std::uint32_t digits;  // 100000 to 999999
    int exponent;          // of the first digit
    bool certain;
};

// The six digits of m * 2^e (m of 24 bits), rounded half to even, from one product of 88 bits. Where the
// cut power of ten leaves the rounding open, `certain` is false.
Decimal sixDigits(std::uint64_t m, int e)
{
    const int binary = e + 23;
    // floor(binary * log10(2)), or one less than the decimal exponent.
    int k = (binary * 1233) >> 12;
    const double v =
        static_cast<double>(m) * std::bit_cast<double>(static_cast<std::uint64_t>(1023 + e) << 52);
    if (v >= kNextTens[static_cast<std::size_t>(k - kLowestFloat)])
        ++k;
    const Ten& scale = ten(kDigits - 1 - k);
    const Wide product = static_cast<Wide>(m) * scale.mantissa;
    const int shift = -(e + scale.shift);
    const auto high = static_cast<std::uint64_t>(product >> 64);
    const auto low = static_cast<std::uint64_t>(product);
    const int highShift = shift - 64;
    const std::uint64_t half = std::uint64_t{1} << (highShift - 1);
    const std::uint64_t fraction = high & (2 * half - 1);
    auto digits = static_cast<std::uint32_t>(high >> highShift);
    bool certain = true;
    if (fraction > half || (fraction == half && (low != 0 || !scale.exact)))
        ++digits;
    else if (fraction == half)
        digits += digits & 1U;
    else
        certain = scale.exact || fraction != half - 1 || low < ~std::uint64_t{0} - (m + 1);
    if (digits == kTooManyDigits) {
        digits /= 10;
        ++k;
    }
    return {digits, k, certain};
}

char* putExponent(int k, char* out)
{
    *out++ = 'e';
    *out++ = k < 0 ? '-' : '+';
    putPair(static_cast<std::uint32_t>(k < 0 ? -k : k), out);
    return out + 2;
}

// Lays six digits out as "%g" does.
char* putDecimal(const Decimal& d, char* out)
{
    constexpr int kLowestFixed = -4;
    std::array<char, 8> text{};
    putPair(d.digits / 10000, text.data());
    putPair(d.digits / 100 % 100, text.data() + 2);
    putPair(d.digits % 100, text.data() + 4);
    int n = kDigits;
    while (text[static_cast<std::size_t>(n - 1)] == '0')
        --n;

    if (d.exponent >= kLowestFixed && d.exponent < 0) {
        std::fill_n(out, 8, '0');
        out[1] = '.';
        out += 1 - d.exponent;
        std::memcpy(out, text.data(), 8);
        return out + n;
    }
    const bool fixed = d.exponent >= 0 && d.exponent < kDigits;
    const int whole = fixed ? d.exponent + 1 : 1;
    std::memcpy(out, text.data(), 8);
    if (n > whole) {
        for (int i = whole; i < n; ++i)
            out[i + 1] = text[static_cast<std::size_t>(i)];
        out[whole] = '.';
        out += n + 1;
    } else {
        out += whole;
    }
    return fixed ? out : putExponent(d.exponent, out);
}

char* putWord(const char* word, bool negative, char* out)
{
    if (negative)
        *out++ = '-';
    std::memcpy(out, word, 3);
    return out + 3;
}

}  // namespace

ParsedNumber parseNumber(const char* first, const char* last, DecimalMark mark)
{
    const char* p = first;
    const bool negative = p != last && *p == '-';
    if (p != last && (*p == '-' || *p == '+'))
        ++p;

    std::uint64_t mantissa = 0;
    const char* const digits = p;
    while (p != last && isDigit(*p))
        mantissa = mantissa * 10 + static_cast<unsigned char>(*p++ - '0');
    std::ptrdiff_t count = p - digits;
    std::ptrdiff_t exponent = 0;
    if (p != last &&
        ((*p == '.' && mark != DecimalMark::Comma) || (*p == ',' && mark != DecimalMark::Point))) {
        const char* const fraction = ++p;
        while (p != last && isDigit(*p))
            mantissa = mantissa * 10 + static_cast<unsigned char>(*p++ - '0');
        exponent = fraction - p;
        count -= exponent;
    }
    if (count == 0 || count > kMostDigits || (p != last && (*p == 'x' || *p == 'X')))
        return parseSlowly(first, last, mark);
    if (p != last && (*p == 'e' || *p == 'E')) {
        const char* q = p + 1;
        const bool negativeExponent = q != last && *q == '-';
        if (q != last && (*q == '-' || *q == '+'))
            ++q;
        const char* const exponentDigits = q;
        int written = 0;
        while (q != last && isDigit(*q) && q - exponentDigits < 6)
            written = written * 10 + (*q++ - '0');
        if (q != last && isDigit(*q))
            return parseSlowly(first, last, mark);
        if (q != exponentDigits) {
            exponent += negativeExponent ? -written : written;
            p = q;
        }
    }

    // Both numbers are exact doubles, so one operation rounds once (Clinger, "How to read floating point
    // numbers accurately", 1990).
    const std::ptrdiff_t size = exponent < 0 ? -exponent : exponent;
    if (mantissa > kExactMantissa || size >= static_cast<std::ptrdiff_t>(kExactTens.size()))
        return parseSlowly(first, last, mark);
    double value = static_cast<double>(mantissa);
    value = exponent < 0 ? value / kExactTens[static_cast<std::size_t>(size)]
                         : value * kExactTens[static_cast<std::size_t>(size)];
    return {negative ? -value : value, p};
}

char* formatSixDigits(float v, char* out)
{
    const auto bits = std::bit_cast<std::uint32_t>(v);
    const bool negative = bits >> 31 != 0;
    const auto biased = static_cast<int>(bits >> 23 & 0xFFU);
    std::uint32_t mantissa = bits & 0x7F'FFFFU;
    if (biased == 0xFF)
        return putWord(mantissa != 0 ? "nan" : "inf", negative, out);
    char* const begin = out;
    if (negative)
        *out++ = '-';
    if (biased == 0 && mantissa == 0) {
        *out++ = '0';
        return out;
    }
    int exponent = (biased == 0 ? 1 : biased) - 150;
    if (biased != 0) {
        mantissa |= 0x80'0000U;
    } else {
        const int lead = std::countl_zero(mantissa) - 8;
        mantissa <<= lead;
        exponent -= lead;
    }
    const Decimal decimal = sixDigits(mantissa, exponent);
    if (decimal.certain)
        return putDecimal(decimal, out);
    return std::to_chars(begin, begin + kNumberRoom, v, std::chars_format::general, kDigits).ptr;
}

char* formatUnsigned(std::uint64_t v, char* out)
{
    return std::to_chars(out, out + kNumberRoom, v).ptr;
}

}  // namespace veltrac
