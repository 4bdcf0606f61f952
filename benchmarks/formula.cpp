// A formula over two columns of a file, beside the same arithmetic written by hand over the same
// TSFILE::value() calls, and the walk over the tree alone, without a file.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "core/TSFILE.h"
#include "formula/FormulaParser.h"

using namespace veltrac;

namespace {

constexpr std::uint32_t kSamples = 1'000'000;
constexpr const char* kFormula = "sqrt(x1^2+x2^2)*sin(2*pi*t)+max(0.4,x1)";
// The same with operands that stand in memory.
constexpr const char* kWithoutFile = "sqrt(t^2+t^2)*sin(2*pi*t)+max(0.4,t)";
constexpr double kTwoPi = 2.0 * 3.141592653589793;

TSFILE& file()
{
    static TSFILE ts((std::filesystem::temp_directory_path() / "veltrac-bench-formula.ts").c_str(), kSamples,
                     2, 0);
    static const bool filled = [] {
        ts.dt(0.001F);
        for (std::uint32_t s = 1; s <= kSamples; ++s) {
            ts.setValue(s, 1, static_cast<float>(std::sin(s * 1e-3)));
            ts.setValue(s, 2, static_cast<float>(std::cos(s * 1e-3)));
        }
        return true;
    }();
    (void)filled;
    return ts;
}

void finish(benchmark::State& state)
{
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kSamples);
}

void byHand(benchmark::State& state)
{
    TSFILE& ts = file();
    const double dt = ts.dt();
    for (auto _ : state) {
        double sum = 0.0;
        for (std::uint32_t s = 1; s <= kSamples; ++s) {
            const double t = (s - 1) * dt;
            const double x1 = ts.value(s, 1);
            const double x2 = ts.value(s, 2);
            sum += std::sqrt(x1 * x1 + x2 * x2) * std::sin(kTwoPi * t) + std::max(0.4, x1);
        }
        benchmark::DoNotOptimize(sum);
    }
    finish(state);
}

void byFormula(benchmark::State& state)
{
    TSFILE& ts = file();
    const double dt = ts.dt();
    FormulaParser parser(kFormula);
    parser.SetSource(&ts, 1, 1);
    parser.SetSource(&ts, 2, 2);
    parser.Compile();
    for (auto _ : state) {
        double sum = 0.0;
        for (std::uint32_t s = 1; s <= kSamples; ++s)
            sum += parser.Evaluate(static_cast<std::int32_t>(s), (s - 1) * dt);
        benchmark::DoNotOptimize(sum);
    }
    finish(state);
}

void byHandWithoutFile(benchmark::State& state)
{
    for (auto _ : state) {
        double sum = 0.0;
        for (std::uint32_t s = 1; s <= kSamples; ++s) {
            const double t = (s - 1) * 0.001;
            sum += std::sqrt(t * t + t * t) * std::sin(kTwoPi * t) + std::max(0.4, t);
        }
        benchmark::DoNotOptimize(sum);
    }
    finish(state);
}

void byTreeWithoutFile(benchmark::State& state)
{
    FormulaParser parser(kWithoutFile);
    parser.Compile();
    for (auto _ : state) {
        double sum = 0.0;
        for (std::uint32_t s = 1; s <= kSamples; ++s)
            sum += parser.Evaluate(static_cast<std::int32_t>(s), (s - 1) * 0.001);
        benchmark::DoNotOptimize(sum);
    }
    finish(state);
}

BENCHMARK(byHand)->Unit(benchmark::kMillisecond);
BENCHMARK(byFormula)->Unit(benchmark::kMillisecond);
BENCHMARK(byHandWithoutFile)->Unit(benchmark::kMillisecond);
BENCHMARK(byTreeWithoutFile)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::filesystem::remove(std::filesystem::temp_directory_path() / "veltrac-bench-formula.ts");
    return 0;
}
