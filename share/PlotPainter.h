// Draws a plot on any device: the screen, a PostScript file and paper get the same picture.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "core/Plot2D.h"
#include "share/PlotLook.h"

class BasicDriver;

// Where things came to lie, in fractions of the drawing area from its lower left corner.
struct PlotLayout
{
    struct Frame
    {
        float x1 = 0.0F, y1 = 0.0F, x2 = 1.0F, y2 = 1.0F;
    };
    std::vector<Frame> groups;  // the viewports of the groups with visible variables, from top to bottom
    std::vector<std::size_t> groupOf;  // which group each of them is
    // The colour bar of each picture, and its group.
    struct ColorBar
    {
        std::size_t group = 0;
        Frame frame;
    };
    std::vector<ColorBar> colorBars;
    // "Force: cannot be read any more" of each shown variable that the picture lacks; UTF-8.
    std::vector<std::string> unread;
};

namespace veltrac {

// Draws the plot on a page that has begun. `columns`: device pixels of the drawing area's width, or four a
// point on paper. Never throws for a file that cannot be read: its group shows the text, and the layout
// tells whoever is about to keep the picture.
PlotLayout drawPlot(const Plot2D& plot, BasicDriver& driver, int columns, const PlotLook& look = {});

}  // namespace veltrac
