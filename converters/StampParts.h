// The parts of dates and stamps in text, each read at its beginning.
//
// Times are microseconds of the wall clock since 1970-01-01 00:00, without any zone: daily dates are equal
// steps whatever the daylight saving time does. A zone, where one is written, is told beside.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "core/WallClock.h"

namespace veltrac {

// How the three numbers of a date with "/" or "-" are meant; "2016-05-17" and "17.05.2016" tell themselves.
enum class DateOrder { DayMonth, MonthDay };

struct DateParts
{
    int first = 0;
    int second = 0;
    int third = 0;
    bool yearFirst = false;
    bool dayFirst = false;  // written with dots
};

struct TimeOfDay
{
    Micros micros = 0;       // may exceed a day: elapsed hours
    int fractionDigits = 0;  // written behind the second
    bool hasSeconds = false;
};

struct Stamp
{
    DateParts date;
    std::optional<TimeOfDay> time;
    std::optional<int> zoneMinutes;  // east of Greenwich; 0 for "Z"
};

// A date or time without the brackets around it, and without a colon or comma behind it.
std::string_view unframed(std::string_view text);

// Each reads what stands at the beginning of `text` and takes it away; nothing where it is none.
std::optional<DateParts> takeDate(std::string_view& text);  // yyyy-mm-dd, dd.mm.yyyy, d/m/yyyy, …
std::optional<TimeOfDay> takeTime(std::string_view& text);  // hh:mm[:ss[.fff]] [AM|PM]
std::optional<int> takeZone(std::string_view& text);        // Z, +hh:mm, +hhmm, +hh, UTC, CET, MESZ, …
// What a cell of its own behind a time says: its zone, perhaps behind the decimals of the second, "+0100" and
// "415465127+00:00".
struct StampTail
{
    Micros fraction = 0;
    int fractionDigits = 0;
    int zoneMinutes = 0;
};
std::optional<StampTail> readStampTail(std::string_view text);
// Adds the decimals that stand behind a second.
void takeFraction(std::string_view& text, TimeOfDay& time);
// "09.58" or "09.58.30", as some countries write the time behind a date.
std::optional<TimeOfDay> takeDottedTime(std::string_view& text);
// Passes over blanks and an "Uhr" behind them.
void skipUhr(std::string_view& text);

// Two-digit years as spreadsheets read them: 00 to 68 are 2000 to 2068.
int fullYear(int year, bool twoDigits);

// Midnight of a date; nothing for a day that the calendar lacks.
std::optional<Micros> midnight(const DateParts& date, DateOrder order);

}  // namespace veltrac
