// The window functions that a series is weighted with before it is transformed.
//
// All are periodic over their length m (value i is w(i / m)), as a transform wants them. Coefficients:
// F. J. Harris, "On the Use of Windows for Harmonic Analysis with the Discrete Fourier Transform", Proc. IEEE
// 66 (1978) 51-83; the flat top: ISO 18431-2 (2004).
#pragma once

#include <array>
#include <span>

enum class WindowKind { Hann, Rectangular, Hamming, Blackman, BlackmanHarris, FlatTop, Bartlett };

// As the user reads them, in the order of the enumeration.
inline constexpr std::array<const char*, 7> kWindowNames = {
    "Hann", "Rectangular", "Hamming", "Blackman", "Blackman-Harris", "Flat top", "Bartlett"};

struct WindowSums
{
    double first = 0.0;   // of the weights: what a sine's amplitude is divided by
    double second = 0.0;  // of their squares: what a power is divided by
};

// Multiplies the values by the window of their number.
WindowSums applyWindow(WindowKind kind, std::span<double> values);
