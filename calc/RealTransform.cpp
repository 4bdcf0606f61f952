#include "calc/RealTransform.h"

#include <algorithm>
#include <cstdint>

#include "calc/mixfft_kernels.h"
#include "calc/mixfft_root.h"
#include "calc/mixfft_walk.h"

namespace veltrac {

namespace {

// Factors of the bins of a run, counted from its first one.
struct Rotation
{
    int length = 0;
    alignas(64) double re[kSplitRun];
    alignas(64) double im[kSplitRun];
};

const Rotation& rotationOf(int n)
{
    static Rotation rotation;
    if (rotation.length != n) {
        for (int k = 0; k < kSplitRun; ++k) {
            const FftRoot root(k, n);
            rotation.re[k] = root.re;
            rotation.im[k] = root.im;
        }
        rotation.length = n;
    }
    return rotation;
}

// Makes the transform of `half` pairs that of twice as many samples.
bool split(int half, double* re, double* im, FftMeter& meter)
{
    const Rotation& rotation = rotationOf(2 * half);
    const FftKernel& kernel = fftKernel();
    const int last = (half - 1) / 2;
    for (int first = 1; first <= last; first += kSplitRun) {
        const FftRoot root(first, 2 * std::int64_t{half});
        const double turn[] = {root.re, root.im};
        const int count = std::min(kSplitRun, last - first + 1);
        kernel.split(half, first, count, turn, rotation.re, rotation.im, re, im);
        if (!meter.add(2 * static_cast<std::uint64_t>(count)))
            return false;
    }
    // The bins that are their own mirrors.
    if (half % 2 == 0)
        im[half / 2] = -im[half / 2];
    re[half] = re[0] - im[0];
    im[half] = 0.0;
    re[0] += im[0];
    im[0] = 0.0;
    return meter.add(static_cast<std::uint64_t>(half - 2 * last));
}

}  // namespace

std::size_t realFftRoom(int n)
{
    const auto length = static_cast<std::size_t>(std::max(n, 0));
    return n % 2 == 0 ? length / 2 + 1 : length;
}

bool realFft(int n, const double* x, double* re, double* im, const FftProgress& progress)
{
    if (n < 1)
        return true;
    refuseLongFactors(n);
    if (n % 2 != 0) {
        FftMeter meter(progress, fftSteps(n));
        return transformStaged(n, {FftInput::Form::Real, x, nullptr}, re, im, meter);
    }
    const int half = n / 2;
    FftMeter meter(progress, fftSteps(half) + static_cast<std::uint64_t>(half));
    return transformStaged(half, {FftInput::Form::Pairs, x, nullptr}, re, im, meter) &&
           split(half, re, im, meter);
}

}  // namespace veltrac
