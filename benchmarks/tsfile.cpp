// Reading and writing down column 1 of a ts-file: single values beside the bare loop of one seek and one
// 512-byte transfer a block under a mutex, runs of them beside the same bytes in long runs. Times are per
// value; the ratio to the floor of the same shape counts.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <vector>

#include "benchmarks/LongRuns.h"
#include "core/TSFILE.h"

using namespace veltrac;

namespace {

constexpr std::uint32_t kValues = 100'000'000;
constexpr std::size_t kRun = 1 << 15;  // as the jobs of the program have it

std::string fileOf(std::uint32_t columns)
{
    const std::string path =
        (std::filesystem::temp_directory_path() / ("veltrac-bench-" + std::to_string(columns) + ".ts"))
            .string();
    if (!std::filesystem::exists(path))
        TSFILE(path.c_str(), kValues / columns, columns, 0);
    return path;
}

void finish(benchmark::State& state, std::uint32_t samples)
{
    state.counters["value"] =
        benchmark::Counter(static_cast<double>(samples),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// The floor: what no program that moves 512 bytes a call can pass.
void bareBlocks(benchmark::State& state, bool writing)
{
    const auto columns = static_cast<std::uint32_t>(state.range(0));
    const std::uint32_t samples = kValues / columns;
    const std::string path = fileOf(columns);
    std::mutex mutex;
    alignas(64) char block[512];
    for (auto _ : state) {
        const int fd = open(path.c_str(), O_RDWR);
        float sum = 0.0F;
        for (off_t offset = 1024, end = 1024 + off_t{kValues} * 4; offset < end; offset += 512) {
            const std::lock_guard guard(mutex);
            lseek(fd, offset, SEEK_SET);
            if ((writing ? write(fd, block, 512) : read(fd, block, 512)) != 512)
                state.SkipWithError("short transfer");
            sum += static_cast<float>(block[0]);
        }
        benchmark::DoNotOptimize(sum);
        close(fd);
    }
    finish(state, samples);
}

void readBlocksFloor(benchmark::State& state)
{
    bareBlocks(state, false);
}

void readFloor(benchmark::State& state)
{
    const auto columns = static_cast<std::uint32_t>(state.range(0));
    longRuns(state, fileOf(columns), std::size_t{kValues} * 4, false);
    finish(state, kValues / columns);
}

// What a caller does with value(): a sum that lives in a register as long as nobody takes its address.
template <typename Sum>
Sum sumOf(TSFILE& file, std::uint32_t samples)
{
    Sum sum = 0;
    for (std::uint32_t s = 1; s <= samples; ++s)
        sum += static_cast<Sum>(file.value(s, 1));
    return sum;
}

template <typename Sum>
void readValue(benchmark::State& state)
{
    const auto columns = static_cast<std::uint32_t>(state.range(0));
    TSFILE file(fileOf(columns).c_str(), true);
    const std::uint32_t samples = file.samples();
    for (auto _ : state)
        benchmark::DoNotOptimize(sumOf<Sum>(file, samples));
    finish(state, samples);
}

void readColumn(benchmark::State& state)
{
    const auto columns = static_cast<std::uint32_t>(state.range(0));
    TSFILE file(fileOf(columns).c_str(), true);
    const std::uint32_t samples = file.samples();
    std::vector<float> run(kRun);
    for (auto _ : state) {
        for (std::uint32_t s = 1; s <= samples; s += kRun)
            file.readColumn(1, s, std::span(run).first(std::min<std::size_t>(kRun, samples - s + 1)));
        benchmark::DoNotOptimize(run.data());
    }
    finish(state, samples);
}

// All columns in one pass over the rows.
void readAllColumns(benchmark::State& state)
{
    const auto columns = static_cast<std::uint32_t>(state.range(0));
    TSFILE file(fileOf(columns).c_str(), true);
    const std::uint32_t samples = file.samples();
    const auto step = static_cast<std::uint32_t>(kRun);
    std::vector<std::vector<float>> values(columns, std::vector<float>(kRun));
    std::vector<TSFILE::ColumnRun> runs;
    for (std::uint32_t c = 1; c <= columns; ++c)
        runs.push_back({c, values[c - 1].data()});
    for (auto _ : state) {
        for (std::uint32_t s = 1; s <= samples; s += step)
            file.readColumns(s, std::min(step, samples - s + 1), runs);
        benchmark::DoNotOptimize(values.data());
    }
    finish(state, samples);
}

// Whole blocks are written without being read …
void writeBlocksFloor(benchmark::State& state)
{
    bareBlocks(state, true);
}

void writeFloor(benchmark::State& state)
{
    const auto columns = static_cast<std::uint32_t>(state.range(0));
    longRuns(state, fileOf(columns), std::size_t{kValues} * 4, true);
    std::filesystem::remove(fileOf(columns));  // its header is gone
    finish(state, kValues / columns);
}

// A column among others: what stands between its values is read and written again.
void rewriteFloor(benchmark::State& state)
{
    const auto columns = static_cast<std::uint32_t>(state.range(0));
    const std::string path = fileOf(columns);
    for (auto _ : state)
        if (!moveInLongRuns(path, std::size_t{kValues} * 4, false) ||
            !moveInLongRuns(path, std::size_t{kValues} * 4, true))
            state.SkipWithError("short transfer");
    std::filesystem::remove(path);
    finish(state, kValues / columns);
}

// … and blocks of which single values are written are read first.
void readWriteBlocksFloor(benchmark::State& state)
{
    const auto columns = static_cast<std::uint32_t>(state.range(0));
    const std::string path = fileOf(columns);
    std::mutex mutex;
    alignas(64) char block[512];
    for (auto _ : state) {
        const int fd = open(path.c_str(), O_RDWR);
        for (off_t offset = 1024, end = 1024 + off_t{kValues} * 4; offset < end; offset += 512) {
            const std::lock_guard guard(mutex);
            lseek(fd, offset, SEEK_SET);
            if (read(fd, block, 512) != 512)
                state.SkipWithError("short read");
            lseek(fd, offset, SEEK_SET);
            if (write(fd, block, 512) != 512)
                state.SkipWithError("short write");
        }
        close(fd);
    }
    finish(state, kValues / columns);
}

void writeValue(benchmark::State& state)
{
    const auto columns = static_cast<std::uint32_t>(state.range(0));
    TSFILE file(fileOf(columns).c_str(), false);
    const std::uint32_t samples = file.samples();
    for (auto _ : state) {
        for (std::uint32_t s = 1; s <= samples; ++s)
            file.setValue(s, 1, 1.0F);
        file.flush(false);
    }
    finish(state, samples);
}

void writeColumn(benchmark::State& state)
{
    const auto columns = static_cast<std::uint32_t>(state.range(0));
    TSFILE file(fileOf(columns).c_str(), false);
    const std::uint32_t samples = file.samples();
    const std::vector<float> run(kRun, 1.0F);
    for (auto _ : state) {
        for (std::uint32_t s = 1; s <= samples; s += kRun)
            file.writeColumn(1, s, std::span(run).first(std::min<std::size_t>(kRun, samples - s + 1)));
        file.flush(false);
    }
    finish(state, samples);
}

BENCHMARK(readBlocksFloor)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(readValue<float>)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(readValue<double>)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(readFloor)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(readColumn)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(readAllColumns)->Arg(2)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(writeBlocksFloor)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(readWriteBlocksFloor)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(writeValue)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(writeFloor)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(rewriteFloor)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(writeColumn)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    for (const char* name : {"veltrac-bench-1.ts", "veltrac-bench-2.ts", "veltrac-bench-8.ts"})
        std::filesystem::remove(std::filesystem::temp_directory_path() / name);
    return 0;
}
