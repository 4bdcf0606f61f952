#include "filter/FilterCharacteristic.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace veltrac {

namespace {

constexpr int kPoints = 2000;     // of each spacing
constexpr double kDecades = 5.0;  // that the spacing by factors covers
constexpr double kLeastDb = -200.0;
constexpr double kHalfPower = std::numbers::sqrt2 / 2;

double decibels(double gain)
{
    return std::max(20 * std::log10(gain), kLeastDb);
}

// Fractions of the sampling rate, rising.
std::vector<double> grid()
{
    std::vector<double> points{0.0};
    for (int i = 1; i <= kPoints; ++i) {
        points.push_back(0.5 * i / kPoints);
        points.push_back(0.5 * std::pow(10.0, -kDecades * i / kPoints));
    }
    std::sort(points.begin(), points.end());
    return points;
}

// Between two neighbours, one above half power and one not.
double crossing(const FidFilter* filter, double low, double high)
{
    const bool above = fid_response(filter, low) > kHalfPower;
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2;
        ((fid_response(filter, middle) > kHalfPower) == above ? low : high) = middle;
    }
    return (low + high) / 2;
}

void add(FilterCharacteristic& c, const FidFilter* filter, double fraction, double samplingHz)
{
    double phase = 0.0;
    const double gain = fid_response_pha(filter, fraction, &phase);
    c.frequencies.push_back(fraction * samplingHz);
    c.gain.push_back(static_cast<float>(gain));
    c.gainDb.push_back(static_cast<float>(decibels(gain)));
    // where nothing passes there is no phase
    c.phase.push_back(gain > 0.0 ? static_cast<float>(phase) : std::numeric_limits<float>::quiet_NaN());
    c.marks.push_back(std::numeric_limits<float>::quiet_NaN());
    c.marksDb.push_back(std::numeric_limits<float>::quiet_NaN());
}

// Two points at one frequency make the stroke; a third, missing in the marks, ends it.
void addMark(FilterCharacteristic& c, const FidFilter* filter, double fraction, double samplingHz)
{
    c.halfPower.push_back(fraction * samplingHz);
    for (int i = 0; i < 3; ++i)
        add(c, filter, fraction, samplingHz);
    const std::size_t last = c.marks.size() - 1;
    c.marks[last - 2] = 0.0F;
    c.marksDb[last - 2] = static_cast<float>(kLeastDb);
    c.marks[last - 1] = c.gain[last];
    c.marksDb[last - 1] = c.gainDb[last];
}

}  // namespace

FilterCharacteristic characteristicOf(const FidFilter* filter, double samplingHz)
{
    FilterCharacteristic c;
    double before = 0.0;
    bool wasAbove = fid_response(filter, before) > kHalfPower;
    for (const double fraction : grid()) {
        const bool isAbove = fid_response(filter, fraction) > kHalfPower;
        if (isAbove != wasAbove)
            addMark(c, filter, crossing(filter, before, fraction), samplingHz);
        add(c, filter, fraction, samplingHz);
        before = fraction;
        wasAbove = isAbove;
    }
    return c;
}

}  // namespace veltrac
