// What a spectrum shows of the power of a bin.
#pragma once

#include <cmath>
#include <limits>
#include <numbers>

#include "calc/SpectrumRequest.h"

namespace veltrac {

// One value of a result from the power |Y|^2 of a bin of the weighed samples; see calc/Spectrum.h.
class SpectrumScale
{
public:
    // By the sums of the weights and of their squares.
    SpectrumScale(const SpectrumRequest& request, double weightSum, double weightSquares)
        : m_amplitude(1.0 / weightSum),
          m_density(request.dt / weightSquares),
          m_result(request.result),
          m_decibel(request.decibel)
    {
    }

    // 1 / S1
    double amplitude() const noexcept { return m_amplitude; }

    // In decibels NaN for a bin without any power, which has no level.
    double operator()(double power, bool atNyquist) const
    {
        const double c = atNyquist ? 1.0 : 2.0;
        double value = 0.0;
        switch (m_result) {
            case SpectrumResult::PowerDensity:
                value = c * power * m_density;
                return m_decibel ? level(value, 10.0) : value;
            case SpectrumResult::AmplitudeDensity:
                value = std::sqrt(c * power * m_density);
                break;
            case SpectrumResult::RmsAmplitude:
                value = c * std::sqrt(power) * m_amplitude / (atNyquist ? 1.0 : std::numbers::sqrt2);
                break;
            default:
                value = c * std::sqrt(power) * m_amplitude;
                break;
        }
        return m_decibel ? level(value, 20.0) : value;
    }

    // So many times the logarithm; NaN where there is none.
    static double level(double value, double ofTen)
    {
        return value > 0.0 ? ofTen * std::log10(value) : std::numeric_limits<double>::quiet_NaN();
    }

private:
    double m_amplitude;
    double m_density;  // 1 / (fs S2)
    SpectrumResult m_result;
    bool m_decibel;
};

}  // namespace veltrac
