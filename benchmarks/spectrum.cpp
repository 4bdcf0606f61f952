// Spectra of a column of a ts-file: the whole range at once, and the average of segments of 8192 samples that
// overlap by half; and a spectrogram of segments of 1024, which overlap likewise. The floor reads the same
// samples; that of the spectrogram writes as many cells, too.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "calc/Spectrogram.h"
#include "calc/Spectrum.h"
#include "calc/SpectrumPlan.h"
#include "core/TSFILE.h"

using namespace veltrac;

namespace {

constexpr std::uint32_t kMostSamples = 50'000'000;
constexpr std::size_t kRun = 65536;

std::string scratch(const char* name)
{
    return (std::filesystem::temp_directory_path() / name).string();
}

// Kept from run to run.
std::string sourceFile()
{
    const std::string path = scratch("veltrac-bench-spectrum.ts");
    if (std::filesystem::exists(path))
        return path;
    TSFILE file(path.c_str(), kMostSamples, 1, 0);
    file.dt(0.01F);
    std::vector<float> run(kRun);
    for (std::uint32_t first = 1; first <= kMostSamples; first += kRun) {
        run.resize(std::min<std::size_t>(kRun, kMostSamples - first + 1));
        for (std::size_t i = 0; i < run.size(); ++i)
            run[i] = static_cast<float>(std::sin(0.37 * static_cast<double>(first + i)));
        file.writeColumn(1, first, run);
    }
    return path;
}

void floorRead(benchmark::State& state)
{
    TSFILE file(sourceFile().c_str(), true);
    std::vector<float> run(kRun);
    const auto samples = static_cast<std::uint32_t>(state.range(0));
    for ([[maybe_unused]] auto _ : state)
        for (std::uint32_t first = 1; first <= samples; first += kRun) {
            run.resize(std::min<std::size_t>(kRun, samples - first + 1));
            file.readColumn(1, first, run);
        }
}

void spectrum(benchmark::State& state, bool averaged)
{
    TSFILE file(sourceFile().c_str(), true);
    SpectrumRequest request;
    request.to = static_cast<std::uint32_t>(state.range(0));
    request.dt = file.dt();
    request.averaged = averaged;
    request.segment = 8192;
    request.result = SpectrumResult::PowerDensity;
    const std::string path = scratch("veltrac-bench-spectrum-out.ts");
    for ([[maybe_unused]] auto _ : state) {
        TSFILE target(path.c_str(), planSpectrum(request).bins, spectrumColumns(request), 0);
        double mean = 0.0;
        computeSpectrum(file, request, target, mean, {});
        benchmark::DoNotOptimize(mean);
    }
    std::filesystem::remove(path);
}

SpectrumRequest pictureRequest(std::uint32_t samples, double dt)
{
    SpectrumRequest request;
    request.to = samples;
    request.dt = dt;
    request.averaged = true;
    request.segment = 1024;
    request.result = SpectrumResult::PowerDensity;
    return request;
}

void spectrogram(benchmark::State& state)
{
    TSFILE file(sourceFile().c_str(), true);
    const SpectrumRequest request =
        pictureRequest(static_cast<std::uint32_t>(state.range(0)), static_cast<double>(file.dt()));
    const SpectrumPlan plan = planSpectrum(request);
    const std::string path = scratch("veltrac-bench-spectrogram-out.ts");
    for ([[maybe_unused]] auto _ : state) {
        TSFILE target(path.c_str(), plan.segments, plan.bins, 0);
        computeSpectrogram(file, request, target, {});
    }
    std::filesystem::remove(path);
}

void floorReadAndWrite(benchmark::State& state)
{
    TSFILE file(sourceFile().c_str(), true);
    const auto samples = static_cast<std::uint32_t>(state.range(0));
    const SpectrumPlan plan = planSpectrum(pictureRequest(samples, static_cast<double>(file.dt())));
    const std::string path = scratch("veltrac-bench-spectrogram-out.ts");
    std::vector<float> run(kRun);
    std::vector<float> rows(std::size_t{128} * plan.bins, 1.0F);
    for ([[maybe_unused]] auto _ : state) {
        TSFILE target(path.c_str(), plan.segments, plan.bins, 0);
        for (std::uint32_t first = 1; first <= samples; first += kRun) {
            run.resize(std::min<std::size_t>(kRun, samples - first + 1));
            file.readColumn(1, first, run);
        }
        for (std::uint32_t row = 1; row <= plan.segments; row += 128)
            target.writeRows(row, std::min(128U, plan.segments - row + 1), rows.data());
    }
    std::filesystem::remove(path);
}

void wholeRange(benchmark::State& state)
{
    spectrum(state, false);
}

void averagedSegments(benchmark::State& state)
{
    spectrum(state, true);
}

BENCHMARK(floorRead)->Arg(1 << 24)->Arg(10'000'000)->Arg(kMostSamples)->Unit(benchmark::kMillisecond);
BENCHMARK(wholeRange)->Arg(1 << 24)->Arg(10'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(averagedSegments)->Arg(kMostSamples)->Unit(benchmark::kMillisecond);
BENCHMARK(spectrogram)->Arg(kMostSamples)->Unit(benchmark::kMillisecond);
BENCHMARK(floorReadAndWrite)->Arg(kMostSamples)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
