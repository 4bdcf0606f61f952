// Import of a smart tool log of 1,000,000 rows: a date, a time and three columns, with semicolons and decimal
// comma. Its floor beside it: the same numbers, those of dates and times too, parsed from memory with
// std::from_chars, and the values written in a ts-file's blocks. "peakMB" is the memory that the import
// needs.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <vector>

#include "converters/STLObject.h"
#include "core/TsHeader.h"

using namespace veltrac;

namespace {

namespace fs = std::filesystem;

constexpr int kRows = 1'000'000;
constexpr int kValues = 3;
constexpr int kNumbersBefore = 6;  // of date and time

// The log, in a directory of its own.
struct Log
{
    Log()
    {
        std::string name = (fs::temp_directory_path() / "stlbenchXXXXXX").string();
        fs::current_path(mkdtemp(name.data()));
        std::FILE* const file = std::fopen("log.stl", "wb");
        std::fputs("Tool: SN 00431\n\nDate;Time;Temp;Press;Flow\n;;C;mbar;l/s\n", file);
        std::mt19937 random(1);
        for (int i = 0; i < kRows; ++i) {
            const int second = i % 86400;
            const auto digits = [&](unsigned range) { return static_cast<unsigned>(random() % range); };
            std::fprintf(file, "%02d.05.2016;%02d:%02d:%02d;%u,%02u;%u,%u;0,%04u\n", 1 + i / 86400,
                         second / 3600, second / 60 % 60, second % 60, 20 + digits(9), digits(100),
                         990 + digits(40), digits(10), digits(10000));
        }
        std::fclose(file);
        bytes = fs::file_size("log.stl");
    }
    ~Log()
    {
        const fs::path directory = fs::current_path();
        fs::current_path("/");
        fs::remove_all(directory);
    }
    std::uintmax_t bytes;
};

const Log& log()
{
    static const Log made;
    return made;
}

void count(benchmark::State& state)
{
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(log().bytes));
}

void importLog(benchmark::State& state)
{
    log();
    for ([[maybe_unused]] auto _ : state) {
        STLObject object("log.stl");
        object.detect();
        object.check({});
        importSTL(object, "out.ts", {});
        if (object.found().target.samples != kRows || object.found().troubleCount != 0)
            state.SkipWithError("the import lost something");
    }
    count(state);
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    state.counters["peakMB"] = static_cast<double>(usage.ru_maxrss) / 1024.0;
}

void floorOfLog(benchmark::State& state)
{
    log();
    std::ostringstream all;
    all << std::ifstream("log.stl", std::ios::binary).rdbuf();
    std::string text = all.str().substr(all.str().find("01.05.2016"));
    for (char& c : text)
        c = c == ',' ? '.' : c == '.' ? ' ' : c;
    std::vector<float> values(std::size_t{kRows} * kValues);
    for ([[maybe_unused]] auto _ : state) {
        const char* p = text.data();
        const char* const end = p + text.size();
        const auto skip = [&] {
            while (p != end && (*p == ';' || *p == '\n' || *p == ' ' || *p == ':'))
                ++p;
        };
        for (std::size_t row = 0; row < kRows; ++row) {
            int part = 0;
            for (int i = 0; i < kNumbersBefore; ++i) {
                skip();
                p = std::from_chars(p, end, part).ptr;
                benchmark::DoNotOptimize(part);
            }
            for (std::size_t i = 0; i < kValues; ++i) {
                skip();
                p = std::from_chars(p, end, values[row * kValues + i]).ptr;
            }
        }
        std::FILE* const file = std::fopen("floor.bin", "wb");
        std::setvbuf(file, nullptr, _IONBF, 0);
        const auto* const data = reinterpret_cast<const char*>(values.data());
        for (std::size_t at = 0; at < values.size() * sizeof(float); at += kBlockBytes)
            std::fwrite(data + at, 1, kBlockBytes, file);
        std::fclose(file);
    }
    count(state);
}

// The import first: what the floor holds in memory must not count for it.
BENCHMARK(importLog)->Unit(benchmark::kMillisecond);
BENCHMARK(floorOfLog)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
