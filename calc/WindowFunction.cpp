#include "calc/WindowFunction.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

// Cosines of 0, 1, 2, … times the angle; the odd ones are subtracted.
struct CosineSum
{
    std::array<double, 5> terms;
};

// The kinds in the order of the enumeration; Bartlett is no sum of cosines.
constexpr std::array<CosineSum, 6> kSums = {{
    {{0.5, 0.5, 0.0, 0.0, 0.0}},
    {{1.0, 0.0, 0.0, 0.0, 0.0}},
    {{0.54, 0.46, 0.0, 0.0, 0.0}},
    {{0.42, 0.5, 0.08, 0.0, 0.0}},
    {{0.35875, 0.48829, 0.14128, 0.01168, 0.0}},
    {{0.21557895, 0.41663158, 0.277263158, 0.083578947, 0.006947368}},
}};

// Weights between two fresh cosines: the rotation between them stays exact to a few units of the last place.
constexpr std::size_t kRun = 64;

double weightOf(const CosineSum& sum, double cosine)
{
    // cos(k a) by Chebyshev's recurrence.
    const double c2 = 2.0 * cosine * cosine - 1.0;
    const double c3 = cosine * (2.0 * c2 - 1.0);
    const double c4 = 2.0 * c2 * c2 - 1.0;
    return sum.terms[0] - sum.terms[1] * cosine + sum.terms[2] * c2 - sum.terms[3] * c3 + sum.terms[4] * c4;
}

class Weighting
{
public:
    void take(double& value, double weight)
    {
        value *= weight;
        m_sums.first += weight;
        m_sums.second += weight * weight;
    }
    const WindowSums& sums() const { return m_sums; }

private:
    WindowSums m_sums;
};

}  // namespace

WindowSums applyWindow(WindowKind kind, std::span<double> values)
{
    const std::size_t m = values.size();
    const auto length = static_cast<double>(m);
    Weighting weighting;
    if (kind == WindowKind::Bartlett) {
        for (std::size_t i = 0; i < m; ++i)
            weighting.take(values[i], 1.0 - std::fabs(2.0 * static_cast<double>(i) / length - 1.0));
        return weighting.sums();
    }
    const CosineSum& sum = kSums[static_cast<std::size_t>(kind)];
    const double angle = 2.0 * std::numbers::pi / length;
    const double stepCos = std::cos(angle);
    const double stepSin = std::sin(angle);
    for (std::size_t first = 0; first < m; first += kRun) {
        double cosine = std::cos(angle * static_cast<double>(first));
        double sine = std::sin(angle * static_cast<double>(first));
        for (std::size_t i = first; i < std::min(first + kRun, m); ++i) {
            weighting.take(values[i], weightOf(sum, cosine));
            const double next = cosine * stepCos - sine * stepSin;
            sine = sine * stepCos + cosine * stepSin;
            cosine = next;
        }
    }
    return weighting.sums();
}
