// The walk through the stages of a transform. Internal to the transform.
#pragma once

#include <cstdint>

#include "calc/mixfft_progress.h"

namespace veltrac {

// Where the input stands.
struct FftInput
{
    enum class Form {
        Complex,  // real and imaginary parts apart
        Real,     // no imaginary part; im is not looked at
        Pairs,    // real and imaginary parts in turn, from re on
    };
    Form form;
    const double* re;
    const double* im;
};

// Steps that the transform adds to its meter.
std::uint64_t fftSteps(int n);

// Ends the process where n has a prime factor above kMaxPrimeFactor, as mixedRadixFft() does.
void refuseLongFactors(int n);

// The transform of n >= 1 values; false when stopped.
bool transformStaged(int n, const FftInput& x, double* yRe, double* yIm, FftMeter& meter);

}  // namespace veltrac
