// Running filters, each beside the same work written by hand for it.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <random>
#include <vector>

#include "filter/fid.h"

namespace {

struct Free
{
    void operator()(void* p) const { std::free(p); }
};
using Filter = std::unique_ptr<FidFilter, Free>;

std::vector<double> makeSignal()
{
    std::mt19937 random(1);
    std::normal_distribution<double> normal;
    std::vector<double> signal(1 << 14);
    for (double& sample : signal)
        sample = normal(random);
    return signal;
}

const std::vector<double> kSignal = makeSignal();

void finish(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kSignal.size()));
}

void run(benchmark::State& state, const char* spec, double rate)
{
    const Filter filter(fid_design(spec, rate, -1, -1, 0, nullptr));
    FidFunc* step = nullptr;
    void* const prepared = fid_run_new(filter.get(), &step);
    void* const buffer = fid_run_newbuf(prepared);
    std::vector<double> out(kSignal.size());
    for (auto _ : state) {
        for (std::size_t t = 0; t < kSignal.size(); ++t)
            out[t] = step(buffer, kSignal[t]);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    fid_run_freebuf(buffer);
    fid_run_free(prepared);
    finish(state);
}

// Transposed direct form II with its state in locals, the count of sections known to the compiler.
template <std::size_t Sections>
void bareCascade(benchmark::State& state, const char* spec)
{
    const Filter filter(fid_design(spec, 1000.0, -1, -1, 0, nullptr));
    std::array<std::array<double, 5>, Sections> c;
    const FidFilter* block = filter.get();
    for (auto& section : c) {
        const double* const a = block->coefficients();
        block = block->next();
        const double* const b = block->coefficients();
        block = block->next();
        section = {b[0], b[1], b[2], a[1], a[2]};
    }
    std::vector<double> out(kSignal.size());
    for (auto _ : state) {
        std::array<std::array<double, 2>, Sections> s{};
        for (std::size_t t = 0; t < kSignal.size(); ++t) {
            double x = kSignal[t];
            for (std::size_t i = 0; i < Sections; ++i) {
                const double y = c[i][0] * x + s[i][0];
                s[i][0] = c[i][1] * x - c[i][3] * y + s[i][1];
                s[i][1] = c[i][2] * x - c[i][4] * y;
                x = y;
            }
            out[t] = x;
        }
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    finish(state);
}

// The dot product of 101 points alone, in eight sums.
void bareWindow(benchmark::State& state)
{
    constexpr std::size_t kPoints = 101;
    const std::vector<double> points(kPoints, 1.0 / kPoints);
    std::vector<double> out(kSignal.size());
    for (auto _ : state) {
        for (std::size_t t = 0; t + kPoints <= kSignal.size(); ++t) {
            std::array<double, 8> sum{};
            std::size_t k = 0;
            for (; k + 8 <= kPoints; k += 8) {
                for (std::size_t i = 0; i < 8; ++i)
                    sum[i] += points[k + i] * kSignal[t + k + i];
            }
            double all = ((sum[0] + sum[1]) + (sum[2] + sum[3])) + ((sum[4] + sum[5]) + (sum[6] + sum[7]));
            for (; k < kPoints; ++k)
                all += points[k] * kSignal[t + k];
            out[t] = all;
        }
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    finish(state);
}

// As run(), many samples a call.
void block(benchmark::State& state, const char* spec, double rate)
{
    const Filter filter(fid_design(spec, rate, -1, -1, 0, nullptr));
    void* const prepared = fid_run_new(filter.get(), nullptr);
    void* const buffer = fid_run_newbuf(prepared);
    std::vector<double> out(kSignal.size());
    for (auto _ : state) {
        out = kSignal;
        fid_run_block(prepared, buffer, out.data(), out.size());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    fid_run_freebuf(buffer);
    fid_run_free(prepared);
    finish(state);
}

void design(benchmark::State& state, const char* spec)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(Filter(fid_design(spec, 1000.0, -1, -1, 1, nullptr)));
}

void bareTwo(benchmark::State& state, const char* spec)
{
    bareCascade<2>(state, spec);
}

void bareFour(benchmark::State& state, const char* spec)
{
    bareCascade<4>(state, spec);
}

BENCHMARK_CAPTURE(bareTwo, floor_of_LpBu4, "LpBu4/40");
BENCHMARK_CAPTURE(run, LpBu4, "LpBu4/40", 1000.0);
BENCHMARK_CAPTURE(block, LpBu4, "LpBu4/40", 1000.0);
BENCHMARK_CAPTURE(bareFour, floor_of_LpBu8, "LpBu8/40");
BENCHMARK_CAPTURE(run, LpBu8, "LpBu8/40", 1000.0);
BENCHMARK_CAPTURE(block, LpBu8, "LpBu8/40", 1000.0);
BENCHMARK_CAPTURE(bareFour, floor_of_BpBe4, "BpBe4/5-40");
BENCHMARK_CAPTURE(run, BpBe4, "BpBe4/5-40", 1000.0);
BENCHMARK_CAPTURE(block, BpBe4, "BpBe4/5-40", 1000.0);
BENCHMARK(bareWindow);
BENCHMARK_CAPTURE(run, window_of_101, "LpHn/7.17", 1000.0);
BENCHMARK_CAPTURE(design, LpBu4, "LpBu4/40");
BENCHMARK_CAPTURE(design, BpBe4, "BpBe4/5-40");
BENCHMARK_CAPTURE(design, BpChZ8, "BpChZ8/-0.1/50-90");

}  // namespace

BENCHMARK_MAIN();
