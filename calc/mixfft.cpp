#include "calc/mixfft.h"

#include <cstdlib>
#include <cstring>

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

// The fastest of this name, or of all.
const FftKernel* findKernel(const char* name)
{
    for (const FftKernel* kernel : kKernels)
        if ((name == nullptr || std::strcmp(kernel->name, name) == 0) && runsHere(*kernel))
            return kernel;
    return nullptr;
}

const FftKernel*& kernelInUse()
{
    static const FftKernel* kernel = [] {
        const char* const wish = std::getenv("VELTRAC_FFT_KERNEL");
        const FftKernel* const wished = wish == nullptr ? nullptr : findKernel(wish);
        return wished != nullptr ? wished : findKernel(nullptr);
    }();
    return kernel;
}

}  // namespace

const FftKernel& fftKernel()
{
    return *kernelInUse();
}

bool useFftKernel(const char* name)
{
    const FftKernel* const kernel = findKernel(name);
    if (kernel != nullptr)
        kernelInUse() = kernel;
    return kernel != nullptr;
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
