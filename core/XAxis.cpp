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

// x for each unit of the source's times.
double XAxis::scaleOf(const Variable& v) const
{
    return mode == XMode::Sample ? 1.0 : v.source()->unitSeconds() / secondsInX();
}

double XAxis::shiftOf(const Variable& v) const
{
    const PlotSource& source = *v.source();
    if (mode == XMode::Sample) {
        const double shift = v.timeShift * unitSeconds / source.unitSeconds();
        return source.sampleOf(1) - 1.0 + (shift == 0.0 ? 0.0 : shift / source.step());
    }
    // What has no calendar stands at the origin; a series from before 1970 counts from a start of 0.
    const double behind = source.hasCalendar() ? static_cast<double>(source.startSeconds()) - origin : 0.0;
    return v.timeShift + behind / secondsInX();
}

double XAxis::xOf(const Variable& v, std::uint32_t row) const
{
    return (mode == XMode::Sample ? row : v.source()->timeOf(row) * scaleOf(v)) + shiftOf(v);
}

double XAxis::stepOf(const Variable& v) const
{
    return mode == XMode::Sample ? 1.0 : v.source()->step() * scaleOf(v);
}

std::uint32_t XAxis::rowAt(const Variable& v, double x) const
{
    if (mode == XMode::Sample)
        return rowOfNumber(v, x - shiftOf(v));
    const double scale = scaleOf(v);
    const std::uint32_t row = v.source()->rowAt((x - shiftOf(v)) / scale);
    // The way back from x is not always exact.
    return scale != 1.0 && row < v.rows() && row + 1 >= v.firstRow() && xOf(v, row + 1) <= x ? row + 1 : row;
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
    if (mode != XMode::Sample)
        return v.source()->rowNear((x - shiftOf(v)) / scaleOf(v), tolerance / scaleOf(v));
    const std::uint32_t row = rowOfNumber(v, x - shiftOf(v));
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
