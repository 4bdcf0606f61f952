#include "share/OverviewStrip.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

#include "core/PlotCurves.h"
#include "core/TsExceptions.h"
#include "share/PlotCanvas.h"
#include "share/PlotGestures.h"
#include "share/QtCompat.h"

namespace veltrac {

namespace {

constexpr int kHeight = 44;
constexpr int kEdge = 4;       // pixels beside the frame's edges where it is stretched
constexpr int kNarrowest = 3;  // the frame stays visible
constexpr int kFirstGesture = 1'000'000;
constexpr std::size_t kMostLanes = 6;

void drawCurve(QPainter& painter, const Curve& curve, const QRectF& lane)
{
    std::size_t begin = 0;
    for (const std::size_t end : curve.runEnds) {
        QPolygonF line;
        for (std::size_t i = begin; i < end; ++i)
            line << QPointF(lane.left() + static_cast<double>(curve.points[2 * i]) * lane.width(),
                            lane.bottom() - static_cast<double>(curve.points[2 * i + 1]) * lane.height());
        if (end - begin == 1)
            painter.drawPoints(line);
        else
            painter.drawPolyline(line);
        begin = end;
    }
}

}  // namespace

OverviewStrip::OverviewStrip(PlotCanvas* canvas, QWidget* parent)
    : QWidget(parent), m_canvas(canvas), m_gesture(kFirstGesture)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setMouseTracking(true);
    setAccessibleName(tr("Overview of the whole series"));
    setWhatsThis(tr("The whole series, with a frame around what the plot shows of it."));
    setToolTip(tr("The whole series. Drag the frame to move the view, its edges to stretch it."));
    connect(canvas, &PlotCanvas::x_plot_changed, this, &OverviewStrip::forgetPicture);
    connect(canvas, &PlotCanvas::x_view_changed, this, [this] { update(); });
}

QSize OverviewStrip::sizeHint() const
{
    return {400, kHeight};
}

void OverviewStrip::forgetPicture()
{
    m_stale = true;
    update();
}

void OverviewStrip::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_stale = true;
}

void OverviewStrip::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        forgetPicture();
}

// Under the canvas' frames, so that x stands above x.
QRect OverviewStrip::strip() const
{
    const QRect area = m_canvas->plotArea();
    const QRect whole = rect().adjusted(0, 2, -1, -2);
    if (area.width() < 20)
        return whole;
    const int left = mapFromGlobal(m_canvas->mapToGlobal(area.topLeft())).x();
    return {left, whole.top(), area.width(), whole.height()};
}

void OverviewStrip::drawPicture()
{
    m_stale = false;
    const QRect area = strip();
    const qreal ratio = devicePixelRatioF();
    m_picture = QPixmap(area.size() * ratio);
    m_picture.setDevicePixelRatio(ratio);
    m_picture.fill(palette().color(QPalette::Base));
    Plot2D whole = m_canvas->plot();
    whole.fitAll();
    // Each group has a lane of its own, in the plot's order, as long as lanes are high enough to see
    // anything.
    std::vector<Group>& lanes = whole.groups();
    std::erase_if(lanes, [](const Group& group) { return !group.hasVisible(); });
    lanes.resize(std::min(lanes.size(), kMostLanes));
    QPainter painter(&m_picture);
    for (const Curve& curve : curvesOf(whole, m_picture.width(), m_picture.width())) {
        const double height = area.height() / static_cast<double>(lanes.size());
        const QRectF lane(0.0, static_cast<double>(curve.group) * height, area.width() - 1.0, height - 1.0);
        painter.setPen(m_canvas->colorOf(curve.variable->variable()));
        drawCurve(painter, curve, lane);
    }
}

void OverviewStrip::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    // An exception must not travel through Qt; the canvas tells what is wrong.
    try {
        if (m_stale || m_picture.size() != strip().size() * devicePixelRatioF())
            drawPicture();
        const QRect area = strip();
        painter.drawPixmap(area.topLeft(), m_picture);
        const QRect view = frame();
        QColor shade = palette().color(QPalette::Window);
        shade.setAlpha(150);
        painter.fillRect(QRect(area.left(), area.top(), view.left() - area.left(), area.height()), shade);
        painter.fillRect(QRect(view.right() + 1, area.top(), area.right() - view.right(), area.height()),
                         shade);
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawRect(area.adjusted(0, 0, -1, -1));
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.drawRect(view.adjusted(1, 1, -1, -1));
    } catch (const TS::Failure&) {
        painter.fillRect(rect(), palette().color(QPalette::Base));
    } catch (const std::exception&) {
        painter.fillRect(rect(), palette().color(QPalette::Base));
    }
}

int OverviewStrip::pixelOf(double x) const
{
    const Plot2D& plot = m_canvas->plot();
    const Plot2D::Extent all = plot.extent();
    const double from = plot.axis().toScale(all.x1);
    const double to = plot.axis().toScale(all.x2);
    const double part = (plot.axis().toScale(x) - from) / (to - from);
    const QRect area = strip();
    return area.left() +
           (std::isfinite(part) ? static_cast<int>(std::clamp(part, 0.0, 1.0) * (area.width() - 1.0)) : 0);
}

double OverviewStrip::scaleAt(int pixel) const
{
    const Plot2D& plot = m_canvas->plot();
    const Plot2D::Extent all = plot.extent();
    const double from = plot.axis().toScale(all.x1);
    const double to = plot.axis().toScale(all.x2);
    const QRect area = strip();
    return from + (pixel - area.left()) / std::max(1.0, area.width() - 1.0) * (to - from);
}

QRect OverviewStrip::frame() const
{
    const QRect area = strip();
    int left = pixelOf(m_canvas->plot().x1());
    int right = pixelOf(m_canvas->plot().x2());
    if (right - left < kNarrowest) {
        left = std::max(area.left(), (left + right) / 2 - kNarrowest / 2);
        right = left + kNarrowest;
    }
    return {QPoint(left, area.top()), QPoint(right, area.bottom())};
}

OverviewStrip::Part OverviewStrip::partAt(int pixel) const
{
    const QRect view = frame();
    // A narrow frame is moved rather than stretched.
    const bool isWide = view.width() > 4 * kEdge;
    if (std::abs(pixel - view.left()) <= kEdge && (isWide || pixel < view.left()))
        return Part::Left;
    if (std::abs(pixel - view.right()) <= kEdge && (isWide || pixel > view.right()))
        return Part::Right;
    return pixel > view.left() && pixel < view.right() ? Part::Inside : Part::Outside;
}

void OverviewStrip::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const Plot2D& plot = m_canvas->plot();
    const double from = plot.axis().toScale(plot.x1());
    m_width = plot.axis().toScale(plot.x2()) - from;
    m_dragged = partAt(mousePlace(*event).x());
    m_dragging = true;
    ++m_gesture;
    m_offset = scaleAt(mousePlace(*event).x()) - from;
    if (m_dragged == Part::Outside) {
        // The view comes to where one presses, and follows from there.
        m_offset = m_width / 2.0;
        m_dragged = Part::Inside;
        mouseMoveEvent(event);
    }
}

void OverviewStrip::mouseMoveEvent(QMouseEvent* event)
{
    const Plot2D& plot = m_canvas->plot();
    if (!m_dragging) {
        const Part part = partAt(mousePlace(*event).x());
        setCursor(part == Part::Left || part == Part::Right ? Qt::SizeHorCursor
                  : part == Part::Inside                    ? Qt::OpenHandCursor
                                                            : Qt::ArrowCursor);
        return;
    }
    double from = plot.axis().toScale(plot.x1());
    double to = plot.axis().toScale(plot.x2());
    const double at = scaleAt(mousePlace(*event).x());
    if (m_dragged == Part::Left) {
        from = std::min(at, to);
    } else if (m_dragged == Part::Right) {
        to = std::max(at, from);
    } else {
        // The whole frame stays on the strip.
        const Plot2D::Extent all = plot.extent();
        const double least = plot.axis().toScale(all.x1);
        const double most = plot.axis().toScale(all.x2) - m_width;
        from = std::clamp(at - m_offset, std::min(least, most), std::max(least, most));
        to = from + m_width;
    }
    m_canvas->showRange(plot.axis().fromScale(from), plot.axis().fromScale(to), m_gesture);
}

void OverviewStrip::mouseReleaseEvent(QMouseEvent* /*event*/)
{
    m_dragging = false;
}

void OverviewStrip::mouseDoubleClickEvent(QMouseEvent* /*event*/)
{
    m_canvas->sl_fitAll();
}

void OverviewStrip::wheelEvent(QWheelEvent* event)
{
    const Plot2D& plot = m_canvas->plot();
    const double factor = std::pow(kWheelZoom, -event->angleDelta().y() / static_cast<double>(kNotch));
    const double from = plot.axis().toScale(plot.x1());
    const double to = plot.axis().toScale(plot.x2());
    const double middle = from + (to - from) / 2.0;
    const double half = (to - from) / 2.0 * factor;
    m_canvas->showRange(plot.axis().fromScale(middle - half), plot.axis().fromScale(middle + half),
                        kFirstGesture - 1);
    event->accept();
}

}  // namespace veltrac
