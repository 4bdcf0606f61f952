#include "share/AxisTicks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace veltrac {

namespace {

// number × 10^exponent in decimals without trailing zeros: exact, as a double's own digits are not.
std::string decimalText(std::int64_t number, int exponent)
{
    if (number == 0)
        return "0";
    std::string digits = std::to_string(std::abs(number));
    if (exponent >= 0) {
        digits.append(static_cast<std::size_t>(exponent), '0');
    } else {
        const auto decimals = static_cast<std::size_t>(-exponent);
        if (digits.size() <= decimals)
            digits.insert(digits.begin(), decimals + 1 - digits.size(), '0');
        digits.insert(digits.end() - static_cast<std::ptrdiff_t>(decimals), '.');
        digits.erase(digits.find_last_not_of('0') + 1);
        if (digits.back() == '.')
            digits.pop_back();
    }
    if (number < 0)
        digits.insert(digits.begin(), '-');
    return digits;
}

std::string raised(int number)
{
    static constexpr std::array<const char*, 10> kDigits{"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹"};
    std::string text = number < 0 ? "⁻" : "";
    for (const char digit : std::to_string(std::abs(number)))
        text += kDigits[static_cast<std::size_t>(digit - '0')];
    return text;
}

int floorLog10(double number)
{
    return static_cast<int>(std::floor(std::log10(number)));
}

// number × 10^exponent, correctly rounded where both powers are exact.
double scaled(double number, int exponent)
{
    return exponent < 0 ? number / std::pow(10.0, -exponent) : number * std::pow(10.0, exponent);
}

// A step of mantissa × 10^exponent; minor ticks part it in `parts`.
struct Step
{
    int mantissa;
    int exponent;

    double size() const { return scaled(mantissa, exponent); }
    int minorParts() const { return mantissa == 2 ? 4 : 5; }
    Step next() const
    {
        if (mantissa == 1)
            return {2, exponent};
        return mantissa == 2 ? Step{5, exponent} : Step{1, exponent + 1};
    }
};

Step firstStep(double span)
{
    Step step{1, floorLog10(span / kMostLabels) - 1};
    while (step.size() * kMostLabels < span)
        step = step.next();
    return step;
}

// The multiples of a step within [least, most].
struct Multiples
{
    std::int64_t first;
    std::int64_t last;
};

Multiples multiplesOf(double step, double least, double most)
{
    // A bound that is a multiple but for rounding counts as one.
    constexpr double kSlack = 1e-9;
    return {static_cast<std::int64_t>(std::ceil(least / step - kSlack)),
            static_cast<std::int64_t>(std::floor(most / step + kSlack))};
}

std::size_t longestLabel(Multiples multiples, Step step, int exponent)
{
    std::size_t longest = 0;
    for (std::int64_t k = multiples.first; k <= multiples.last; ++k)
        longest = std::max(longest, decimalText(k * step.mantissa, step.exponent - exponent).size());
    return longest;
}

// The power of ten that all labels share: none where the numbers are of a handy size, or where it would not
// make them shorter (250000001 to 250000010).
int commonExponent(double greatest, Multiples multiples, Step step)
{
    constexpr double kLarge = 1e6;
    constexpr double kSmall = 1e-3;
    if (greatest < kLarge && greatest >= kSmall)
        return 0;
    constexpr int kGroup = 3;
    const int exponent = kGroup * static_cast<int>(std::floor(floorLog10(greatest) / double(kGroup)));
    return longestLabel(multiples, step, exponent) < longestLabel(multiples, step, 0) ? exponent : 0;
}

AxisTicks linearWith(Step step, double least, double most, bool isLog)
{
    AxisTicks axis;
    const Multiples labelled = multiplesOf(step.size(), least, most);
    axis.exponent = commonExponent(std::max(std::fabs(least), std::fabs(most)), labelled, step);
    if (axis.exponent != 0)
        axis.powerText = "×10" + raised(axis.exponent);
    const int parts = step.minorParts();
    const Multiples all = multiplesOf(step.size() / parts, least, most);
    for (std::int64_t k = all.first; k <= all.last; ++k) {
        const bool isMajor = k % parts == 0;
        const std::int64_t number = k / parts * step.mantissa;
        const double value = isMajor ? scaled(static_cast<double>(number), step.exponent)
                                     : static_cast<double>(k) * (step.size() / parts);
        const std::string label = isMajor ? decimalText(number, step.exponent - axis.exponent) : "";
        axis.ticks.push_back({isLog ? std::log10(value) : value, label, isMajor});
    }
    return axis;
}

// Linear steps over [least, most] at their own or, on a logarithmic axis, at their logarithmic places.
AxisTicks fittingLinear(double least, double most, bool isLog, const LabelRoom& room)
{
    const double span = most - least;
    // Steps so small beside the numbers that doubles cannot tell them apart.
    constexpr double kResolution = 1e-14;
    const double greatest = std::max(std::fabs(least), std::fabs(most));
    if (!std::isfinite(span) || !(span > greatest * kResolution) || floorLog10(span) < -300)
        return {};
    const double length = isLog ? std::log10(most) - std::log10(least) : span;
    std::vector<AxisTicks> tooMany;  // whose labels do not fit, the finest first
    for (Step step = firstStep(span);; step = step.next()) {
        AxisTicks next = linearWith(step, least, most, isLog);
        if (!labelsFit(next, length, room)) {
            tooMany.push_back(std::move(next));
            continue;
        }
        if (labelCount(next) > 1 || tooMany.empty())
            return next;
        // One number tells no scale: rather two of a finer step's, which may stand closer than many.
        const LabelRoom close{room.length, room.extent, room.closest};
        for (std::size_t i = tooMany.size(); i-- > 0;)
            if (AxisTicks outer = outerLabels(tooMany[i]); labelsFit(outer, length, close))
                return outer;
        return labelCount(next) > 0 ? next : oneLabel(std::move(tooMany.back()));
    }
}

// digit × 10^decade
std::string decadeText(int digit, int decade, bool arePowers)
{
    if (!arePowers)
        return decimalText(digit, decade);
    return (digit == 1 ? "10" : std::to_string(digit) + "×10") + raised(decade);
}

// Decades with labels at every `stride`-th one, or at 1, 2 and 5 of each where the stride is 0.
AxisTicks decadesWith(int stride, double least, double most)
{
    constexpr int kLeastPlain = -4;  // 0.0001 to 100000 are written out
    constexpr int kMostPlain = 5;
    constexpr double kSlack = 1e-9;
    AxisTicks axis;
    const bool arePowers = least < kLeastPlain - kSlack || most >= kMostPlain + 1 - kSlack;
    const int first = static_cast<int>(std::floor(least + kSlack));
    const int last = static_cast<int>(std::floor(most + kSlack));
    for (int decade = first; decade <= last; ++decade) {
        for (int digit = 1; digit < 10; ++digit) {
            const double position = decade + std::log10(digit);
            if (position < least - kSlack || position > most + kSlack || (stride > 1 && digit > 1))
                continue;
            const bool isOneTwoFive = digit == 1 || digit == 2 || digit == 5;
            const bool isMajor = stride == 0 ? isOneTwoFive : digit == 1 && decade % stride == 0;
            const std::string label = isMajor ? decadeText(digit, decade, arePowers) : "";
            axis.ticks.push_back({position, label, isMajor});
        }
    }
    return axis;
}

}  // namespace

AxisTicks linearTicks(double first, double last, const LabelRoom& room)
{
    if (!std::isfinite(first) || !std::isfinite(last))
        return {};
    return fittingLinear(std::min(first, last), std::max(first, last), false, room);
}

AxisTicks logTicks(double first, double last, const LabelRoom& room)
{
    // What a double holds of powers of ten, without the subnormal numbers.
    constexpr double kMostDecades = 307.0;
    const double least = std::min(first, last);
    const double most = std::max(first, last);
    if (!(least >= -kMostDecades) || !(most <= kMostDecades) || !(most > least))
        return {};
    constexpr double kOneDecade = 1.0;
    if (most - least < kOneDecade)
        return fittingLinear(std::pow(10.0, least), std::pow(10.0, most), true, room);
    constexpr double kFewDecades = 2.5;  // of more, 1, 10, 100, 1000 tell enough
    for (int stride = most - least <= kFewDecades ? 0 : 1;; stride = stride < 3 ? stride + 1 : stride * 2) {
        AxisTicks axis = decadesWith(stride, least, most);
        if (labelCount(axis) <= (stride == 0 ? kMostLabels + 1 : kMostLabels) &&
            labelsFit(axis, most - least, room))
            return axis;
    }
}

}  // namespace veltrac
