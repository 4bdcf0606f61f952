// The view of a plot and its cursors, as the user changes them: zoom, pan, history, go to, read-out.
#pragma once

#include <QPoint>

#include <functional>

#include "core/FileArray.h"
#include "share/PlotPicture.h"
#include "share/PlotReadout.h"

namespace veltrac {

class PlotView : public PlotPicture
{
    Q_OBJECT

public:
    using PlotPicture::PlotPicture;

    FileArray& files() noexcept { return m_files; }

    // Reads the visible variables that are not read yet, with progress, fits the y axes that fit themselves,
    // and draws. Returns false after a cancel. With `fit` the whole series comes into view.
    bool refresh(bool fit);

    // Shows rows that have come, which the variables know already; with `moves` the newest one stands at the
    // right edge, and the span stays. Who draws the whole series hears of it only where `withOverview`.
    void showNewRows(bool moves, bool withOverview);

    // Brings a range of x into view. Calls with the same number (not 0) are one step for "previous view".
    void showRange(double x1, double x2, int gesture);
    // Changes the view by a step of the user's, which "previous view" takes back.
    void changeView(int gesture, const std::function<void()>& change);
    void setMode(XMode mode);
    void setLogarithmicX(bool on);
    void setLogarithmicY(int group, bool on);
    // Asks for the limits of the axis at a place.
    void editLimits(const Place& place);

    // Asks for the text of a note at x, or of the one that is there already; without a text it goes.
    void editNote(double x);

    // Sets a cursor to the sample nearest to x, which then is the active one; moves the active one.
    void placeCursor(Plot2D::Cursor which, double x);
    void moveCursor(std::int64_t samples);
    // The horizontal cursor of a group.
    void placeLevel(int group, double y);

    // Sample, time and values at a pixel.
    Readout readoutAt(int pixel) const { return veltrac::readoutAt(plot(), xAt(pixel)); }
    // The mouse is there now; it has left where the pixel is (-1, -1).
    void setMouse(const QPoint& pixel);
    const QPoint& mouse() const noexcept { return m_mouse; }
    // Tells anew what lies under the mouse, when the plot has moved beneath it.
    void showHoverAgain();

signals:
    // The mouse is at a pixel of the canvas, with these Qt::MouseButtons.
    void x_cursor_moved(int x, int y, int buttons);
    // Sample, time and values under the mouse; empty when it has left.
    void x_hovered(const QString& text);
    void x_view_changed();
    void x_cursors_changed();
    // A log axis, a group or a look was changed here.
    void x_plot_changed();
    // What an action of the canvas came to: "Saved ecg.eps".
    void x_told(const QString& text);

public slots:
    void sl_fitAll();
    void sl_fitY();
    void sl_zoomIn();
    void sl_zoomOut();
    void sl_zoomInY();
    void sl_zoomOutY();
    void sl_zoomToCursors();
    void sl_panLeft();
    void sl_panRight();
    void sl_pageLeft();
    void sl_pageRight();
    void sl_toStart();
    void sl_toEnd();
    void sl_previousView();
    void sl_nextView();
    void sl_goTo();
    void sl_cursorA();
    void sl_cursorB();
    void sl_clearCursors();
    // At the last cursor, else in the middle.
    void sl_note();
    void sl_toGreatest();
    void sl_toLeast();

protected:
    // Shows another plot over other files.
    void setSources(Plot2D plot, FileArray files);

private:
    void viewChanged();
    void showHover();

    FileArray m_files;
    QPoint m_mouse{-1, -1};
    bool m_reading = false;
};

}  // namespace veltrac
