// Where the ticks of an axis stand and what is written at them: plain functions in double precision, without
// a driver. BasicDriver draws what they return.
#pragma once

#include "share/Ticks.h"

namespace veltrac {

// The axis may run either way; a NaN, an infinite or an empty range gives no ticks. In all of them the
// labels that are given do not overlap in the room.

// Steps of 1, 2 or 5 times a power of ten, the finest whose labels fit. Labels have no trailing zeros;
// numbers that would be very long because they are large or small share a power of ten (a multiple of 3).
AxisTicks linearTicks(double first, double last, const LabelRoom& room);

// The axis from 10^first to 10^last: decades with minor ticks at 2 to 9; every k-th decade is labelled where
// room is short. Less than a decade in view gets linear steps at their logarithmic places.
AxisTicks logTicks(double first, double last, const LabelRoom& room);

enum class ClockZone { Local, Utc };

// The axis in seconds since 1970-01-01 00:00 UTC: steps of 1, 2, 5 times a power of ten below a second, then
// 1, 2, 5, 10, 15, 30 s and min, 1, 2, 3, 6, 12 h, 1, 2, 5, 10, 15 days of a month, 1, 2, 3, 6 months, 1, 2,
// 5 times a power of ten years, at round places of the calendar. Labels show the part that changes from tick
// to tick; edgeText is the full date (and time, where labels are finer than minutes) at the left edge.
AxisTicks clockTicks(double first, double last, const LabelRoom& room, ClockZone zone = ClockZone::Local);

}  // namespace veltrac
