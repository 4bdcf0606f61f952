#include "calc/SpectrumSamples.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "core/ColumnCopy.h"
#include "core/FileTime.h"
#include "core/TSFILE.h"

namespace veltrac {

SampleReader::SampleReader(TSFILE& file, const SpectrumRequest& request)
    : m_file(file),
      m_column(request.column),
      m_behind(oldestRow(file) - 1),
      m_interpolate(request.interpolate),
      m_run(kRunSamples)
{
}

JobOutcome SampleReader::read(std::uint32_t first, std::span<double> out, const Progress& progress)
{
    for (std::size_t done = 0; done < out.size();) {
        const std::span<float> part(m_run.data(), std::min(m_run.size(), out.size() - done));
        m_file.readColumn(m_column, m_behind + first + static_cast<std::uint32_t>(done), part);
        std::copy(part.begin(), part.end(), out.begin() + static_cast<std::ptrdiff_t>(done));
        done += part.size();
        if (!goesOn(progress, done, out.size()))
            return JobOutcome::Cancelled;
    }
    return m_interpolate ? bridgeMissing(first, out, progress) : JobOutcome::Done;
}

JobOutcome SampleReader::bridgeMissing(std::uint32_t first, std::span<double> out, const Progress& progress)
{
    std::size_t nextLook = kRunSamples;
    for (std::size_t i = 0; i < out.size(); ++i) {
        if (i >= nextLook) {
            nextLook = i + kRunSamples;
            if (!goesOn(progress, i, out.size()))
                return JobOutcome::Cancelled;
        }
        if (std::isfinite(out[i]))
            continue;
        const std::size_t begin = i;
        while (i < out.size() && !std::isfinite(out[i]))
            ++i;
        const auto at = [&](std::size_t place) {
            return std::int64_t{first} + static_cast<std::int64_t>(place);
        };
        Gap inside{at(begin), at(i), {}, {}};
        const bool reachesOut = begin == 0 || i == out.size();
        if (!reachesOut) {
            inside.before = {at(begin - 1), out[begin - 1], true};
            inside.after = {at(i), out[i], true};
        }
        const Gap& gap = reachesOut ? gapAround(at(begin)) : inside;
        const double left = gap.before.isThere ? gap.before.value : gap.after.value;
        const double right = gap.after.isThere ? gap.after.value : left;
        const auto width = static_cast<double>(gap.last - gap.first + 1);
        for (std::size_t k = begin; k < i; ++k)
            out[k] = left + (right - left) * static_cast<double>(at(k) - gap.first + 1) / width;
    }
    return JobOutcome::Done;
}

// A gap can be longer than many segments, so the one found last is kept.
const SampleReader::Gap& SampleReader::gapAround(std::int64_t sample)
{
    if (sample >= m_gap.first && sample < m_gap.last)
        return m_gap;
    m_gap.before = nearest(sample, false);
    m_gap.after = nearest(sample, true);
    m_gap.first = m_gap.before.sample + 1;
    m_gap.last = m_gap.after.sample;
    return m_gap;
}

// The nearest sample that is there; the place before the first or behind the last one where none is.
SampleReader::Known SampleReader::nearest(std::int64_t sample, bool forward)
{
    const auto end = std::int64_t{FileTime(m_file).rows()} + 1;
    std::int64_t from = sample;
    while (forward ? from < end : from >= 1) {
        const auto count = std::min<std::int64_t>(forward ? end - from : from, kRunSamples);
        const std::int64_t begin = forward ? from : from - count + 1;
        const std::span<float> run(m_run.data(), static_cast<std::size_t>(count));
        m_file.readColumn(m_column, m_behind + static_cast<std::uint32_t>(begin), run);
        for (std::int64_t i = 0; i < count; ++i) {
            const std::int64_t at = forward ? i : count - 1 - i;
            const float value = run[static_cast<std::size_t>(at)];
            if (std::isfinite(value))
                return {begin + at, value, true};
        }
        from += forward ? count : -count;
    }
    return {forward ? end : 0, 0.0, false};
}

JobOutcome removeTrend(std::span<double> samples, SpectrumTrend trend, double& mean, const Progress& progress)
{
    const auto n = static_cast<double>(samples.size());
    const double centre = (n - 1.0) / 2.0;
    const bool isLine = trend == SpectrumTrend::Line && samples.size() > 1;
    const std::uint64_t passes = trend == SpectrumTrend::Nothing ? 1 : isLine ? 3 : 2;
    std::uint64_t pass = 0;
    // Calls step(i) for all samples in order.
    const auto walked = [&](auto step) {
        for (std::size_t i = 0; i < samples.size();) {
            for (const std::size_t end = std::min<std::size_t>(i + kRunSamples, samples.size()); i < end; ++i)
                step(i);
            if (!goesOn(progress, pass * samples.size() + i, passes * samples.size()))
                return false;
        }
        ++pass;
        return true;
    };
    double sum = 0.0;
    if (!walked([&](std::size_t i) { sum += samples[i]; }))
        return JobOutcome::Cancelled;
    // A value of its own: the compiler has to take `mean` for one of the samples.
    const double level = sum / n;
    mean = level;
    if (trend == SpectrumTrend::Nothing)
        return JobOutcome::Done;
    if (!isLine)
        return walked([=](std::size_t i) { samples[i] -= level; }) ? JobOutcome::Done : JobOutcome::Cancelled;
    double product = 0.0;
    if (!walked([&](std::size_t i) { product += (static_cast<double>(i) - centre) * (samples[i] - level); }))
        return JobOutcome::Cancelled;
    const double slope = product / (n * (n * n - 1.0) / 12.0);
    return walked([=](std::size_t i) { samples[i] -= level + slope * (static_cast<double>(i) - centre); })
               ? JobOutcome::Done
               : JobOutcome::Cancelled;
}

JobOutcome countMissing(TSFILE& file, const SpectrumRequest& request, std::uint64_t& missing,
                        const Progress& progress)
{
    missing = 0;
    const std::uint32_t begin = oldestRow(file) - 1 + request.from;
    return walkRuns(request.to - request.from + 1, progress, [&](std::uint32_t first, std::span<float> run) {
        file.readColumn(request.column, begin + first - 1, run);
        missing += static_cast<std::uint64_t>(
            std::count_if(run.begin(), run.end(), [](float v) { return !std::isfinite(v); }));
    });
}

JobOutcome readSteps(TSFILE& file, std::uint32_t from, std::uint32_t to, StepRange& steps,
                     const Progress& progress)
{
    const double dt = file.dt();
    steps = {dt, dt, dt, 0.0};
    if (file.timeColumn() == 0 || to <= from)
        return JobOutcome::Done;
    steps.least = std::numeric_limits<double>::infinity();
    steps.greatest = -steps.least;
    double start = 0.0;
    double before = 0.0;
    float farthest = 0.0F;
    const std::uint32_t begin = oldestRow(file) - 1 + from;
    std::vector<float> whole(file.time32Column() == 0 ? 0 : kRunSamples);
    std::vector<TSFILE::ColumnRun> columns{{file.timeColumn(), nullptr}};
    if (!whole.empty())
        columns.push_back({file.time32Column(), whole.data()});
    const JobOutcome outcome =
        walkRuns(to - from + 1, progress, [&](std::uint32_t first, std::span<float> run) {
            columns.front().out = run.data();
            file.readColumns(begin + first - 1, static_cast<std::uint32_t>(run.size()), columns);
            for (std::size_t i = 0; i < run.size(); ++i) {
                const double now =
                    run[i] +
                    (whole.empty() ? 0.0 : static_cast<double>(std::bit_cast<std::uint32_t>(whole[i])));
                farthest = std::max(farthest, std::fabs(run[i]));
                if (first + i == 1) {
                    start = now;
                } else {
                    steps.least = std::min(steps.least, now - before);
                    steps.greatest = std::max(steps.greatest, now - before);
                }
                before = now;
            }
        });
    steps.mean = (before - start) / (to - from);
    // Each end of a step is off by half a unit in the last place at most, and so is that of another step.
    steps.grain = 2.0 * static_cast<double>(std::nextafter(farthest, INFINITY) - farthest);
    return outcome;
}

}  // namespace veltrac
