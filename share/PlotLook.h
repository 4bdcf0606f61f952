// Colours and widths that a plot is drawn with, so that its pictures look alike on every device.
#pragma once

#include <vector>

#include "core/Plot2D.h"
#include "share/PsParameters.h"

namespace veltrac {

struct PlotColor
{
    float r = 0.0F, g = 0.0F, b = 0.0F;
};

// The colours that variables have in turn: readable on white, and told apart by eyes that lack one kind of
// cones (Machado, Oliveira and Fernandes, A Physiologically-based Model for Simulation of Color Vision
// Deficiency, IEEE Trans. Vis. Comput. Graph. 15(6), 2009). On a dark ground they are lightened.
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
    bool smooth = false;              // curves are antialiased where that does not cost the frame
    bool dashes = false;              // solid lines get patterns in turn, for paper without colours
    float penUnits = 75.0F / 25.4F;   // device units that a line width of 1 mm has
    float textWidth = 1.0F;           // what texts take of the extent that the driver tells

    // Device units of what is a pixel on the screen.
    float screenPixel() const noexcept { return penUnits * widthFactor * 25.4F / 75.0F; }
};

// Of a PostScript file with its settings: black text, widths that look as on the screen.
PlotLook paperLook(const PsParameters& parameters, PlotGrid grid);
// Pixel columns for curves on paper: four a point of the paper's width.
int paperColumns(const PsParameters& parameters);

// The driver's name for a plot's grid.
GridStyle gridStyleOf(PlotGrid grid);

}  // namespace veltrac
