// Import and export of 1,000,000 rows of 8 columns as tsa text, each beside its floor: the same text parsed
// from memory with std::from_chars and written in blocks, the same values formatted with std::to_chars into
// memory and written. "Peer" is fprintf("%g") of the same table.
#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <vector>

#include "converters/TsaExport.h"
#include "converters/TsaImport.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"

using namespace veltrac;

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kRows = 1'000'000;
constexpr std::uint32_t kColumns = 8;

struct Quiet : TsaQuestions
{
    std::optional<int> askSamples(const std::string&) override { return {}; }
    std::optional<int> askColumns(const std::string&) override { return {}; }
    bool mayOverwrite(const std::string&) override { return true; }
    bool isOpenForWriting(const std::string&) override { return false; }
    void warn(const std::string&, const std::string&) override {}
};

// The table, as values, as a ts-file and as text, in a directory of its own.
struct Table
{
    Table()
    {
        std::string name = (fs::temp_directory_path() / "tsabenchXXXXXX").string();
        fs::current_path(mkdtemp(name.data()));
        std::mt19937 random(1);
        std::normal_distribution<float> noise(20.0F, 5.0F);
        values.resize(std::size_t{kRows} * kColumns);
        for (float& v : values)
            v = noise(random);
        TSFILE ts("table.ts", kRows, kColumns, 0);
        ts.writeRows(1, kRows, values.data());
        ts.flush(true);
        TsaExportReport report;
        exportTsaText(ts, "in.tsa", 1, kRows, {}, report);
        std::ostringstream all;
        all << std::ifstream("in.tsa", std::ios::binary).rdbuf();
        text = all.str();
        text.erase(0, text.find("\n\n") + 2);
        // The peers read the same table.
        if (const char* const wanted = std::getenv("VELTRAC_TABLE"))
            std::ofstream(wanted, std::ios::binary) << text;
    }
    ~Table()
    {
        const fs::path directory = fs::current_path();
        fs::current_path("/");
        fs::remove_all(directory);
    }

    std::vector<float> values;
    std::string text;
};

const Table& table()
{
    static const Table made;
    return made;
}

void count(benchmark::State& state)
{
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(table().text.size()));
}

// A ts-file is written in its own blocks, a text in larger ones.
constexpr std::size_t kTextBlock = std::size_t{1} << 16;

void writeBlocks(const char* data, std::size_t bytes, std::size_t block, const char* name)
{
    std::FILE* const file = std::fopen(name, "wb");
    std::setvbuf(file, nullptr, _IONBF, 0);
    for (std::size_t at = 0; at < bytes; at += block)
        std::fwrite(data + at, 1, std::min(block, bytes - at), file);
    std::fclose(file);
}

void importFloor(benchmark::State& state)
{
    std::vector<float> out(table().values.size());
    for ([[maybe_unused]] auto _ : state) {
        const char* p = table().text.data();
        const char* const end = p + table().text.size();
        for (float& v : out) {
            while (p != end && (*p == ' ' || *p == '\n'))
                ++p;
            p = std::from_chars(p, end, v).ptr;
        }
        writeBlocks(reinterpret_cast<const char*>(out.data()), out.size() * sizeof(float), kBlockBytes,
                    "floor.bin");
    }
    count(state);
}

void importTsa(benchmark::State& state)
{
    table();
    Quiet questions;
    TsaImportReport report;
    for ([[maybe_unused]] auto _ : state)
        importTsaText("in.tsa", questions, {}, report);
    if (!report.isLossless())
        state.SkipWithError("the import lost something");
    count(state);
}

void exportFloor(benchmark::State& state)
{
    std::vector<char> out(table().text.size() + 64);
    for ([[maybe_unused]] auto _ : state) {
        char* p = out.data();
        for (std::size_t i = 0; i < table().values.size(); ++i) {
            p = std::to_chars(p, out.data() + out.size(), table().values[i], std::chars_format::general, 6)
                    .ptr;
            *p++ = ' ';
            *p++ = ' ';
            if (i % kColumns == kColumns - 1)
                *p++ = '\n';
        }
        writeBlocks(out.data(), static_cast<std::size_t>(p - out.data()), kTextBlock, "floor.txt");
    }
    count(state);
}

void exportTsa(benchmark::State& state)
{
    table();
    for ([[maybe_unused]] auto _ : state) {
        TSFILE ts("table.ts", true);
        TsaExportReport report;
        exportTsaText(ts, "out.tsa", 1, kRows, {}, report);
    }
    count(state);
}

void exportPeerFprintf(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state) {
        std::FILE* const file = std::fopen("peer.txt", "wb");
        for (std::size_t i = 0; i < table().values.size(); ++i)
            std::fprintf(file, i % kColumns == kColumns - 1 ? "%g  \n" : "%g  ",
                         static_cast<double>(table().values[i]));
        std::fclose(file);
    }
    count(state);
}

BENCHMARK(importFloor)->Unit(benchmark::kMillisecond);
BENCHMARK(importTsa)->Unit(benchmark::kMillisecond);
BENCHMARK(exportFloor)->Unit(benchmark::kMillisecond);
BENCHMARK(exportTsa)->Unit(benchmark::kMillisecond);
BENCHMARK(exportPeerFprintf)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
