#include "core/PlotCurves.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/SegmentCut.h"
#include "core/TsExceptions.h"

namespace veltrac {

namespace {

constexpr int kSamplesAColumn = 2;     // up to so many are joined as they are
constexpr int kColumnsTogether = 256;  // pixel columns whose rows are looked at before they are drawn
constexpr double kOutside = 0.5;       // how far lines go beyond the square
constexpr double kTolerance = 0.125;   // of a pixel, for the edge between two of them

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
        m_first = axis.rowFrom(m_variable, plot.x1());
        m_last = axis.rowAt(m_variable, plot.x2());
        const std::uint64_t inView = m_last >= m_first ? m_last - m_first + 1 : 0;
        m_many = inView > std::uint64_t{kSamplesAColumn} * static_cast<unsigned>(columns);
        if (!m_many) {
            joinSamples(inView * static_cast<unsigned>(markerGap) <= static_cast<unsigned>(columns));
        } else if (curve.variable->isBuilt()) {
            curve.points.reserve(std::size_t{4} * static_cast<unsigned>(columns));
        } else {
            curve.failure = "not read yet";
            curve.unread = true;
        }
    }

    bool isMany() const noexcept { return m_many; }
    // In view: m_last lies before m_first where there are none.
    std::uint32_t firstRow() const noexcept { return m_first; }
    std::uint32_t lastRow() const noexcept { return m_last; }
    Curve& curve() const noexcept { return m_curve; }
    const Variable& variable() const noexcept { return m_variable; }

    // The samples of a pixel column, whose middle is at `middle` of the width.
    void stroke(double middle, const HsVariable::Range& range)
    {
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

    void joinSamples(bool withMarkers)
    {
        // One more on either side, so that the line leaves the view.
        const std::uint32_t from = m_first > m_variable.firstRow() ? m_first - 1 : m_variable.firstRow();
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
    std::uint32_t m_first = 1;
    std::uint32_t m_last = 0;
    bool m_many = false;
    bool m_up = true;
};

void fail(Curve& curve)
{
    curve.failure = "cannot be read any more";
    curve.unread = true;
    curve.points.clear();
    curve.runEnds.clear();
    curve.markers.clear();
}

// Runs a step of a curve; what fails there is the curve's own business.
template <typename Step>
void guarded(Curve& curve, Step step)
{
    try {
        step();
    } catch (const TS::Failure&) {
        fail(curve);
    }
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

// Where pixel columns end.
struct PixelColumns
{
    PixelColumns(const Plot2D& plot, int count) : edges{plot.x1()}
    {
        edges.reserve(static_cast<std::size_t>(count) + 1);
        for (int c = 0; c < count; ++c)
            edges.push_back(plot.xAtFraction((c + 1.0) / count));
    }
    std::size_t count() const noexcept { return edges.size() - 1; }
    double middle(std::size_t c) const
    {
        return (static_cast<double>(c) + 0.5) / static_cast<double>(count());
    }

    std::vector<double> edges;
};

// The curves whose samples stand at the same x: of one source, shifted alike. Their rows below a pixel column
// are the same ones, and what fills no bucket of the pyramids is read once for all of them.
class Neighbours
{
public:
    Neighbours(const Plot2D& plot, const Tracer& first)
        : m_axis(plot.axis()), m_variable(first.variable()), m_next(first.firstRow()), m_last(first.lastRow())
    {
    }

    bool takes(const Tracer& tracer) const
    {
        return tracer.variable().source() == m_variable.source() &&
               tracer.variable().timeShift == m_variable.timeShift;
    }
    void add(const Tracer& tracer)
    {
        m_tracers.push_back(tracer);
        m_columns.push_back(tracer.variable().column());
    }

    void trace(const PixelColumns& pixels)
    {
        try {
            for (std::size_t begin = 0; begin < pixels.count(); begin += kColumnsTogether) {
                look(pixels, begin, std::min(pixels.count(), begin + kColumnsTogether));
                for (std::size_t k = 0; k < m_tracers.size(); ++k)
                    draw(pixels, k);
            }
            for (Tracer& tracer : m_tracers)
                tracer.finish();
        } catch (const TS::Failure&) {
            for (Tracer& tracer : m_tracers)
                fail(tracer.curve());
        }
    }

private:
    // The rows of a pixel column that has any.
    struct Rows
    {
        std::size_t pixel;
        std::uint32_t first;
        std::uint32_t last;
        PlotSource::Pieces pieces;
    };

    // Finds the rows of pixel columns begin to end - 1, and the extremes of their loose ends.
    void look(const PixelColumns& pixels, std::size_t begin, std::size_t end)
    {
        const PlotSource& source = *m_variable.source();
        m_rows.clear();
        m_looseEnds.clear();
        for (std::size_t c = begin; c < end; ++c) {
            const double edge = pixels.edges[c + 1];
            const double tolerance = (edge - pixels.edges[c]) * kTolerance;
            const std::uint32_t last = c + 1 == pixels.count()
                                           ? m_last
                                           : std::min(m_last, m_axis.rowNear(m_variable, edge, tolerance));
            // A column without samples is no gap: the line goes on over it.
            if (last < m_next)
                continue;
            const Rows& rows = m_rows.emplace_back(Rows{c, m_next, last, source.pieces(m_next, last)});
            m_next = last + 1;
            m_looseEnds.resize(m_rows.size() * m_columns.size());
            const auto looseEnds = std::span(m_looseEnds).last(m_columns.size());
            source.widen(rows.pieces.before, m_columns, looseEnds);
            source.widen(rows.pieces.behind, m_columns, looseEnds);
        }
    }

    void draw(const PixelColumns& pixels, std::size_t k)
    {
        Tracer& tracer = m_tracers[k];
        const HsVariable& v = *tracer.curve().variable;
        const bool takesAll = v.takesAll();
        for (std::size_t i = 0; i < m_rows.size(); ++i) {
            const Rows& rows = m_rows[i];
            tracer.stroke(pixels.middle(rows.pixel),
                          takesAll ? v.range(rows.pieces, m_looseEnds[i * m_columns.size() + k])
                                   : v.range(rows.first, rows.last));
        }
    }

    const XAxis& m_axis;
    const Variable& m_variable;
    std::uint32_t m_next;
    std::uint32_t m_last;
    std::vector<Tracer> m_tracers;
    std::vector<std::uint32_t> m_columns;
    std::vector<Rows> m_rows;
    std::vector<Extremes> m_looseEnds;  // of each of the rows, of each curve
};

}  // namespace

std::vector<Curve> curvesOf(const Plot2D& plot, int columns, int markerGap)
{
    std::vector<Curve> curves = emptyCurves(plot);
    columns = std::max(columns, 1);
    std::vector<Neighbours> groups;
    for (Curve& curve : curves) {
        if (!curve.failure.empty())
            continue;
        guarded(curve, [&] {
            const Tracer tracer(plot, plot.groups()[curve.group], curve, columns, markerGap);
            if (!tracer.isMany() || !curve.failure.empty())
                return;
            const auto found = std::find_if(groups.begin(), groups.end(),
                                            [&tracer](const Neighbours& g) { return g.takes(tracer); });
            (found == groups.end() ? groups.emplace_back(plot, tracer) : *found).add(tracer);
        });
    }
    const PixelColumns pixels(plot, columns);
    for (Neighbours& group : groups)
        group.trace(pixels);
    return curves;
}

}  // namespace veltrac
