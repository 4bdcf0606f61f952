// The windows that samples are weighed with before a transform.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "calc/SpectrumRequest.h"

const char* spectrumWindowName(SpectrumWindow window);

// A window over m samples, in its periodic form, and its sums.
class WindowShape
{
public:
    WindowShape(SpectrumWindow window, std::uint32_t m);

    // Multiplies samples `first` (from 0), first + 1, … of the m by their weights, and adds these up. Fastest
    // in runs of some thousands.
    void weigh(std::uint32_t first, std::span<double> samples);

    // Of the weights since the last reset, and of their squares.
    double sum() const noexcept { return m_sum; }
    double squares() const noexcept { return m_squares; }
    void resetSums() noexcept { m_sum = m_squares = 0.0; }

private:
    static constexpr std::size_t kTile = 64;

    // Weights first … first + count - 1, at most kTile of them.
    void fill(std::uint32_t first, std::size_t count, double* weights) const;

    SpectrumWindow m_window;
    std::uint32_t m_length;
    std::array<double, kTile> m_cos;  // of the angles of the first samples
    std::array<double, kTile> m_sin;
    double m_sum = 0.0;
    double m_squares = 0.0;
};
