// The transforms of a column's segments, one after another: what averages, pictures over time and two
// channels are made of.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "calc/SpectrumRequest.h"
#include "calc/SpectrumSamples.h"

class TSFILE;

namespace veltrac {

class SegmentTransform
{
public:
    // Borrows the file. The request is one of segments, of which it holds at least one.
    SegmentTransform(TSFILE& file, const SpectrumRequest& request);

    // Reads segment `s` (from 0), takes its trend away, weighs and transforms it. Returns the mean that was
    // taken away. Throws the TS exceptions.
    double load(std::uint32_t s);

    // Bins 0 to bins(), unscaled, of the segment that was loaded last.
    std::span<const double> re() const noexcept { return {m_re.data(), m_bins + 1U}; }
    std::span<const double> im() const noexcept { return {m_im.data(), m_bins + 1U}; }
    std::uint32_t bins() const noexcept { return m_bins; }

    // Sums of the weights and of their squares.
    double weightSum() const noexcept { return m_sum; }
    double weightSquares() const noexcept { return m_squares; }
    // Of how many independent segments the scatter of an average over `count` overlapping ones is: the
    // weights' correlation with themselves, shifted by whole hops, counts against them (Welch 1967, section
    // "Estimation of power spectra").
    double independent(std::uint32_t count) const;

private:
    SampleReader m_reader;
    std::uint32_t m_from;
    std::uint32_t m_hop;
    std::uint32_t m_bins;
    SpectrumTrend m_trend;
    double m_sum = 0.0;
    double m_squares = 0.0;
    std::vector<double> m_weights;
    std::vector<double> m_samples;
    std::vector<double> m_re;
    std::vector<double> m_im;
};

}  // namespace veltrac
