// The results of two channels on a canvas.
#pragma once

#include <QString>

class PlotCanvas;

namespace veltrac {

// Value, phase and coherence below one another, the first two with the band of their random errors. False
// where the file cannot be read; the canvas tells it then.
bool showTwoChannels(PlotCanvas& canvas, const QString& file, unsigned columns);

}  // namespace veltrac
