#include "converters/TimeStamps.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "converters/WordedDates.h"

namespace veltrac {

namespace {

// What stands behind a date.
std::optional<Stamp> readBehind(const DateParts& date, std::string_view text)
{
    Stamp stamp{date, std::nullopt, std::nullopt};
    if (text.empty())
        return stamp;
    constexpr std::string_view kBetween = " T_,:-";
    if (kBetween.find(text.front()) == std::string_view::npos)
        return std::nullopt;
    text.remove_prefix(1);
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    stamp.time = takeTime(text);
    if (!stamp.time)
        stamp.time = takeDottedTime(text);
    if (!stamp.time)
        return std::nullopt;
    skipUhr(text);
    stamp.zoneMinutes = takeZone(text);
    return text.empty() ? std::optional(stamp) : std::nullopt;
}

// "2 days 01:30:00", "1 day, 1:30:00": takes the days.
Micros takeDays(std::string_view& text)
{
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    constexpr std::size_t kMostDigits = 5;
    if (digits == 0 || digits > kMostDigits || !text.substr(digits).starts_with(" day"))
        return 0;
    Micros days = 0;
    for (const char c : text.substr(0, digits))
        days = days * 10 + (c - '0');
    std::string_view rest = text.substr(digits + std::string_view(" day").size());
    rest.remove_prefix(rest.starts_with('s') ? 1 : 0);
    rest.remove_prefix(rest.starts_with(',') ? 1 : 0);
    if (!rest.starts_with(' '))
        return 0;
    text = rest.substr(std::min(rest.find_first_not_of(' '), rest.size()));
    return days * kMicrosPerDay;
}

}  // namespace

std::optional<Stamp> readStamp(std::string_view text)
{
    text = unframed(text);
    std::string_view rest = text;
    auto date = takeDate(rest);
    if (date)
        return readBehind(*date, rest);
    date = takeWordedDate(rest);
    // "22. Nov 01:40" only looks like the year 2001.
    if (const auto stamp = date ? readBehind(*date, rest) : std::nullopt)
        return stamp;
    if (const auto compact = readCompactStamp(text))
        return compact;
    rest = text;
    if (const auto stamp = takeCTime(rest); stamp && rest.empty())
        return stamp;
    date = readPartOfYear(text);
    return date ? std::optional(Stamp{*date, std::nullopt, std::nullopt}) : std::nullopt;
}

bool readPlainTime(std::string_view text, Micros& micros)
{
    if (text.size() != 8 || text[2] != ':' || text[5] != ':')
        return false;
    unsigned highest = 0;
    const auto two = [&](std::size_t at) {
        const unsigned tens = static_cast<unsigned char>(text[at] - '0');
        const unsigned ones = static_cast<unsigned char>(text[at + 1] - '0');
        highest = std::max({highest, tens, ones});
        return tens * 10 + ones;
    };
    const unsigned hours = two(0);
    const unsigned minutes = two(3);
    const unsigned seconds = two(6);
    if (highest > 9 || minutes > 59 || seconds > 60)
        return false;
    micros = ((Micros{hours} * 60 + minutes) * 60 + seconds) * kMicrosPerSecond;
    return true;
}

std::optional<TimeOfDay> readTime(std::string_view text)
{
    if (Micros micros = 0; readPlainTime(text, micros))
        return TimeOfDay{micros, 0, true};
    constexpr std::size_t kYearAndMonth = 7;
    if (text.size() == kYearAndMonth && text[4] == ':' && readPartOfYear(text))
        return std::nullopt;
    std::string_view rest = text;
    const Micros days = takeDays(rest);
    auto time = takeTime(rest);
    if (!time)
        return readCompactTime(text);
    time->micros += days;
    skipUhr(rest);
    return rest.empty() ? time : std::nullopt;
}

std::optional<TimeOfDay> readClock(std::string_view text)
{
    if (const auto time = readTime(text))
        return time;
    const auto time = takeDottedTime(text);
    return text.empty() ? time : std::nullopt;
}

std::optional<DateParts> readDate(std::string_view text)
{
    std::string_view rest = text;
    if (const auto date = takeDate(rest); date && rest.empty())
        return date;
    const auto stamp = readStamp(text);
    return stamp && !stamp->time ? std::optional(stamp->date) : std::nullopt;
}

std::optional<Micros> decimalYear(double years, bool inMonths)
{
    using namespace std::chrono;
    constexpr double kMonths = 12.0;
    if (!(years >= kFirstDecimalYear && years <= kLastDecimalYear))
        return std::nullopt;
    int whole = static_cast<int>(years);
    const double part = years - whole;
    const auto startOf = [](int y, unsigned m) {
        return Micros{sys_days{year{y} / month{m} / 1}.time_since_epoch().count()} * kMicrosPerDay;
    };
    if (!inMonths) {
        const auto length = static_cast<double>(startOf(whole + 1, 1) - startOf(whole, 1));
        return startOf(whole, 1) + std::llround(part * length / kMicrosPerSecond) * kMicrosPerSecond;
    }
    int passed = static_cast<int>(std::lround(part * kMonths));
    whole += passed / 12;
    passed %= 12;
    return startOf(whole, static_cast<unsigned>(passed) + 1);
}

std::optional<Micros> serialDay(double days)
{
    constexpr double kDaysTo1970 = 25569.0;
    constexpr double kMost = 2958466.0;  // the end of the year 9999
    constexpr double kMillisPerDay = 86'400'000.0;
    if (!(days >= 1.0 && days < kMost))
        return std::nullopt;
    return Micros{std::llround((days - kDaysTo1970) * kMillisPerDay)} * 1000;
}

std::optional<Micros> wallClock(const Stamp& stamp, DateOrder order)
{
    const auto day = midnight(stamp.date, order);
    if (!day)
        return std::nullopt;
    const Micros time = stamp.time ? stamp.time->micros : 0;
    return *day + time - Micros{stamp.zoneMinutes.value_or(0)} * 60 * kMicrosPerSecond;
}

std::optional<Micros> localWallClock(const Stamp& stamp, DateOrder order)
{
    const auto wall = wallClock(stamp, order);
    if (!wall || !stamp.zoneMinutes)
        return wall;
    const Micros fraction = (*wall % kMicrosPerSecond + kMicrosPerSecond) % kMicrosPerSecond;
    return wallAt((*wall - fraction) / kMicrosPerSecond) + fraction;
}

}  // namespace veltrac
