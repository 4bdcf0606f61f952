// The plot window: columns of one or several ts-files.
#pragma once

#include "share/PlotWindow.h"

class QtPlotWin : public veltrac::PlotWindow
{
    Q_OBJECT

public:
    // Shows up to eight columns of a file; an empty name opens an empty window. A file that cannot be read is
    // told in the window.
    explicit QtPlotWin(const QString& file, QWidget* parent = nullptr);
};
