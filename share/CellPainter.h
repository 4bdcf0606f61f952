// A picture of cells in a plot: a spectrogram's levels.
#pragma once

#include "core/Plot2D.h"

class BasicDriver;

namespace veltrac {

// Draws the image of a group into the driver's viewport, whose window is the unit square; nothing before it
// has been read. `columns`: pixel columns of the viewport; `ratio`: its height by its width, on the device.
void drawCells(const Plot2D& plot, const Group& group, BasicDriver& driver, int columns, float ratio);

}  // namespace veltrac
