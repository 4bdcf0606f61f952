// The spectrum of a stretch of one column. No window, no texts.
//
// With Y the transform of the weighted samples, S1 and S2 the sums of the weights and their squares, fs the
// sample frequency and c = 2 (1 at bin n/2, which has no mirror image):
//   amplitude      A = c |Y| / S1, so that a sine of amplitude 3 on a bin reads 3 with every window;
//   RMS amplitude  A / sqrt(2), at bin n/2 A;
//   power density  P = c |Y|^2 / (fs S2), whose sum times the resolution is the variance;
//   amplitude density sqrt(P).
// Segments give the mean of P, or the root of the mean of A^2: P. D. Welch, "The Use of Fast Fourier Transform
// for the Estimation of Power Spectra", IEEE Trans. Audio Electroacoust. AU-15 (1967) 70-73.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "calc/SpectrumPlan.h"
#include "core/ColumnScan.h"
#include "core/Progress.h"

class TSFILE;

// What stands in a range before it is transformed.
struct RangeContents
{
    std::uint32_t missing = 0;  // values that are no finite numbers
    double mean = 0.0;          // of the others; NaN where there is none
};

// Reads samples first to last.
JobOutcome scanRange(const ColumnReader& read, std::uint32_t first, std::uint32_t last,
                     const Progress& progress, RangeContents& out);

// Takes the mean, or the line of least squares, out of the values.
void removeTrend(Trend trend, std::span<double> values);

// Bins 1 to bins(); what stands at 0 is the mean, and nobody's spectrum.
class Spectrum
{
public:
    Spectrum() = default;

    // Missing values are replaced by the line between their neighbours, at the ends by the nearest value.
    // The plan has no problem. Holds four arrays of plan.length doubles while it works, two of them (or one
    // half) afterwards. What `read` throws passes through, std::bad_alloc too.
    JobOutcome compute(const ColumnReader& read, const SpectrumRequest& request, const SpectrumPlan& plan,
                       const Progress& progress);

    std::uint32_t bins() const noexcept { return m_plan.bins(); }
    double frequency(double bin) const { return bin * m_plan.resolution(); }
    const SpectrumPlan& plan() const noexcept { return m_plan; }
    const SpectrumRequest& request() const noexcept { return m_request; }

    // As the request wants it, in decibels too; of Complex the amplitude. A bin of no power at all has no
    // decibels: NaN.
    double value(std::uint32_t bin) const;
    // Of the whole range only: the phase in degrees against a cosine that begins with the first sample, and
    // the real and imaginary part, scaled as the amplitude.
    bool hasPhase() const noexcept { return m_request.method == SpectrumMethod::WholeRange; }
    double phase(std::uint32_t bin) const;
    double real(std::uint32_t bin) const;
    double imaginary(std::uint32_t bin) const;

private:
    bool isMirrorless(std::uint32_t bin) const;
    double scale(std::uint32_t bin) const;
    // |Y|^2, for segments their mean.
    double squared(std::uint32_t bin) const;
    JobOutcome transformWhole(const ColumnReader& read, const Progress& progress);
    JobOutcome averageSegments(const ColumnReader& read, const Progress& progress);

    SpectrumRequest m_request;
    SpectrumPlan m_plan;
    WindowSums m_sums;
    std::vector<double> m_re;
    std::vector<double> m_im;
    std::vector<double> m_mean;  // of |Y|^2 over the segments
};

// Fills a file of bins() samples and columnsOf() columns: the frequency, the value and the phase, or the
// real and the imaginary part. Throws the TS exceptions.
std::uint32_t columnsOf(const Spectrum& spectrum);
JobOutcome writeSpectrum(const Spectrum& spectrum, TSFILE& file, const Progress& progress);

// A line of the spectrum that stands above its neighbours.
struct SpectrumPeak
{
    double frequency = 0.0;  // between bins: the top of the parabola through three of them
    double value = 0.0;
};

// The `count` highest ones, the highest first.
std::vector<SpectrumPeak> highestPeaks(const Spectrum& spectrum, std::size_t count);
