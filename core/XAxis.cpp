#include "core/XAxis.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace veltrac {

namespace {

// Sample numbers stand for times in mode Sample, whatever the source tells.
std::uint32_t rowOfNumber(const Variable& v, double number)
{
    if (!(number >= v.firstRow()))
        return 0;
    return number >= v.rows() ? v.rows() : static_cast<std::uint32_t>(number);
}

}  // namespace

double XAxis::shiftOf(const Variable& v) const
{
    const PlotSource& source = *v.source();
    if (mode == XMode::Sample)
        return source.sampleOf(1) - 1.0 + (v.timeShift == 0.0 ? 0.0 : v.timeShift / source.step());
    // What has no calendar stands at the origin; a series from before 1970 counts from a start of 0.
    return v.timeShift + (source.hasCalendar() ? static_cast<double>(source.startSeconds()) - origin : 0.0);
}

double XAxis::xOf(const Variable& v, std::uint32_t row) const
{
    return (mode == XMode::Sample ? row : v.source()->timeOf(row)) + shiftOf(v);
}

std::uint32_t XAxis::rowAt(const Variable& v, double x) const
{
    const double own = x - shiftOf(v);
    return mode == XMode::Sample ? rowOfNumber(v, own) : v.source()->rowAt(own);
}

std::uint32_t XAxis::rowFrom(const Variable& v, double x) const
{
    const std::uint32_t row = rowAt(v, x);
    if (row == 0)
        return v.firstRow();
    if (xOf(v, row) < x)
        return row + 1;
    if (row == v.firstRow() || xOf(v, row - 1) < x)
        return row;
    // Rows share a time, maybe all of them.
    return std::max(v.firstRow(), rowAt(v, std::nextafter(x, -std::numeric_limits<double>::infinity())) + 1);
}

std::uint32_t XAxis::rowNear(const Variable& v, double x, double tolerance) const
{
    const double own = x - shiftOf(v);
    if (mode != XMode::Sample)
        return v.source()->rowNear(own, tolerance);
    const std::uint32_t row = rowOfNumber(v, own);
    const std::uint32_t bucket = v.source()->bucketRows();
    return tolerance >= bucket && row < v.rows() ? row - row % bucket : row;
}

std::uint32_t XAxis::nearestRow(const Variable& v, double x) const
{
    const std::uint32_t row = rowAt(v, x);
    if (row == 0)
        return v.rows() == 0 ? 0 : v.firstRow();
    if (row == v.rows())
        return row;
    return x - xOf(v, row) <= xOf(v, row + 1) - x ? row : row + 1;
}

double XAxis::toScale(double x) const
{
    return logarithmic ? std::log10(x) : x;
}

double XAxis::fromScale(double position) const
{
    return logarithmic ? std::pow(10.0, position) : position;
}

}  // namespace veltrac
