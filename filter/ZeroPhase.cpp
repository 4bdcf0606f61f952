#include "filter/ZeroPhase.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <vector>

#include "core/ColumnCopy.h"
#include "core/TSFILE.h"
#include "filter/FidRunner.h"

namespace veltrac {

namespace {

// Samples `first` and so on of a column, each missing one as the one before it; those before the first that
// is there as that, and all as `otherwise` where none is.
std::vector<double> bridged(const SourceColumn& source, std::uint32_t first, std::uint32_t count,
                            double otherwise)
{
    std::vector<float> raw(count);
    source.read(first, raw);
    const auto there = std::find_if(raw.begin(), raw.end(), [](float v) { return std::isfinite(v); });
    double last = there == raw.end() ? otherwise : static_cast<double>(*there);
    std::vector<double> wide(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        if (std::isfinite(raw[i]))
            last = static_cast<double>(raw[i]);
        wide[i] = last;
    }
    return wide;
}

// What lies before the first of these samples when they are reflected in it, in the order of time.
std::vector<double> reflected(const std::vector<double>& samples)
{
    std::vector<double> before;
    before.reserve(samples.size() - 1);
    for (std::size_t i = samples.size(); i-- > 1;)
        before.push_back(2.0 * samples.front() - samples[i]);
    return before;
}

// Runs over what lies before a signal, which leaves the runner in the state that it begins with.
void begin(FidRunner& runner, std::vector<double>& before, double first)
{
    runner.settle(before.empty() ? first : before.front());
    runner.run(before);
}

// The filter's output beyond the last sample, in the order in which the way back meets it.
std::vector<double> outputBehind(const SourceColumn& source, FidRunner& runner, std::uint32_t reach,
                                 float last)
{
    std::vector<double> tail =
        bridged(source, source.samples() - reach, reach + 1, static_cast<double>(last));
    std::reverse(tail.begin(), tail.end());
    std::vector<double> behind = reflected(tail);
    std::reverse(behind.begin(), behind.end());
    runner.run(behind);
    std::reverse(behind.begin(), behind.end());
    return behind;
}

JobOutcome goForward(const SourceColumn& source, TSFILE& work, FidRunner& runner, float& last,
                     const Progress& progress)
{
    std::vector<double> wide;
    std::vector<float> rows;
    return walkRuns(work.samples(), progress, [&](std::uint32_t first, std::span<float> run) {
        source.read(first, run);
        wide.resize(run.size());
        for (std::size_t i = 0; i < run.size(); ++i) {
            if (std::isfinite(run[i]))
                last = run[i];
            wide[i] = static_cast<double>(last);
        }
        runner.run(wide);
        rows.resize(2 * run.size());
        for (std::size_t i = 0; i < run.size(); ++i) {
            rows[2 * i] = run[i];
            rows[2 * i + 1] = static_cast<float>(wide[i]);
        }
        work.writeRows(first, static_cast<std::uint32_t>(run.size()), rows.data());
    });
}

JobOutcome goBack(TSFILE& work, FidRunner& runner, std::uint32_t& missing, const Progress& progress)
{
    std::vector<double> wide;
    std::vector<float> rows;
    for (std::uint32_t left = work.samples(); left > 0;) {
        const std::uint32_t count = std::min(left, kRunSamples);
        left -= count;
        rows.resize(2 * std::size_t{count});
        work.readRows(left + 1, count, rows.data());
        wide.resize(count);
        for (std::size_t i = 0; i < count; ++i)
            wide[i] = static_cast<double>(rows[2 * (count - 1 - i) + 1]);
        runner.run(wide);
        for (std::size_t i = 0; i < count; ++i) {
            const bool isMissing = !std::isfinite(rows[2 * i]);
            missing += isMissing ? 1 : 0;
            rows[2 * i + 1] =
                isMissing ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(wide[count - 1 - i]);
        }
        work.writeRows(left + 1, count, rows.data());
        if (!goesOn(progress, work.samples() - left, work.samples()))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

}  // namespace

std::uint32_t ringingOf(const FidFilter* filter)
{
    constexpr std::uint32_t kBlock = 4096;
    constexpr double kSilent = 1e-6;
    FidRunner runner(filter);
    std::vector<double> response(kBlock, 0.0);
    response[0] = 1.0;
    double greatest = 0.0;
    std::uint32_t last = 0;
    for (std::uint32_t done = 0; done < kMostRinging; done += kBlock) {
        runner.run(response);
        for (const double h : response)
            greatest = std::max(greatest, std::fabs(h));
        const auto loud = std::find_if(response.rbegin(), response.rend(),
                                       [&](double h) { return std::fabs(h) > kSilent * greatest; });
        if (loud == response.rend())
            break;
        last = done + static_cast<std::uint32_t>(response.rend() - loud);
        std::fill(response.begin(), response.end(), 0.0);
    }
    return last;
}

float firstFinite(const SourceColumn& source)
{
    std::vector<float> run(kRunSamples);
    for (std::uint32_t done = 0; done < source.samples();) {
        const std::span<float> part(run.data(), std::min(kRunSamples, source.samples() - done));
        source.read(done + 1, part);
        const auto there = std::find_if(part.begin(), part.end(), [](float v) { return std::isfinite(v); });
        if (there != part.end())
            return *there;
        done += static_cast<std::uint32_t>(part.size());
    }
    return 0.0F;
}

JobOutcome runZeroPhase(const SourceColumn& source, TSFILE& work, const FidFilter* filter,
                        std::uint32_t& missing, const Progress& progress)
{
    if (work.samples() == 0)
        return JobOutcome::Done;
    const std::uint32_t reach = std::min(ringingOf(filter), work.samples() - 1);
    float last = firstFinite(source);
    FidRunner forward(filter);
    const std::vector<double> head = bridged(source, 1, reach + 1, static_cast<double>(last));
    std::vector<double> before = reflected(head);
    begin(forward, before, head.front());
    if (goForward(source, work, forward, last, partOf(progress, 0, 50)) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    std::vector<double> behind = outputBehind(source, forward, reach, last);
    FidRunner back(filter);
    begin(back, behind, static_cast<double>(work.value(work.samples(), 2)));
    return goBack(work, back, missing, partOf(progress, 50, 100));
}

}  // namespace veltrac
