#include "core/ColumnScan.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <vector>

#include "core/TSFILE.h"
#include "core/Vectors.h"

namespace veltrac {

namespace {

constexpr std::uint32_t kRun = 8192;  // samples a step, and of a sum within the sum
constexpr std::uint32_t kReadAtOnce = 8 * kRun;

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

// Eight lanes side by side. A comparison with a missing value is false, so it is never taken as an extreme.
class ScanLanes
{
public:
    static constexpr std::size_t kLanes = 8;
    static constexpr std::size_t kPart = 256;  // values that are widened at once

    ScanLanes()
    {
        std::fill_n(m_least, kLanes, std::numeric_limits<float>::infinity());
        std::fill_n(m_greatest, kLanes, -std::numeric_limits<float>::infinity());
    }

    // A multiple of the lanes, at most a part.
    void takeWhole(std::span<const float> values)
    {
        float kept[kPart];  // 0 where a value is missing
        FourWords missing{};
        for (std::size_t i = 0; i < values.size(); i += 4) {
            const auto v = vectorAt<FourFloats>(&values[i]);
            const auto present = v == v ? v : FourFloats{};
            std::memcpy(&kept[i], &present, sizeof present);
            missing += v == v ? FourWords{} : FourWords{} + 1U;
        }
        m_missing += missing[0] + missing[1] + missing[2] + missing[3];
        double wide[kPart];
        for (std::size_t i = 0; i < values.size(); ++i)
            wide[i] = static_cast<double>(kept[i]);
        TwoDoubles sum[kLanes / 2];
        FourFloats least[kLanes / 4];
        FourFloats greatest[kLanes / 4];
        std::memcpy(sum, m_sum, sizeof sum);
        std::memcpy(least, m_least, sizeof least);
        std::memcpy(greatest, m_greatest, sizeof greatest);
        for (std::size_t i = 0; i < values.size(); i += kLanes) {
            for (std::size_t k = 0; k < kLanes / 2; ++k)
                sum[k] += vectorAt<TwoDoubles>(&wide[i + 2 * k]);
            for (std::size_t k = 0; k < kLanes / 4; ++k) {
                const auto v = vectorAt<FourFloats>(&values[i + 4 * k]);
                least[k] = v < least[k] ? v : least[k];
                greatest[k] = v > greatest[k] ? v : greatest[k];
            }
        }
        std::memcpy(m_sum, sum, sizeof sum);
        std::memcpy(m_least, least, sizeof least);
        std::memcpy(m_greatest, greatest, sizeof greatest);
    }

    void takeOne(float v, std::size_t lane)
    {
        m_least[lane] = v < m_least[lane] ? v : m_least[lane];
        m_greatest[lane] = v > m_greatest[lane] ? v : m_greatest[lane];
        m_sum[lane] += static_cast<double>(v == v ? v : 0.0F);
        m_missing += v == v ? 0U : 1U;
    }

    RunSummary summary() const
    {
        return {*std::min_element(m_least, m_least + kLanes),
                *std::max_element(m_greatest, m_greatest + kLanes),
                std::accumulate(m_sum, m_sum + kLanes, 0.0), m_missing};
    }

private:
    float m_least[kLanes];
    float m_greatest[kLanes];
    double m_sum[kLanes] = {};
    std::uint32_t m_missing = 0;
};

RunSummary summaryOf(std::span<const float> values)
{
    ScanLanes lanes;
    std::size_t i = 0;
    while (values.size() - i >= ScanLanes::kLanes) {
        const std::size_t whole = (values.size() - i) / ScanLanes::kLanes * ScanLanes::kLanes;
        const std::size_t count = std::min(whole, ScanLanes::kPart);
        lanes.takeWhole(values.subspan(i, count));
        i += count;
    }
    for (std::size_t lane = 0; i < values.size(); ++i, ++lane)
        lanes.takeOne(values[i], lane);
    return lanes.summary();
}

// The extremes and the sum of a column so far.
class ColumnTotal
{
public:
    // The run begins at sample `first`.
    void take(std::uint64_t first, std::span<const float> run)
    {
        const RunSummary summary = summaryOf(run);
        m_sum += summary.sum;
        m_scan.missing += summary.missing;
        const auto sampleOf = [&](float v) {
            const auto place = std::find(run.begin(), run.end(), v) - run.begin();
            return static_cast<std::uint32_t>(first + static_cast<std::uint64_t>(place));
        };
        if (m_scan.minimum > summary.least) {
            m_scan.minimum = summary.least;
            m_scan.minimumSample = sampleOf(summary.least);
        }
        if (summary.greatest > m_scan.maximum) {
            m_scan.maximum = summary.greatest;
            m_scan.maximumSample = sampleOf(summary.greatest);
        }
    }

    ColumnExtremes of(std::uint32_t samples) const
    {
        ColumnExtremes scan = m_scan;
        const std::uint32_t present = samples - scan.missing;
        const double nan = std::numeric_limits<double>::quiet_NaN();
        scan.averagePresent = present == 0 ? nan : m_sum / present;
        scan.average = scan.missing == 0 ? scan.averagePresent : nan;
        return scan;
    }

private:
    ColumnExtremes m_scan;
    double m_sum = 0.0;
};

}  // namespace

ColumnReader columnReader(TSFILE& file, std::uint32_t col)
{
    return [&file, col](std::uint32_t first, std::span<float> out) { file.readColumn(col, first, out); };
}

JobOutcome scanColumn(const ColumnReader& reader, std::uint32_t samples, const Progress& progress,
                      ColumnExtremes& out)
{
    ColumnTotal total;
    std::vector<float> values(std::min(kReadAtOnce, samples));
    for (std::uint64_t done = 0; done < samples;) {
        const std::size_t count = std::min<std::uint64_t>(kReadAtOnce, samples - done);
        const std::span<float> read = std::span(values).first(count);
        reader(static_cast<std::uint32_t>(done + 1), read);
        for (std::size_t i = 0; i < count; i += kRun)
            total.take(done + i + 1, read.subspan(i, std::min<std::size_t>(kRun, count - i)));
        done += count;
        if (!goesOn(progress, done, samples))
            return JobOutcome::Cancelled;
    }
    out = total.of(samples);
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
