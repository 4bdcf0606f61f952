// What of a column is transformed, and how.
#pragma once

#include <cstdint>

namespace veltrac {

// F. J. Harris, "On the use of windows for harmonic analysis with the discrete Fourier transform", Proc. IEEE
// 66 (1978), in their periodic form; the flat top is Heinzel's HFT95, off by 0.0044 dB between two bins.
enum class SpectrumWindow { Hann, Rectangular, Hamming, Blackman, BlackmanHarris, FlatTop, Bartlett };
enum class SpectrumTrend { Mean, Line, Nothing };
enum class SpectrumResult {
    Amplitude,
    RmsAmplitude,
    PowerDensity,
    AmplitudeDensity,
    RealImaginary,
    OctaveBands,
    ThirdOctaveBands
};

// A value for each band instead of one for each bin.
constexpr bool hasBands(SpectrumResult result)
{
    return result == SpectrumResult::OctaveBands || result == SpectrumResult::ThirdOctaveBands;
}

inline constexpr int kSpectrumWindows = 7;

struct SpectrumRequest
{
    std::uint32_t column = 1;
    std::uint32_t from = 1;  // samples, both included, the oldest first
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

}  // namespace veltrac
