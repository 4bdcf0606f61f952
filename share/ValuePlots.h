// Plots of a variable's values that a plot window opens beside itself.
#pragma once

#include <memory>

#include "core/HsVariable.h"

class PlotCanvas;
class QMenu;

namespace veltrac {

class SubWindow;

// The distribution of the values between the cursors, else of those in view, in a window of its own that
// closes with `window`.
void openHistogram(SubWindow& window, PlotCanvas& canvas, const std::shared_ptr<HsVariable>& variable);

// One variable over another of the same file, in the same way.
void openXyPlot(SubWindow& window, PlotCanvas& canvas, const std::shared_ptr<HsVariable>& x,
                const std::shared_ptr<HsVariable>& y);

// A submenu with an entry for each visible variable of the canvas.
void addHistogramMenu(QMenu& menu, SubWindow& window, PlotCanvas& canvas);
// One with an entry for each other visible variable of y's file, to be x; for each y such a submenu.
void addXyMenu(QMenu& menu, SubWindow& window, PlotCanvas& canvas, const std::shared_ptr<HsVariable>& y);
void addXyMenus(QMenu& menu, SubWindow& window, PlotCanvas& canvas);

}  // namespace veltrac
