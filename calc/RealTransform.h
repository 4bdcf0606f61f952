// The discrete Fourier transform of real data.
//
// Pairs of samples are taken as complex ones of half the length, and their transform is split into the bins
// of the samples (H. V. Sorensen, D. L. Jones, M. T. Heideman, C. S. Burrus, "Real-valued fast Fourier
// transform algorithms", IEEE Trans. ASSP-35 (1987) 849-863): 16 bytes a sample in all. An odd length has no
// pairs; it goes through the complex transform without an imaginary part.
#pragma once

#include <cstddef>

#include "calc/mixfft.h"

namespace veltrac {

// Doubles that re and im each need for n samples: n / 2 + 1, and n where n is odd.
std::size_t realFftRoom(int n);

// re[k] + i im[k] = sum over j of x[j] exp(-2 pi i j k / n), k = 0 .. n/2, unscaled; the other bins are the
// conjugates of these, and what else there is room for is left undefined.
//
// The arrays are the caller's, must not overlap, and x is not changed. Nothing is allocated. Returns false
// when `progress`, which may be empty, has stopped it. n below 1 does nothing; for the lengths, and for what
// happens at others, see mixedRadixFft(). Shares its tables: one transform at a time, on one thread.
bool realFft(int n, const double* x, double* re, double* im, const FftProgress& progress);

}  // namespace veltrac
