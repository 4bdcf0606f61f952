// What stands at the cursors: their times and, a row a variable, the values there and the statistics between
// them (of the view where a cursor is missing).
#pragma once

#include <QTimer>
#include <QWidget>

#include "share/PlotReadout.h"

class PlotCanvas;
class QLabel;
class QTableWidget;

namespace veltrac {

class CursorTable : public QWidget
{
    Q_OBJECT

public:
    // The canvas is borrowed and lives at least as long.
    explicit CursorTable(PlotCanvas* canvas, QWidget* parent = nullptr);

    // Room for two variables.
    QSize sizeHint() const override;

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void fill();
    void showTimes();
    void fillRow(int row, const IntervalFields& fields, const QColor& color);
    void fitColumns();

    PlotCanvas* m_canvas;
    QLabel* m_times;
    QTableWidget* m_table;
    bool m_sized = false;
    QTimer m_later;  // joins the changes of one drag
};

}  // namespace veltrac
