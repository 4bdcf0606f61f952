#include "converters/WordedDates.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <string>

#include "core/Characters.h"

namespace veltrac {

namespace {

// Bytes of letters that are not ASCII count, in UTF-8 and in Windows-1252.
bool isLetter(char c)
{
    return ((c | 0x20) >= 'a' && (c | 0x20) <= 'z') || static_cast<unsigned char>(c) >= 0x80;
}

void skip(std::string_view& text, std::string_view signs)
{
    text.remove_prefix(std::min(text.find_first_not_of(signs), text.size()));
}

// A word in lower case, without what is not ASCII: "März" is "mrz" in both encodings.
std::string takeWord(std::string_view& text)
{
    std::string word;
    while (!text.empty() && isLetter(text.front())) {
        if (static_cast<unsigned char>(text.front()) < 0x80)
            word += static_cast<char>(text.front() | 0x20);
        text.remove_prefix(1);
    }
    return word;
}

struct Digits
{
    int value;
    std::size_t count;
};

std::optional<Digits> takeDigits(std::string_view& text)
{
    Digits digits{0, 0};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), digits.value);
    if (text.empty() || !isDigit(text.front()) || error != std::errc())
        return std::nullopt;
    digits.count = static_cast<std::size_t>(end - text.data());
    text.remove_prefix(digits.count);
    return digits;
}

// 0 where the word is no month: a whole name, or one cut to three letters or more.
int monthOf(const std::string& word)
{
    static constexpr std::array<std::string_view, 12> kMonths = {
        " january januar janvier enero gennaio januari",
        " february februar fvrier febrero febbraio februari",
        " march maerz mrz mars marzo maart mrt",
        " april avril abril aprile",
        " may mai mayo maggio mei maj",
        " june juni juin junio giugno",
        " july juli juillet julio luglio",
        " august aot agosto augustus augusti",
        " september septembre septiembre settembre",
        " october oktober octobre octubre ottobre",
        " november novembre noviembre",
        " december dezember dcembre diciembre dicembre"};
    constexpr std::size_t kShortest = 3;
    if (word == "dc")
        return 12;  // "déc."
    if (word.size() < kShortest)
        return 0;
    const std::string name = ' ' + word;
    const auto* const found = std::find_if(kMonths.begin(), kMonths.end(), [&name](std::string_view names) {
        return names.find(name) != std::string_view::npos;
    });
    return found == kMonths.end() ? 0 : static_cast<int>(found - kMonths.begin()) + 1;
}

// A day of the week before a date says nothing more.
void skipWeekday(std::string_view& text)
{
    // English, German, French, Italian, Spanish, Dutch and northern ones, cut and without what is not ASCII.
    static constexpr std::array<std::string_view, 31> kDays = {
        "mon", "tue", "wed", "thu", "fri", "sat", "sun", "die", "mit", "don", "fre",
        "sam", "son", "sa",  "lun", "mer", "jeu", "ven", "dim", "gio", "dom", "jue",
        "vie", "sb",  "tis", "ons", "tor", "mn",  "lr",  "sn",  "tir"};
    std::string_view rest = text;
    const std::string word = takeWord(rest);
    if (word.empty())
        return;  // most cells are numbers
    bool known = word == "mo" || word == "di" || word == "mi" || word == "do" || word == "fr" || word == "so";
    for (const std::string_view day : kDays)
        known = known || (word.starts_with(day) && word.size() <= 10);
    if (!known || rest.empty() || isLetter(rest.front()))
        return;
    skip(rest, "., ");
    text = rest;
}

DateParts datedBy(int year, int month, int day)
{
    return {year, month, day, true, false};
}

std::optional<DateParts> takeDayMonthYear(std::string_view& text)
{
    std::string_view rest = text;
    const auto day = takeDigits(rest);
    if (!day || day->count > 4 || day->count == 3)
        return std::nullopt;
    skip(rest, day->count == 4 ? "-/ " : "-/. ");
    const int month = monthOf(takeWord(rest));
    if (month == 0)
        return std::nullopt;
    skip(rest, "-/., ");
    const auto last = takeDigits(rest);
    const bool yearFirst = day->count == 4;
    if (!last || (yearFirst ? last->count > 2 : last->count != 2 && last->count != 4))
        return std::nullopt;
    text = rest;
    return yearFirst ? datedBy(day->value, month, last->value)
                     : datedBy(fullYear(last->value, last->count == 2), month, day->value);
}

std::optional<DateParts> takeMonthDayYear(std::string_view& text)
{
    std::string_view rest = text;
    const int month = monthOf(takeWord(rest));
    if (month == 0)
        return std::nullopt;
    skip(rest, "-/. ");
    const auto day = takeDigits(rest);
    if (!day || day->count > 2 || rest.empty())
        return std::nullopt;
    skip(rest, "-/., ");
    const auto year = takeDigits(rest);
    if (!year || year->count != 4)
        return std::nullopt;
    text = rest;
    return datedBy(year->value, month, day->value);
}

std::optional<int> digitsAt(std::string_view text, std::size_t at, std::size_t count)
{
    std::string_view part = text.substr(std::min(at, text.size()), count);
    const auto digits = takeDigits(part);
    return digits && digits->count == count ? std::optional(digits->value) : std::nullopt;
}

// hh, hhmm or hhmmss of so many digits.
std::optional<TimeOfDay> timeOfDigits(std::string_view text, std::size_t count)
{
    const auto hours = digitsAt(text, 0, std::min<std::size_t>(count, 2));
    const auto minutes = count > 2 ? digitsAt(text, 2, 2) : 0;
    const auto seconds = count > 4 ? digitsAt(text, 4, 2) : 0;
    if (!hours || !minutes || !seconds || *hours > 24 || *minutes > 59 || *seconds > 60)
        return std::nullopt;
    TimeOfDay time;
    time.micros = ((Micros{*hours} * 60 + *minutes) * 60 + *seconds) * kMicrosPerSecond;
    time.hasSeconds = count > 4;
    return time;
}

}  // namespace

std::optional<DateParts> takeWordedDate(std::string_view& text)
{
    std::string_view rest = text;
    // Tuesday or March.
    if (std::string_view word = text; takeWord(word) == "mar" && word.starts_with(". ")) {
        word.remove_prefix(2);
        if (const auto dated = takeDayMonthYear(word)) {
            text = word;
            return dated;
        }
    }
    skipWeekday(rest);
    auto date = takeDayMonthYear(rest);
    if (!date)
        date = takeMonthDayYear(rest);
    // "Tue 12.03.2024": the word was the day's alone.
    if (!date && rest.size() != text.size())
        date = takeDate(rest);
    if (date)
        text = rest;
    return date;
}

std::optional<Stamp> takeCTime(std::string_view& text)
{
    std::string_view rest = text;
    skipWeekday(rest);
    auto day = takeDigits(rest);  // "So 22. Nov 01:40:30 CET 2026"
    skip(rest, ". ");
    const int month = monthOf(takeWord(rest));
    skip(rest, " ");
    if (!day && month != 0)
        day = takeDigits(rest);
    skip(rest, " ");
    const auto time = day && month != 0 ? takeTime(rest) : std::nullopt;
    if (!time)
        return std::nullopt;
    const auto zone = takeZone(rest);
    skip(rest, " ");
    const auto year = takeDigits(rest);
    if (!year || year->count != 4 || (!rest.empty() && rest.front() != ' '))
        return std::nullopt;
    text = rest;
    return Stamp{datedBy(year->value, month, day->value), time, zone};
}

std::optional<Stamp> takeWordedStamp(std::string_view& text)
{
    std::string_view rest = text;
    const auto date = takeWordedDate(rest);
    skip(rest, ", ");
    const auto time = date ? takeTime(rest) : std::nullopt;
    if (!time)
        return std::nullopt;
    const auto zone = takeZone(rest);
    text = rest;
    return Stamp{*date, time, zone};
}

// The first week holds the year's first Thursday, the last one its last.
std::optional<DateParts> dateOfWeek(int year, int week, int day)
{
    using namespace std::chrono;
    const auto mondayOfFirst = [](int y) {
        const sys_days fourth = sys_days{std::chrono::year{y} / January / 4};
        return fourth - (weekday{fourth} - Monday);
    };
    const sys_days monday = mondayOfFirst(year) + days{(week - 1) * 7};
    if (week < 1 || monday >= mondayOfFirst(year + 1) || day < 1 || day > 7)
        return std::nullopt;
    const year_month_day date{monday + days{day - 1}};
    return datedBy(static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
                   static_cast<int>(static_cast<unsigned>(date.day())));
}

int monthOfName(std::string_view name)
{
    const int month = monthOf(takeWord(name));
    return name.empty() || name == "." ? month : 0;
}

namespace {

constexpr bool isYear(const std::optional<Digits>& digits)
{
    return digits && digits->count == 4 && digits->value >= 1500 && digits->value <= 2200;
}

// What stands behind a year: "-01", "M01", " Q1", "-W05", "-W05-3", " Jan".
std::optional<DateParts> behindYear(int year, std::string_view rest)
{
    const std::size_t before = rest.size();
    // "1974:01" is a month, "1974:1" a quarter.
    const bool colon = rest.starts_with(':');
    skip(rest, colon ? ":" : "-/ ");
    const bool apart = rest.size() != before;
    const std::string word = takeWord(rest);
    const auto digits = takeDigits(rest);
    if (!digits) {
        const int month = rest.empty() && apart ? monthOf(word) : 0;
        return month == 0 ? std::nullopt : std::optional(datedBy(year, month, 1));
    }
    const int n = digits->value;
    if (word == "w" && digits->count <= 2) {
        skip(rest, "-");
        const auto day = rest.empty() ? Digits{1, 1} : takeDigits(rest).value_or(Digits{0, 0});
        return rest.empty() ? dateOfWeek(year, n, day.value) : std::nullopt;
    }
    if (!rest.empty())
        return std::nullopt;
    if ((word == "q" || (colon && word.empty())) && digits->count == 1 && n >= 1 && n <= 4)
        return datedBy(year, n * 3 - 2, 1);
    const bool month = word == "m" || (word.empty() && apart && digits->count == 2);
    return month && n >= 1 && n <= 12 ? std::optional(datedBy(year, n, 1)) : std::nullopt;
}

}  // namespace

std::optional<DateParts> readPartOfYear(std::string_view text)
{
    if (text.empty())
        return std::nullopt;
    std::string_view rest = text;
    if (isDigit(text.front())) {
        const auto first = takeDigits(rest);
        if (isYear(first))
            return behindYear(first->value, rest);
        // "01/2010", "01-2010", "1Q2010"
        const bool isQuarter = first && first->count == 1 && first->value <= 4 && takeWord(rest) == "q";
        const int month = !first || first->count > 2 ? 0 : isQuarter ? first->value * 3 - 2 : first->value;
        if (!isQuarter && !rest.starts_with('/') && !rest.starts_with('-'))
            return std::nullopt;
        skip(rest, "/- ");
        const auto year = takeDigits(rest);
        return isYear(year) && rest.empty() && month >= 1 && month <= 12
                   ? std::optional(datedBy(year->value, month, 1))
                   : std::nullopt;
    }
    const std::string word = takeWord(rest);
    const bool isCounted = word == "q" || word == "w";
    const int number = isCounted ? takeDigits(rest).value_or(Digits{0, 0}).value : 0;
    const int month = word == "q" ? number * 3 - 2 : monthOf(word);
    skip(rest, "-/., ");
    const auto year = takeDigits(rest);
    if (!isYear(year) || !rest.empty())
        return std::nullopt;
    if (word == "w")
        return dateOfWeek(year->value, number, 1);
    return month >= 1 && month <= 12 ? std::optional(datedBy(year->value, month, 1)) : std::nullopt;
}

std::optional<Stamp> readCompactStamp(std::string_view text)
{
    const auto year = digitsAt(text, 0, 4);
    const auto month = digitsAt(text, 4, 2);
    const auto day = digitsAt(text, 6, 2);
    if (!year || *year < 1900 || *year > 2100 || !month || !day)
        return std::nullopt;
    Stamp stamp{datedBy(*year, *month, *day), std::nullopt, std::nullopt};
    if (!midnight(stamp.date, DateOrder::DayMonth))
        return std::nullopt;
    text.remove_prefix(8);
    if (text.empty())
        return stamp;
    const bool parted = text.front() == 'T' || text.front() == ' ' || text.front() == '_';
    if (parted)
        text.remove_prefix(1);
    if (parted && text.find(':') == 2) {
        stamp.time = takeTime(text);
        stamp.zoneMinutes = takeZone(text);
        return stamp.time && text.empty() ? std::optional(stamp) : std::nullopt;
    }
    const std::size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
    if (count % 2 != 0 || count > 6 || (parted && count < 4))
        return std::nullopt;
    stamp.time = timeOfDigits(text, count);
    if (!stamp.time)
        return std::nullopt;
    text.remove_prefix(count);
    if (parted && count == 6)
        takeFraction(text, *stamp.time);
    stamp.zoneMinutes = takeZone(text);
    return text.empty() && (parted || !stamp.zoneMinutes) ? std::optional(stamp) : std::nullopt;
}

std::optional<TimeOfDay> readCompactTime(std::string_view text)
{
    const bool digits = text.find_first_not_of("0123456789") == std::string_view::npos;
    if (!digits || (text.size() != 1 && text.size() != 2 && text.size() != 4 && text.size() != 6))
        return std::nullopt;
    return timeOfDigits(text, text.size());
}

}  // namespace veltrac
