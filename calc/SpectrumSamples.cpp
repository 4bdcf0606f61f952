#include "calc/SpectrumSamples.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::uint32_t kRun = 1U << 15;

// The samples before `end` and behind `begin` that are there, or the line between them.
void bridge(std::span<double> samples, std::size_t begin, std::size_t end)
{
    const bool hasLeft = begin > 0;
    const bool hasRight = end < samples.size();
    const double left = hasLeft ? samples[begin - 1] : hasRight ? samples[end] : 0.0;
    const double right = hasRight ? samples[end] : left;
    const auto width = static_cast<double>(end - begin + 1);
    for (std::size_t i = begin; i < end; ++i)
        samples[i] = hasLeft ? left + (right - left) * static_cast<double>(i - begin + 1) / width : right;
}

void bridgeMissing(std::span<double> samples)
{
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (std::isfinite(samples[i]))
            continue;
        const std::size_t begin = i;
        while (i < samples.size() && !std::isfinite(samples[i]))
            ++i;
        bridge(samples, begin, i);
    }
}

}  // namespace

std::uint32_t segmentHop(std::uint32_t used, int overlapPercent)
{
    const std::uint64_t stay = std::uint64_t{used} * static_cast<unsigned>(100 - overlapPercent);
    return std::max<std::uint32_t>(1, static_cast<std::uint32_t>(stay / 100));
}

JobOutcome loadSamples(TSFILE& file, const SpectrumRequest& request, std::uint32_t first,
                       std::span<double> out, const Progress& progress)
{
    std::vector<float> run(std::min<std::size_t>(kRun, out.size()));
    for (std::size_t done = 0; done < out.size();) {
        const std::span<float> part(run.data(), std::min(run.size(), out.size() - done));
        file.readColumn(request.column, first + static_cast<std::uint32_t>(done), part);
        std::copy(part.begin(), part.end(), out.begin() + static_cast<std::ptrdiff_t>(done));
        done += part.size();
        if (!goesOn(progress, done, out.size()))
            return JobOutcome::Cancelled;
    }
    if (request.interpolate)
        bridgeMissing(out);
    return JobOutcome::Done;
}

double removeTrend(std::span<double> samples, SpectrumTrend trend)
{
    const auto n = static_cast<double>(samples.size());
    double sum = 0.0;
    for (const double x : samples)
        sum += x;
    const double mean = sum / n;
    if (trend == SpectrumTrend::Nothing)
        return mean;
    double slope = 0.0;
    const double centre = (n - 1.0) / 2.0;
    if (trend == SpectrumTrend::Line && samples.size() > 1) {
        double product = 0.0;
        for (std::size_t i = 0; i < samples.size(); ++i)
            product += (static_cast<double>(i) - centre) * (samples[i] - mean);
        slope = product / (n * (n * n - 1.0) / 12.0);
    }
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] -= mean + slope * (static_cast<double>(i) - centre);
    return mean;
}

JobOutcome countMissing(TSFILE& file, const SpectrumRequest& request, std::uint64_t& missing,
                        const Progress& progress)
{
    missing = 0;
    std::vector<float> run(kRun);
    const std::uint64_t total = request.to - request.from + std::uint64_t{1};
    for (std::uint64_t done = 0; done < total;) {
        const std::span<float> part(run.data(), std::min<std::uint64_t>(kRun, total - done));
        file.readColumn(request.column, static_cast<std::uint32_t>(request.from + done), part);
        missing += static_cast<std::uint64_t>(
            std::count_if(part.begin(), part.end(), [](float v) { return !std::isfinite(v); }));
        done += part.size();
        if (!goesOn(progress, done, total))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

JobOutcome readSteps(TSFILE& file, std::uint32_t from, std::uint32_t to, StepRange& steps,
                     const Progress& progress)
{
    const double dt = file.dt();
    steps = {dt, dt, dt};
    if (file.timeColumn() == 0 || to <= from)
        return JobOutcome::Done;
    const double first = file.sampleTime(from);
    double before = first;
    for (std::uint32_t s = from + 1; s <= to && s != 0; ++s) {
        const double now = file.sampleTime(s);
        const double step = now - before;
        steps.least = s == from + 1 ? step : std::min(steps.least, step);
        steps.greatest = s == from + 1 ? step : std::max(steps.greatest, step);
        before = now;
        if (s % kRun == 0 && !goesOn(progress, s - from, to - from))
            return JobOutcome::Cancelled;
    }
    steps.mean = (before - first) / (to - from);
    return JobOutcome::Done;
}
