// Where a plot's samples come from: rows of columns with a time each.
//
// Rows count from 1, the oldest first. Times count from startSeconds() of the source. Neighbouring
// rows are read a bucket at a time and a few buckets are kept, so that several columns, and the two ends of
// a pixel's run, cost one read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/Pyramid.h"

namespace veltrac {

class PlotSource
{
public:
    // How the source tells its time: by equal steps, by a time of each row's own, or not at all, because
    // the steps are not positive or the times run backwards: then the row number stands for the time.
    enum class TimeKind { Steps, EachRow, RowNumbers };

    virtual ~PlotSource() = default;
    PlotSource(const PlotSource&) = delete;
    PlotSource& operator=(const PlotSource&) = delete;

    // The rows are firstRow() to rows(). Of a source that is followed the oldest ones may have gone, and the
    // others keep their numbers.
    std::uint32_t rows() const noexcept { return m_rows; }
    std::uint32_t firstRow() const noexcept { return m_firstRow; }
    std::uint32_t columns() const noexcept { return m_columns; }
    // Rows a bucket: fewer where rows are wide, so that the ends of a run stay cheap to read.
    std::uint32_t bucketRows() const noexcept { return m_bucketRows; }
    TimeKind timeKind() const noexcept { return m_timeKind; }
    // Times and steps count in units of so many seconds.
    double unitSeconds() const noexcept { return m_unitSeconds; }
    // From a row to the next; where steps differ, a mean.
    double step() const;
    // Seconds since the epoch from which the times count, where they are those of a calendar.
    std::uint32_t startSeconds() const noexcept { return m_startSeconds; }
    bool hasCalendar() const noexcept { return m_hasCalendar; }
    // The number of the sample in a row: in ring files another than the row.
    std::uint32_t sampleOf(std::uint32_t row) const noexcept { return m_firstSample + row - 1; }
    // Whether a sample stands for as much of x as any other; of others a mean means nothing.
    bool isEvenlySpaced() const noexcept { return m_evenlySpaced; }

    // Row firstRow() to rows(). Throws the TS exceptions, as everything below that reads.
    double timeOf(std::uint32_t row) const;
    // The last row whose time is at or before t; 0 where there is none.
    std::uint32_t rowAt(double t) const;
    // As rowAt(), but the answer may be off by samples whose times lie within `tolerance` of t: it is the
    // end of a bucket of rows where there is such a one, which saves reading them.
    std::uint32_t rowNear(double t, double tolerance) const;

    float value(std::uint32_t column, std::uint32_t row) const;

    // The values of a column in one bucket of rows: bucket * bucketRows() + 1 and the following ones.
    struct Run
    {
        const float* values = nullptr;  // valid until the next call
        std::size_t stride = 0;
        std::size_t count = 0;
    };
    Run run(std::uint32_t column, std::uint32_t bucket) const;
    // Rows of one bucket, counted from its first one, 0: `from` to `to` - 1.
    struct Piece
    {
        std::uint32_t bucket = 0;
        std::uint32_t from = 0;
        std::uint32_t to = 0;

        bool isEmpty() const noexcept { return from == to; }
    };
    // Rows first to last, cut where buckets end: whole buckets `begin` to `end` - 1, and what is before and
    // behind them.
    struct Pieces
    {
        Piece before;
        std::uint32_t begin = 0;
        std::uint32_t end = 0;
        Piece behind;
    };
    Pieces pieces(std::uint32_t first, std::uint32_t last) const;
    // Widens into[k] by the extremes of columns[k] in a piece.
    void widen(const Piece& piece, std::span<const std::uint32_t> columns, std::span<Extremes> into) const;

    // `count` rows from row `first`, columns() values each.
    virtual void readRows(std::uint32_t first, std::uint32_t count, float* out) const = 0;

    // The pass over the source shows it each row's time: rows first, first + 1, … as readRows() gave them.
    // False from the first time that lies before the one above it; the source then counts in row numbers.
    bool learnTimes(std::uint32_t first, std::uint32_t count, const float* rows);
    // Whether a pass has to be made before times can be asked for.
    bool timesAreKnown() const noexcept { return m_timeKind != TimeKind::EachRow || m_timesKnown; }
    void timesAreComplete() noexcept { m_timesKnown = true; }

    // So many buckets at the beginning, whose rows are all gone, are forgotten: the rows that are left get
    // lower numbers. Only where times are known.
    virtual void forgetBuckets(std::uint32_t buckets);

protected:
    PlotSource() = default;

    // The time that stands in a row's values; only asked where timeKind() is EachRow.
    virtual double timeInRow(std::uint32_t row, const float* values) const = 0;
    virtual float readValue(std::uint32_t column, std::uint32_t row) const = 0;
    // All rows of a bucket side by side where the source has them in memory; else null.
    virtual const float* rowsInMemory(std::uint32_t bucket) const;

    // The source is not what it was.
    void forgetContents()
    {
        m_kept = {};
        m_bucketTimes.clear();
        m_timesKnown = false;
        m_firstRow = 1;
    }

    // There are more rows than there were: what is kept of a bucket that was short is not all of it.
    void rowsCame(std::uint32_t rows);

    std::uint32_t m_rows = 0;
    std::uint32_t m_firstRow = 1;
    std::uint32_t m_columns = 0;
    std::uint32_t m_bucketRows = Pyramid::kLargestBucket;
    double m_unitSeconds = 1.0;
    std::uint32_t m_startSeconds = 0;
    std::uint32_t m_firstSample = 1;
    bool m_hasCalendar = false;
    bool m_evenlySpaced = true;
    TimeKind m_timeKind = TimeKind::Steps;
    double m_base = 0.0;  // time of the step before row 1
    double m_dt = 1.0;

private:
    struct Kept
    {
        std::uint32_t bucket = 0;
        std::uint32_t column = 0;  // 0: all of them
        std::vector<float> values;
    };
    // The few runs that were read last.
    class KeptRuns
    {
    public:
        // Null where it is not kept.
        const Kept* find(std::uint32_t column, std::uint32_t bucket);
        // A place for another one, instead of an old one where there are `most` already.
        Kept& place(std::size_t most);
        // The others stay where they are, which their readers count on.
        void forget(std::uint32_t bucket);

    private:
        std::vector<Kept> m_runs;
        std::size_t m_latest = 0;
        std::size_t m_nextVictim = 0;
    };
    const Kept& kept(std::uint32_t column, std::uint32_t bucket) const;
    std::uint32_t rowsOf(std::uint32_t bucket) const;
    std::uint32_t rowInSteps(double t) const;
    std::uint32_t rowByTimes(double t) const;
    std::uint32_t nearRow(double t, double tolerance) const;

    mutable KeptRuns m_kept;
    std::vector<double> m_bucketTimes;  // of the first row of each bucket
    double m_lastTime = 0.0;
    bool m_timesKnown = false;
};

}  // namespace veltrac
