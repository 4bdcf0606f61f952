// Spectra of a column of a ts-file: lengths, windows, scaling, averaging, peaks. No window of the program.
//
// The scaling is that of G. Heinzel, A. Ruediger, R. Schilling, "Spectrum and spectral density estimation by
// the Discrete Fourier transform" (2002): with the window w over m samples, S1 its sum, S2 the sum of its
// squares and fs the sampling frequency, the amplitude at bin k is c |Y| / S1 and the power density
// c |Y|^2 / (fs S2), where c is 2, and 1 at half the sampling frequency. Averages are P. D. Welch's, "The use
// of Fast Fourier Transform for the estimation of power spectra", IEEE Trans. AU-15 (1967).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "core/Progress.h"
#include "core/TSFILE.h"

// F. J. Harris, "On the use of windows for harmonic analysis with the discrete Fourier transform", Proc. IEEE
// 66 (1978), in their periodic form; the flat top is that of the SR785 analyser's five terms.
enum class SpectrumWindow { Hann, Rectangular, Hamming, Blackman, BlackmanHarris, FlatTop, Bartlett };
enum class SpectrumTrend { Mean, Line, Nothing };
enum class SpectrumResult { Amplitude, RmsAmplitude, PowerDensity, AmplitudeDensity, RealImaginary };

inline constexpr int kSpectrumWindows = 7;
const char* spectrumWindowName(SpectrumWindow window);

struct SpectrumRequest
{
    std::uint32_t column = 1;
    std::uint32_t from = 1;  // samples, both included
    std::uint32_t to = 1;
    SpectrumTrend trend = SpectrumTrend::Mean;
    SpectrumWindow window = SpectrumWindow::Hann;
    bool averaged = false;  // over segments, else the whole range at once
    std::uint32_t segment = 4096;
    int overlapPercent = 50;
    bool pad = false;  // with zeros to a fast length, else shortened to one
    SpectrumResult result = SpectrumResult::Amplitude;
    bool decibel = false;
    bool interpolate = false;  // missing values between their neighbours; else they are none
    double dt = 1.0;           // seconds between samples
};

// What a request comes to.
struct SpectrumPlan
{
    std::uint32_t used = 0;      // samples of the range that take part (of one segment where averaged)
    std::uint32_t length = 0;    // of the transform
    std::uint32_t bins = 0;      // length / 2: bin k stands in sample k, bin 0 in none
    std::uint32_t segments = 1;  // 0 where the range is shorter than one
    double resolution = 0.0;     // Hz
    double highest = 0.0;        // Hz
    std::uint64_t bytes = 0;     // of memory
};

// The greatest length up to m of factors 2, 3 and 5 if it drops at most a thousandth, else the greatest
// without a prime factor above 37; the least of 2, 3 and 5 from m on.
std::uint32_t shortenedLength(std::uint32_t m);
std::uint32_t paddedLength(std::uint32_t m);

SpectrumPlan planSpectrum(const SpectrumRequest& request);

// Sample i of a window of m samples.
double windowSample(SpectrumWindow window, std::uint32_t i, std::uint32_t m);

// How many samples of the range are missing (NaN or infinite).
JobOutcome countMissing(TSFILE& file, const SpectrumRequest& request, std::uint64_t& missing,
                        const Progress& progress);

// The least, greatest and mean step of a file with a "Time" column; all dt without one.
struct StepRange
{
    double least = 0.0;
    double greatest = 0.0;
    double mean = 0.0;
};
JobOutcome readSteps(TSFILE& file, std::uint32_t from, std::uint32_t to, StepRange& steps,
                     const Progress& progress);

// Computes the spectrum and writes it into `target`: plan.bins samples of three columns, "Freq" in Hz, the
// result, and the phase in degrees (or "Re" and "Im"); averages have two columns. Holds four arrays of
// plan.length doubles and no more. `mean` gets the mean of the samples that took part.
// Throws the TS exceptions and std::bad_alloc.
JobOutcome computeSpectrum(TSFILE& source, const SpectrumRequest& request, TSFILE& target, double& mean,
                           const Progress& progress);

// Columns of the target: 2 or 3.
std::uint32_t spectrumColumns(const SpectrumRequest& request);

// A local maximum of a spectrum, refined by the parabola through its three bins. The flat top window needs
// that for the frequency alone: its highest bin is the amplitude already.
struct SpectrumPeak
{
    double frequency = 0.0;  // Hz
    double value = 0.0;
    std::uint32_t bin = 0;
};
// The `count` highest, highest first, of a column (from 1) of a spectrum file.
std::vector<SpectrumPeak> findPeaks(TSFILE& spectrum, std::uint32_t column, std::size_t count,
                                    SpectrumWindow window);
// The highest bin beside each multiple 1, 2, … of a frequency, up to the end of the spectrum.
std::vector<SpectrumPeak> findHarmonics(TSFILE& spectrum, std::uint32_t column, double frequency,
                                        std::size_t count, SpectrumWindow window);
