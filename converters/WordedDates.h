// Dates whose month is a word, parts of years, and stamps of digits alone: what readStamp() tries last.
#pragma once

#include <optional>
#include <string_view>

#include "converters/StampParts.h"

namespace veltrac {

// "12-Mar-2024", "3 Dec 2023", "12. März 2024", "Mar 12, 2024", "Tue, 12 Mar 2024": English and German names,
// whole or cut to three letters, and those of some neighbours. Reads what stands at the beginning of `text`
// and takes it away, nothing where it is none. The parts come as year, month, day.
std::optional<DateParts> takeWordedDate(std::string_view& text);

// "Tue Mar 12 09:58:00 2024" as C's asctime() writes it, perhaps with a zone before the year; read like
// takeWordedDate().
std::optional<Stamp> takeCTime(std::string_view& text);

// A worded date and a time behind it, perhaps with a zone: "22 Nov 2026 01:40:30 AM UTC", read likewise.
std::optional<Stamp> takeWordedStamp(std::string_view& text);

// The whole text as the beginning of a month, a quarter or a week: "2010-01", "01/2010", "Jan 2010", "2010
// Q1", "2010-W05", "2010-W05-3".
std::optional<DateParts> readPartOfYear(std::string_view text);

// The Monday of a week as ISO 8601 counts them, or another day of it, 1 to 7; nothing where the year has no
// such week.
std::optional<DateParts> dateOfWeek(int year, int week, int day);

// 1 to 12 of a month's name, whole or cut to three letters or more; 0 of any other word.
int monthOfName(std::string_view name);

// The whole text as "20240312T095800Z", "20240312 0958", "20240312095800", "202403120958", "2024031209" or
// "20240312"; nothing for a day or time that there is not.
std::optional<Stamp> readCompactStamp(std::string_view text);

// The whole text as "095800", "0958" or "9" (hours).
std::optional<TimeOfDay> readCompactTime(std::string_view text);

}  // namespace veltrac
