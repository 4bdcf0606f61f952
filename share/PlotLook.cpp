#include "share/PlotLook.h"

#include <cmath>

namespace veltrac {

namespace {

constexpr int kColumnsAPoint = 4;
constexpr double kScreenPixelsAPoint = 96.0 / 72.0;

// A colour of the screen has 16 bits a component: pictures that never saw one are to have the very same.
std::vector<PlotColor> asOnScreen(std::vector<PlotColor> colors)
{
    constexpr double kMost = 65535.0;
    for (PlotColor& color : colors)
        for (float* const c : {&color.r, &color.g, &color.b})
            *c = static_cast<float>(std::round(static_cast<double>(*c) * kMost) / kMost);
    return colors;
}

}  // namespace

GridStyle gridStyleOf(PlotGrid grid)
{
    switch (grid) {
        case PlotGrid::Gray:
            return GridStyle::Gray;
        case PlotGrid::Dotted:
            return GridStyle::Dotted;
        case PlotGrid::Black:
            return GridStyle::Black;
        case PlotGrid::None:
            break;
    }
    return GridStyle::None;
}

const std::vector<PlotColor>& defaultPlotColors()
{
    // Found by search: three times as dark as white and, lightened, as bright as a dark ground, and apart for
    // every eye, the first of them most.
    static const std::vector<PlotColor> colors = asOnScreen({{0.17F, 0.07F, 0.61F},
                                                             {0.69F, 0.07F, 0.00F},
                                                             {0.17F, 0.51F, 0.36F},
                                                             {0.80F, 0.39F, 1.00F},
                                                             {0.79F, 0.47F, 0.12F},
                                                             {0.16F, 0.62F, 0.75F},
                                                             {0.35F, 0.12F, 0.28F},
                                                             {0.83F, 0.33F, 0.63F},
                                                             {0.47F, 0.35F, 0.45F},
                                                             {0.59F, 0.58F, 0.33F},
                                                             {0.59F, 0.10F, 0.46F},
                                                             {0.62F, 0.47F, 0.86F}});
    return colors;
}

PlotColor onDarkGround(PlotColor color)
{
    constexpr float kLighter = 0.4F;
    const auto lighter = [](float c) { return c + (1.0F - c) * kLighter; };
    return {lighter(color.r), lighter(color.g), lighter(color.b)};
}

PlotLook paperLook(const PsParameters& parameters, PlotGrid grid)
{
    PlotLook look;
    // The driver's lines are five times as wide as the screen's for the same millimetres.
    look.widthFactor = 0.2F;
    look.penUnits = static_cast<float>(5.0 * parameters.lineWidthScale * kPointsPerMm);
    // It reckons texts as wide as those of Courier.
    constexpr float kProportionalWidth = 0.85F;
    look.textWidth = parameters.fontName[0] == 'C' ? 1.0F : kProportionalWidth;
    look.gridWidthMm *= static_cast<float>(parameters.gridThickness(gridStyleOf(grid)));
    look.markerGap = static_cast<int>(look.markerGap / kScreenPixelsAPoint * kColumnsAPoint);
    look.markerSize = static_cast<int>(look.markerSize / kScreenPixelsAPoint);
    return look;
}

int paperColumns(const PsParameters& parameters)
{
    const Paper& paper = paperOf(parameters);
    return kColumnsAPoint * (parameters.orientation == 1 ? paper.height : paper.width);
}

}  // namespace veltrac
