// Dates, times and stamps in text, as loggers and spreadsheets write them.
//
// Times are microseconds of the wall clock since 1970-01-01 00:00, without any zone: daily dates are equal
// steps whatever the daylight saving time does. A zone, where one is written, is told beside.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

using Micros = std::int64_t;
inline constexpr Micros kMicrosPerSecond = 1'000'000;
inline constexpr Micros kMicrosPerDay = 86'400 * kMicrosPerSecond;

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

// Each reads what stands at the beginning of `text` and takes it away; nothing where it is none.
std::optional<DateParts> takeDate(std::string_view& text);  // yyyy-mm-dd, dd.mm.yyyy, d/m/yyyy, …
std::optional<TimeOfDay> takeTime(std::string_view& text);  // hh:mm[:ss[.fff]] [AM|PM]
std::optional<int> takeZone(std::string_view& text);        // Z, +hh:mm, +hhmm, +hh, UTC, CET, MESZ, …
// Adds the decimals that stand behind a second.
void takeFraction(std::string_view& text, TimeOfDay& time);

// The whole text as a stamp: a date, and behind blanks or "T" a time with or without a zone. Months may be
// words, and all may be digits (WordedDates.h).
std::optional<Stamp> readStamp(std::string_view text);
// The whole text as a time or as a date; either may be digits alone.
std::optional<TimeOfDay> readTime(std::string_view text);
std::optional<DateParts> readDate(std::string_view text);
// As readTime(), and "09.58.30": for cells that are known to hold times, since that may be a date elsewhere.
std::optional<TimeOfDay> readClock(std::string_view text);

// "hh:mm:ss" and nothing else, as nearly all loggers write it.
bool readPlainTime(std::string_view text, Micros& micros);

// Midnight of a date; nothing for a day that the calendar lacks.
std::optional<Micros> midnight(const DateParts& date, DateOrder order);
// A date's and time's place on the wall clock; with a zone, that of Greenwich.
std::optional<Micros> wallClock(const Stamp& stamp, DateOrder order);

// The same on the local wall clock, whatever zone is written.
std::optional<Micros> localWallClock(const Stamp& stamp, DateOrder order);

// What the local wall clock shows at a second of the epoch.
Micros wallAt(std::int64_t seconds);
// Seconds since the epoch of a wall clock time in the local zone.
std::int64_t localSeconds(Micros wall);

// The first and the last instant, in microseconds since the epoch, at which the local clock shows this: an
// hour apart where it was set back.
struct LocalInstants
{
    Micros first;
    Micros last;
};
LocalInstants localInstants(Micros wall);
