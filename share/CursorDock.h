// The dock "Cursors" of a window with one canvas.
#pragma once

#include <QDockWidget>

class PlotCanvas;

namespace veltrac {

class CursorDock : public QDockWidget
{
    Q_OBJECT

public:
    // The canvas is borrowed and lives at least as long.
    explicit CursorDock(PlotCanvas* canvas, QWidget* parent = nullptr);
};

}  // namespace veltrac
