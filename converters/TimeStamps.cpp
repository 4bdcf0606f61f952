#include "converters/TimeStamps.h"

#include <algorithm>
#include <chrono>
#include <ctime>

#include "converters/WordedDates.h"

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isLetter(char c)
{
    return (c | 0x20) >= 'a' && (c | 0x20) <= 'z';
}

void skipBlanks(std::string_view& text)
{
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
}

// A whole number of `least` to `most` digits.
std::optional<int> takeNumber(std::string_view& text, std::size_t least, std::size_t most)
{
    std::size_t count = 0;
    int number = 0;
    while (count < text.size() && count < most && isDigit(text[count]))
        number = number * 10 + (text[count++] - '0');
    if (count < least || (count < text.size() && isDigit(text[count])))
        return std::nullopt;
    text.remove_prefix(count);
    return number;
}

bool take(std::string_view& text, char c)
{
    if (text.empty() || text.front() != c)
        return false;
    text.remove_prefix(1);
    return true;
}

bool takeWord(std::string_view& text, std::string_view lowerCase)
{
    const auto same = [](char a, char b) { return (a | 0x20) == b; };
    if (text.size() < lowerCase.size() || !std::equal(lowerCase.begin(), lowerCase.end(), text.begin(),
                                                      [&](char want, char has) { return same(has, want); }))
        return false;
    text.remove_prefix(lowerCase.size());
    return true;
}

// Two-digit years as spreadsheets read them: 00 to 68 are 2000 to 2068.
int fullYear(int year, bool twoDigits)
{
    if (!twoDigits)
        return year;
    return year < 69 ? 2000 + year : 1900 + year;
}

// AM and PM behind the hours, also as "a", "p.m." or "p. m."; 12 AM is midnight.
bool applyHalfOfDay(std::string_view& text, int& hours)
{
    std::string_view rest = text;
    skipBlanks(rest);
    const bool morning = takeWord(rest, "a");
    if (!morning && !takeWord(rest, "p"))
        return true;
    take(rest, '.');
    std::string_view second = rest;
    skipBlanks(second);
    if (takeWord(second, "m")) {
        take(second, '.');
        rest = second;
    }
    if (!rest.empty() && isLetter(rest.front()))
        return true;
    if (hours < 1 || hours > 12)
        return false;
    hours = hours % 12 + (morning ? 0 : 12);
    text = rest;
    return true;
}

// "09.58" or "09.58.30", as some countries write the time behind a date.
std::optional<TimeOfDay> takeDottedTime(std::string_view& text)
{
    std::string_view rest = text;
    const auto hours = takeNumber(rest, 1, 2);
    if (!hours || *hours > 24 || !take(rest, '.'))
        return std::nullopt;
    const auto minutes = takeNumber(rest, 2, 2);
    if (!minutes || *minutes > 59)
        return std::nullopt;
    TimeOfDay time;
    time.hasSeconds = take(rest, '.');
    const auto seconds = time.hasSeconds ? takeNumber(rest, 2, 2) : 0;
    if (!seconds || *seconds > 60)
        return std::nullopt;
    time.micros = ((Micros{*hours} * 60 + *minutes) * 60 + *seconds) * kMicrosPerSecond;
    text = rest;
    return time;
}

// Minutes east of Greenwich of the zones' names that mean but one.
std::optional<int> takeNamedZone(std::string_view& text)
{
    static constexpr std::pair<std::string_view, int> kZones[] = {{"utc", 0},  {"gmt", 0},    {"cest", 120},
                                                                  {"cet", 60}, {"mesz", 120}, {"mez", 60}};
    for (const auto& [name, minutes] : kZones)
        if (takeWord(text, name))
            return minutes;
    return std::nullopt;
}

}  // namespace

void takeFraction(std::string_view& text, TimeOfDay& time)
{
    // Behind a third colon stand milliseconds, three digits of them.
    const bool millis = text.size() == 4 && text.front() == ':' && isDigit(text[2]) && isDigit(text[3]);
    const bool marked = text.size() > 1 && (text.front() == '.' || text.front() == ',');
    if ((!millis && !marked) || !isDigit(text[1]))
        return;
    text.remove_prefix(1);
    Micros unit = kMicrosPerSecond / 10;
    while (!text.empty() && isDigit(text.front())) {
        time.micros += unit * (text.front() - '0');
        unit /= 10;
        ++time.fractionDigits;
        text.remove_prefix(1);
    }
}

std::optional<DateParts> takeDate(std::string_view& text)
{
    std::string_view rest = text;
    DateParts date;
    const std::size_t before = rest.size();
    const auto first = takeNumber(rest, 1, 4);
    const std::size_t digits = before - rest.size();
    if (!first || rest.empty() || digits == 3)
        return std::nullopt;
    const char separator = rest.front();
    if (separator != '-' && separator != '.' && separator != '/')
        return std::nullopt;
    rest.remove_prefix(1);
    const auto second = takeNumber(rest, 1, 2);
    if (!second || !take(rest, separator))
        return std::nullopt;
    date.yearFirst = digits == 4;
    date.dayFirst = separator == '.' && !date.yearFirst;
    const std::size_t left = rest.size();
    const auto third = date.yearFirst ? takeNumber(rest, 1, 2) : takeNumber(rest, 2, 4);
    if (!third || left - rest.size() == 3)
        return std::nullopt;
    date.first = *first;
    date.second = *second;
    date.third = date.yearFirst ? *third : fullYear(*third, left - rest.size() == 2);
    text = rest;
    return date;
}

std::optional<TimeOfDay> takeTime(std::string_view& text)
{
    std::string_view rest = text;
    auto hours = takeNumber(rest, 1, 7);
    if (!hours || !take(rest, ':'))
        return std::nullopt;
    const auto minutes = takeNumber(rest, 2, 2);
    if (!minutes || *minutes > 59)
        return std::nullopt;
    TimeOfDay time;
    Micros seconds = 0;
    if (take(rest, ':')) {
        const auto whole = takeNumber(rest, 2, 2);
        if (!whole || *whole > 60)
            return std::nullopt;
        seconds = *whole;
        time.hasSeconds = true;
        takeFraction(rest, time);
    }
    if (!applyHalfOfDay(rest, *hours))
        return std::nullopt;
    time.micros += ((Micros{*hours} * 60 + *minutes) * 60 + seconds) * kMicrosPerSecond;
    text = rest;
    return time;
}

std::optional<int> takeZone(std::string_view& text)
{
    std::string_view rest = text;
    skipBlanks(rest);
    if (take(rest, 'Z')) {
        text = rest;
        return 0;
    }
    if (const auto named = takeNamedZone(rest);
        named && (rest.empty() || (rest.front() != '+' && rest.front() != '-'))) {
        text = rest;
        return named;
    }
    if (rest.empty() || (rest.front() != '+' && rest.front() != '-'))
        return std::nullopt;
    const int sign = rest.front() == '-' ? -1 : 1;
    rest.remove_prefix(1);
    const std::size_t digits =
        static_cast<std::size_t>(std::find_if_not(rest.begin(), rest.end(), isDigit) - rest.begin());
    auto number = takeNumber(rest, 2, 4);
    if (!number || digits == 3)
        return std::nullopt;
    int minutes = digits == 4 ? *number / 100 * 60 + *number % 100 : *number * 60;
    if (digits == 2 && take(rest, ':')) {
        const auto more = takeNumber(rest, 2, 2);
        if (!more)
            return std::nullopt;
        minutes += *more;
    }
    text = rest;
    return sign * minutes;
}

namespace {

// What stands behind a date.
std::optional<Stamp> readBehind(const DateParts& date, std::string_view text)
{
    Stamp stamp{date, std::nullopt, std::nullopt};
    if (text.empty())
        return stamp;
    const bool comma = take(text, ',');
    if (text.empty() || (text.front() != ' ' && text.front() != 'T' && text.front() != '_' && !comma))
        return std::nullopt;
    if (!comma)
        text.remove_prefix(1);
    skipBlanks(text);
    stamp.time = takeTime(text);
    if (!stamp.time)
        stamp.time = takeDottedTime(text);
    if (!stamp.time)
        return std::nullopt;
    skipBlanks(text);
    takeWord(text, "uhr");
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
    skipBlanks(rest);
    takeWord(rest, "uhr");
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

std::optional<Micros> midnight(const DateParts& date, DateOrder order)
{
    using namespace std::chrono;
    const bool dayThenMonth = date.dayFirst || order == DateOrder::DayMonth;
    const int y = date.yearFirst ? date.first : date.third;
    const int m = date.yearFirst ? date.second : dayThenMonth ? date.second : date.first;
    const int d = date.yearFirst ? date.third : dayThenMonth ? date.first : date.second;
    const year_month_day calendar{year{y}, month{static_cast<unsigned>(m)}, day{static_cast<unsigned>(d)}};
    if (!calendar.ok())
        return std::nullopt;
    return Micros{sys_days{calendar}.time_since_epoch().count()} * kMicrosPerDay;
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
