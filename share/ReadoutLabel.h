// The values under the mouse beside a plot: a table on light paper, or a line of text.
#pragma once

#include <QLabel>

#include "share/PlotReadout.h"

namespace veltrac {

class ReadoutLabel : public QLabel
{
    Q_OBJECT

public:
    explicit ReadoutLabel(QWidget* parent = nullptr);

    void showTable(const Readout& rows);
    void showLine(const QString& text);
};

}  // namespace veltrac
