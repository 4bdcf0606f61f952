#include "core/ColumnScan.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <vector>

#include "core/TSFILE.h"
#include "core/Vectors.h"
#include "core/WorkerPool.h"

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
    // Where Missing is not set, a missing value spoils the sum.
    template <bool Missing>
    void take(std::span<const float> values)
    {
        std::size_t i = 0;
        for (; i + kLanes <= values.size(); i += kLanes)
            for (std::size_t k = 0; k < kVectors; ++k) {
                const auto v = vectorAt<FourFloats>(&values[i + 4 * k]);
                m_least[k] = v < m_least[k] ? v : m_least[k];
                m_greatest[k] = v > m_greatest[k] ? v : m_greatest[k];
                const FourFloats present = Missing ? (v == v ? v : FourFloats{}) : v;
                m_sum[2 * k] += lowDoubles(present);
                m_sum[2 * k + 1] += highDoubles(present);
                if constexpr (Missing)
                    m_missing[k] += v == v ? FourWords{} : FourWords{} + 1U;
            }
        for (std::size_t lane = 0; i < values.size(); ++i, ++lane)
            takeOne(values[i], lane);
    }

    RunSummary summary() const
    {
        float least[kLanes];
        float greatest[kLanes];
        double sum[kLanes];
        std::uint32_t missing[kLanes];
        std::memcpy(least, m_least, sizeof least);
        std::memcpy(greatest, m_greatest, sizeof greatest);
        std::memcpy(sum, m_sum, sizeof sum);
        std::memcpy(missing, m_missing, sizeof missing);
        return {*std::min_element(least, least + kLanes), *std::max_element(greatest, greatest + kLanes),
                std::accumulate(sum, sum + kLanes, 0.0), std::accumulate(missing, missing + kLanes, 0U)};
    }

private:
    static constexpr std::size_t kLanes = 8;
    static constexpr std::size_t kVectors = kLanes / 4;
    static constexpr float kInfinity = std::numeric_limits<float>::infinity();

    void takeOne(float v, std::size_t lane)
    {
        FourFloats& least = m_least[lane / 4];
        FourFloats& greatest = m_greatest[lane / 4];
        least[lane % 4] = v < least[lane % 4] ? v : least[lane % 4];
        greatest[lane % 4] = v > greatest[lane % 4] ? v : greatest[lane % 4];
        m_sum[lane / 2][lane % 2] += static_cast<double>(v == v ? v : 0.0F);
        m_missing[lane / 4][lane % 4] += v == v ? 0U : 1U;
    }

    FourFloats m_least[kVectors] = {FourFloats{} + kInfinity, FourFloats{} + kInfinity};
    FourFloats m_greatest[kVectors] = {FourFloats{} - kInfinity, FourFloats{} - kInfinity};
    TwoDoubles m_sum[2 * kVectors] = {};
    FourWords m_missing[kVectors] = {};
};

RunSummary summaryOf(std::span<const float> values)
{
    ScanLanes all;
    all.take<false>(values);
    const RunSummary summary = all.summary();
    if (!std::isnan(summary.sum))
        return summary;
    ScanLanes present;
    present.take<true>(values);
    return present.summary();
}

std::span<const float> runAt(std::span<const float> values, std::size_t begin)
{
    return values.subspan(begin, std::min<std::size_t>(kRun, values.size() - begin));
}

// The extremes and the sum of a column so far.
class ColumnTotal
{
public:
    // The run begins at sample `first`.
    void take(std::uint64_t first, std::span<const float> run, const RunSummary& summary)
    {
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
    struct Piece
    {
        std::vector<float> values;
        std::vector<RunSummary> runs;
    };
    ColumnTotal total;
    std::uint64_t read = 0;
    std::uint64_t done = 0;
    WorkerPool& pool = WorkerPool::shared();
    std::vector<Piece> pieces(pool.slots());
    const auto take = [&](std::size_t slot) {
        Piece& piece = pieces[slot];
        piece.values.resize(std::min<std::uint64_t>(kReadAtOnce, samples - read));
        if (!piece.values.empty())
            reader(static_cast<std::uint32_t>(read + 1), piece.values);
        read += piece.values.size();
        return !piece.values.empty();
    };
    const auto sumUp = [&](std::size_t slot) {
        Piece& piece = pieces[slot];
        piece.runs.clear();
        for (std::size_t i = 0; i < piece.values.size(); i += kRun)
            piece.runs.push_back(summaryOf(runAt(piece.values, i)));
    };
    const auto give = [&](std::size_t slot) {
        const Piece& piece = pieces[slot];
        for (std::size_t k = 0; k < piece.runs.size(); ++k)
            total.take(done + k * kRun + 1, runAt(piece.values, k * kRun), piece.runs[k]);
        done += piece.values.size();
    };
    const JobOutcome outcome = pool.run({take, sumUp, give}, [&] { return goesOn(progress, done, samples); });
    if (outcome == JobOutcome::Done)
        out = total.of(samples);
    return outcome;
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
