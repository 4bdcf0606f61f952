// PlotCanvas: what the mouse does.

#include <QApplication>
#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

#include "core/TsExceptions.h"
#include "share/AxisLimitsDialog.h"
#include "share/PlotCanvas.h"

using namespace veltrac;

namespace {

constexpr double kWheelZoom = 1.25;
constexpr double kPanStep = 0.1;
constexpr int kNotch = 120;       // of a wheel, in eighths of a degree
constexpr int kFlatBand = 12;     // a band flatter than this is about x only
constexpr int kSmallestBand = 4;  // smaller is a click
constexpr int kGrabDistance = 4;  // of a cursor
constexpr int kWheelGesture = -1;
constexpr int kWheelPanGesture = -2;

}  // namespace

void PlotCanvas::changeView(int gesture, const std::function<void()>& change)
{
    try {
        m_plot.remember(gesture);
        change();
    } catch (const TS::Failure&) {
        // The next picture tells which file it is.
    }
    viewChanged();
    tellHoverAgain();
}

PlotCanvas::Place PlotCanvas::placeOf(const QPoint& pixel) const
{
    const QRect area = plotArea();
    if (area.isEmpty() || !m_text.isEmpty())
        return {};
    const int group = groupAt(pixel);
    const bool inWidth = pixel.x() >= area.left() && pixel.x() <= area.right();
    if (group >= 0 && inWidth)
        return {Zone::Plot, group};
    if (group >= 0 && pixel.x() < area.left())
        return {Zone::YAxis, group};
    if (pixel.y() > area.bottom() && inWidth)
        return {Zone::XAxis, -1};
    return {};
}

std::optional<Plot2D::Cursor> PlotCanvas::cursorNear(const QPoint& pixel) const
{
    // The one that was moved last comes first where both stand together.
    const Plot2D::Cursor other = m_lastCursor == Plot2D::A ? Plot2D::B : Plot2D::A;
    for (const Plot2D::Cursor which : {m_lastCursor, other})
        if (m_plot.cursor(which) && std::abs(pixelOf(*m_plot.cursor(which)) - pixel.x()) <= kGrabDistance)
            return which;
    return std::nullopt;
}

void PlotCanvas::updateShape(const QPoint& pixel)
{
    const Place place = placeOf(pixel);
    if (m_spaceHeld && place.zone == Zone::Plot)
        setCursor(m_drag == Drag::Pan ? Qt::ClosedHandCursor : Qt::OpenHandCursor);
    else if (place.zone == Zone::Plot)
        setCursor(cursorNear(pixel) ? Qt::SplitHCursor : Qt::CrossCursor);
    else if (place.zone == Zone::XAxis)
        setCursor(Qt::SizeHorCursor);
    else if (place.zone == Zone::YAxis)
        setCursor(Qt::SizeVerCursor);
    else
        unsetCursor();
}

void PlotCanvas::mousePressEvent(QMouseEvent* event)
{
    m_pressed = m_last = event->pos();
    m_dragged = false;
    m_shiftHeld = (event->modifiers() & Qt::ShiftModifier) != 0;
    m_drag = Drag::None;
    const Place place = placeOf(event->pos());
    m_dragGroup = place.group;
    ++m_gesture;
    if (event->button() == Qt::MiddleButton && place.zone != Zone::None) {
        m_drag = Drag::Pan;
        setCursor(Qt::ClosedHandCursor);
        return;
    }
    if (event->button() != Qt::LeftButton)
        return;
    if (place.zone == Zone::XAxis) {
        m_drag = Drag::Pan;
    } else if (place.zone == Zone::YAxis) {
        m_drag = Drag::PanY;
    } else if (place.zone == Zone::Plot) {
        const std::optional<Plot2D::Cursor> cursor = cursorNear(event->pos());
        if (m_spaceHeld)
            m_drag = Drag::Pan;
        else if (cursor && !m_shiftHeld)
            m_drag = *cursor == Plot2D::A ? Drag::CursorA : Drag::CursorB;
        else
            m_drag = Drag::Band;
    }
    updateShape(event->pos());
}

void PlotCanvas::mouseMoveEvent(QMouseEvent* event)
{
    m_mouse = event->pos();
    emit x_cursor_moved(event->x(), event->y(), static_cast<int>(event->buttons()));
    if (m_drag == Drag::None || event->buttons() == Qt::NoButton) {
        m_drag = Drag::None;
        updateShape(event->pos());
        tellHover(event->pos());
        return;
    }
    if ((event->pos() - m_pressed).manhattanLength() >= kSmallestBand)
        m_dragged = true;
    if (m_dragged)
        dragTo(event->pos());
    tellHover(event->pos());
}

void PlotCanvas::dragTo(const QPoint& pixel)
{
    const QPoint moved = pixel - m_last;
    const QRect area = plotArea();
    switch (m_drag) {
        case Drag::Band:
            update();
            break;
        case Drag::Pan:
            if (moved.x() != 0)
                changeView(m_gesture, [&] { m_plot.pan(-moved.x() / std::max(1.0, area.width() - 1.0)); });
            break;
        case Drag::PanY: {
            const int height = groupArea(m_dragGroup).height();
            if (moved.y() != 0 && height > 1)
                changeView(m_gesture, [&] {
                    m_plot.panY(static_cast<std::size_t>(m_dragGroup), moved.y() / (height - 1.0));
                });
            break;
        }
        case Drag::CursorA:
            placeCursor(Plot2D::A, xAt(std::clamp(pixel.x(), area.left(), area.right())));
            break;
        case Drag::CursorB:
            placeCursor(Plot2D::B, xAt(std::clamp(pixel.x(), area.left(), area.right())));
            break;
        case Drag::None:
            break;
    }
    m_last = pixel;
}

void PlotCanvas::mouseReleaseEvent(QMouseEvent* event)
{
    const Drag drag = m_drag;
    m_last = event->pos();
    if (drag == Drag::Band && m_dragged)
        finishBand();
    else if (drag != Drag::None && !m_dragged && event->button() == Qt::LeftButton &&
             placeOf(event->pos()).zone == Zone::Plot)
        clickAt(event->pos(), m_shiftHeld);
    m_drag = Drag::None;
    m_dragged = false;
    updateShape(event->pos());
    update();
}

// Flat bands span the whole group, narrow ones the whole width.
QRect PlotCanvas::bandArea() const
{
    const QRect area = groupArea(m_dragGroup);
    QRect band = QRect(m_pressed, m_last).normalized() & area;
    if (band.height() < kFlatBand) {
        band.setTop(area.top());
        band.setBottom(area.bottom());
    } else if (band.width() < kFlatBand) {
        band.setLeft(area.left());
        band.setRight(area.right());
    }
    return band;
}

void PlotCanvas::finishBand()
{
    const QRect area = groupArea(m_dragGroup);
    const QRect band = bandArea();
    if (band.width() < kSmallestBand || area.isEmpty())
        return;
    const double x1 = xAt(band.left());
    const double x2 = xAt(band.right());
    const double y1 = yAt(m_dragGroup, band.bottom());
    const double y2 = yAt(m_dragGroup, band.top());
    changeView(0, [&] {
        if (band.width() < area.width())
            m_plot.setX(x1, x2);
        if (band.height() < area.height())
            m_plot.setY(static_cast<std::size_t>(m_dragGroup), y1, y2);
    });
}

void PlotCanvas::clickAt(const QPoint& pixel, bool shift)
{
    for (const Plot2D::Cursor which : {Plot2D::A, Plot2D::B})
        m_cursorsBeforeClick[which] = m_plot.cursor(which);
    placeCursor(shift ? Plot2D::B : Plot2D::A, xAt(pixel.x()));
}

void PlotCanvas::mouseDoubleClickEvent(QMouseEvent* event)
{
    const Place place = placeOf(event->pos());
    if (event->button() != Qt::LeftButton)
        return;
    if (place.zone == Zone::XAxis || place.zone == Zone::YAxis) {
        editLimits(place);
        return;
    }
    if (place.zone != Zone::Plot)
        return;
    // The first click of the two has set a cursor that nobody meant.
    for (const Plot2D::Cursor which : {Plot2D::A, Plot2D::B}) {
        if (m_cursorsBeforeClick[which])
            m_plot.setCursor(which, *m_cursorsBeforeClick[which]);
        else
            m_plot.clearCursor(which);
    }
    emit x_cursors_changed();
    sl_fitAll();
}

void PlotCanvas::wheelEvent(QWheelEvent* event)
{
    // With Alt held Qt turns the wheel's axis.
    const QPoint turned = event->angleDelta();
    const double notches = (turned.y() != 0 ? turned.y() : turned.x()) / static_cast<double>(kNotch);
    const QPoint pixel = event->position().toPoint();
    const Place place = placeOf(pixel);
    if (notches == 0.0 || place.zone == Zone::None) {
        event->ignore();
        return;
    }
    event->accept();
    const double factor = std::pow(kWheelZoom, notches);
    const bool sideways = turned.y() == 0;
    if (((event->modifiers() & Qt::ControlModifier) != 0 || place.zone == Zone::YAxis) && place.group >= 0) {
        const auto group = static_cast<std::size_t>(place.group);
        const double about = yAt(place.group, pixel.y());
        changeView(kWheelGesture, [&] { m_plot.zoomY(group, factor, about); });
    } else if ((event->modifiers() & Qt::ShiftModifier) != 0 || sideways) {
        changeView(kWheelPanGesture, [&] { m_plot.pan(-notches * kPanStep); });
    } else {
        const double about = xAt(pixel.x());
        changeView(kWheelGesture, [&] { m_plot.zoomX(factor, about); });
    }
    tellHover(pixel);
}

void PlotCanvas::leaveEvent(QEvent* event)
{
    QFrame::leaveEvent(event);
    m_mouse = {-1, -1};
    emit x_hovered(QString());
}

void PlotCanvas::tellHover(const QPoint& pixel)
{
    const Place place = placeOf(pixel);
    if (place.zone != Zone::Plot) {
        emit x_hovered(QString());
        return;
    }
    const double x = m_plot.snapped(xAt(pixel.x()));
    QStringList parts;
    if (const auto ref = m_plot.reference())
        parts.append(tr("sample %1").arg(m_plot.axis().nearestRow(ref->variable(), x)));
    if (m_plot.axis().mode != XMode::Sample)
        parts.append(xText(m_plot, x));
    constexpr int kMostValues = 8;
    for (const auto& v : m_plot.groups()[static_cast<std::size_t>(place.group)].variables()) {
        if (!v->variable().visible || v->variable().isMark)
            continue;
        if (parts.size() > kMostValues) {
            parts.append(QStringLiteral("…"));
            break;
        }
        parts.append(QStringLiteral("%1 = %2").arg(QString::fromStdString(v->variable().label),
                                                   valueWithUnit(*v, valueAt(m_plot, *v, x))));
    }
    emit x_hovered(parts.join(QStringLiteral(",  ")));
}

// Something else lies under the mouse now.
void PlotCanvas::tellHoverAgain()
{
    if (placeOf(m_mouse).zone != Zone::Plot)
        return;
    emit x_cursor_moved(m_mouse.x(), m_mouse.y(), static_cast<int>(QApplication::mouseButtons()));
    tellHover(m_mouse);
}

void PlotCanvas::placeCursor(Plot2D::Cursor which, double x)
{
    try {
        m_plot.setCursor(which, x);
    } catch (const TS::Failure&) {
        return;
    }
    m_lastCursor = which;
    update();
    emit x_cursors_changed();
}

void PlotCanvas::editLimits(const Place& place)
{
    AxisLimits limits;
    if (place.zone == Zone::XAxis) {
        const XAxis& axis = m_plot.axis();
        const QString title = tr("Limits of the x axis");
        // Below, dates with milliseconds have no more to say.
        constexpr double kFewSeconds = 0.1;
        const bool isClock =
            axis.mode == XMode::Clock && !axis.logarithmic && m_plot.x2() - m_plot.x1() >= kFewSeconds;
        const double origin = isClock ? axis.origin : 0.0;
        limits = {m_plot.x1() + origin, m_plot.x2() + origin, false, axis.logarithmic};
        if (isClock ? askClockLimits(this, title, limits) : askAxisLimits(this, title, false, limits))
            changeView(0, [&] { m_plot.setX(limits.from - origin, limits.to - origin); });
        return;
    }
    Group& group = m_plot.groups()[static_cast<std::size_t>(place.group)];
    limits = {group.y1(), group.y2(), group.mode != YMode::Fixed, group.isLogarithmic()};
    if (!askAxisLimits(this, tr("Limits of the y axis"), true, limits))
        return;
    changeView(0, [&] {
        if (limits.automatic) {
            group.mode = YMode::Whole;
            group.fitY();
        } else {
            m_plot.setY(static_cast<std::size_t>(place.group), limits.from, limits.to);
        }
    });
}
