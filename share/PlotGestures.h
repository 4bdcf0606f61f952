// What the mouse does in a plot: rubber band, pan, cursors, wheel, double clicks.
#pragma once

#include <QPoint>

#include <array>
#include <optional>

#include "share/PlotView.h"

class QMouseEvent;
class QWheelEvent;

namespace veltrac {

inline constexpr double kWheelZoom = 1.25;  // by each notch of the wheel
inline constexpr int kNotch = 120;          // of a wheel, in eighths of a degree

class PlotGestures
{
public:
    // Works on a view, which hands its events on.
    explicit PlotGestures(PlotView& view) : m_view(view) {}

    void press(const QMouseEvent& event);
    void move(const QMouseEvent& event);
    void release(const QMouseEvent& event);
    void doubleClick(const QMouseEvent& event);
    // Leaves alone what it has no use for.
    void wheel(QWheelEvent& event);
    // While the space bar is held the left button pans.
    void holdSpace(bool held);
    // Gives up a drag.
    void cancel();

private:
    enum class Drag { None, Band, Pan, PanY, CursorA, CursorB, Level, LowColor, HighColor };

    std::optional<Plot2D::Cursor> cursorNear(const QPoint& pixel) const;
    // The group whose horizontal cursor is there; -1 where none is.
    int levelNear(const QPoint& pixel) const;
    void dragColors(int pixels);
    void updateShape(const QPoint& pixel);
    QRect bandArea() const;
    void finishBand();
    void clickAt(const QPoint& pixel, bool shift);
    void dragTo(const QPoint& pixel);

    PlotView& m_view;
    Drag m_drag = Drag::None;
    bool m_dragged = false;  // the mouse has left the pixel that it was pressed at
    QPoint m_pressed;
    QPoint m_last;
    int m_dragGroup = -1;
    int m_gesture = 0;  // a new number for each drag
    bool m_spaceHeld = false;
    bool m_shiftHeld = false;
    std::array<std::optional<double>, 2> m_cursorsBeforeClick;
};

}  // namespace veltrac
