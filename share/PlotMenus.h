// The menus of a plot, for its context menu and the menu bars of windows.
#pragma once

class QMenu;

namespace veltrac {

class PlotOutput;

// Everything that the context menu offers; `group` is the one that its y entries are about, -1 for none.
void fillPlotMenu(PlotOutput& canvas, QMenu& menu, int group);
void fillViewMenu(PlotOutput& canvas, QMenu& menu);
void fillCursorMenu(PlotOutput& canvas, QMenu& menu);
// As the axes are now; with entries for every group.
void fillAxesMenu(PlotOutput& canvas, QMenu& menu);
void fillOutputMenu(PlotOutput& canvas, QMenu& menu);
// Lets the shortcuts of such a menu hold in the whole window, and not only while the canvas has the focus.
void holdInWindow(QMenu& menu);

}  // namespace veltrac
