// What stands along a plot's x axis, and how its numbers belong to the rows of variables.
//
// x is a sample's number (mode Sample) or a time since `origin`, in seconds (mode Clock) or `unitSeconds`:
// small numbers, so that a double keeps fine steps of long series.
#pragma once

#include <cstdint>

#include "core/Variable.h"

namespace veltrac {

enum class XMode { Sample, Elapsed, Clock };

struct XAxis
{
    XMode mode = XMode::Elapsed;
    bool logarithmic = false;  // rows whose x is not above 0 are not shown
    double unitSeconds = 1.0;  // in one of x, mode Elapsed; sources may count in others
    std::uint32_t origin = 0;  // seconds since the epoch
    bool dated = false;        // the origin is a date; what has no calendar stands at it

    // Throw the TS exceptions where times have to be read.
    double xOf(const Variable& v, std::uint32_t row) const;
    // From a row to the next; where steps differ, a mean.
    double stepOf(const Variable& v) const;
    // The last row at or before x; 0 where there is none.
    std::uint32_t rowAt(const Variable& v, double x) const;
    // The first row at or after x; rows() + 1 where there is none.
    std::uint32_t rowFrom(const Variable& v, double x) const;
    // As rowAt(), but the answer may be off by samples whose x lies within `tolerance` of x, if that saves
    // reading them.
    std::uint32_t rowNear(const Variable& v, double x, double tolerance) const;
    // Of the rows around x the nearest one; 0 where there are no rows.
    std::uint32_t nearestRow(const Variable& v, double x) const;

    // Distances along the axis: log10 on a logarithmic one.
    double toScale(double x) const;
    double fromScale(double position) const;

private:
    double secondsInX() const noexcept { return mode == XMode::Clock ? 1.0 : unitSeconds; }
    double scaleOf(const Variable& v) const;
    double shiftOf(const Variable& v) const;
};

}  // namespace veltrac
