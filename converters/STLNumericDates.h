// Dates and times of the day that stand in a log as plain numbers: parts of a date in columns of their own,
// years with decimals or months, days as spreadsheets count them, hours.
#pragma once

#include <string>

#include "converters/STLSample.h"

namespace veltrac {

// Whether a name says that a column holds times of the day, or dates.
bool namesClock(const std::string& name);
bool saysDate(const std::string& lowerCase);
bool isMonthName(const STLToken& cell);

// The times of the day beside dates, as numbers: hours, perhaps with minutes and seconds in columns of their
// own, or both in one number. The column, or -1.
int findNumericClock(STLFormat& format, const std::vector<STLRow>& data);

// Columns of the year, the month, the day and so on, each called so, whose rows rise.
void findDateParts(STLFormat& format, const std::vector<STLRow>& data);

// Years with decimals or months behind the point, and days of spreadsheets. True where there are any, even
// such as no ts-file can hold.
bool findNumericDate(STLFormat& format, const std::vector<STLRow>& data);

}  // namespace veltrac
