#include "calc/mixfft_steps.h"

#include <cstddef>

#include "calc/mixfft_butterflies.h"
#include "calc/mixfft_root.h"

namespace {

constexpr int kMostValues = 40;

void applyButterfly(int radix, double* re, double* im, const double* trigRe, const double* trigIm)
{
    switch (radix) {
        case 1:
            break;
        case 2:
            butterfly2(re, im);
            break;
        case 3:
            butterfly3(re, im);
            break;
        case 4:
            butterfly4(re, im);
            break;
        case 5:
            butterfly5(re, im);
            break;
        case 8:
            butterfly8(re, im);
            break;
        case 10:
            butterfly10(re, im);
            break;
        default:
            butterflyOdd<double, 0>(radix, re, im, trigRe, trigIm);
            break;
    }
}

// By repeated products with the first entry, as the published butterfly has it.
void buildPowers(int count, const veltrac::FftRoot& first, double* re, double* im)
{
    re[0] = 1.0;
    im[0] = 0.0;
    for (int k = 1; k < count; ++k) {
        re[k] = re[k - 1];
        im[k] = im[k - 1];
        turn(re[k], im[k], first.re, first.im);
    }
}

}  // namespace

void digitReversal(int n, int passCount, const int* radixOf, const int* groups, const double* xRe,
                   const double* xIm, double* yRe, double* yIm)
{
    int count[veltrac::kMaxPasses] = {};
    std::ptrdiff_t p = 0;
    for (int k = 0; k < n - 1; ++k) {
        yRe[k] = xRe[p];
        yIm[k] = xIm[p];
        int j = 1;
        p += groups[1];
        ++count[1];
        while (count[j] >= radixOf[j] && j < passCount) {
            count[j] = 0;
            p += groups[j + 1] - groups[j - 1];
            ++count[++j];
        }
    }
    yRe[n - 1] = xRe[n - 1];
    yIm[n - 1] = xIm[n - 1];
}

void radixPass(int span, int radix, int groupCount, double* yRe, double* yIm)
{
    const std::ptrdiff_t groupSize = std::ptrdiff_t{span} * radix;
    double trigRe[kMostValues];
    double trigIm[kMostValues];
    buildPowers(radix, veltrac::FftRoot(1, radix), trigRe, trigIm);
    double turnRe[kMostValues];
    double turnIm[kMostValues];
    double re[kMostValues] = {};
    double im[kMostValues] = {};
    for (int t = 0; t < span; ++t) {
        // From a fresh cosine and sine: turned on from the one before, they would drift over a long span.
        buildPowers(radix, veltrac::FftRoot(t, groupSize), turnRe, turnIm);
        for (int g = 0; g < groupCount; ++g) {
            const std::ptrdiff_t base = g * groupSize + t;
            for (int k = 0; k < radix; ++k) {
                re[k] = yRe[base + std::ptrdiff_t{k} * span];
                im[k] = yIm[base + std::ptrdiff_t{k} * span];
                if (t > 0)
                    turn(re[k], im[k], turnRe[k], turnIm[k]);
            }
            applyButterfly(radix, re, im, trigRe, trigIm);
            for (int k = 0; k < radix; ++k) {
                yRe[base + std::ptrdiff_t{k} * span] = re[k];
                yIm[base + std::ptrdiff_t{k} * span] = im[k];
            }
        }
    }
}
