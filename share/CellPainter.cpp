#include "share/CellPainter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "core/CellImage.h"
#include "share/BasicDriver.h"
#include "share/ColorMap.h"
#include "share/ImageDevice.h"

namespace veltrac {

namespace {

constexpr int kMostImageColumns = 1600;

// A rendered view in colours, without the margins where no cell is; in fractions of the frame.
struct CellPicture
{
    float x1 = 0.0F, y1 = 0.0F, x2 = 0.0F, y2 = 0.0F;
    PixelImage pixels;
};

CellPicture pictureOf(const std::vector<float>& cells, int width, int height, double low, double high)
{
    const auto at = [&](int x, int y) {
        return cells[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                     static_cast<std::size_t>(x)];
    };
    int left = width, right = -1, bottom = height, top = -1;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (!std::isnan(at(x, y))) {
                left = std::min(left, x);
                right = std::max(right, x);
                bottom = std::min(bottom, y);
                top = std::max(top, y);
            }
    CellPicture picture;
    if (right < 0)
        return picture;
    const auto part = [](int pixel, int of) { return static_cast<float>(pixel) / static_cast<float>(of); };
    picture = {part(left, width), part(bottom, height), part(right + 1, width), part(top + 1, height), {}};
    picture.pixels.width = right - left + 1;
    picture.pixels.height = top - bottom + 1;
    picture.pixels.rgb.reserve(3 * static_cast<std::size_t>(picture.pixels.width) *
                               static_cast<std::size_t>(picture.pixels.height));
    for (int y = top; y >= bottom; --y)
        for (int x = left; x <= right; ++x) {
            const MapColor color = mappedColor(static_cast<double>(at(x, y)), low, high);
            picture.pixels.rgb.insert(picture.pixels.rgb.end(), {color.r, color.g, color.b});
        }
    return picture;
}

// Edges of the picture's pixels in samples, where 1 is the beginning of the first.
std::vector<double> sampleEdges(const Plot2D& plot, const Variable& v, int width)
{
    const XAxis& axis = plot.axis();
    const double first = axis.xOf(v, 1);
    const double step = v.rows() > 1 ? (axis.xOf(v, v.rows()) - first) / (v.rows() - 1.0) : 1.0;
    std::vector<double> edges;
    edges.reserve(static_cast<std::size_t>(width) + 1);
    for (int i = 0; i <= width; ++i)
        edges.push_back(1.5 + (plot.xAtFraction(static_cast<double>(i) / width) - first) / step);
    return edges;
}

}  // namespace

void drawCells(const Plot2D& plot, const Group& group, BasicDriver& driver, int columns, float ratio)
{
    if (!group.image->isBuilt() || group.variables().empty())
        return;
    const int width = std::clamp(columns, 1, kMostImageColumns);
    const int height =
        std::clamp(static_cast<int>(std::lround(ratio * static_cast<float>(columns))), 1, kMostImageColumns);
    std::vector<double> places;
    places.reserve(static_cast<std::size_t>(height) + 1);
    const double low = group.toScale(group.y1());
    for (int k = 0; k <= height; ++k)
        places.push_back(group.fromScale(low + (group.toScale(group.y2()) - low) * k / height));
    std::vector<float> cells;
    group.image->render(sampleEdges(plot, group.variables().front()->variable(), width), places, cells);
    const CellPicture picture = pictureOf(cells, width, height, group.image->low, group.image->high);
    drawImage(driver, picture.x1, picture.y1, picture.x2, picture.y2, picture.pixels);
}

}  // namespace veltrac
