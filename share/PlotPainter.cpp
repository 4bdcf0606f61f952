#include "share/PlotPainter.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "core/NumberTexts.h"
#include "core/PlotCurves.h"
#include "share/BasicDriver.h"
#include "share/CellPainter.h"
#include "share/ColorMap.h"
#include "share/ImageDevice.h"
#include "share/PathPainter.h"
#include "share/PlotLegend.h"
#include "share/PlotPen.h"
#include "share/SmoothDevice.h"

using namespace veltrac;

namespace {

constexpr int kBarDigits = 3;

constexpr float kFrameWidthMm = 0.2F;
constexpr float kTickWidthMm = 0.2F;
constexpr float kCursorWidthMm = 0.2F;
constexpr float kTitleSizes[] = {1.0F, 0.85F, 0.75F};  // tried in turn, of the other texts' size
constexpr float kLineHeight = 1.2F;                    // in character heights
constexpr float kTopLines = 0.6F;                      // above the first group, in line heights
constexpr float kGapLines = 0.7F;                      // between two groups
constexpr float kLegendLines = 1.3F;                   // of a legend's first row; others take one
constexpr float kMostLegend = 0.25F;                   // of a group's height
constexpr float kMostRows = 1000.0F;                   // of a legend
constexpr float kPowerLines = 1.0F;                    // of a power of ten above a y axis
constexpr float kRightChars = 3.5F;                    // behind the last label's middle
constexpr int kEdgePixels = 2;
constexpr int kNoteStyle = 4;  // dots

// One drawing of one plot.
class Sheet
{
public:
    Sheet(const Plot2D& plot, BasicDriver& driver, int columns, const PlotLook& look)
        : m_plot(plot), m_driver(driver), m_columns(std::max(columns, 1)), m_look(look), m_pen(driver, look)
    {
    }

    PlotLayout draw()
    {
        prepare();
        if (m_layout.groupOf.empty()) {
            drawEmpty();
            return m_layout;
        }
        placeGroups();
        m_curves = curvesOf(m_plot, plotColumns(), m_look.markerGap);
        std::size_t points = 0;
        for (const Curve& curve : m_curves)
            points += curve.points.size() / 2;
        m_isSmooth = m_look.smooth && points <= kMostSmoothPoints;
        for (std::size_t i = 0; i < m_layout.groups.size(); ++i)
            drawGroup(i);
        drawNotes();
        drawTitle();
        for (const Curve& curve : m_curves)
            if (curve.unread)
                m_layout.unread.push_back(failureText(curve));
        return m_layout;
    }

private:
    const Group& group(std::size_t i) const { return m_plot.groups()[m_layout.groupOf[i]]; }

    void prepare()
    {
        const std::vector<PlotColor>& colors = m_look.colors.empty() ? defaultPlotColors() : m_look.colors;
        m_driver.DefineColor(kTextColor, m_look.text.r, m_look.text.g, m_look.text.b);
        int highest = kFirstVariableColor + static_cast<int>(colors.size());
        for (const auto& v : m_plot.variables())
            highest = std::max(highest, v->variable().colorIndex + 1);
        highest = std::min(highest, kFirstVariableColor + 4096);
        for (int i = kFirstVariableColor; i < highest; ++i) {
            const PlotColor& c = colors[static_cast<std::size_t>(i - kFirstVariableColor) % colors.size()];
            m_driver.DefineColor(i, c.r, c.g, c.b);
        }
        plainPen();
        m_driver.FontControl(m_look.textScale, 0);
        m_driver.TextExtent("0", &m_charWidth, nullptr);
        // The height of a line, which on paper is more than the extent of a text.
        m_charHeight = static_cast<float>(m_driver.yLabelRoom().gap) * kLineHeight;
        for (std::size_t g = 0; g < m_plot.groups().size(); ++g)
            if (m_plot.groups()[g].hasVisible())
                m_layout.groupOf.push_back(g);
    }

    void plainPen()
    {
        m_driver.SelectColor(kTextColor);
        m_driver.SetLineStyle(0);
        m_driver.SetLineWidth(kFrameWidthMm * m_look.widthFactor);
    }

    void drawEmpty()
    {
        whole();
        m_driver.SetTextJustification(0.5F, 0.5F);
        m_driver.MoveTo(0.5F, 0.5F);
        m_driver.Text("No variable is shown.", 0, 0.0F, 0);
    }

    void whole()
    {
        m_driver.SetViewport(0.0F, 0.0F, 1.0F, 1.0F);
        m_driver.SetWindow(0.0F, 0.0F, 1.0F, 1.0F);
    }

    // -- Places --

    bool hasLegend(std::size_t i) const
    {
        if (group(i).image)
            return true;
        return m_plot.legend && PlotLegend::isOf(group(i));
    }

    float linesAbove(std::size_t i)
    {
        const float own = hasLegend(i)  ? kLegendLines + static_cast<float>(m_legendRows[i] - 1)
                          : hasPower(i) ? kPowerLines
                                        : 0.0F;
        return (i == 0 ? kTopLines : kGapLines) + own;
    }

    // Whether the y axis shares a power of ten: the height that is not known yet matters little.
    bool hasPower(std::size_t i)
    {
        const auto count = static_cast<float>(m_layout.groupOf.size());
        m_driver.SetViewport(0.0F, 0.0F, 1.0F, 1.0F / count);
        return !yTicks(group(i)).powerText.empty();
    }

    void placeGroups()
    {
        m_legendRows.assign(m_layout.groupOf.size(), 1);
        placeFrames();
        // How many rows the legends take hangs on the width of the frames.
        const std::vector<std::size_t> rows = wantedRows();
        if (rows == m_legendRows)
            return;
        m_legendRows = rows;
        m_layout.groups.clear();
        m_yTicks.clear();
        m_titles.clear();
        placeFrames();
    }

    std::vector<std::size_t> wantedRows()
    {
        std::vector<std::size_t> rows;
        for (std::size_t i = 0; i < m_layout.groups.size(); ++i) {
            const float height = m_layout.groups[i].y2 - m_layout.groups[i].y1;
            // Texts of any size may be wanted, larger ones than the picture, too.
            const float room = kMostLegend * height / m_charHeight;
            const auto most = room > 1.0F ? 1 + static_cast<std::size_t>(std::min(room, kMostRows)) : 1;
            rows.push_back(
                hasLegend(i) && !group(i).image
                    ? PlotLegend(m_plot, group(i), m_driver, m_charWidth).flow(m_x1, m_x2, most).rows()
                    : 1);
        }
        return rows;
    }

    // Heights first, because ticks depend on them; then the widest y axis gives the common left margin.
    void placeFrames()
    {
        const float bottom = m_driver.xAxisHeight();
        float above = m_plot.title.empty() ? 0.0F : 1.5F * m_charHeight;
        float free = 1.0F - bottom - above;
        double shares = 0.0;
        std::vector<float> heads;
        for (std::size_t i = 0; i < m_layout.groupOf.size(); ++i) {
            heads.push_back(linesAbove(i) * m_charHeight);
            free -= heads.back();
            shares += std::max(group(i).share, 1e-3);
        }
        // Where there is no room at all the groups keep a sliver each, rather than none.
        free = std::max(free, 0.1F);
        float top = 1.0F - above;
        for (std::size_t i = 0; i < m_layout.groupOf.size(); ++i) {
            top -= heads[i];
            const auto height = static_cast<float>(free * std::max(group(i).share, 1e-3) / shares);
            m_layout.groups.push_back({0.0F, top - height, 1.0F, top});
            top -= height;
        }
        placeSides();
    }

    void placeSides()
    {
        float left = 0.0F;
        for (std::size_t i = 0; i < m_layout.groups.size(); ++i) {
            setViewport(i);
            m_yTicks.push_back(yTicks(group(i)));
            m_titles.push_back(fittingTitle(i));
            left = std::max(left, m_driver.yAxisWidth(m_yTicks.back(), yStyle(i)));
        }
        m_axisWidth = left;
        // Whole pixels, so that pixel columns of the curves are pixel columns of the device.
        const auto total = static_cast<float>(m_columns);
        m_x1 = std::ceil(std::min(left * total + kEdgePixels, 0.6F * total)) / total;
        m_x2 = std::floor(std::max((1.0F - kRightChars * m_charWidth) * total, m_x1 * total + 1.0F)) / total;
        for (PlotLayout::Frame& frame : m_layout.groups) {
            frame.x1 = m_x1;
            frame.x2 = m_x2;
        }
    }

    int plotColumns() const
    {
        return std::max(1, static_cast<int>(std::lround((m_x2 - m_x1) * static_cast<float>(m_columns))));
    }

    void setViewport(std::size_t i)
    {
        const PlotLayout::Frame& f = m_layout.groups[i];
        m_driver.SetViewport(f.x1, f.y1, f.x2, f.y2);
    }

    // -- Axes --

    AxisTicks yTicks(const Group& g)
    {
        const LabelRoom room = m_driver.yLabelRoom();
        const double from = g.toScale(g.y1());
        const double to = g.toScale(g.y2());
        return g.isLogarithmic() ? logTicks(from, to, room) : linearTicks(from, to, room);
    }

    AxisTicks xTicks()
    {
        const LabelRoom room = m_driver.xLabelRoom();
        const XAxis& axis = m_plot.axis();
        const double from = axis.toScale(m_plot.x1());
        const double to = axis.toScale(m_plot.x2());
        if (axis.logarithmic)
            return logTicks(from, to, room);
        if (axis.mode == XMode::Clock)
            return clockTicks(from + axis.origin, to + axis.origin, room);
        return linearTicks(from, to, room);
    }

    AxisStyle style() const
    {
        AxisStyle s;
        s.lineWidth = kTickWidthMm * m_look.widthFactor;
        s.grid = gridStyleOf(m_plot.grid);
        s.gridWidth = m_look.gridWidthMm * m_look.widthFactor;
        return s;
    }

    AxisStyle yStyle(std::size_t i) const
    {
        AxisStyle s = style();
        s.origin = group(i).toScale(group(i).y1());
        s.scale = group(i).toScale(group(i).y2()) - s.origin;
        s.title = m_titles[i].text.c_str();
        return s;
    }

    // A y axis' title and its size, in parts of that of the other texts.
    struct AxisTitle
    {
        std::string text;
        float size = 1.0F;
    };

    // The axis' title where it fits beside the axis, somewhat smaller if need be; else the unit alone, or
    // nothing: then the frame has it.
    AxisTitle fittingTitle(std::size_t i)
    {
        const PlotLayout::Frame& f = m_layout.groups[i];
        const std::string title = group(i).axisTitle();
        const float aspect = deviceAspect();
        const float room = f.y2 - f.y1 + 0.8F * m_charHeight;
        const auto fits = [&](const std::string& text, float size) {
            float width = 0.0F;
            m_driver.TextExtent(text.c_str(), &width, nullptr);
            return width * aspect * size * m_look.textWidth <= room;
        };
        for (const float size : kTitleSizes)
            if (fits(title, size))
                return {title, size};
        // The names stand in the legend too.
        std::string unit;
        if (hasLegend(i) && !unitIn(title).empty())
            unit.append("[").append(unitIn(title)).append("]");
        return {fits(unit, 1.0F) ? unit : std::string(), 1.0F};
    }

    // The titles of all axes stand in one line, whatever the width of their labels.
    void drawYTitle(std::size_t i)
    {
        const AxisTitle& title = m_titles[i];
        if (title.text.empty())
            return;
        const PlotLayout::Frame& f = m_layout.groups[i];
        whole();
        m_driver.FontControl(m_look.textScale * title.size, 0);
        m_driver.SetTextJustification(0.5F, 1.0F);
        m_driver.MoveTo(f.x1 - m_axisWidth, (f.y1 + f.y2) / 2.0F);
        m_driver.Text(title.text.c_str(), 0, 90.0F, 0);
        m_driver.FontControl(m_look.textScale, 0);
    }

    // Names that found no room beside a low axis stand in its frame.
    void drawTitleInside(std::size_t i)
    {
        if (!m_titles[i].text.empty() || hasLegend(i))
            return;
        m_driver.SetTextJustification(0.0F, 1.0F);
        const PlotLayout::Frame& f = m_layout.groups[i];
        m_driver.MoveTo(0.5F * m_charWidth / (f.x2 - f.x1), 1.0F - 0.1F * m_charHeight / (f.y2 - f.y1));
        m_driver.Text(group(i).axisTitle().c_str(), 0, 0.0F, 0);
    }

    // Width of the drawing area by its height.
    float deviceAspect()
    {
        whole();
        float x0 = 0.0F, y0 = 0.0F, x1 = 0.0F, y1 = 0.0F;
        m_driver.WorldToDevice(0.0F, 0.0F, &x0, &y0);
        m_driver.WorldToDevice(1.0F, 1.0F, &x1, &y1);
        return y1 == y0 ? 1.0F : std::fabs((x1 - x0) / (y1 - y0));
    }

    void drawAxes(std::size_t i)
    {
        setViewport(i);
        const XAxis& axis = m_plot.axis();
        // The axes' own units may be too large or too small for the driver's floats.
        m_driver.SetWindow(0.0F, 0.0F, 1.0F, 1.0F);
        plainPen();
        AxisStyle s = style();
        s.origin =
            axis.toScale(m_plot.x1()) + (axis.mode == XMode::Clock && !axis.logarithmic ? axis.origin : 0.0);
        s.scale = axis.toScale(m_plot.x2()) - axis.toScale(m_plot.x1());
        s.hasLabels = i + 1 == m_layout.groups.size();
        const std::string title = xTitle();
        if (s.hasLabels)
            s.title = title.c_str();
        m_driver.DrawXAxis(xTicks(), s);
        AxisStyle untitled = yStyle(i);
        untitled.title = nullptr;
        m_driver.DrawYAxis(m_yTicks[i], untitled);
        drawYTitle(i);
        setViewport(i);
        m_driver.SetWindow(0.0F, 0.0F, 1.0F, 1.0F);
    }

    std::string xTitle() const
    {
        switch (m_plot.axis().mode) {
            case XMode::Sample:
                return "Sample";
            case XMode::Clock:
                return {};  // the labels say it
            case XMode::Elapsed:
                break;
        }
        return m_plot.xTitle.empty() ? "Time [s]" : m_plot.xTitle;
    }

    // -- Curves --

    void drawGroup(std::size_t i)
    {
        drawAxes(i);
        m_driver.SetClip(true);
        if (group(i).image)
            drawCells(i);
        if (group(i).path && !group(i).variables().empty()) {
            m_pen.select(group(i).variables().front()->variable());
            drawPath(m_plot, group(i), m_driver, plotColumns(), m_look.smooth);
        }
        for (const Curve& curve : m_curves)
            if (curve.group == m_layout.groupOf[i] &&
                !((group(i).image || group(i).path) && curve.variable->variable().isMark))
                drawCurve(curve);
        if (m_look.cursors)
            drawCursors(group(i));
        m_driver.SetClip(false);
        plainPen();
        m_driver.FontControl(m_look.textScale, 0);
        m_driver.DrawFrame(0.0F, 0.0F, 1.0F, 1.0F, kFrameWidthMm * m_look.widthFactor);
        drawTitleInside(i);
        drawFailures(i);
        if (group(i).image)
            drawColorBar(i);
        else if (hasLegend(i))
            drawLegend(i);
    }

    // -- Notes --

    // A dotted line through all frames, its text at the top, below those that it would run into.
    void drawNotes()
    {
        constexpr float kFirstRow = 1.4F;  // lines; above it cursors have their letters
        constexpr float kGap = 0.5F;       // characters
        std::vector<float> rowEnds;
        std::vector<PlotNote> notes = m_plot.notes;
        std::sort(notes.begin(), notes.end(), [](const auto& a, const auto& b) { return a.x < b.x; });
        for (const PlotNote& note : notes) {
            const auto at = static_cast<float>(m_plot.fractionOf(note.x));
            if (!(at >= 0.0F && at <= 1.0F))
                continue;
            plainPen();
            m_driver.SetLineStyle(kNoteStyle);
            for (std::size_t i = 0; i < m_layout.groups.size(); ++i) {
                setViewport(i);
                m_driver.SetWindow(0.0F, 0.0F, 1.0F, 1.0F);
                m_driver.MoveTo(at, 0.0F);
                m_driver.LineTo(at, 1.0F);
                m_driver.Flush();
            }
            whole();
            plainPen();
            float width = 0.0F;
            m_driver.TextExtent(note.text.c_str(), &width, nullptr);
            const float x = m_x1 + at * (m_x2 - m_x1);
            const bool isLeft = x + kGap * m_charWidth + width > m_x2;
            const float begin = isLeft ? x - width : x;
            std::size_t row = 0;
            while (row < rowEnds.size() && begin < rowEnds[row])
                ++row;
            rowEnds.resize(std::max(rowEnds.size(), row + 1));
            rowEnds[row] = begin + width + 2.0F * kGap * m_charWidth;
            m_driver.SetTextJustification(isLeft ? 1.0F : 0.0F, 1.0F);
            m_driver.MoveTo(
                x + (isLeft ? -kGap : kGap) * m_charWidth,
                m_layout.groups.front().y2 - (kFirstRow + static_cast<float>(row)) * m_charHeight);
            m_driver.Text(note.text.c_str(), 0, 0.0F, 0);
        }
    }

    // -- Pictures --

    void drawCells(std::size_t i)
    {
        const PlotLayout::Frame& f = m_layout.groups[i];
        const float ratio = (f.y2 - f.y1) / (f.x2 - f.x1) / deviceAspect();
        setViewport(i);
        m_driver.SetWindow(0.0F, 0.0F, 1.0F, 1.0F);
        veltrac::drawCells(m_plot, group(i), m_driver, plotColumns(), ratio);
    }

    // The colours and what they stand for, in the place of the legend.
    void drawColorBar(std::size_t i)
    {
        constexpr int kColors = 128;
        constexpr float kBarChars = 16.0F;
        const CellImage& image = *group(i).image;
        PixelImage bar{kColors, 1, {}};
        for (int c = 0; c < kColors; ++c) {
            const MapColor color = mappedColor(c, 0.0, kColors - 1.0);
            bar.rgb.insert(bar.rgb.end(), {color.r, color.g, color.b});
        }
        whole();
        const PlotLayout::Frame& f = m_layout.groups[i];
        const float base = f.y2 + 0.35F * m_charHeight;
        const std::string low = significantNumber(image.low, kBarDigits);
        const std::string high =
            significantNumber(image.high, kBarDigits) + (image.unit().empty() ? "" : " " + image.unit());
        float width = 0.0F;
        m_driver.TextExtent(low.c_str(), &width, nullptr);
        m_driver.SetTextJustification(0.0F, 0.0F);
        m_driver.MoveTo(f.x1, base);
        m_driver.Text(low.c_str(), 0, 0.0F, 0);
        const float left = f.x1 + width + 0.6F * m_charWidth;
        const float right = std::min(left + kBarChars * m_charWidth, f.x2);
        const float top = base + 0.8F * m_charHeight;
        drawImage(m_driver, left, base, right, top, bar);
        m_layout.colorBars.push_back({m_layout.groupOf[i], {left, base, right, top}});
        plainPen();
        m_driver.MoveTo(right + 0.6F * m_charWidth, base);
        m_driver.Text(high.c_str(), 0, 0.0F, 0);
    }

    // A dot is easily overlooked: where there is room for markers it gets a small one.
    void drawLoneSample(const Curve& curve, const float* point)
    {
        constexpr int kFullSquare = 4;
        if (curve.markers.empty())
            m_driver.Dot(point[0], point[1]);
        else if (curve.variable->variable().marker == 0)
            m_driver.DrawMarker(point[0], point[1], kFullSquare, m_look.markerSize / 2);
    }

    void drawCurveLine(const Variable& v, const float* points, std::size_t count)
    {
        setSmooth(m_driver, m_isSmooth);
        m_pen.line(v, points, count);
        setSmooth(m_driver, false);
    }

    void drawCurve(const Curve& curve)
    {
        const Variable& v = curve.variable->variable();
        m_pen.select(v);
        if (v.lineStyle >= 0 || curve.markers.empty()) {
            std::size_t begin = 0;
            for (const std::size_t end : curve.runEnds) {
                const float* const points = &curve.points[2 * begin];
                if (end - begin == 1)
                    drawLoneSample(curve, points);
                else
                    drawCurveLine(v, points, end - begin);
                begin = end;
            }
        }
        m_pen.selectForMarkers();
        if (v.marker > 0)
            for (std::size_t p = 0; p < curve.markers.size(); p += 2)
                m_driver.DrawMarker(curve.markers[p], curve.markers[p + 1], v.marker, m_look.markerSize);
    }

    // Over the dark colours of a picture a line has a light seam.
    void drawCursorLine(const Group& g, float x1, float y1, float x2, float y2, int style)
    {
        constexpr float kSeam = 3.0F;
        for (const bool isSeam : {true, false}) {
            if (isSeam && !g.image)
                continue;
            plainPen();
            if (isSeam)
                m_driver.SetColor(1.0F, 1.0F, 1.0F);
            else
                m_driver.SetLineStyle(style);
            m_driver.SetLineWidth((isSeam ? kSeam : 1.0F) * kCursorWidthMm * m_look.widthFactor);
            m_driver.MoveTo(x1, y1);
            m_driver.LineTo(x2, y2);
            m_driver.Flush();
        }
    }

    void drawCursors(const Group& g)
    {
        if (g.level) {
            const auto y = static_cast<float>(placeIn(g, *g.level));
            drawCursorLine(g, 0.0F, y, 1.0F, y, 0);
        }
        for (const Plot2D::Cursor which : {Plot2D::A, Plot2D::B}) {
            if (!m_plot.cursor(which))
                continue;
            const auto x = static_cast<float>(m_plot.fractionOf(*m_plot.cursor(which)));
            if (!(x >= 0.0F && x <= 1.0F))
                continue;
            drawCursorLine(g, x, 0.0F, x, 1.0F, which == Plot2D::A ? 0 : 9);
            m_driver.SetTextJustification(-0.3F, 1.2F);
            m_driver.MoveTo(x, 1.0F);
            m_driver.Text(which == Plot2D::A ? "A" : "B", 0, 0.0F, 0);
        }
    }

    void drawFailures(std::size_t i)
    {
        float line = 0.0F;
        const PlotLayout::Frame& f = m_layout.groups[i];
        const float step = m_charHeight * 1.2F / std::max(f.y2 - f.y1, m_charHeight);
        for (const Curve& curve : m_curves) {
            if (curve.group != m_layout.groupOf[i] || curve.failure.empty())
                continue;
            m_driver.SelectColor(curve.variable->variable().colorIndex);
            m_driver.SetTextJustification(0.5F, 0.5F);
            m_driver.MoveTo(0.5F, 0.5F - line);
            m_driver.Text(failureText(curve).c_str(), 0, 0.0F, 0);
            line += step;
        }
        m_driver.SelectColor(kTextColor);
    }

    // -- Texts --

    std::string failureText(const Curve& curve) const
    {
        return m_plot.nameOf(*curve.variable) + ": " + curve.failure;
    }

    // Rows above the frame; what finds no room is counted.
    void drawLegend(std::size_t i)
    {
        const PlotLayout::Frame& f = m_layout.groups[i];
        whole();
        const std::size_t rows = m_legendRows[i];
        const LegendFlow flow = PlotLegend(m_plot, group(i), m_driver, m_charWidth).flow(f.x1, f.x2, rows);
        const auto baseOf = [&](std::size_t row) {
            return f.y2 + (0.35F + static_cast<float>(rows - 1 - row)) * m_charHeight;
        };
        m_driver.SetTextJustification(0.0F, 0.0F);
        for (const LegendFlow::Place& place : flow.places) {
            const Variable& v = place.variable->variable();
            const float middle = baseOf(place.row) + 0.4F * m_charHeight;
            const float stroke = kLegendStroke * m_charWidth;
            m_pen.select(v);
            const float points[4] = {place.x, middle, place.x + stroke, middle};
            if (v.lineStyle >= 0)
                m_pen.line(v, points, 2);
            m_pen.selectForMarkers();
            if (v.marker > 0)
                m_driver.DrawMarker(place.x + stroke / 2.0F, middle, v.marker, m_look.markerSize);
            plainPen();
            m_driver.MoveTo(place.x + stroke + kLegendTextGap * m_charWidth, baseOf(place.row));
            m_driver.Text(place.text.c_str(), 0, 0.0F, 0);
        }
        if (flow.left == 0)
            return;
        const std::string more = std::string("+").append(std::to_string(flow.left)).append(" more");
        m_driver.MoveTo(flow.leftX, baseOf(flow.rows() - 1));
        m_driver.Text(more.c_str(), 0, 0.0F, 0);
    }

    void drawTitle()
    {
        if (m_plot.title.empty())
            return;
        whole();
        m_driver.SetTextJustification(0.5F, 1.0F);
        m_driver.MoveTo((m_x1 + m_x2) / 2.0F, 1.0F - 0.3F * m_charHeight);
        m_driver.Text(m_plot.title.c_str(), 0, 0.0F, 0);
    }

    const Plot2D& m_plot;
    BasicDriver& m_driver;
    int m_columns;
    const PlotLook& m_look;
    PlotPen m_pen;
    PlotLayout m_layout;
    std::vector<Curve> m_curves;
    std::vector<AxisTicks> m_yTicks;
    std::vector<AxisTitle> m_titles;
    std::vector<std::size_t> m_legendRows;
    float m_axisWidth = 0.0F;  // of the widest y axis
    bool m_isSmooth = false;
    float m_charWidth = 0.01F;
    float m_charHeight = 0.02F;
    float m_x1 = 0.0F;
    float m_x2 = 1.0F;
};

}  // namespace

PlotLayout veltrac::drawPlot(const Plot2D& plot, BasicDriver& driver, int columns, const PlotLook& look)
{
    return Sheet(plot, driver, columns, look).draw();
}
