#include "filter/fid_window.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace veltrac {

namespace {

using std::numbers::pi;

constexpr double kMaxWidth = 1 << 20;

// F. J. Harris, "On the use of windows for harmonic analysis with the discrete Fourier transform", Proc.
// IEEE 1978, equations 23, 27, 30 and 32; x runs from -1/2 to 1/2.
double windowAt(FidFamily family, double x)
{
    switch (family) {
        case FidFamily::Blackman:
            return 0.42 + 0.5 * std::cos(2 * pi * x) + 0.08 * std::cos(4 * pi * x);
        case FidFamily::Hamming:
            return 0.54 + 0.46 * std::cos(2 * pi * x);
        case FidFamily::Hann:
            return 0.5 + 0.5 * std::cos(2 * pi * x);
        default:
            return 1 - 2 * std::abs(x);
    }
}

// The centre and one side of a window of any real width, in samples. The outermost point counts by the part
// of its sample that the window covers, so that the response changes smoothly with the width even where the
// window (Hamming's) ends above zero.
std::vector<double> halfWindow(FidFamily family, double width)
{
    std::vector<double> half;
    const double side = width / 2;
    for (int k = 0; k < side + 0.5; ++k) {
        const double covered = std::min(1.0, side - k + 0.5);
        const double x = std::min<double>(k, side);
        half.push_back(covered * windowAt(family, x / width));
    }
    while (half.size() > 1 && !(half.back() > 1e-15))
        half.pop_back();
    return half;
}

double halfWindowGain(const std::vector<double>& half, double frequency)
{
    double sum = half[0];
    double weighted = half[0];
    for (std::size_t k = 1; k < half.size(); ++k) {
        sum += 2 * half[k];
        weighted += 2 * half[k] * std::cos(2 * pi * frequency * static_cast<double>(k));
    }
    return weighted / sum;
}

// Regula falsi with the Illinois rule between two widths that enclose half power.
double findWidth(FidFamily family, double frequency, double low, double high)
{
    const auto excess = [&](double width) {
        return halfWindowGain(halfWindow(family, width), frequency) - std::numbers::sqrt2 / 2;
    };
    double atLow = excess(low);
    double atHigh = excess(high);
    double width = high;
    int side = 0;
    for (int i = 0; i < 100 && high - low > 1e-14 * high; ++i) {
        width = (low * atHigh - high * atLow) / (atHigh - atLow);
        const double here = excess(width);
        if (std::abs(here) < 1e-14)
            break;
        if (here > 0) {
            low = width;
            atLow = here;
            if (side > 0)
                atHigh /= 2;
            side = 1;
        } else {
            high = width;
            atHigh = here;
            if (side < 0)
                atLow /= 2;
            side = -1;
        }
    }
    return width;
}

}  // namespace

std::optional<std::vector<double>> makeWindow(FidFamily family, double frequency)
{
    // All of these are at half power where the width is 0.44 (a rectangle) to 0.83 periods (Blackman).
    double low = 0.4 / frequency;
    double high = 1.0 / frequency;
    const auto gain = [&](double width) { return halfWindowGain(halfWindow(family, width), frequency); };
    if (high > kMaxWidth)
        return std::nullopt;
    while (low > 0.5 && gain(low) < std::numbers::sqrt2 / 2)
        low *= 0.8;
    while (gain(high) > std::numbers::sqrt2 / 2)
        high *= 1.2;
    const std::vector<double> half = halfWindow(family, findWidth(family, frequency, low, high));
    std::vector<double> points(half.rbegin(), half.rend());
    points.insert(points.end(), half.begin() + 1, half.end());
    double sum = 0.0;
    for (const double point : points)
        sum += point;
    for (double& point : points)
        point /= sum;
    return points;
}

}  // namespace veltrac
