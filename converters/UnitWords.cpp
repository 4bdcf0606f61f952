#include "converters/UnitWords.h"

#include <algorithm>

#include "converters/STLFormat.h"
#include "core/TimeUnits.h"

namespace veltrac {

namespace {

// Whether a word is a unit, perhaps with an SI prefix.
bool isUnitWord(std::string_view word)
{
    static constexpr std::string_view kUnits =
        " m g s a k c f v w n j l h t b d mol cd hz pa ohm ohms wb lm lx bq gy sv bar db dbm dbv "
        "dba dbfs ppm ppb rpm deg rad sr min hr hrs day days week year years yr in ft mi mph lb "
        "lbs psi kn kt knot knots cal wh ah va var ev bit bits byte bytes bps cps px pct percent "
        "count counts inch inches feet degc degf celsius kelvin fahrenheit volt volts amp amps "
        "ampere watt watts newton pascal joule mmhg inhg mg au ph pas gal sec secs meter meters "
        "metre metres gram grams liter litre usd eur nu pu rms pp ";
    const auto known = [](std::string_view text) {
        return !text.empty() && kUnits.find(' ' + std::string(text) + ' ') != std::string_view::npos;
    };
    constexpr std::string_view kPrefixes = "kmunpgthcd";
    return known(word) || (word.size() > 1 && kPrefixes.find(word.front()) != std::string_view::npos &&
                           known(word.substr(1)));
}

// "v(in)", "i(r1)" and "log(M)" are whole names.
bool namesNode(const std::string& name, std::size_t bracket)
{
    constexpr std::string_view kFunctions = " log ln log2 log10 log1p exp sqrt abs sin cos tan diff lag ";
    if (kFunctions.find(' ' + lowered(std::string_view(name).substr(0, bracket)) + ' ') !=
        std::string_view::npos)
        return true;
    const char letter = static_cast<char>(name.front() | 0x20);
    return (letter == 'v' || letter == 'i') && bracket <= 3 && name[bracket] == '(' &&
           name[bracket - 1] != ' ';
}

}  // namespace

bool isUnit(const std::string& text)
{
    constexpr std::size_t kLongest = 16;
    const std::string lower = lowered(text);
    if (lower.empty() || lower.size() > kLongest)
        return false;
    if (secondsOfUnit(lower) > 0.0 || lower.find_first_of("%\xB0\xB5\xC2\xCE\xE2") != std::string::npos)
        return true;
    constexpr std::string_view kBetween = "/*^.-+ 0123456789()";
    bool any = false;
    for (std::size_t at = 0; at < lower.size();) {
        const std::size_t from = lower.find_first_not_of(kBetween, at);
        if (from == std::string::npos)
            break;
        at = std::min(lower.find_first_of(kBetween, from), lower.size());
        if (!isUnitWord(std::string_view(lower).substr(from, at - from)))
            return false;
        any = true;
    }
    return any;
}

std::string withoutBrackets(std::string unit)
{
    const bool bracketed = unit.size() >= 2 && ((unit.front() == '[' && unit.back() == ']') ||
                                                (unit.front() == '(' && unit.back() == ')'));
    return bracketed ? unit.substr(1, unit.size() - 2) : unit;
}

void splitUnit(std::string& name, std::string& unit)
{
    unit = withoutBrackets(unit);
    for (const auto& [open, close] : {std::pair('[', ']'), std::pair('(', ')')}) {
        const std::size_t from = name.rfind(open);
        if (!name.ends_with(close) || from == std::string::npos || from == 0)
            continue;
        const std::string inside = name.substr(from + 1, name.size() - from - 2);
        const bool index = inside.find_first_not_of("0123456789:, ") == std::string::npos;
        if (open == '[' ? index : namesNode(name, from) || !isUnit(inside))
            return;
        if (unit.empty() || unit == "-")
            unit = inside;
        name.resize(name.find_last_not_of(' ', from - 1) + 1);
        return;
    }
}

}  // namespace veltrac
