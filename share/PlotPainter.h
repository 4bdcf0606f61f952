// Draws a plot on any device: the screen, a PostScript file and paper get the same picture.
#pragma once

#include <cstddef>
#include <vector>

#include "core/Plot2D.h"

class BasicDriver;

struct PlotColor
{
    float r = 0.0F, g = 0.0F, b = 0.0F;
};

// The colours that variables have in turn; they differ in lightness as well as in hue. On a dark ground
// they are lightened.
const std::vector<PlotColor>& defaultPlotColors();
PlotColor onDarkGround(PlotColor color);

// What a device needs so that its picture looks as on the others.
struct PlotLook
{
    PlotColor text;                   // colour 1
    std::vector<PlotColor> colors{};  // of indexes 7 and up; those beyond begin again
    float widthFactor = 1.0F;         // multiplies every line width in millimetres
    float textScale = 1.0F;           // multiplies the device's base font size
    int markerSize = 6;               // device units
    int markerGap = 6;                // columns; samples closer than this have no markers
    float gridWidthMm = 0.1F;         // before widthFactor
    bool cursors = false;             // draw them as part of the picture
};

// Of a PostScript file with its settings: black text, widths that look as on the screen.
struct PsParameters;
PlotLook paperLook(const PsParameters& parameters, PlotGrid grid);
// Pixel columns for curves on paper: four a point of the paper's width.
int paperColumns(const PsParameters& parameters);

// Where things came to lie, in fractions of the drawing area from its lower left corner.
struct PlotLayout
{
    struct Frame
    {
        float x1 = 0.0F, y1 = 0.0F, x2 = 1.0F, y2 = 1.0F;
    };
    std::vector<Frame> groups;  // the viewports of the groups with visible variables, from top to bottom
    std::vector<std::size_t> groupOf;  // which group each of them is
};

// Draws the plot on a page that has begun. `columns`: device pixels of the drawing area's width, or four a
// point on paper. Never throws for a file that cannot be read: its group shows the text.
PlotLayout drawPlot(const Plot2D& plot, BasicDriver& driver, int columns, const PlotLook& look = {});
