#include "core/PlotSource.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace veltrac {

namespace {

// Of files wider than this only the wanted column of a bucket is kept.
constexpr std::uint32_t kWide = 1024;
constexpr std::size_t kCacheFloats = 1U << 20;
constexpr std::size_t kFewestRuns = 4;
constexpr std::size_t kMostRuns = 64;
constexpr std::uint32_t kNoBucket = std::numeric_limits<std::uint32_t>::max();

}  // namespace

double PlotSource::step() const
{
    if (m_timeKind == TimeKind::Steps)
        return m_dt;
    if (m_timeKind == TimeKind::RowNumbers || m_rows <= m_firstRow)
        return 1.0;
    const double steps = m_rows - m_firstRow;
    const double span = timeOf(m_rows) - timeOf(m_firstRow);
    return span > 0.0 ? span / steps : 1.0;
}

double PlotSource::timeOf(std::uint32_t row) const
{
    switch (m_timeKind) {
        case TimeKind::Steps:
            return m_base + row * m_dt;
        case TimeKind::RowNumbers:
            return row;
        case TimeKind::EachRow:
            break;
    }
    const std::uint32_t bucket = (row - 1) / m_bucketRows;
    if (m_columns > kWide) {
        std::vector<float> values(m_columns);
        readRows(row, 1, values.data());
        return timeInRow(row, values.data());
    }
    return timeInRow(row, run(1, bucket).values + std::size_t{(row - 1) % m_bucketRows} * m_columns);
}

std::uint32_t PlotSource::rowAt(double t) const
{
    if (m_rows == 0 || std::isnan(t))
        return 0;
    const std::uint32_t row = m_timeKind == TimeKind::EachRow ? rowByTimes(t) : rowInSteps(t);
    return row < m_firstRow ? 0 : row;
}

std::uint32_t PlotSource::rowInSteps(double t) const
{
    const bool numbers = m_timeKind == TimeKind::RowNumbers;
    const double steps = numbers ? t : (t - m_base) / m_dt;
    if (steps < 0.5)
        return timeOf(1) <= t ? 1 : 0;
    if (steps >= m_rows)
        return m_rows;
    // The quotient may round over the time of a row: that time decides.
    auto row = static_cast<std::uint32_t>(steps);
    while (row < m_rows && timeOf(row + 1) <= t)
        ++row;
    while (row > 0 && timeOf(row) > t)
        --row;
    return row;
}

std::uint32_t PlotSource::rowByTimes(double t) const
{
    std::uint32_t low = m_firstRow;
    std::uint32_t high = m_rows;
    if (m_timesKnown) {
        const auto after = std::upper_bound(m_bucketTimes.begin(), m_bucketTimes.end(), t);
        if (after == m_bucketTimes.begin())
            return 0;
        const auto bucket = static_cast<std::uint32_t>(after - m_bucketTimes.begin() - 1);
        low = bucket * m_bucketRows + 1;
        high = low + rowsOf(bucket) - 1;
        low = std::max(low, m_firstRow);
        if (low > high || timeOf(low) > t)
            return low - 1;
    } else if (timeOf(m_firstRow) > t) {
        return 0;
    }
    while (low < high) {
        const std::uint32_t middle = high - (high - low) / 2;
        if (timeOf(middle) <= t)
            low = middle;
        else
            high = middle - 1;
    }
    return low;
}

std::uint32_t PlotSource::rowNear(double t, double tolerance) const
{
    if (m_rows == 0 || std::isnan(t))
        return 0;
    const std::uint32_t row = nearRow(t, tolerance);
    return row < m_firstRow ? 0 : row;
}

std::uint32_t PlotSource::nearRow(double t, double tolerance) const
{
    if (m_timeKind != TimeKind::EachRow) {
        const std::uint32_t row = rowInSteps(t);
        const double width = m_bucketRows * (m_timeKind == TimeKind::Steps ? m_dt : 1.0);
        return width <= tolerance && row < m_rows ? row - row % m_bucketRows : row;
    }
    const auto after = std::upper_bound(m_bucketTimes.begin(), m_bucketTimes.end(), t);
    if (after == m_bucketTimes.begin() || !m_timesKnown)
        return rowByTimes(t);
    const double end = after == m_bucketTimes.end() ? m_lastTime : *after;
    if (t >= m_lastTime || end - *(after - 1) > tolerance)
        return rowByTimes(t);
    return static_cast<std::uint32_t>(after - m_bucketTimes.begin() - 1) * m_bucketRows;
}

float PlotSource::value(std::uint32_t column, std::uint32_t row) const
{
    const Run r = run(column, (row - 1) / m_bucketRows);
    return r.values[(row - 1) % m_bucketRows * r.stride];
}

std::uint32_t PlotSource::rowsOf(std::uint32_t bucket) const
{
    return std::min(m_bucketRows, m_rows - bucket * m_bucketRows);
}

PlotSource::Run PlotSource::run(std::uint32_t column, std::uint32_t bucket) const
{
    const std::size_t count = rowsOf(bucket);
    if (const float* const all = rowsInMemory(bucket))
        return {all + column - 1, m_columns, count};
    if (m_columns > kWide)
        return {kept(column, bucket).values.data(), 1, count};
    return {kept(0, bucket).values.data() + column - 1, m_columns, count};
}

PlotSource::Pieces PlotSource::pieces(std::uint32_t first, std::uint32_t last) const
{
    Pieces cut;
    if (first > last)
        return cut;
    const std::uint32_t ahead = first - 1;
    cut.begin = (ahead + m_bucketRows - 1) / m_bucketRows;
    // The last bucket may be a short one: it is whole where the run ends with the rows.
    cut.end = last == m_rows ? (last + m_bucketRows - 1) / m_bucketRows : last / m_bucketRows;
    if (const std::uint32_t from = ahead % m_bucketRows; from != 0) {
        const std::uint32_t bucket = cut.begin - 1;
        cut.before = {bucket, from, std::min(m_bucketRows, last - bucket * m_bucketRows)};
    }
    // A run within one bucket has no more than that.
    if (const std::uint32_t to = last % m_bucketRows; to != 0 && last != m_rows && cut.begin <= cut.end)
        cut.behind = {cut.end, 0, to};
    cut.end = std::max(cut.begin, cut.end);
    return cut;
}

void PlotSource::widen(const Piece& piece, std::span<const std::uint32_t> columns,
                       std::span<Extremes> into) const
{
    if (piece.isEmpty())
        return;
    const std::size_t rows = piece.to - piece.from;
    // Of rows side by side four columns cost what one does.
    if (m_columns > 1 && m_columns <= kWide && columns.size() * 4 >= m_columns) {
        std::vector<Extremes> all(m_columns);
        extremesOfColumns(run(1, piece.bucket).values + std::size_t{piece.from} * m_columns, rows, all);
        for (std::size_t k = 0; k < columns.size(); ++k)
            into[k].widen(all[columns[k] - 1]);
        return;
    }
    for (std::size_t k = 0; k < columns.size(); ++k) {
        const Run own = run(columns[k], piece.bucket);
        into[k].widen(extremesOf(own.values + piece.from * own.stride, own.stride, rows));
    }
}

const PlotSource::Kept* PlotSource::KeptRuns::find(std::uint32_t column, std::uint32_t bucket)
{
    const auto isWanted = [&](const Kept& run) { return run.bucket == bucket && run.column == column; };
    if (m_latest >= m_runs.size() || !isWanted(m_runs[m_latest])) {
        const auto found = std::find_if(m_runs.begin(), m_runs.end(), isWanted);
        if (found == m_runs.end())
            return nullptr;
        m_latest = static_cast<std::size_t>(found - m_runs.begin());
    }
    return &m_runs[m_latest];
}

PlotSource::Kept& PlotSource::KeptRuns::place(std::size_t most)
{
    if (m_runs.size() < most) {
        m_latest = m_runs.size();
        m_runs.emplace_back();
    } else {
        m_latest = m_nextVictim++ % m_runs.size();
    }
    return m_runs[m_latest];
}

void PlotSource::KeptRuns::forget(std::uint32_t bucket)
{
    for (Kept& run : m_runs)
        if (run.bucket == bucket)
            run.bucket = kNoBucket;
}

const PlotSource::Kept& PlotSource::kept(std::uint32_t column, std::uint32_t bucket) const
{
    if (const Kept* const known = m_kept.find(column, bucket))
        return *known;
    const std::uint32_t count = rowsOf(bucket);
    const std::size_t floats = std::size_t{count} * (column == 0 ? m_columns : 1);
    const std::size_t most =
        std::clamp(kCacheFloats / std::max<std::size_t>(1, floats), kFewestRuns, kMostRuns);
    // Stands for no bucket until it is read.
    Kept& fresh = m_kept.place(most);
    fresh.bucket = kNoBucket;
    fresh.values.resize(floats);
    if (column == 0)
        readRows(bucket * m_bucketRows + 1, count, fresh.values.data());
    else
        for (std::uint32_t i = 0; i < count; ++i)
            fresh.values[i] = readValue(column, bucket * m_bucketRows + 1 + i);
    fresh.bucket = bucket;
    fresh.column = column;
    return fresh;
}

const float* PlotSource::rowsInMemory(std::uint32_t /*bucket*/) const
{
    return nullptr;
}

void PlotSource::rowsCame(std::uint32_t rows)
{
    const std::uint32_t lastBucket = m_rows / m_bucketRows;
    m_rows = rows;
    m_kept.forget(lastBucket);
}

void PlotSource::forgetBuckets(std::uint32_t buckets)
{
    const std::uint32_t rows = buckets * m_bucketRows;
    m_rows -= rows;
    m_firstRow -= rows;
    m_firstSample += rows;
    m_base += rows * m_dt;
    if (m_bucketTimes.size() >= buckets)
        m_bucketTimes.erase(m_bucketTimes.begin(), m_bucketTimes.begin() + buckets);
    m_kept = {};
}

bool PlotSource::learnTimes(std::uint32_t first, std::uint32_t count, const float* rows)
{
    if (m_timeKind != TimeKind::EachRow)
        return m_timeKind == TimeKind::Steps;
    if (first == 1) {
        m_bucketTimes.clear();
        m_lastTime = -std::numeric_limits<double>::infinity();
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        const double t = timeInRow(first + i, rows + std::size_t{i} * m_columns);
        // A time that is no number counts as one that runs backwards.
        if (!(t >= m_lastTime) || std::isinf(t)) {
            m_timeKind = TimeKind::RowNumbers;
            return false;
        }
        m_lastTime = t;
        if ((first + i - 1) % m_bucketRows == 0)
            m_bucketTimes.push_back(t);
    }
    return true;
}

}  // namespace veltrac
