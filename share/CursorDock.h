// The dock "Cursors": the times of both cursors and, a row a variable, what stands between them.
#pragma once

#include <QDockWidget>
#include <QTimer>

class PlotCanvas;
class QLabel;
class QTableWidget;

class CursorDock : public QDockWidget
{
    Q_OBJECT

public:
    // The canvas is borrowed and lives at least as long.
    explicit CursorDock(PlotCanvas* canvas, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void fill();

    PlotCanvas* m_canvas;
    QLabel* m_times;
    QTableWidget* m_table;
    bool m_sized = false;
    QTimer m_later;  // joins the changes of one drag
};
