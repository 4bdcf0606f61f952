// The transform of lengths of every kind, in nanoseconds a point and a radix-2 butterfly (n/2 log2 n of them
// would do it), each beside its floor: the four arrays only copied; and beside the single steps, which are
// plain strided loops. realTransform takes samples without an imaginary part. The last rows give the largest
// error against a direct sum in long double, as a share of the largest value.
// VELTRAC_FFT_KERNEL=baseline|avx2|avx512 (environment) forces a build of the loops.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>
#include <random>
#include <vector>

#include "calc/RealTransform.h"
#include "calc/mixfft.h"
#include "calc/mixfft_steps.h"

using namespace veltrac;

namespace {

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

void singleSteps(benchmark::State& state)
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
            radixPass(span[i], radixOf[i], n / (span[i] * radixOf[i]), a.yRe.data(), a.yIm.data());
    }
    count(state);
}

void realTransform(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const Arrays a(n);
    std::vector<double> re(realFftRoom(n));
    std::vector<double> im(re.size());
    for ([[maybe_unused]] auto _ : state)
        realFft(n, a.xRe.data(), re.data(), im.data(), {});
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
BENCHMARK(singleSteps)->Apply(lengths);
BENCHMARK(realTransform)->Arg(8192)->Arg(1 << 24)->Arg(10'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(accuracy)->Arg(1000)->Arg(1024)->Arg(1369)->Arg(2187)->Arg(2310)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
