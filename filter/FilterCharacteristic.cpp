#include "filter/FilterCharacteristic.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

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

class Points
{
public:
    Points(const FidFilter* filter, double samplingHz, bool zeroPhase)
        : m_filter(filter), m_samplingHz(samplingHz), m_zeroPhase(zeroPhase)
    {
    }

    bool isAbove(double fraction) const { return gain(fid_response(m_filter, fraction)) > kHalfPower; }
    // Between two neighbours, one above half power and one not.
    double crossing(double low, double high) const
    {
        const bool above = isAbove(low);
        for (int i = 0; i < 60; ++i) {
            const double middle = (low + high) / 2;
            (isAbove(middle) == above ? low : high) = middle;
        }
        return (low + high) / 2;
    }
    void add(double fraction);
    // Two points at one frequency make the stroke; a third, missing in the marks, ends it.
    void addMark(double fraction);

    FilterCharacteristic made;

private:
    double gain(double once) const { return m_zeroPhase ? once * once : once; }

    const FidFilter* m_filter;
    double m_samplingHz;
    bool m_zeroPhase;
};

void Points::add(double fraction)
{
    double phase = 0.0;
    const double height = gain(fid_response_pha(m_filter, fraction, &phase));
    made.frequencies.push_back(fraction * m_samplingHz);
    made.gain.push_back(static_cast<float>(height));
    made.gainDb.push_back(static_cast<float>(decibels(height)));
    // where nothing passes there is no phase
    made.phase.push_back(height > 0.0 ? static_cast<float>(m_zeroPhase ? 0.0 : phase)
                                      : std::numeric_limits<float>::quiet_NaN());
    made.marks.push_back(std::numeric_limits<float>::quiet_NaN());
    made.marksDb.push_back(std::numeric_limits<float>::quiet_NaN());
}

void Points::addMark(double fraction)
{
    made.halfPower.push_back(fraction * m_samplingHz);
    for (int i = 0; i < 3; ++i)
        add(fraction);
    const std::size_t last = made.marks.size() - 1;
    made.marks[last - 2] = 0.0F;
    made.marksDb[last - 2] = static_cast<float>(kLeastDb);
    made.marks[last - 1] = made.gain[last];
    made.marksDb[last - 1] = made.gainDb[last];
}

}  // namespace

FilterCharacteristic characteristicOf(const FidFilter* filter, double samplingHz, bool zeroPhase)
{
    Points points(filter, samplingHz, zeroPhase);
    double before = 0.0;
    bool wasAbove = points.isAbove(before);
    for (const double fraction : grid()) {
        const bool isAbove = points.isAbove(fraction);
        if (isAbove != wasAbove)
            points.addMark(points.crossing(before, fraction));
        points.add(fraction);
        before = fraction;
        wasAbove = isAbove;
    }
    return std::move(points.made);
}

}  // namespace veltrac
