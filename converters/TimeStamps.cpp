#include "converters/TimeStamps.h"

#include <algorithm>
#include <chrono>
#include <ctime>

#include "converters/WordedDates.h"

namespace veltrac {

namespace {

// What stands behind a date.
std::optional<Stamp> readBehind(const DateParts& date, std::string_view text)
{
    Stamp stamp{date, std::nullopt, std::nullopt};
    if (text.empty())
        return stamp;
    const bool comma = text.front() == ',';
    if (text.front() != ' ' && text.front() != 'T' && text.front() != '_' && !comma)
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

}  // namespace

std::optional<Stamp> readStamp(std::string_view text)
{
    std::string_view rest = text;
    auto date = takeDate(rest);
    if (!date)
        date = takeWordedDate(rest);
    if (date)
        return readBehind(*date, rest);
    if (const auto compact = readCompactStamp(text))
        return compact;
    return readCTime(text);
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
    std::string_view rest = text;
    const auto time = takeTime(rest);
    if (!time)
        return readCompactTime(text);
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

Micros wallAt(std::int64_t seconds)
{
    const std::time_t time = seconds;
    std::tm local = {};
    const bool known = localtime_r(&time, &local) != nullptr;
    return (seconds + (known ? local.tm_gmtoff : 0)) * kMicrosPerSecond;
}

std::int64_t localSeconds(Micros wall)
{
    using namespace std::chrono;
    const sys_time<microseconds> point{microseconds{wall}};
    const auto days = floor<std::chrono::days>(point);
    const year_month_day date{days};
    const hh_mm_ss time{floor<seconds>(point - days)};
    std::tm local = {};
    local.tm_year = static_cast<int>(date.year()) - 1900;
    local.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    local.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    local.tm_hour = static_cast<int>(time.hours().count());
    local.tm_min = static_cast<int>(time.minutes().count());
    local.tm_sec = static_cast<int>(time.seconds().count());
    local.tm_isdst = -1;
    return std::mktime(&local);
}

LocalInstants localInstants(Micros wall)
{
    const Micros fraction = (wall % kMicrosPerSecond + kMicrosPerSecond) % kMicrosPerSecond;
    const std::int64_t seconds = localSeconds(wall - fraction);
    LocalInstants instants{seconds * kMicrosPerSecond + fraction, seconds * kMicrosPerSecond + fraction};
    constexpr std::int64_t kHour = 3600;
    if (wallAt(seconds - kHour) == wall - fraction)
        instants.first -= kHour * kMicrosPerSecond;
    if (wallAt(seconds + kHour) == wall - fraction)
        instants.last += kHour * kMicrosPerSecond;
    return instants;
}

}  // namespace veltrac
