// The values under the mouse beside a plot: a table on light paper, or a line of text.
#pragma once

#include <QLabel>

#include "share/PlotReadout.h"

namespace veltrac {

// The HTML table that cursor read-outs are shown as.
QString readoutTable(const Readout& rows);

class ReadoutLabel : public QLabel
{
    Q_OBJECT

public:
    explicit ReadoutLabel(QWidget* parent = nullptr);

    void showTable(const Readout& rows);
    void showLine(const QString& text);
};

}  // namespace veltrac
