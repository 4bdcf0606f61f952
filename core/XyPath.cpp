#include "core/XyPath.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace veltrac {

namespace {

constexpr std::int64_t kFinestGrid = 8192;
constexpr std::int64_t kCoarsestGrid = 1024;
constexpr std::size_t kValuesInARun = 1U << 16;

}  // namespace

// What one pass collects.
class XyPath::Pass
{
public:
    Pass(const Rectangle& seen, bool thins)
        : m_seen(seen), m_thins(thins), m_grid(kFinestGrid), m_cloud(std::size_t{kCloudCells} * kCloudCells)
    {
    }

    void add(double x, double y)
    {
        if (!std::isfinite(x) || !std::isfinite(y)) {
            endRun();
            return;
        }
        ++pairs;
        markCell(x, y);
        if (m_isFull)
            return;
        const Cell cell = cellOf(x, y);
        if (m_thins && m_inRun && cell == m_last)
            return;
        m_last = cell;
        m_inRun = true;
        points.push_back(x);
        points.push_back(y);
        if (m_thins && points.size() > 2 * kAllSamples)
            coarsen();
    }
    void finish()
    {
        endRun();
        if (!m_isFull)
            m_cloud.clear();
    }
    std::vector<bool> takeCloud() { return std::move(m_cloud); }

    std::vector<double> points;
    std::vector<std::size_t> runEnds;
    std::uint64_t pairs = 0;

private:
    using Cell = std::pair<std::int64_t, std::int64_t>;

    // Cells go on beyond the rectangle, where a line comes from.
    static std::int64_t cellAlong(double value, double from, double to, std::int64_t cells)
    {
        constexpr double kFar = 1e15;
        return static_cast<std::int64_t>(
            std::floor(std::clamp((value - from) / (to - from) * static_cast<double>(cells), -kFar, kFar)));
    }
    Cell cellOf(double x, double y) const
    {
        return {cellAlong(x, m_seen.x1, m_seen.x2, m_grid), cellAlong(y, m_seen.y1, m_seen.y2, m_grid)};
    }
    void markCell(double x, double y)
    {
        if (!m_thins)
            return;
        const std::int64_t column = cellAlong(x, m_seen.x1, m_seen.x2, kCloudCells);
        const std::int64_t row = cellAlong(y, m_seen.y1, m_seen.y2, kCloudCells);
        // The greatest values end the last cell.
        const auto isIn = [](std::int64_t cell) { return cell >= 0 && cell <= kCloudCells; };
        constexpr std::int64_t kLast = kCloudCells - 1;
        if (isIn(column) && isIn(row))
            m_cloud[static_cast<std::size_t>(std::min(row, kLast) * kCloudCells + std::min(column, kLast))] =
                true;
    }
    void endRun()
    {
        if (m_inRun && !m_isFull)
            runEnds.push_back(points.size() / 2);
        m_inRun = false;
    }
    // Thins what is there with cells of twice the size, until half of the room is free.
    void coarsen()
    {
        while (points.size() > kAllSamples) {
            m_grid /= 2;
            if (m_grid < kCoarsestGrid) {
                m_isFull = true;
                points.clear();
                runEnds.clear();
                return;
            }
            thinAgain();
        }
        m_last = cellOf(points[points.size() - 2], points.back());
    }
    void thinAgain()
    {
        std::size_t kept = 0;
        std::size_t from = 0;
        runEnds.push_back(points.size() / 2);  // the run that goes on
        for (std::size_t& end : runEnds) {
            Cell last;
            for (std::size_t p = from; p < end; ++p) {
                const Cell cell = cellOf(points[2 * p], points[2 * p + 1]);
                if (p > from && cell == last)
                    continue;
                last = cell;
                points[2 * kept] = points[2 * p];
                points[2 * kept + 1] = points[2 * p + 1];
                ++kept;
            }
            from = std::exchange(end, kept);
        }
        runEnds.pop_back();
        points.resize(2 * kept);
    }

    Rectangle m_seen;
    bool m_thins;
    std::int64_t m_grid;
    std::vector<bool> m_cloud;
    Cell m_last;
    bool m_inRun = false;
    bool m_isFull = false;  // of turns: a cloud
};

XyPath::XyPath(Variable x, Variable y, const SampleRange& rows)
    : m_x(std::move(x)), m_y(std::move(y)), m_rows(rows)
{
}

JobOutcome XyPath::build(const Rectangle& seen, const Progress& progress)
{
    const PlotSource& source = *m_x.source();
    const std::size_t columns = source.columns();
    const auto atOnce = static_cast<std::uint32_t>(std::max<std::size_t>(1, kValuesInARun / columns));
    std::vector<float> run(atOnce * columns);
    Pass pass(seen, m_rows.count() > kAllSamples);
    for (std::uint32_t done = 0; done < m_rows.count();) {
        const std::uint32_t count = std::min(atOnce, m_rows.count() - done);
        source.readRows(m_rows.first + done, count, run.data());
        for (std::size_t i = 0; i < count; ++i)
            pass.add(m_x.shown(run[i * columns + m_x.column() - 1]),
                     m_y.shown(run[i * columns + m_y.column() - 1]));
        done += count;
        if (!goesOn(progress, done, m_rows.count()))
            return JobOutcome::Cancelled;
    }
    pass.finish();
    m_seen = seen;
    m_points = std::move(pass.points);
    m_runEnds = std::move(pass.runEnds);
    m_cloud = pass.takeCloud();
    m_pairs = pass.pairs;
    m_isThinned = m_rows.count() > kAllSamples;
    return JobOutcome::Done;
}

std::vector<XyPath::CloudRun> XyPath::cloudRuns() const
{
    std::vector<CloudRun> runs;
    for (std::uint32_t row = 0; row < kCloudCells && isCloud(); ++row)
        for (std::uint32_t c = 0; c < kCloudCells; ++c) {
            if (!m_cloud[std::size_t{row} * kCloudCells + c])
                continue;
            if (!runs.empty() && runs.back().row == row && runs.back().last + 1 == c)
                runs.back().last = c;
            else
                runs.push_back({row, c, c});
        }
    return runs;
}

}  // namespace veltrac
