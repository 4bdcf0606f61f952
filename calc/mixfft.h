// The discrete Fourier transform of any length whose prime factors are at most 37.
//
// Mixed-radix decimation in time (R. C. Singleton, "An Algorithm for Computing the Mixed Radix Fast
// Fourier Transform", IEEE Trans. Audio Electroacoust. AU-17 (1969) 93-103) with butterflies for 2, 3, 4, 5,
// 8, 9, 10 and any odd prime up to 37, in stages that fit the caches and the vectors of the processor (see
// calc/mixfft_kernels.h).
//
// The work tables are process-wide: one transform at a time, on one thread.
#pragma once

#include "calc/mixfft_progress.h"
#include "calc/mixfft_steps.h"  // for callers that take the steps one by one

namespace veltrac {

// The greatest prime factor that a length may have.
inline constexpr int kMaxPrimeFactor = 37;

// Whether n is at least 1 and has no prime factor above kMaxPrimeFactor.
bool isTransformLength(int n);

}  // namespace veltrac

// y[k] = sum over j of x[j] exp(-2 pi i j k / n), k = 0 .. n-1, unscaled.
//
// x and y are n doubles each, real and imaginary parts apart; they are the caller's, must not overlap, and
// x is not changed. Nothing is allocated. n below 1 does nothing.
// A prime factor above kMaxPrimeFactor prints two lines to standard output and ends the process with exit
// status 1: check a length with isTransformLength() first.
void mixedRadixFft(int n, const double* xRe, const double* xIm, double* yRe, double* yIm);

// The same with progress. Returns false when stopped; y then holds no transform.
bool mixedRadixFft(int n, const double* xRe, const double* xIm, double* yRe, double* yIm,
                   const veltrac::FftProgress& progress);
