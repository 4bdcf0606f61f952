// The windows that samples are weighed with before a transform.
#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <span>

#include "calc/SpectrumRequest.h"

namespace veltrac {

const char* spectrumWindowName(SpectrumWindow window);

// The transform of a window over m samples, referred to the first of them, at a frequency of x periods in the
// m samples; 1 at 0. In closed form: sums of the transform of the rectangle (Harris 1978, equation 20).
std::complex<double> windowTransform(SpectrumWindow window, std::uint32_t m, double x);

// A window over m samples, in its periodic form, and its sums.
class WindowShape
{
public:
    WindowShape(SpectrumWindow window, std::uint32_t m);

    // The weights `first` (from 0), first + 1, … of the m; adds them up. Fastest in runs of some thousands.
    void fill(std::uint32_t first, std::span<double> weights);

    // Of all weights so far, and of their squares.
    double sum() const noexcept { return m_sum; }
    double squares() const noexcept { return m_squares; }

private:
    static constexpr std::size_t kTile = 64;

    // At most kTile of them.
    void fillTile(std::uint32_t first, std::span<double> weights) const;

    SpectrumWindow m_window;
    std::uint32_t m_length;
    std::array<double, kTile> m_cos;  // of the angles of the first samples
    std::array<double, kTile> m_sin;
    double m_sum = 0.0;
    double m_squares = 0.0;
};

}  // namespace veltrac
