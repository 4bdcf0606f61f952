// Dates, times and stamps in text, as loggers and spreadsheets write them, and what the clock shows then.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "converters/StampParts.h"
#include "core/WallClock.h"

namespace veltrac {

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

// 2010.25 on the wall clock, to a second; or the first of the nearest month. Nothing beyond these years.
inline constexpr double kFirstDecimalYear = 1500.0;
inline constexpr double kLastDecimalYear = 2200.0;
std::optional<Micros> decimalYear(double years, bool inMonths);
// Days as spreadsheets count them, 1 being the last one of 1899, to a millisecond.
std::optional<Micros> serialDay(double days);

// A date's and time's place on the wall clock; with a zone, that of Greenwich.
std::optional<Micros> wallClock(const Stamp& stamp, DateOrder order);

// The same on the local wall clock, whatever zone is written.
std::optional<Micros> localWallClock(const Stamp& stamp, DateOrder order);

}  // namespace veltrac
