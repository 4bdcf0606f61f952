// Whole jobs over long columns, from the file to the file, each beside its floor: the same bytes in long
// runs, and for the filter the bare cascade. The files stay in the page cache.
#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "benchmarks/LongRuns.h"
#include "calc/Calculus.h"
#include "core/ColumnScan.h"
#include "core/CopyFile.h"
#include "core/SourceColumn.h"
#include "core/TSFILE.h"
#include "filter/FilterRun.h"

using namespace veltrac;

namespace {

constexpr std::uint32_t kSamples = 50'000'000;
constexpr std::size_t kColumnBytes = std::size_t{kSamples} * sizeof(float);

std::string scratch(const char* name)
{
    return (std::filesystem::temp_directory_path() / name).string();
}

// A column of source values; `columns` 2 leaves room for results.
std::string fileOf(std::uint32_t columns)
{
    const std::string path = scratch(columns == 1 ? "veltrac-bench-job-1.ts" : "veltrac-bench-job-2.ts");
    if (std::filesystem::exists(path))
        return path;
    TSFILE file(path.c_str(), kSamples, columns, 0);
    file.dt(0.001F);
    std::vector<float> run(1 << 15);
    for (std::uint32_t first = 1; first <= kSamples; first += 1 << 15) {
        run.resize(std::min<std::size_t>(run.size(), kSamples - first + 1));
        for (std::size_t i = 0; i < run.size(); ++i)
            run[i] = static_cast<float>(std::sin(0.01 * static_cast<double>((first + i) % 100'000)));
        file.writeColumn(1, first, run);
    }
    file.flush(true);
    return path;
}

void scanTransfers(benchmark::State& state)
{
    longRuns(state, fileOf(1), kColumnBytes, false);
}

void scanFloor(benchmark::State& state)
{
    summaryFloor(state, fileOf(1), kColumnBytes);
}

// The list window's maximum, minimum and average.
void scan(benchmark::State& state)
{
    TSFILE file(fileOf(1).c_str(), true);
    for (auto _ : state) {
        ColumnExtremes extremes;
        scanColumn(columnReader(file, 1), kSamples, {}, extremes);
        benchmark::DoNotOptimize(extremes);
    }
}

void calculusFloor(benchmark::State& state)
{
    const std::string made = scratch("veltrac-bench-job-floor.bin");
    moveInLongRuns(made, 2 * kColumnBytes, true);
    for (auto _ : state) {
        moveInLongRuns(made, 2 * kColumnBytes, false);
        moveInLongRuns(made, 2 * kColumnBytes, true);
    }
    std::filesystem::remove(made);
}

void derivative(benchmark::State& state)
{
    TSFILE work(fileOf(2).c_str(), false);
    const SourceColumn source(work, 1);
    for (auto _ : state)
        differentiate(source, work, Steps::Equal, {});
}

void integral(benchmark::State& state)
{
    TSFILE work(fileOf(2).c_str(), false);
    const SourceColumn source(work, 1);
    for (auto _ : state)
        integrate(source, work, Steps::Equal, {});
}

// The sum of the areas with what it rounds away, in memory: one addition waits for the other.
void integralSums(benchmark::State& state)
{
    std::vector<float> samples(1 << 15, 1.0F);
    for (auto _ : state) {
        double sum = 0.0;
        double lost = 0.0;
        float before = 0.0F;
        for (std::size_t done = 0; done < kSamples; done += samples.size()) {
            for (float& sample : samples) {
                const double area = (static_cast<double>(before) + static_cast<double>(sample)) * 0.0005;
                const double next = sum + area;
                lost += std::fabs(sum) >= std::fabs(area) ? (sum - next) + area : (area - next) + sum;
                sum = next;
                before = sample;
                sample = static_cast<float>(sum + lost);
            }
            benchmark::DoNotOptimize(samples.data());
        }
    }
}

// The input read, input and output written.
void filterTransfers(benchmark::State& state)
{
    const std::string made = scratch("veltrac-bench-job-floor.bin");
    moveInLongRuns(made, 2 * kColumnBytes, true);
    for (auto _ : state) {
        moveInLongRuns(fileOf(1), kColumnBytes, false);
        moveInLongRuns(made, 2 * kColumnBytes, true);
    }
    std::filesystem::remove(made);
}

FidFilterPtr butterworth()
{
    return FidFilterPtr(fid_design("LpBu4/40", 1000.0, -1.0, -1.0, 0, nullptr));
}

// Transposed direct form II, two sections, their states in registers.
void filterCascade(benchmark::State& state)
{
    const FidFilterPtr filter = butterworth();
    double c[2][5];
    const FidFilter* block = filter.get();
    for (auto& section : c) {
        const double* const a = block->coefficients();
        block = block->next();
        const double* const b = block->coefficients();
        block = block->next();
        const double values[5] = {b[0], b[1], b[2], a[1], a[2]};
        std::copy(values, values + 5, section);
    }
    std::vector<float> samples(1 << 15, 1.0F);
    for (auto _ : state) {
        double s[2][2] = {};
        for (std::size_t done = 0; done < kSamples; done += samples.size()) {
            for (float& sample : samples) {
                double x = static_cast<double>(sample);
                for (int i = 0; i < 2; ++i) {
                    const double y = c[i][0] * x + s[i][0];
                    s[i][0] = c[i][1] * x - c[i][3] * y + s[i][1];
                    s[i][1] = c[i][2] * x - c[i][4] * y;
                    x = y;
                }
                sample = static_cast<float>(x);
            }
            benchmark::DoNotOptimize(samples.data());
        }
    }
}

void filterJob(benchmark::State& state)
{
    TSFILE file(fileOf(1).c_str(), true);
    const SourceColumn source(file, 1);
    TSFILE work(scratch("veltrac-bench-job-work.ts").c_str(), kSamples, 2, 0);
    const FidFilterPtr filter = butterworth();
    for (auto _ : state)
        benchmark::DoNotOptimize(runFilter(source, work, filter.get(), {}));
    std::filesystem::remove(scratch("veltrac-bench-job-work.ts"));
}

// Of a whole file, and making one.
void copyFloor(benchmark::State& state)
{
    const std::string made = scratch("veltrac-bench-job-floor.bin");
    for (auto _ : state) {
        moveInLongRuns(fileOf(1), kColumnBytes, false);
        moveInLongRuns(made, kColumnBytes, true);
        std::filesystem::remove(made);
    }
}

void copy(benchmark::State& state)
{
    const std::string made = scratch("veltrac-bench-job-copy.ts");
    TSFILE file(fileOf(1).c_str(), true);
    for (auto _ : state) {
        copyBytes(file.descriptor(), made, {});
        std::filesystem::remove(made);
    }
}

void create(benchmark::State& state)
{
    const std::string made = scratch("veltrac-bench-job-made.ts");
    for (auto _ : state) {
        TSFILE(made.c_str(), 500'000'000, 1, 0);
        std::filesystem::remove(made);
    }
}

BENCHMARK(scanTransfers)->Unit(benchmark::kMillisecond);
BENCHMARK(scanFloor)->Unit(benchmark::kMillisecond);
BENCHMARK(scan)->Unit(benchmark::kMillisecond);
BENCHMARK(calculusFloor)->Unit(benchmark::kMillisecond);
BENCHMARK(derivative)->Unit(benchmark::kMillisecond);
BENCHMARK(integral)->Unit(benchmark::kMillisecond);
BENCHMARK(integralSums)->Unit(benchmark::kMillisecond);
BENCHMARK(filterTransfers)->Unit(benchmark::kMillisecond);
BENCHMARK(filterCascade)->Unit(benchmark::kMillisecond);
BENCHMARK(filterJob)->Unit(benchmark::kMillisecond);
BENCHMARK(copyFloor)->Unit(benchmark::kMillisecond);
BENCHMARK(copy)->Unit(benchmark::kMillisecond);
BENCHMARK(create)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    for (const char* const name : {"veltrac-bench-job-1.ts", "veltrac-bench-job-2.ts"})
        std::filesystem::remove(scratch(name));
    return 0;
}
