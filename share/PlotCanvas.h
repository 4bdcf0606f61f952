// Shows a plot and lets the user move in it: zoom, pan, cursors, read-out, keys, menu, hard copies.
//
// A window that shows columns of a file, a scratch file say:
//
//     m_canvas->showColumns("temp.ts", {1, 2});             // read with progress, fitted, drawn
//     m_canvas->showColumns("temp.ts", {1, 2}, PlotCanvas::Axes::OneEach);
//
// Call it again after the file has changed. A spectrum whose dt is a frequency step shows its "Freq[Hz]" axis
// by itself, from the file's time unit; logarithmic axes are set on the plot:
//
//     m_canvas->showColumns("tempDFT.ts", {2});
//     m_canvas->setLogarithmicX(true);
//     m_canvas->setLogarithmicY(0, true);                   // group 0, the topmost
//
// A plot that is made elsewhere, of values that are no file say:
//
//     m_canvas->showPlot(gainPlot(characteristic, look));   // filter/CharacteristicPlot.h
//
// For anything else change plot(): groups, variables, labels, colours, fixed limits; then call refresh(), or
// replot() where no sample has to be read. The read-out at a pixel, as signal x_cursor_moved() gives it:
//
//     m_label->setText(readoutTable(m_canvas->readoutAt(x)));    // share/ReadoutLabel.h
//
// Painting never throws and reads at most what a frame needs; only refresh() and its kin walk over files.
#pragma once

#include <QStringList>
#include <QVector>

#include <vector>

#include "share/PlotGestures.h"
#include "share/PlotOutput.h"

class QMenu;
class QMenuBar;

class PlotCanvas : public veltrac::PlotOutput
{
    Q_OBJECT

public:
    explicit PlotCanvas(QWidget* parent = nullptr);

    enum class Axes { ByUnit, OneEach };
    // Shows columns (from 1) of a file instead of what was there. The file is read anew. False where it
    // cannot be opened or the user cancelled the reading: the canvas tells it then.
    bool showColumns(const QString& file, const QVector<unsigned>& columns, Axes axes = Axes::ByUnit);

    // Shows another plot, with the grid and the legend that the user has chosen; its view stays as it is.
    void showPlot(Plot2D fresh);

    // The canvas takes files of the file manager and variables of the dock; off by default.
    void setTakesDrops(bool on) { setAcceptDrops(on); }
    static const char* variableMimeType() { return "application/x-veltrac-variable"; }

    // The parts of share/PlotMenus.h for a window's menu bar.
    void fillMenu(QMenu& menu, int group);
    void fillViewMenu(QMenu& menu);
    void fillCursorMenu(QMenu& menu);
    void fillAxesMenu(QMenu& menu);
    void fillOutputMenu(QMenu& menu);
    static void holdInWindow(QMenu& menu);
    // "View", "Cursors" and "Output" of a window whose canvas it is; the window adds its own behind them.
    struct Menus
    {
        QMenu* view;
        QMenu* output;
    };
    Menus addMenus(QMenuBar& bar);

signals:
    void x_files_dropped(const QStringList& files);
    // A variable, by its number in plot().variables(), was dropped on a group, or (-1) below the last.
    void x_variable_dropped(int variable, int group);

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void replacePlot(Plot2D fresh);
    bool handleKey(const QKeyEvent& event);
    bool moveLevel(const QKeyEvent& event);

    veltrac::PlotGestures m_gestures;
};
