#include "calc/mixfft.h"

#include <cstdlib>
#include <cstring>
#include <iterator>

#include "calc/mixfft_kernels.h"
#include "calc/mixfft_walk.h"

namespace veltrac {

namespace {

bool runsHere([[maybe_unused]] const FftKernel& kernel)
{
#if defined(VELTRAC_FFT_X86)
    if (&kernel == &kFftAvx512)
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq");
    if (&kernel == &kFftAvx2)
        return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
#endif
    return true;
}

// From the fastest.
const FftKernel* const kKernels[] = {
#if defined(VELTRAC_FFT_X86)
    &kFftAvx512, &kFftAvx2,
#endif
    &kFftBaseline};

const FftKernel*& kernelInUse()
{
    static const FftKernel* kernel = &fftKernelNamed(std::getenv("VELTRAC_FFT_KERNEL"));
    return kernel;
}

}  // namespace

const FftKernel& fftKernelNamed(const char* name)
{
    const FftKernel* fastest = &kFftBaseline;  // which runs everywhere
    // The slowest first.
    for (auto kernel = std::rbegin(kKernels); kernel != std::rend(kKernels); ++kernel) {
        if (!runsHere(**kernel))
            continue;
        if (name != nullptr && std::strcmp((*kernel)->name, name) == 0)
            return **kernel;
        fastest = *kernel;
    }
    return *fastest;
}

const FftKernel& fftKernel()
{
    return *kernelInUse();
}

void useFftKernel(const FftKernel& kernel)
{
    kernelInUse() = &kernel;
}

}  // namespace veltrac

bool mixedRadixFft(int n, const double* xRe, const double* xIm, double* yRe, double* yIm,
                   const veltrac::FftProgress& progress)
{
    if (n < 1)
        return true;
    veltrac::refuseLongFactors(n);
    veltrac::FftMeter meter(progress, veltrac::fftSteps(n));
    return veltrac::transformStaged(n, {veltrac::FftInput::Form::Complex, xRe, xIm}, yRe, yIm, meter);
}

void mixedRadixFft(int n, const double* xRe, const double* xIm, double* yRe, double* yIm)
{
    mixedRadixFft(n, xRe, xIm, yRe, yIm, veltrac::FftProgress());
}
