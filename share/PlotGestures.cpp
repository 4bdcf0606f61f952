#include "share/PlotGestures.h"

#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

#include "share/QtCompat.h"

namespace veltrac {

namespace {

constexpr double kWheelStep = 0.1;
constexpr int kFlatBand = 12;     // a band flatter than this is about x only
constexpr int kSmallestBand = 4;  // smaller is a click
constexpr int kGrabDistance = 4;  // of a cursor
constexpr int kWheelGesture = -1;
constexpr int kWheelPanGesture = -2;

}  // namespace

void PlotGestures::holdSpace(bool held)
{
    m_spaceHeld = held;
    updateShape(m_view.mouse());
}

void PlotGestures::cancel()
{
    m_drag = Drag::None;
    m_view.setBand(std::nullopt);
}

std::optional<Plot2D::Cursor> PlotGestures::cursorNear(const QPoint& pixel) const
{
    // The one that was moved last comes first where both stand together.
    const Plot2D::Cursor other = m_view.activeCursor() == Plot2D::A ? Plot2D::B : Plot2D::A;
    for (const Plot2D::Cursor which : {m_view.activeCursor(), other})
        if (m_view.plot().cursor(which) &&
            std::abs(m_view.pixelOf(*m_view.plot().cursor(which)) - pixel.x()) <= kGrabDistance)
            return which;
    return std::nullopt;
}

void PlotGestures::updateShape(const QPoint& pixel)
{
    const PlotView::Place place = m_view.placeOf(pixel);
    if (m_spaceHeld && place.zone == PlotView::Zone::Plot)
        m_view.setCursor(m_drag == Drag::Pan ? Qt::ClosedHandCursor : Qt::OpenHandCursor);
    else if (place.zone == PlotView::Zone::Plot)
        m_view.setCursor(cursorNear(pixel) ? Qt::SplitHCursor : Qt::CrossCursor);
    else if (place.zone == PlotView::Zone::XAxis)
        m_view.setCursor(Qt::SizeHorCursor);
    else if (place.zone == PlotView::Zone::YAxis)
        m_view.setCursor(Qt::SizeVerCursor);
    else
        m_view.unsetCursor();
}

void PlotGestures::press(const QMouseEvent& event)
{
    m_pressed = m_last = mousePlace(event);
    m_dragged = false;
    m_shiftHeld = (event.modifiers() & Qt::ShiftModifier) != 0;
    m_drag = Drag::None;
    const PlotView::Place place = m_view.placeOf(mousePlace(event));
    m_dragGroup = place.group;
    ++m_gesture;
    if (event.button() == Qt::MiddleButton && place.zone != PlotView::Zone::None) {
        m_drag = Drag::Pan;
        m_view.setCursor(Qt::ClosedHandCursor);
        return;
    }
    if (event.button() != Qt::LeftButton)
        return;
    if (place.zone == PlotView::Zone::XAxis) {
        m_drag = Drag::Pan;
    } else if (place.zone == PlotView::Zone::YAxis) {
        m_drag = Drag::PanY;
    } else if (place.zone == PlotView::Zone::Plot) {
        const std::optional<Plot2D::Cursor> cursor = cursorNear(mousePlace(event));
        if (m_spaceHeld)
            m_drag = Drag::Pan;
        else if (cursor && !m_shiftHeld)
            m_drag = *cursor == Plot2D::A ? Drag::CursorA : Drag::CursorB;
        else
            m_drag = Drag::Band;
    }
    updateShape(mousePlace(event));
}

void PlotGestures::move(const QMouseEvent& event)
{
    const QPoint pixel = mousePlace(event);
    emit m_view.x_cursor_moved(pixel.x(), pixel.y(), static_cast<int>(event.buttons()));
    m_view.setMouse(pixel);
    if (m_drag == Drag::None || event.buttons() == Qt::NoButton) {
        m_drag = Drag::None;
        updateShape(pixel);
        return;
    }
    if ((pixel - m_pressed).manhattanLength() >= kSmallestBand)
        m_dragged = true;
    if (m_dragged)
        dragTo(pixel);
}

void PlotGestures::dragTo(const QPoint& pixel)
{
    const QPoint moved = pixel - m_last;
    const QRect area = m_view.plotArea();
    switch (m_drag) {
        case Drag::Band:
            m_last = pixel;
            m_view.setBand(bandArea());
            break;
        case Drag::Pan:
            if (moved.x() != 0)
                m_view.changeView(m_gesture,
                                  [&] { m_view.plot().pan(-moved.x() / std::max(1.0, area.width() - 1.0)); });
            break;
        case Drag::PanY: {
            const int height = m_view.groupArea(m_dragGroup).height();
            if (moved.y() != 0 && height > 1)
                m_view.changeView(m_gesture, [&] {
                    m_view.plot().panY(static_cast<std::size_t>(m_dragGroup), moved.y() / (height - 1.0));
                });
            break;
        }
        case Drag::CursorA:
            m_view.placeCursor(Plot2D::A, m_view.xAt(std::clamp(pixel.x(), area.left(), area.right())));
            break;
        case Drag::CursorB:
            m_view.placeCursor(Plot2D::B, m_view.xAt(std::clamp(pixel.x(), area.left(), area.right())));
            break;
        case Drag::None:
            break;
    }
    m_last = pixel;
}

void PlotGestures::release(const QMouseEvent& event)
{
    const Drag drag = m_drag;
    m_last = mousePlace(event);
    if (drag == Drag::Band && m_dragged)
        finishBand();
    else if (drag != Drag::None && !m_dragged && event.button() == Qt::LeftButton &&
             m_view.placeOf(mousePlace(event)).zone == PlotView::Zone::Plot)
        clickAt(mousePlace(event), m_shiftHeld);
    m_drag = Drag::None;
    m_dragged = false;
    updateShape(mousePlace(event));
    m_view.setBand(std::nullopt);
}

// Flat bands span the whole group, narrow ones the whole width.
QRect PlotGestures::bandArea() const
{
    const QRect area = m_view.groupArea(m_dragGroup);
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

void PlotGestures::finishBand()
{
    const QRect area = m_view.groupArea(m_dragGroup);
    const QRect band = bandArea();
    if (band.width() < kSmallestBand || area.isEmpty())
        return;
    const double x1 = m_view.xAt(band.left());
    const double x2 = m_view.xAt(band.right());
    const double y1 = m_view.yAt(m_dragGroup, band.bottom());
    const double y2 = m_view.yAt(m_dragGroup, band.top());
    m_view.changeView(0, [&] {
        if (band.width() < area.width())
            m_view.plot().setX(x1, x2);
        if (band.height() < area.height())
            m_view.plot().setY(static_cast<std::size_t>(m_dragGroup), y1, y2);
    });
}

void PlotGestures::clickAt(const QPoint& pixel, bool shift)
{
    for (const Plot2D::Cursor which : {Plot2D::A, Plot2D::B})
        m_cursorsBeforeClick[which] = m_view.plot().cursor(which);
    m_view.placeCursor(shift ? Plot2D::B : Plot2D::A, m_view.xAt(pixel.x()));
}

void PlotGestures::doubleClick(const QMouseEvent& event)
{
    const PlotView::Place place = m_view.placeOf(mousePlace(event));
    if (event.button() != Qt::LeftButton)
        return;
    if (place.zone == PlotView::Zone::XAxis || place.zone == PlotView::Zone::YAxis) {
        m_view.editLimits(place);
        return;
    }
    if (place.zone != PlotView::Zone::Plot)
        return;
    // The first click of the two has set a cursor that nobody meant.
    for (const Plot2D::Cursor which : {Plot2D::A, Plot2D::B}) {
        if (m_cursorsBeforeClick[which])
            m_view.plot().setCursor(which, *m_cursorsBeforeClick[which]);
        else
            m_view.plot().clearCursor(which);
    }
    emit m_view.x_cursors_changed();
    m_view.sl_fitAll();
}

void PlotGestures::wheel(QWheelEvent& event)
{
    // With Alt held Qt turns the wheel's axis.
    const QPoint turned = event.angleDelta();
    const double notches = (turned.y() != 0 ? turned.y() : turned.x()) / static_cast<double>(kNotch);
    const QPoint pixel = mousePlace(event);
    const PlotView::Place place = m_view.placeOf(pixel);
    if (notches == 0.0 || place.zone == PlotView::Zone::None) {
        event.ignore();
        return;
    }
    event.accept();
    const double factor = std::pow(kWheelZoom, notches);
    const bool sideways = turned.y() == 0;
    if (((event.modifiers() & Qt::ControlModifier) != 0 || place.zone == PlotView::Zone::YAxis) &&
        place.group >= 0) {
        const auto group = static_cast<std::size_t>(place.group);
        const double about = m_view.yAt(place.group, pixel.y());
        m_view.changeView(kWheelGesture, [&] { m_view.plot().zoomY(group, factor, about); });
    } else if ((event.modifiers() & Qt::ShiftModifier) != 0 || sideways) {
        m_view.changeView(kWheelPanGesture, [&] { m_view.plot().pan(-notches * kWheelStep); });
    } else {
        const double about = m_view.xAt(pixel.x());
        m_view.changeView(kWheelGesture, [&] { m_view.plot().zoomX(factor, about); });
    }
    m_view.setMouse(pixel);
}

}  // namespace veltrac
