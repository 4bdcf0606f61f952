// Reading and writing down column 1 of a ts-file, beside the bare loop of one seek and one 512-byte
// transfer a block under a mutex. Times are per value; the ratio to the floor of the same shape counts.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <vector>

#include "core/TSFILE.h"

using namespace veltrac;

namespace {

constexpr std::uint32_t kValues = 100'000'000;
constexpr std::size_t kRun = 4096;

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

void readFloor(benchmark::State& state)
{
    bareBlocks(state, false);
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

// Whole blocks are written without being read …
void writeFloor(benchmark::State& state)
{
    bareBlocks(state, true);
}

// … and blocks of which single values are written are read first.
void readWriteFloor(benchmark::State& state)
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

BENCHMARK(readFloor)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(readValue<float>)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(readValue<double>)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(readColumn)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(writeFloor)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(readWriteFloor)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(writeValue)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(writeColumn)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    for (const char* name : {"veltrac-bench-1.ts", "veltrac-bench-8.ts"})
        std::filesystem::remove(std::filesystem::temp_directory_path() / name);
    return 0;
}
