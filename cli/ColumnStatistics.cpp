#include "cli/ColumnStatistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace veltrac {

namespace {

constexpr std::uint32_t kRunValues = 1U << 16;
constexpr std::size_t kLanes = 8;  // sums side by side, which the compiler turns into vector instructions

// One column, taken in run by run.
class Collector
{
public:
    // The run's first row and its values.
    void take(std::uint32_t firstRow, std::span<const float> values)
    {
        double sums[kLanes] = {};
        std::uint32_t counts[kLanes] = {};
        float least = std::numeric_limits<float>::infinity();
        float greatest = -std::numeric_limits<float>::infinity();
        forEachLane(values, [&](std::size_t lane, float v) {
            const bool there = std::fabs(v) <= std::numeric_limits<float>::max();
            sums[lane] += there ? static_cast<double>(v) : 0.0;
            counts[lane] += there ? 1 : 0;
            least = there && v < least ? v : least;
            greatest = there && v > greatest ? v : greatest;
        });
        double sum = 0.0;
        std::uint32_t count = 0;
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            sum += sums[lane];
            count += counts[lane];
        }
        m_rows += static_cast<std::uint32_t>(values.size());
        if (count == 0)
            return;
        noteExtremes(firstRow, values, least, greatest);
        addRun(values, sum / count, count);
    }

    ColumnStatistics result() const
    {
        ColumnStatistics out = m_out;
        out.missing = m_rows - out.count;
        if (out.count > 1)
            out.deviation = std::sqrt(m_squares / (out.count - 1.0));
        if (out.count > 0)
            out.rms = std::sqrt(m_squares / out.count + out.mean * out.mean);
        return out;
    }

private:
    template <typename Step>
    static void forEachLane(std::span<const float> values, Step step)
    {
        std::size_t i = 0;
        for (; i + kLanes <= values.size(); i += kLanes)
            for (std::size_t lane = 0; lane < kLanes; ++lane)
                step(lane, values[i + lane]);
        for (; i < values.size(); ++i)
            step(i % kLanes, values[i]);
    }

    void noteExtremes(std::uint32_t firstRow, std::span<const float> values, float least, float greatest)
    {
        const auto rowOf = [&](float value) {
            return firstRow + static_cast<std::uint32_t>(std::find(values.begin(), values.end(), value) -
                                                         values.begin());
        };
        if (m_out.count == 0 || static_cast<double>(least) < m_out.least) {
            m_out.least = static_cast<double>(least);
            m_out.leastRow = rowOf(least);
        }
        if (m_out.count == 0 || static_cast<double>(greatest) > m_out.greatest) {
            m_out.greatest = static_cast<double>(greatest);
            m_out.greatestRow = rowOf(greatest);
        }
    }

    void addRun(std::span<const float> values, double mean, std::uint32_t count)
    {
        double squares[kLanes] = {};
        forEachLane(values, [&](std::size_t lane, float v) {
            const bool there = std::fabs(v) <= std::numeric_limits<float>::max();
            const double off = there ? static_cast<double>(v) - mean : 0.0;
            squares[lane] += off * off;
        });
        for (const double part : squares)
            m_squares += part;
        const double before = m_out.count;
        const double all = before + count;
        const double shift = mean - m_out.mean;
        m_squares += shift * shift * before * count / all;
        m_out.mean += shift * count / all;
        m_out.count += count;
    }

    ColumnStatistics m_out;
    double m_squares = 0.0;  // about the mean
    std::uint32_t m_rows = 0;
};

}  // namespace

JobOutcome readStatistics(const PlotFile& file, const Progress& progress, std::vector<ColumnStatistics>& out)
{
    const std::uint32_t columns = file.columns();
    std::vector<Collector> collectors(columns);
    const std::uint32_t runRows =
        std::max<std::uint32_t>(1, kRunValues / std::max<std::uint32_t>(1, columns));
    std::vector<float> rows(std::size_t{std::min(runRows, file.rows())} * columns);
    std::vector<float> column(std::min(runRows, file.rows()));
    for (std::uint32_t done = 0; done < file.rows();) {
        const std::uint32_t count = std::min(runRows, file.rows() - done);
        file.readRows(done + 1, count, rows.data());
        for (std::uint32_t c = 0; c < columns; ++c) {
            if (columns == 1) {
                collectors[0].take(done + 1, std::span(rows).first(count));
                continue;
            }
            for (std::uint32_t i = 0; i < count; ++i)
                column[i] = rows[std::size_t{i} * columns + c];
            collectors[c].take(done + 1, std::span(column).first(count));
        }
        done += count;
        if (!goesOn(progress, done, file.rows()))
            return JobOutcome::Cancelled;
    }
    out.clear();
    out.reserve(columns);
    for (const Collector& collector : collectors)
        out.push_back(collector.result());
    return JobOutcome::Done;
}

}  // namespace veltrac
