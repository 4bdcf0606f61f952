#include "calc/mixfft.h"

#include <cmath>
#include <cstddef>

#include "calc/mixfft_kernels.h"
#include "calc/mixfft_steps.h"

namespace {

constexpr double kPi = 3.141592653589793;
// Values that go through all their passes before the next ones are fetched: half a second-level cache.
constexpr int kBlockLength = 16384;

RadixTables s_tables;

PassKernel bestKernel()
{
#if defined(VELTRAC_FFT_X86)
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq"))
        return radixPassAvx512;
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"))
        return radixPassAvx2;
#endif
    return radixPassBaseline;
}

// By repeated products with the first entry, as the published butterfly has it.
void buildRadixTrig(int radix)
{
    const double angle = 2.0 * kPi / radix;
    double* re = s_tables.trigRe;
    double* im = s_tables.trigIm;
    re[0] = 1.0;
    im[0] = 0.0;
    re[1] = std::cos(angle);
    im[1] = -std::sin(angle);
    for (int i = 2; i < radix; ++i) {
        re[i] = re[1] * re[i - 1] - im[1] * im[i - 1];
        im[i] = im[1] * re[i - 1] + re[1] * im[i - 1];
    }
}

// Runs the passes over y. Blocks that fit the cache take all their passes before the next block is begun:
// a pass only ever joins values of its own group, so each value still meets the passes in their order.
class PassWalker
{
public:
    PassWalker(const int* span, const int* radixOf, double* yRe, double* yIm, const FftProgress* progress,
               std::uint64_t total)
        : m_span(span), m_radixOf(radixOf), m_yRe(yRe), m_yIm(yIm), m_progress(progress), m_total(total)
    {
    }

    // Passes 1 .. pass for the span * radix values from `first`.
    bool walk(int pass, std::ptrdiff_t first)
    {
        const int size = m_span[pass] * m_radixOf[pass];
        if (size <= kBlockLength || pass == 1) {
            for (int i = 1; i <= pass; ++i)
                radixPass(m_span[i], m_radixOf[i], size / (m_span[i] * m_radixOf[i]), m_yRe + first,
                          m_yIm + first);
            return tell(static_cast<std::uint64_t>(size) * static_cast<std::uint64_t>(pass));
        }
        for (int block = 0; block < m_radixOf[pass]; ++block)
            if (!walk(pass - 1, first + static_cast<std::ptrdiff_t>(block) * m_span[pass]))
                return false;
        radixPass(m_span[pass], m_radixOf[pass], 1, m_yRe + first, m_yIm + first);
        return tell(static_cast<std::uint64_t>(size));
    }

    bool tell(std::uint64_t steps)
    {
        m_done += steps;
        return m_progress == nullptr || (*m_progress)(m_done, m_total);
    }

private:
    const int* m_span;
    const int* m_radixOf;
    double* m_yRe;
    double* m_yIm;
    const FftProgress* m_progress;
    std::uint64_t m_done = 0;
    std::uint64_t m_total;
};

bool transform(int n, const double* xRe, const double* xIm, double* yRe, double* yIm,
               const FftProgress* progress)
{
    if (n < 1)
        return true;
    int passCount = 0;
    int radixOf[kMaxPasses];
    int span[kMaxPasses];
    int groups[kMaxPasses];
    factorLength(n, &passCount, radixOf);
    buildPassTables(span, radixOf, groups, &passCount, &n);
    const auto length = static_cast<std::uint64_t>(n);
    PassWalker walker(span, radixOf, yRe, yIm, progress,
                      length * (static_cast<std::uint64_t>(passCount) + 1));
    digitReversal(n, passCount, radixOf, groups, xRe, xIm, yRe, yIm);
    return walker.tell(length) && walker.walk(passCount, 0);
}

}  // namespace

void radixPass(int span, int radix, int groupCount, double* yRe, double* yIm)
{
    static const PassKernel kernel = bestKernel();
    buildRadixTrig(radix);
    kernel(span, radix, groupCount, yRe, yIm, s_tables);
}

void mixedRadixFft(int n, const double* xRe, const double* xIm, double* yRe, double* yIm)
{
    transform(n, xRe, xIm, yRe, yIm, nullptr);
}

bool mixedRadixFft(int n, const double* xRe, const double* xIm, double* yRe, double* yIm,
                   const FftProgress& progress)
{
    return transform(n, xRe, xIm, yRe, yIm, progress ? &progress : nullptr);
}
