// A formula over two columns of a file, beside the same arithmetic written by hand over the same
// TSFILE::value() calls, and the walk over the tree alone, without a file. Then the whole job of Ts-Edit, the
// old values kept, beside its floor: the same bytes in long runs and the bare arithmetic on arrays.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "core/ScratchFile.h"
#include "core/TSFILE.h"
#include "formula/Calculation.h"
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

constexpr std::uint32_t kJobSamples = 10'000'000;
constexpr const char* kJobFormula = "sqrt(x1^2+x2^2)*1.5";

// Three columns: two sources and the target.
std::filesystem::path jobPath()
{
    static const std::filesystem::path path = [] {
        const auto made = std::filesystem::temp_directory_path() / "veltrac-bench-calculate.ts";
        TSFILE ts(made.c_str(), kJobSamples, 3, 0);
        ts.dt(0.001F);
        std::vector<float> rows(3 * 10000);
        for (std::uint32_t s = 1; s <= kJobSamples; s += 10000) {
            for (std::size_t i = 0; i < rows.size(); ++i)
                rows[i] = static_cast<float>((s + i * 7) % 1000) * 0.01F;
            ts.writeRows(s, 10000, rows.data());
        }
        return made;
    }();
    return path;
}

void wholeJob(benchmark::State& state)
{
    TSFILE ts(jobPath().c_str(), false);
    for (auto _ : state) {
        FormulaParser parser(kJobFormula);
        parser.setTarget(&ts);
        parser.SetSource(&ts, 1, 1);
        parser.SetSource(&ts, 2, 2);
        parser.Compile();
        CalculationReport report;
        calculate(parser, {ts, 3, {1, kJobSamples}, 1, {}}, {}, report);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kJobSamples);
}

// Reads all columns, keeps the old values in a synced file, computes on arrays and writes all columns back.
void wholeJobFloor(benchmark::State& state)
{
    constexpr std::size_t kRunBytes = 256 * 1024;
    constexpr std::size_t kBytes = std::size_t{kJobSamples} * 3 * sizeof(float);
    std::vector<char> bytes(kBytes);
    std::vector<double> x1(kJobSamples);
    std::vector<double> x2(kJobSamples);
    const auto inRuns = [&](int file, std::size_t count, off_t offset, auto transfer) {
        for (std::size_t at = 0; at < count; at += kRunBytes)
            benchmark::DoNotOptimize(transfer(file, bytes.data() + at, std::min(kRunBytes, count - at),
                                              offset + static_cast<off_t>(at)));
    };
    for (auto _ : state) {
        const int file = ::open(jobPath().c_str(), O_RDWR);
        inRuns(file, kBytes, 1024, ::pread);
        const ScratchFile scratch(scratchDirectory(), "veltrac-bench", ".bin");
        const int old = ::open(scratch.path().c_str(), O_RDWR);
        inRuns(old, kBytes / 3, 0, ::pwrite);
        ::fsync(old);
        ::close(old);
        for (std::size_t i = 0; i < kJobSamples; ++i)
            x1[i] = std::sqrt(x1[i] * x1[i] + x2[i] * x2[i]) * 1.5;
        benchmark::DoNotOptimize(x1.data());
        inRuns(file, kBytes, 1024, ::pwrite);
        ::fsync(file);
        ::close(file);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kJobSamples);
}

BENCHMARK(wholeJob)->Unit(benchmark::kMillisecond);
BENCHMARK(wholeJobFloor)->Unit(benchmark::kMillisecond);
BENCHMARK(byHand)->Unit(benchmark::kMillisecond);
BENCHMARK(byFormula)->Unit(benchmark::kMillisecond);
BENCHMARK(byHandWithoutFile)->Unit(benchmark::kMillisecond);
BENCHMARK(byTreeWithoutFile)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    for (const char* const name : {"veltrac-bench-formula.ts", "veltrac-bench-calculate.ts"})
        std::filesystem::remove(std::filesystem::temp_directory_path() / name);
    return 0;
}
