#include "core/PlotCurves.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/SegmentCut.h"
#include "core/TsExceptions.h"

namespace veltrac {

namespace {

constexpr int kSamplesAColumn = 2;    // up to so many are joined as they are
constexpr int kColumnsTogether = 64;  // pixel columns of a variable that are walked at once
constexpr double kOutside = 0.5;      // how far lines go beyond the square
constexpr double kTolerance = 0.125;  // of a pixel, for the edge between two of them

// Joins points to runs.
class Pen
{
public:
    explicit Pen(Curve& curve) : m_curve(curve) {}

    void to(double x, double y)
    {
        const bool inside = isInside(x, y);
        if (!m_hasLast) {
            m_hasLast = m_alone = true;
        } else if (m_lastIsInside && inside) {
            // Nothing is cut off what lies within, as most does.
            m_alone = false;
            if (!m_drawing)
                push(m_x, m_y);
            push(x, y);
            m_drawing = true;
        } else {
            m_alone = false;
            cutTo({x, y});
        }
        m_x = x;
        m_y = y;
        m_lastIsInside = inside;
    }

    void lift()
    {
        // A sample between two gaps is a run of its own.
        if (m_hasLast && m_alone && m_x >= 0.0 && m_x <= 1.0 && m_y >= 0.0 && m_y <= 1.0)
            push(m_x, m_y);
        endRun();
        m_hasLast = false;
    }

private:
    static bool isInside(double x, double y)
    {
        return x >= -kOutside && x <= 1.0 + kOutside && y >= -kOutside && y <= 1.0 + kOutside;
    }

    void cutTo(PlotPoint p)
    {
        PlotPoint a{m_x, m_y};
        PlotPoint b = p;
        if (!cutSegment(a, b, kOutside)) {
            endRun();
            return;
        }
        if (!m_drawing || a.x != m_x || a.y != m_y) {
            endRun();
            push(a.x, a.y);
        }
        push(b.x, b.y);
        m_drawing = true;
        if (b.x != p.x || b.y != p.y)
            endRun();
    }

    void push(double x, double y)
    {
        m_curve.points.push_back(static_cast<float>(x));
        m_curve.points.push_back(static_cast<float>(y));
    }

    void endRun()
    {
        const std::size_t end = m_curve.points.size() / 2;
        if (end > (m_curve.runEnds.empty() ? 0 : m_curve.runEnds.back()))
            m_curve.runEnds.push_back(end);
        m_drawing = false;
    }

    Curve& m_curve;
    double m_x = 0.0;
    double m_y = 0.0;
    bool m_hasLast = false;
    bool m_lastIsInside = false;
    bool m_alone = false;
    bool m_drawing = false;
};

class Tracer
{
public:
    Tracer(const Plot2D& plot, const Group& group, Curve& curve, int columns, int markerGap)
        : m_plot(plot),
          m_group(group),
          m_curve(curve),
          m_variable(curve.variable->variable()),
          m_low(group.toScale(group.y1())),
          m_scale(1.0 / (group.toScale(group.y2()) - group.toScale(group.y1()))),
          m_pen(curve)
    {
        const XAxis& axis = plot.axis();
        const std::uint32_t first = axis.rowFrom(m_variable, plot.x1());
        m_last = axis.rowAt(m_variable, plot.x2());
        m_next = first;
        const std::uint64_t inView = m_last >= first ? m_last - first + 1 : 0;
        m_many = inView > std::uint64_t{kSamplesAColumn} * static_cast<unsigned>(columns);
        if (!m_many) {
            joinSamples(first, inView * static_cast<unsigned>(markerGap) <= static_cast<unsigned>(columns));
        } else if (curve.variable->isBuilt()) {
            curve.points.reserve(std::size_t{4} * static_cast<unsigned>(columns));
        } else {
            curve.failure = "not read yet";
            curve.unread = true;
        }
    }

    bool isMany() const noexcept { return m_many; }
    // How much of x a bucket of the pyramid takes; no bound is known where each row has its own time.
    double bucketWidth() const
    {
        const PlotSource& source = *m_variable.source();
        return source.timeKind() == PlotSource::TimeKind::EachRow ? std::numeric_limits<double>::infinity()
                                                                  : source.bucketRows() * source.step();
    }

    // The samples up to the right edge of a pixel column, whose middle is at `middle` of the width.
    void column(double middle, double edge, double tolerance, bool isLast)
    {
        const std::uint32_t end =
            isLast ? m_last : std::min(m_last, m_plot.axis().rowNear(m_variable, edge, tolerance));
        // A column without samples is no gap: the line goes on over it.
        if (end < m_next)
            return;
        const HsVariable::Range range = m_curve.variable->range(m_next, end);
        m_next = end + 1;
        if (range.empty) {
            m_pen.lift();
            return;
        }
        const double low = height(range.least);
        const double high = height(range.greatest);
        m_pen.to(middle, m_up ? low : high);
        if (low != high)
            m_pen.to(middle, m_up ? high : low);
        m_up = !m_up;
    }

    void finish() { m_pen.lift(); }

private:
    double height(double y) const { return (m_group.toScale(y) - m_low) * m_scale; }

    void joinSamples(std::uint32_t first, bool withMarkers)
    {
        // One more on either side, so that the line leaves the view.
        const std::uint32_t from = first > m_variable.firstRow() ? first - 1 : m_variable.firstRow();
        const std::uint32_t to = std::min(m_last + 1, m_variable.rows());
        for (std::uint32_t row = from; row <= to; ++row) {
            const double x = m_plot.axis().xOf(m_variable, row);
            const double y = m_variable.value(row);
            if (!std::isfinite(y) || (m_group.isLogarithmic() && y <= 0.0) ||
                (m_plot.axis().logarithmic && x <= 0.0)) {
                m_pen.lift();
                continue;
            }
            const PlotPoint p{m_plot.fractionOf(x), height(y)};
            m_pen.to(p.x, p.y);
            if (withMarkers && p.x >= 0.0 && p.x <= 1.0 && p.y >= 0.0 && p.y <= 1.0) {
                m_curve.markers.push_back(static_cast<float>(p.x));
                m_curve.markers.push_back(static_cast<float>(p.y));
            }
        }
        m_pen.lift();
    }

    const Plot2D& m_plot;
    const Group& m_group;
    Curve& m_curve;
    const Variable& m_variable;
    double m_low;
    double m_scale;
    Pen m_pen;
    std::uint32_t m_next = 1;
    std::uint32_t m_last = 0;
    bool m_many = false;
    bool m_up = true;
};

// Runs a step of a curve; what fails there is the curve's own business.
template <typename Step>
bool guarded(Curve& curve, Step step)
{
    try {
        step();
        return true;
    } catch (const TS::Failure&) {
        curve.failure = "cannot be read any more";
        curve.unread = true;
    }
    curve.points.clear();
    curve.runEnds.clear();
    curve.markers.clear();
    return false;
}

// Why a variable that can be read has nothing to show; empty where it has.
std::string reasonForNothing(const HsVariable& v, bool logarithmic)
{
    if (v.variable().rows() == 0)
        return "no samples";
    // Of the whole series nothing has to be read.
    if (!v.isBuilt() || !v.range(v.variable().firstRow(), v.variable().rows()).empty)
        return {};
    return logarithmic ? "no values above 0" : "no values";
}

std::vector<Curve> emptyCurves(const Plot2D& plot)
{
    std::vector<Curve> curves;
    for (std::size_t g = 0; g < plot.groups().size(); ++g) {
        for (const auto& v : plot.groups()[g].variables()) {
            if (!v->variable().visible)
                continue;
            Curve& curve = curves.emplace_back();
            curve.variable = v.get();
            curve.group = g;
            curve.failure = v->failure();
            curve.unread = !curve.failure.empty();
            if (curve.failure.empty())
                guarded(curve,
                        [&] { curve.failure = reasonForNothing(*v, plot.groups()[g].isLogarithmic()); });
        }
    }
    return curves;
}

}  // namespace

std::vector<Curve> curvesOf(const Plot2D& plot, int columns, int markerGap)
{
    std::vector<Curve> curves = emptyCurves(plot);
    columns = std::max(columns, 1);
    struct Job
    {
        Curve* curve;
        Tracer tracer;
    };
    std::vector<Job> jobs;
    jobs.reserve(curves.size());
    for (Curve& curve : curves) {
        if (!curve.failure.empty())
            continue;
        guarded(curve, [&] {
            Tracer tracer(plot, plot.groups()[curve.group], curve, columns, markerGap);
            if (tracer.isMany() && curve.failure.empty())
                jobs.push_back({&curve, tracer});
        });
    }
    std::vector<double> edges{plot.x1()};
    edges.reserve(static_cast<std::size_t>(columns) + 1);
    for (int c = 0; c < columns; ++c)
        edges.push_back(plot.xAtFraction((c + 1.0) / columns));
    const auto traceColumn = [&](Job& job, int c) {
        const auto at = static_cast<std::size_t>(c);
        job.tracer.column((c + 0.5) / columns, edges[at + 1], (edges[at + 1] - edges[at]) * kTolerance,
                          c + 1 == columns);
    };
    // Pixel column by pixel column over all variables: those of one file share what is read at the edges.
    // Where nothing is, a variable's pyramid is walked a while before the next one's.
    const bool reads = std::any_of(jobs.begin(), jobs.end(), [&](const Job& job) {
        return job.tracer.bucketWidth() > (edges[1] - edges[0]) * kTolerance;
    });
    const int together = reads ? 1 : kColumnsTogether;
    for (int begin = 0; begin < columns; begin += together)
        for (Job& job : jobs)
            if (job.curve->failure.empty())
                guarded(*job.curve, [&] {
                    for (int c = begin; c < std::min(columns, begin + together); ++c)
                        traceColumn(job, c);
                });
    for (Job& job : jobs)
        if (job.curve->failure.empty())
            job.tracer.finish();
    return curves;
}

}  // namespace veltrac
