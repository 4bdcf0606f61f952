#include "share/Histogram.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

#include "core/ColumnCopy.h"

namespace veltrac {

namespace {

constexpr std::size_t kValuesAtOnce = 1U << 16;
constexpr std::size_t kCells = 1U << 16;
constexpr double kFineCells = 10000.0;  // that the quartiles have to lie apart
constexpr int kMostPasses = 4;

// Calls `take` with each value of the rows that counts: a logarithmic axis leaves out those not above 0.
template <typename Take>
JobOutcome walkValues(const Variable& v, const SampleRange& rows, const HsVariable::Statistics& all,
                      const Progress& progress, Take take)
{
    const PlotSource& source = *v.source();
    const std::size_t columns = source.columns();
    const auto atOnce = static_cast<std::uint32_t>(std::max<std::size_t>(1, kValuesAtOnce / columns));
    std::vector<float> run(atOnce * columns);
    for (std::uint32_t row = rows.first; row <= rows.last;) {
        const std::uint32_t count = std::min(atOnce, rows.last - row + 1);
        source.readRows(row, count, run.data());
        for (std::size_t i = 0; i < count; ++i) {
            const double value = v.shown(run[i * columns + v.column() - 1]);
            if (value >= all.least && value <= all.greatest)
                take(value);
        }
        row += count;
        if (!goesOn(progress, row - rows.first, rows.count()))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

struct Span
{
    double from = 0.0;
    double to = 0.0;
};

// Counts in cells of equal width over a span, and what lies below it.
class CellCounts
{
public:
    explicit CellCounts(Span span)
        : m_span(span), m_perValue(kCells / (span.to - span.from)), m_counts(kCells, 0)
    {
    }
    void add(double value)
    {
        if (value < m_span.from)
            ++m_below;
        else if (value <= m_span.to)
            ++m_counts[std::min(static_cast<std::size_t>((value - m_span.from) * m_perValue), kCells - 1)];
    }
    // Where so many of the values lie below, by the line through the cell.
    double quantile(double below) const
    {
        auto sum = static_cast<double>(m_below);
        for (std::size_t c = 0; c < kCells; ++c) {
            const auto here = static_cast<double>(m_counts[c]);
            if (here > 0.0 && sum + here >= below)
                return m_span.from + (static_cast<double>(c) + (below - sum) / here) / m_perValue;
            sum += here;
        }
        return m_span.to;
    }
    double width() const { return 1.0 / m_perValue; }

private:
    Span m_span;
    double m_perValue;
    std::uint64_t m_below = 0;
    std::vector<std::uint64_t> m_counts;
};

// The distance of the quartiles.
JobOutcome findQuartiles(const Variable& v, const SampleRange& rows, const HsVariable::Statistics& all,
                         double& distance, const Progress& progress)
{
    constexpr double kLower = 0.25;
    constexpr double kUpper = 0.75;
    Span span{all.least, all.greatest};
    for (int pass = 0; pass < kMostPasses; ++pass) {
        CellCounts cells(span);
        if (walkValues(v, rows, all, progress, [&](double value) { cells.add(value); }) ==
            JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
        const double low = cells.quantile(kLower * all.count);
        const double high = cells.quantile(kUpper * all.count);
        distance = high - low;
        if (distance > kFineCells * cells.width())
            return JobOutcome::Done;
        span = {low - 2.0 * cells.width(), high + 2.0 * cells.width()};
        if (!(span.to > span.from))
            break;
    }
    // They cannot be told apart: half of the values are equal.
    if (distance < all.deviation / kCells)
        distance = 0.0;
    return JobOutcome::Done;
}

std::uint32_t binsFor(const HsVariable::Statistics& all, double quartiles)
{
    if (!(quartiles > 0.0))
        return 1 + static_cast<std::uint32_t>(std::ceil(std::log2(all.count)));
    const double width = 2.0 * quartiles / std::cbrt(static_cast<double>(all.count));
    const double bins = std::ceil((all.greatest - all.least) / width);
    return static_cast<std::uint32_t>(std::clamp(bins, 1.0, kMostHistogramBins + 1.0));
}

}  // namespace

JobOutcome makeHistogram(const HsVariable& variable, const HistogramRequest& request, Histogram& histogram,
                         const Progress& progress)
{
    const Variable& v = variable.variable();
    Histogram made;
    if (request.rows.isEmpty()) {
        histogram = made;
        return JobOutcome::Done;
    }
    const HsVariable::Statistics all = variable.statistics(request.rows.first, request.rows.last);
    made.total = all.count;
    made.missing = all.missing;
    made.mean = all.mean;
    made.deviation = all.deviation;
    const double span = all.greatest - all.least;
    if (all.count == 0 || !(span > 0.0)) {
        made.from = all.least - 0.5;
        made.width = 1.0;
        made.counts.assign(all.count == 0 ? 0 : 1, all.count);
        histogram = made;
        return JobOutcome::Done;
    }
    std::uint32_t bins = request.bins;
    double quartiles = 0.0;
    if (bins == 0) {
        if (findQuartiles(v, request.rows, all, quartiles, partOf(progress, 0, 50)) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
        bins = binsFor(all, quartiles);
    }
    made.isCapped = bins > kMostHistogramBins;
    bins = std::min(bins, kMostHistogramBins);
    made.from = all.least;
    made.width = span / bins;
    made.counts.assign(bins, 0);
    const auto count = [&](double value) {
        const double bin = std::floor((value - made.from) / span * bins);
        ++made.counts[static_cast<std::size_t>(std::clamp(bin, 0.0, bins - 1.0))];
    };
    if (walkValues(v, request.rows, all, partOf(progress, 50, 100), count) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    histogram = std::move(made);
    return JobOutcome::Done;
}

double normalDensity(const Histogram& histogram, double value)
{
    if (!(histogram.deviation > 0.0))
        return 0.0;
    const double z = (value - histogram.mean) / histogram.deviation;
    return std::exp(-0.5 * z * z) / (histogram.deviation * std::sqrt(2.0 * std::numbers::pi));
}

}  // namespace veltrac
