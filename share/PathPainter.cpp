#include "share/PathPainter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

#include "core/SegmentCut.h"
#include "core/XyPath.h"
#include "share/BasicDriver.h"
#include "share/SmoothDevice.h"

namespace veltrac {

double placeIn(const Group& group, double y)
{
    const double low = group.toScale(group.y1());
    return (group.toScale(y) - low) / (group.toScale(group.y2()) - low);
}

namespace {

// What lies far outside is cut off before the driver's pixels have no numbers for it.
void drawPathRun(const Plot2D& plot, const Group& g, BasicDriver& driver, std::span<const double> points)
{
    std::vector<float> line;
    const auto flush = [&] {
        if (line.size() == 2)
            driver.Dot(line[0], line[1]);
        else if (line.size() > 2)
            driver.Polyline(line.data(), static_cast<int>(line.size() / 2), false, false);
        line.clear();
    };
    constexpr double kBeside = 0.1;
    PlotPoint before;
    bool hasBefore = false;
    for (std::size_t p = 0; p < points.size(); p += 2) {
        const PlotPoint at{plot.fractionOf(points[p]), placeIn(g, points[p + 1])};
        const bool isThere = std::isfinite(at.x) && std::isfinite(at.y);
        PlotPoint from = hasBefore ? before : at;
        PlotPoint to = at;
        const bool isSeen = isThere && cutSegment(from, to, kBeside);
        if (!isSeen || from.x != before.x || from.y != before.y)
            flush();
        if (isSeen && line.empty())
            line.insert(line.end(), {static_cast<float>(from.x), static_cast<float>(from.y)});
        if (isSeen && hasBefore)
            line.insert(line.end(), {static_cast<float>(to.x), static_cast<float>(to.y)});
        before = at;
        hasBefore = isThere;
    }
    flush();
}

// How many cells of a side of a cloud are drawn as one: they need not be finer than pixels.
std::uint32_t cellsTogether(const Plot2D& plot, const XyPath::Rectangle& seen, int columns)
{
    constexpr double kFinest = 1024.0;
    const double part = plot.fractionOf(seen.x2) - plot.fractionOf(seen.x1);
    const double wanted = std::min(kFinest, part * columns);
    std::uint32_t together = 1;
    while (together < XyPath::kCloudCells && XyPath::kCloudCells / static_cast<double>(together) > wanted)
        together *= 2;
    return together;
}

// Rows of cells as filled strips.
void drawCloud(const Plot2D& plot, const Group& g, BasicDriver& driver, int columns)
{
    const XyPath::Rectangle& seen = g.path->seen();
    const std::uint32_t together = cellsTogether(plot, seen, columns);
    const std::uint32_t cells = XyPath::kCloudCells / together;
    std::vector<bool> filled(std::size_t{cells} * cells);
    for (const XyPath::CloudRun& run : g.path->cloudRuns())
        for (std::uint32_t c = run.first / together; c <= run.last / together; ++c)
            filled[std::size_t{run.row / together} * cells + c] = true;
    const auto x = [&](std::uint32_t cell) {
        return static_cast<float>(plot.fractionOf(seen.x1 + (seen.x2 - seen.x1) * cell / cells));
    };
    const auto y = [&](std::uint32_t cell) {
        return static_cast<float>(placeIn(g, seen.y1 + (seen.y2 - seen.y1) * cell / cells));
    };
    for (std::uint32_t row = 0; row < cells; ++row)
        for (std::uint32_t first = 0; first < cells; ++first) {
            std::uint32_t end = first;
            while (end < cells && filled[std::size_t{row} * cells + end])
                ++end;
            if (end == first)
                continue;
            const float strip[8] = {x(first), y(row),     x(end),   y(row),
                                    x(end),   y(row + 1), x(first), y(row + 1)};
            driver.Polyline(strip, 4, true, true);
            first = end;
        }
}

}  // namespace

void drawPath(const Plot2D& plot, const Group& group, BasicDriver& driver, int columns, bool smooth)
{
    if (group.path->isCloud()) {
        drawCloud(plot, group, driver, columns);
        return;
    }
    const std::vector<double>& points = group.path->points();
    setSmooth(driver, smooth && points.size() / 2 <= kMostSmoothPoints);
    std::size_t begin = 0;
    for (const std::size_t end : group.path->runEnds()) {
        drawPathRun(plot, group, driver, std::span(points).subspan(2 * begin, 2 * (end - begin)));
        begin = end;
    }
    setSmooth(driver, false);
}

}  // namespace veltrac
