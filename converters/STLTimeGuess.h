// Where the time of a smart tool log's rows comes from, found out from its first lines.
#pragma once

#include "converters/STLSample.h"

namespace veltrac {

// Makes columns of dates, stamps and times out of numbers whose digits are those (20240312, 202403120958).
void findCompactDates(STLFormat& format, const std::vector<STLRow>& data);

// Where the time comes from, how its dates are meant, and which columns are values then.
void guessTime(STLFormat& format, const std::vector<STLRow>& data);

}  // namespace veltrac
