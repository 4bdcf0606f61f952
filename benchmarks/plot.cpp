// The first picture of a long column (one pass over the file) beside reading the same bytes in long runs, on
// as many threads as VELTRAC_THREADS says; and frames after it at 1200 pixel columns. The file stays in the
// page cache.

#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <vector>

#include "benchmarks/LongRuns.h"
#include "core/Plot2D.h"
#include "core/PlotCurves.h"
#include "core/PlotFile.h"
#include "core/TSFILE.h"
#include "share/EpsFile.h"
#include "share/PlotPainter.h"
#include "share/PostscriptDriver.h"

using namespace veltrac;

namespace {

constexpr std::uint32_t kValues = 100'000'000;
constexpr int kColumns = 1200;

std::string fileOf(std::uint32_t columns)
{
    std::string path =
        (std::filesystem::temp_directory_path() / ("veltrac-bench-plot-" + std::to_string(columns) + ".ts"))
            .string();
    if (std::filesystem::exists(path))
        return path;
    TSFILE file(path.c_str(), kValues / columns, columns, 0);
    file.dt(0.001F);
    std::vector<float> rows(std::size_t{columns} * 1000);
    std::uint32_t noise = 1;
    for (std::uint32_t s = 0; s < file.samples(); s += 1000) {
        for (float& v : rows) {
            noise = noise * 1664525U + 1013904223U;
            v = static_cast<float>(noise >> 8) * 1e-7F;
        }
        if (s == kValues / columns / 2 / 1000 * 1000)
            rows[columns * 500] = 99.0F;
        file.writeRows(s + 1, std::min<std::uint32_t>(1000, file.samples() - s), rows.data());
    }
    file.flush(true);
    return path;
}

void readFloor(benchmark::State& state)
{
    longRuns(state, fileOf(static_cast<std::uint32_t>(state.range(0))), std::size_t{kValues} * 4, false);
}

void passFloor(benchmark::State& state)
{
    summaryFloor(state, fileOf(static_cast<std::uint32_t>(state.range(0))), std::size_t{kValues} * 4);
}

Plot2D plotOf(std::uint32_t columns)
{
    const auto file = std::make_shared<PlotFile>(fileOf(columns));
    Plot2D plot;
    for (std::uint32_t c = 1; c <= columns; ++c)
        plot.groups().emplace_back().variables().push_back(std::make_shared<HsVariable>(Variable(file, c)));
    return plot;
}

void firstPass(benchmark::State& state)
{
    fileOf(static_cast<std::uint32_t>(state.range(0)));
    for (auto _ : state) {
        Plot2D plot = plotOf(static_cast<std::uint32_t>(state.range(0)));
        plot.buildMissing({});
        benchmark::DoNotOptimize(plot);
    }
}

// A frame with 1/range(1) of the series in view, each at another place.
void frame(benchmark::State& state)
{
    static Plot2D plot;
    static std::int64_t columns = 0;
    if (columns != state.range(0)) {
        columns = state.range(0);
        plot = plotOf(static_cast<std::uint32_t>(columns));
        plot.buildMissing({});
        plot.fitAll();
    }
    const Plot2D::Extent all = plot.extent();
    const double width = (all.x2 - all.x1) / static_cast<double>(state.range(1));
    double at = 0.0;
    for (auto _ : state) {
        at = std::fmod(at + 0.381966, 1.0);
        plot.setX(all.x1 + at * (all.x2 - all.x1 - width), all.x1 + at * (all.x2 - all.x1 - width) + width);
        benchmark::DoNotOptimize(curvesOf(plot, kColumns, 6));
    }
}

// The whole series as EPS on A4; "bytes" is the size of the file.
void eps(benchmark::State& state)
{
    const auto columns = static_cast<std::uint32_t>(state.range(0));
    Plot2D plot = plotOf(columns);
    plot.buildMissing({});
    plot.fitAll();
    const PsParameters parameters;
    const std::filesystem::path file = std::filesystem::temp_directory_path() / "veltrac-bench-plot.eps";
    for (auto _ : state)
        writeEps(file, parameters, [&](PostscriptDriver& driver) {
            drawPlot(plot, driver, paperColumns(parameters), paperLook(parameters, plot.grid));
        });
    state.counters["bytes"] = static_cast<double>(std::filesystem::file_size(file));
    std::filesystem::remove(file);
}

}  // namespace

BENCHMARK(eps)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(readFloor)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(passFloor)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(firstPass)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(frame)
    ->ArgsProduct({{1, 8, 64}, {1, 10, 50, 200, 1000, 10000, 100000}})
    ->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
