#include "core/ColumnScan.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "core/TSFILE.h"

namespace veltrac {

namespace {

constexpr std::uint32_t kRun = 8192;  // samples a step

bool meets(const SearchCondition& condition, float before, float v)
{
    switch (condition.looking) {
        case Looking::Equal:
            return v == static_cast<float>(condition.number) ||
                   std::abs(v - condition.number) <= condition.tolerance;
        case Looking::Above:
            return v > condition.number;
        case Looking::Below:
            return v < condition.number;
        case Looking::Missing:
            return std::isnan(v);
        case Looking::JumpAbove:
            return std::abs(static_cast<double>(v) - before) > condition.number;
    }
    return false;
}

// The samples first to last with the one before them in front (NaN before the column), so that a jump
// between two runs is seen.
class Run
{
public:
    Run(const ColumnReader& read, std::uint32_t first, std::uint32_t last)
        : m_first(first), m_values(std::size_t{last - first} + 2)
    {
        m_values[0] = std::numeric_limits<float>::quiet_NaN();
        if (first > 1)
            read(first - 1, m_values);
        else
            read(first, std::span(m_values).subspan(1));
    }
    bool meets(const SearchCondition& condition, std::uint32_t sample) const
    {
        const std::size_t i = sample - m_first + 1;
        return veltrac::meets(condition, m_values[i - 1], m_values[i]);
    }

private:
    std::uint32_t m_first;
    std::vector<float> m_values;
};

struct RunSummary
{
    float least;
    float greatest;
    double sum;  // of the values that are not missing
    std::uint32_t missing;
};

// Eight lanes side by side, which the compiler turns into vector instructions. A comparison with a missing
// value is false, so it is never taken as an extreme.
RunSummary summaryOf(std::span<const float> values)
{
    constexpr std::size_t kLanes = 8;
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    float least[kLanes];
    float greatest[kLanes];
    double sum[kLanes] = {};
    std::uint32_t missing[kLanes] = {};
    std::fill_n(least, kLanes, kInfinity);
    std::fill_n(greatest, kLanes, -kInfinity);
    const auto take = [&](float v, std::size_t lane) {
        least[lane] = v < least[lane] ? v : least[lane];
        greatest[lane] = v > greatest[lane] ? v : greatest[lane];
        sum[lane] += static_cast<double>(v == v ? v : 0.0F);
        missing[lane] += v == v ? 0U : 1U;
    };
    std::size_t i = 0;
    for (; i + kLanes <= values.size(); i += kLanes)
        for (std::size_t lane = 0; lane < kLanes; ++lane)
            take(values[i + lane], lane);
    for (std::size_t lane = 0; i < values.size(); ++i, ++lane)
        take(values[i], lane);
    return {*std::min_element(least, least + kLanes), *std::max_element(greatest, greatest + kLanes),
            std::accumulate(sum, sum + kLanes, 0.0), std::accumulate(missing, missing + kLanes, 0U)};
}

}  // namespace

ColumnReader columnReader(TSFILE& file, std::uint32_t col)
{
    return [&file, col](std::uint32_t first, std::span<float> out) { file.readColumn(col, first, out); };
}

JobOutcome scanColumn(const ColumnReader& read, std::uint32_t samples, const Progress& progress,
                      ColumnExtremes& out)
{
    ColumnExtremes scan;
    double sum = 0.0;
    std::vector<float> values(std::min(kRun, samples));
    for (std::uint64_t done = 0; done < samples;) {
        const std::size_t count = std::min<std::uint64_t>(kRun, samples - done);
        const std::span<float> run = std::span(values).first(count);
        read(static_cast<std::uint32_t>(done + 1), run);
        const RunSummary summary = summaryOf(run);
        sum += summary.sum;
        scan.missing += summary.missing;
        const auto sampleOf = [&](float v) {
            const auto place = std::find(run.begin(), run.end(), v) - run.begin();
            return static_cast<std::uint32_t>(done + 1 + static_cast<std::uint64_t>(place));
        };
        if (scan.minimum > summary.least) {
            scan.minimum = summary.least;
            scan.minimumSample = sampleOf(summary.least);
        }
        if (summary.greatest > scan.maximum) {
            scan.maximum = summary.greatest;
            scan.maximumSample = sampleOf(summary.greatest);
        }
        done += count;
        if (!goesOn(progress, done, samples))
            return JobOutcome::Cancelled;
    }
    const std::uint32_t present = samples - scan.missing;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    scan.averagePresent = present == 0 ? nan : sum / present;
    scan.average = scan.missing == 0 ? scan.averagePresent : nan;
    out = scan;
    return JobOutcome::Done;
}

JobOutcome searchColumn(const ColumnReader& read, std::uint32_t samples, const SearchCondition& condition,
                        std::uint32_t from, Direction direction, const Progress& progress,
                        std::uint32_t& found)
{
    found = 0;
    const bool forward = direction == Direction::Forward;
    const std::uint64_t total = forward ? samples - std::min(from, samples) : std::max(from, 1U) - 1U;
    for (std::uint64_t done = 0; done < total;) {
        const std::uint64_t count = std::min<std::uint64_t>(kRun, total - done);
        const auto first = static_cast<std::uint32_t>(forward ? from + done + 1 : from - done - count);
        const auto last = static_cast<std::uint32_t>(first + count - 1);
        const Run run(read, first, last);
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint32_t sample = forward ? first + i : last - i;
            if (run.meets(condition, sample)) {
                found = sample;
                return JobOutcome::Done;
            }
        }
        done += count;
        if (!goesOn(progress, done, total))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

}  // namespace veltrac
