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
// Values that are no file, a filter's characteristic say (x must not fall):
//
//     m_canvas->showValues(frequencies, "Freq[Hz]", {{"Gain", "", gains}, {"Phase, 0-1 for 0-2pi", "",
//     phases}});
//
// For anything else change plot(): groups, variables, labels, colours, fixed limits; then call refresh(), or
// replot() where no sample has to be read. The read-out at a pixel, as signal x_cursor_moved() gives it:
//
//     m_label->setText(readoutTable(m_canvas->readoutAt(x)));    // share/PlotReadout.h
//
// Painting never throws and reads at most what a frame needs; only refresh() and its kin walk over files.
#pragma once

#include <QColor>
#include <QFrame>
#include <QPixmap>
#include <QPoint>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "core/FileArray.h"
#include "core/Plot2D.h"
#include "share/PlotPainter.h"
#include "share/PlotReadout.h"
#include "share/PsParameters.h"

class PsConfigDialog;
class QMenu;

namespace veltrac {

struct PlotCommand;

}  // namespace veltrac

class PlotCanvas : public QFrame
{
    Q_OBJECT

public:
    explicit PlotCanvas(QWidget* parent = nullptr);

    // -- What is shown --

    enum class Axes { ByUnit, OneEach };
    // Shows columns (from 1) of a file instead of what was there. The file is read anew. False where it
    // cannot be opened or the user cancelled the reading: the canvas tells it then.
    bool showColumns(const QString& file, const QVector<unsigned>& columns, Axes axes = Axes::ByUnit);

    struct Values
    {
        QString label;
        QString unit;
        std::vector<float> y;
    };
    // Shows values in memory, each column on an axis of its own, or all on one.
    void showValues(const std::vector<double>& x, const QString& xTitle, const std::vector<Values>& columns,
                    Axes axes = Axes::OneEach);
    // Shows nothing but a text, as where a source is missing.
    void showText(const QString& text);

    Plot2D& plot() noexcept { return m_plot; }
    const Plot2D& plot() const noexcept { return m_plot; }
    FileArray& files() noexcept { return m_files; }

    // Reads the visible variables that are not read yet, with progress, fits the y axes that fit themselves,
    // and draws. Returns false after a cancel. With `fit` the whole series comes into view.
    bool refresh(bool fit);
    // Draws anew; nothing is read but what the frame needs.
    void replot();

    // Brings a range of x into view. Calls with the same number (not 0) are one step for "previous view".
    void showRange(double x1, double x2, int gesture);

    void setLogarithmicX(bool on);
    void setLogarithmicY(int group, bool on);

    // The settings that hard copies use; the window's own copy of the main window's record.
    PsParameters& psParameters() noexcept { return m_psParameters; }
    // The colours of the indexes 7 and up on a light ground; change them and call replot().
    std::vector<QColor>& colors() noexcept { return m_colors; }
    static std::vector<QColor> defaultColors();
    // As it is on this ground.
    QColor colorOf(const Variable& variable) const;
    // What hard copies and pictures are called by default, without an extension.
    void setSuggestedName(const QString& name) { m_suggestedName = name; }

    // -- Places; pixels of this widget --

    double xAt(int pixel) const;
    int pixelOf(double x) const;
    // The plot's frames from left to right; empty before the first picture.
    QRect plotArea() const;
    QRect groupArea(int group) const;
    // The group (of plot().groups()) at a pixel, axis included; -1 where there is none.
    int groupAt(const QPoint& pixel) const;
    double yAt(int group, int pixel) const;
    // Sample, time and values at a pixel.
    veltrac::Readout readoutAt(int pixel) const { return veltrac::readoutAt(m_plot, xAt(pixel)); }

    // The canvas takes files of the file manager and variables of the dock; off by default.
    void setTakesDrops(bool on) { setAcceptDrops(on); }
    static const char* variableMimeType() { return "application/x-veltrac-variable"; }

    // The present picture with its cursors.
    QImage image();
    // Everything that the context menu offers, for a window's menu bar. `group` is the one that its y
    // entries are about.
    void fillMenu(QMenu& menu, int group);
    void fillViewMenu(QMenu& menu);
    void fillCursorMenu(QMenu& menu);
    void fillAxesMenu(QMenu& menu);
    void fillOutputMenu(QMenu& menu);
    // Lets the shortcuts of such a menu hold in the whole window, and not only while the canvas has the
    // focus.
    static void holdInWindow(QMenu& menu);

    QSize sizeHint() const override { return {900, 520}; }
    QSize minimumSizeHint() const override { return {240, 140}; }

signals:
    // The mouse is at a pixel of the canvas, with these Qt::MouseButtons.
    void x_cursor_moved(int x, int y, int buttons);
    void x_got_resize_event();
    // Sample, time and values under the mouse; empty when it has left.
    void x_hovered(const QString& text);
    void x_view_changed();
    void x_cursors_changed();
    // A log axis, a group or a look was changed here.
    void x_plot_changed();
    // What an action of the canvas came to: "Saved ecg.eps".
    void x_told(const QString& text);
    void x_files_dropped(const QStringList& files);
    // A variable, by its number in plot().variables(), was dropped on a group, or (-1) below the last.
    void x_variable_dropped(int variable, int group);

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
    void sl_toGreatest();
    void sl_toLeast();
    void sl_copyReadout();
    void sl_copyPicture();
    void sl_hardCopy();
    void sl_hardCopyWithCursors();
    void sl_savePicture();
    void sl_print();
    void sl_psParameters();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
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
    enum class Zone { None, Plot, XAxis, YAxis };
    enum class Drag { None, Band, Pan, PanY, CursorA, CursorB };
    struct Place
    {
        Zone zone = Zone::None;
        int group = -1;
    };

    Place placeOf(const QPoint& pixel) const;
    std::optional<Plot2D::Cursor> cursorNear(const QPoint& pixel) const;
    void updateShape(const QPoint& pixel);
    void drawPicture();
    void drawCursor(QPainter& painter, Plot2D::Cursor which);
    void drawBand(QPainter& painter);
    void clear();
    QString whatIsMissing() const;
    bool isDarkGround() const;
    veltrac::PlotLook screenLook() const;
    QRect bandArea() const;

    void finishBand();
    void clickAt(const QPoint& pixel, bool shift);
    void dragTo(const QPoint& pixel);
    void tellHover(const QPoint& pixel);
    void tellHoverAgain();

    // Changes the view by a step of the user's, which "previous view" takes back.
    void changeView(int gesture, const std::function<void()>& change);
    void viewChanged();
    void placeCursor(Plot2D::Cursor which, double x);
    void moveCursor(std::int64_t samples);
    void toExtreme(bool greatest);
    int activeGroup() const;
    double zoomCentre() const;
    static const veltrac::PlotCommand* commandOf(const QKeyEvent& event);
    bool handleKey(const QKeyEvent& event);
    void editLimits(const Place& place);
    void addGroupEntries(QMenu& menu, int group);
    void addXEntries(QMenu& menu);
    void addLookEntries(QMenu& menu);
    void hardCopyOf(bool withCursors);
    void setMode(veltrac::XMode mode);

    Plot2D m_plot;
    FileArray m_files;
    PsParameters m_psParameters;
    QPointer<PsConfigDialog> m_psDialog;  // while it is open
    std::vector<QColor> m_colors;
    QString m_suggestedName = QStringLiteral("plot");
    QString m_text;  // shown instead of a plot

    QPixmap m_picture;
    PlotLayout m_layout;
    bool m_stale = true;
    bool m_reading = false;

    Drag m_drag = Drag::None;
    bool m_dragged = false;  // the mouse has left the pixel that it was pressed at
    QPoint m_pressed;
    QPoint m_last;
    int m_dragGroup = -1;
    int m_gesture = 0;  // a new number for each drag
    bool m_spaceHeld = false;
    bool m_shiftHeld = false;
    std::optional<double> m_cursorsBeforeClick[2];
    Plot2D::Cursor m_lastCursor = Plot2D::A;
    QPoint m_mouse{-1, -1};
};
