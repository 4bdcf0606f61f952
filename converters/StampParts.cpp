#include "converters/StampParts.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <utility>

#include "core/Characters.h"

namespace veltrac {

namespace {

bool isLatinLetter(char c)
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
    if (!rest.empty() && isLatinLetter(rest.front()))
        return true;
    if (hours < 1 || hours > 12)
        return false;
    hours = hours % 12 + (morning ? 0 : 12);
    text = rest;
    return true;
}

// Minutes east of Greenwich of the zones' names that mean but one.
std::optional<int> takeNamedZone(std::string_view& text)
{
    static constexpr std::pair<std::string_view, int> kZones[] = {
        {"utc", 0},    {"gmt", 0},    {"cest", 120}, {"cet", 60},   {"mesz", 120}, {"mez", 60},
        {"eest", 180}, {"eet", 120},  {"west", 60},  {"wet", 0},    {"est", -300}, {"edt", -240},
        {"cst", -360}, {"cdt", -300}, {"mst", -420}, {"mdt", -360}, {"pst", -480}, {"pdt", -420}};
    std::string_view rest = text;
    for (const auto& [name, minutes] : kZones)
        if (takeWord(rest, name) && (rest.empty() || !isLatinLetter(rest.front()))) {
            text = rest;
            return minutes;
        } else {
            rest = text;
        }
    return std::nullopt;
}

}  // namespace

std::string_view unframed(std::string_view text)
{
    while (text.ends_with(':') || text.ends_with(','))
        text.remove_suffix(1);
    if (text.size() > 2 &&
        ((text.front() == '[' && text.back() == ']') || (text.front() == '(' && text.back() == ')')))
        text = text.substr(1, text.size() - 2);
    return text;
}

int fullYear(int year, bool twoDigits)
{
    if (!twoDigits)
        return year;
    return year < 69 ? 2000 + year : 1900 + year;
}

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

std::optional<StampTail> readStampTail(std::string_view text)
{
    StampTail tail;
    Micros unit = kMicrosPerSecond / 10;
    for (; !text.empty() && isDigit(text.front()); text.remove_prefix(1)) {
        tail.fraction += unit * (text.front() - '0');
        unit /= 10;
        ++tail.fractionDigits;
    }
    const bool sign = !text.empty() && (text.front() == '+' || text.front() == '-');
    const auto zone = takeZone(text);
    if (!zone || !text.empty() || (tail.fractionDigits != 0 && tail.fractionDigits % 3 != 0) ||
        (sign && std::abs(*zone) > 14 * 60))
        return std::nullopt;
    tail.zoneMinutes = *zone;
    return tail;
}

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

void skipUhr(std::string_view& text)
{
    skipBlanks(text);
    takeWord(text, "uhr");
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

}  // namespace veltrac
