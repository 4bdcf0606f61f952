// The transform of lengths of every kind, in nanoseconds a point and a radix-2 butterfly (n/2 log2 n of them
// would do it), each beside its floor: the four arrays only copied; and beside the same passes as plain
// strided loops. The last rows give the largest error against a direct sum in long double, as a share of the
// largest value.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>
#include <random>
#include <vector>

#include "calc/mixfft.h"
#include "calc/mixfft_butterflies.h"
#include "calc/mixfft_steps.h"

using namespace veltrac;

namespace {

constexpr double kPi = std::numbers::pi;
constexpr int kMostValues = 40;

struct Arrays
{
    explicit Arrays(int n)
        : xRe(static_cast<std::size_t>(n)), xIm(xRe.size()), yRe(xRe.size()), yIm(xRe.size())
    {
        std::mt19937 random(1);
        for (double& value : xRe)
            value = static_cast<double>(random()) / 4294967296.0 - 0.5;
        for (double& value : xIm)
            value = static_cast<double>(random()) / 4294967296.0 - 0.5;
    }

    std::vector<double> xRe, xIm, yRe, yIm;
};

void count(benchmark::State& state)
{
    const auto n = static_cast<double>(state.range(0));
    using benchmark::Counter;
    state.counters["point"] = Counter(n, Counter::kIsIterationInvariantRate | Counter::kInvert);
    state.counters["butterfly"] =
        Counter(n / 2 * std::log2(n), Counter::kIsIterationInvariantRate | Counter::kInvert);
}

void transform(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    Arrays a(n);
    for ([[maybe_unused]] auto _ : state)
        mixedRadixFft(n, a.xRe.data(), a.xIm.data(), a.yRe.data(), a.yIm.data());
    count(state);
}

void floorCopy(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    Arrays a(n);
    for ([[maybe_unused]] auto _ : state) {
        std::memcpy(a.yRe.data(), a.xRe.data(), sizeof(double) * a.xRe.size());
        std::memcpy(a.yIm.data(), a.xIm.data(), sizeof(double) * a.xIm.size());
        benchmark::ClobberMemory();
    }
    count(state);
}

void plainButterfly(int radix, double* re, double* im, const double* trigRe, const double* trigIm)
{
    switch (radix) {
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
            butterflyOdd(radix, re, im, trigRe, trigIm);
            break;
    }
}

void plainPass(int span, int radix, int groupCount, double* yRe, double* yIm)
{
    using Complex = std::complex<double>;
    double trigRe[kMostValues];
    double trigIm[kMostValues];
    for (int i = 0; i < radix; ++i) {
        trigRe[i] = std::cos(2 * kPi * i / radix);
        trigIm[i] = -std::sin(2 * kPi * i / radix);
    }
    const Complex rotation = std::polar(1.0, -2 * kPi / span / radix);
    Complex twiddle = 1.0;
    double re[kMostValues] = {};
    double im[kMostValues] = {};
    for (int t = 0; t < span; ++t, twiddle *= rotation) {
        Complex powers[kMostValues] = {1.0};
        for (int k = 1; k < radix; ++k)
            powers[k] = powers[k - 1] * twiddle;
        for (int g = 0; g < groupCount; ++g) {
            const int base = g * span * radix + t;
            for (int k = 0; k < radix; ++k) {
                const double r = yRe[base + k * span];
                const double i = yIm[base + k * span];
                re[k] = r * powers[k].real() - i * powers[k].imag();
                im[k] = r * powers[k].imag() + i * powers[k].real();
            }
            plainButterfly(radix, re, im, trigRe, trigIm);
            for (int k = 0; k < radix; ++k) {
                yRe[base + k * span] = re[k];
                yIm[base + k * span] = im[k];
            }
        }
    }
}

void plainLoops(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    Arrays a(n);
    int passCount = 0;
    int radixOf[kMaxPasses];
    int span[kMaxPasses];
    int groups[kMaxPasses];
    for ([[maybe_unused]] auto _ : state) {
        factorLength(n, &passCount, radixOf);
        buildPassTables(span, radixOf, groups, &passCount, &n);
        digitReversal(n, passCount, radixOf, groups, a.xRe.data(), a.xIm.data(), a.yRe.data(), a.yIm.data());
        for (int i = 1; i <= passCount; ++i)
            plainPass(span[i], radixOf[i], n / (span[i] * radixOf[i]), a.yRe.data(), a.yIm.data());
    }
    count(state);
}

void accuracy(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    Arrays a(n);
    for ([[maybe_unused]] auto _ : state)
        mixedRadixFft(n, a.xRe.data(), a.xIm.data(), a.yRe.data(), a.yIm.data());
    double worst = 0;
    double most = 0;
    for (int k = 0; k < n; ++k) {
        std::complex<long double> sum = 0;
        for (int j = 0; j < n; ++j) {
            const auto turns = static_cast<long double>(static_cast<long long>(j) * k % n) / n;
            const auto at = static_cast<std::size_t>(j);
            sum += std::complex<long double>(a.xRe[at], a.xIm[at]) *
                   std::polar(1.0L, -2 * std::numbers::pi_v<long double> * turns);
        }
        const std::complex<double> y(a.yRe[static_cast<std::size_t>(k)], a.yIm[static_cast<std::size_t>(k)]);
        worst = std::max(worst, std::abs(y - std::complex<double>(sum)));
        most = std::max(most, std::abs(y));
    }
    state.counters["error"] = worst / most;
}

void lengths(benchmark::internal::Benchmark* job)
{
    for (const int n : {1 << 10, 1 << 14, 1 << 20, 1000000, 531441, 510510, 37 * 37 * 37, 1 << 24})
        job->Arg(n);
    job->Unit(benchmark::kMillisecond);
}

BENCHMARK(floorCopy)->Apply(lengths);
BENCHMARK(transform)->Apply(lengths);
BENCHMARK(plainLoops)->Apply(lengths);
BENCHMARK(accuracy)->Arg(1000)->Arg(1024)->Arg(1369)->Arg(2187)->Arg(2310)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
