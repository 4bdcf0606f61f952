#include "share/PlotPicture.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <exception>

#include "core/TsExceptions.h"
#include "share/PlotReadout.h"
#include "share/QtCompat.h"
#include "share/QtDriver.h"

namespace veltrac {

namespace {

constexpr int kDarkGround = 128;  // lightness below which colours are lightened

PlotColor plotColor(const QColor& c)
{
    return {static_cast<float>(c.redF()), static_cast<float>(c.greenF()), static_cast<float>(c.blueF())};
}

QColor qColor(const PlotColor& c)
{
    return QColor::fromRgbF(ColorPart{c.r}, ColorPart{c.g}, ColorPart{c.b});
}

// The place nearest to a point that begins a pixel of the device: between two of them (a frame of one pixel
// at 150 %) the picture's strokes would be of several widths.
QPointF wholePixel(const QPainter& painter, const QPoint& point)
{
    const QTransform& toDevice = painter.deviceTransform();
    const QPointF at = toDevice.map(QPointF(point));
    return toDevice.inverted().map(QPointF(std::round(at.x()), std::round(at.y())));
}

// A pen that is as wide everywhere, at 150 % too.
QPen wholePen(const QColor& color, qreal ratio, Qt::PenStyle style = Qt::SolidLine)
{
    QPen pen(color, std::max(1.0, std::floor(ratio)), style);
    pen.setCosmetic(true);
    return pen;
}

}  // namespace

PlotPicture::PlotPicture(QWidget* parent) : QFrame(parent), m_colors(defaultColors())
{
    setFrameShape(QFrame::StyledPanel);
    setFrameShadow(QFrame::Sunken);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Plot"));
    setWhatsThis(
        tr("The wheel zooms, dragging with the left button marks what to zoom to, a click sets cursor A and "
           "Shift with a click cursor B. The right button shows everything else."));
}

void PlotPicture::setPlot(Plot2D plot)
{
    m_text.clear();
    m_layout = {};
    m_plot = std::move(plot);
}

void PlotPicture::setBand(std::optional<QRect> band)
{
    m_band = band;
    update();
}

void PlotPicture::replot()
{
    m_stale = true;
    update();
}

void PlotPicture::showText(const QString& text)
{
    m_text = text;
    setAccessibleDescription(text);
    if (!text.isEmpty())
        m_layout = {};
    replot();
}

QImage PlotPicture::image()
{
    return grab(contentsRect()).toImage();
}

std::vector<QColor> PlotPicture::defaultColors()
{
    std::vector<QColor> colors;
    for (const PlotColor& c : defaultPlotColors())
        colors.push_back(qColor(c));
    return colors;
}

QColor PlotPicture::colorOf(const Variable& variable) const
{
    constexpr int kFirst = 7;
    if (m_colors.empty())
        return Qt::black;
    const auto i = static_cast<std::size_t>(std::max(0, variable.colorIndex - kFirst));
    const QColor color = m_colors[i % m_colors.size()];
    return isDarkGround() ? qColor(onDarkGround(plotColor(color))) : color;
}

bool PlotPicture::isDarkGround() const
{
    return palette().color(QPalette::Base).lightness() < kDarkGround;
}

PlotLook PlotPicture::screenLook() const
{
    PlotLook look;
    look.smooth = true;
    look.text = plotColor(palette().color(QPalette::Text));
    for (const QColor& c : m_colors)
        look.colors.push_back(isDarkGround() ? onDarkGround(plotColor(c)) : plotColor(c));
    return look;
}

PlotLook PlotPicture::lightLook() const
{
    PlotLook look;
    look.smooth = true;
    for (const QColor& c : m_colors)
        look.colors.push_back(plotColor(c));
    return look;
}

void PlotPicture::drawPicture()
{
    const QSize size = contentsRect().size();
    const qreal ratio = devicePixelRatioF();
    m_picture = QPixmap(size * ratio);
    m_picture.setDevicePixelRatio(ratio);
    m_picture.fill(palette().color(QPalette::Base));
    m_stale = false;
    m_layout = {};  // a picture that cannot be drawn has none
    if (m_picture.isNull() || !m_text.isEmpty())
        return;
    QtDriver driver(&m_picture);
    driver.BeginPage(0);
    PlotLook look = screenLook();
    look.markerGap = static_cast<int>(std::lround(look.markerGap * ratio));
    look.penUnits *= static_cast<float>(ratio);
    m_layout = drawPlot(m_plot, driver, m_picture.width(), look);
    driver.EndPage();
    setAccessibleDescription(QString::fromStdString(plotDescription(m_plot)));
}

void PlotPicture::paintEvent(QPaintEvent* event)
{
    QFrame::paintEvent(event);
    QString failure = m_text;
    // An exception must not travel through Qt.
    try {
        // The window may have moved to a screen of another density.
        if (m_stale || m_picture.devicePixelRatio() != devicePixelRatioF())
            drawPicture();
    } catch (const std::exception& e) {
        failure = tr("The plot cannot be drawn: %1").arg(QString::fromLocal8Bit(e.what()));
    } catch (const TS::Failure&) {
        failure = tr("The plot cannot be drawn: the file cannot be read.");
    }
    QPainter painter(this);
    painter.drawPixmap(wholePixel(painter, contentsRect().topLeft()), m_picture);
    if (!failure.isEmpty()) {
        painter.drawText(contentsRect().adjusted(20, 20, -20, -20), Qt::AlignCenter | Qt::TextWordWrap,
                         failure);
        return;
    }
    for (const Plot2D::Cursor which : {Plot2D::A, Plot2D::B})
        drawCursor(painter, which);
    drawLevels(painter);
    if (m_band)
        drawBand(painter, *m_band);
}

void PlotPicture::drawCursor(QPainter& painter, Plot2D::Cursor which)
{
    const QRect area = plotArea();
    if (!m_plot.cursor(which) || area.isEmpty())
        return;
    const int x = pixelOf(*m_plot.cursor(which));
    if (x < area.left() || x > area.right())
        return;
    // On the colours of a picture one of the two lines is seen.
    painter.setPen(wholePen(palette().color(QPalette::Base), devicePixelRatioF()));
    for (std::size_t g = 0; g < m_plot.groups().size(); ++g)
        if (const QRect image = groupArea(static_cast<int>(g)); m_plot.groups()[g].image && !image.isEmpty())
            painter.drawLine(x + 1, image.top(), x + 1, image.bottom());
    const QColor color = palette().color(QPalette::Text);
    painter.setPen(wholePen(color, devicePixelRatioF(), which == Plot2D::A ? Qt::SolidLine : Qt::DashLine));
    painter.drawLine(x, area.top(), x, area.bottom());
    // A flag with the letter, which is also what says which one of them is moved by the keys.
    const QString letter = which == Plot2D::A ? QStringLiteral("A") : QStringLiteral("B");
    const int side = painter.fontMetrics().height();
    QRect flag(x, area.top(), side, side);
    if (flag.right() > area.right())
        flag.moveRight(x);
    const bool isActive = which == m_activeCursor;
    painter.fillRect(flag, isActive ? color : palette().color(QPalette::Base));
    painter.setPen(wholePen(color, devicePixelRatioF()));
    painter.drawRect(flag.adjusted(0, 0, -1, -1));
    painter.setPen(isActive ? palette().color(QPalette::Base) : color);
    painter.drawText(flag, Qt::AlignCenter, letter);
}

// The horizontal cursors.
void PlotPicture::drawLevels(QPainter& painter)
{
    for (std::size_t g = 0; g < m_plot.groups().size(); ++g) {
        const Group& group = m_plot.groups()[g];
        const QRect area = groupArea(static_cast<int>(g));
        if (!group.level || area.isEmpty())
            continue;
        const int y = pixelOfY(static_cast<int>(g), *group.level);
        if (y < area.top() || y > area.bottom())
            continue;
        // Seen on light and dark colours of a picture.
        painter.setPen(wholePen(Qt::black, devicePixelRatioF()));
        painter.drawLine(area.left(), y + 1, area.right(), y + 1);
        painter.setPen(wholePen(Qt::white, devicePixelRatioF()));
        painter.drawLine(area.left(), y, area.right(), y);
    }
}

void PlotPicture::drawBand(QPainter& painter, const QRect& band)
{
    QColor fill = palette().color(QPalette::Highlight);
    painter.setPen(wholePen(fill, devicePixelRatioF()));
    fill.setAlpha(50);
    painter.setBrush(fill);
    painter.drawRect(band.adjusted(0, 0, -1, -1));
    painter.setBrush(Qt::NoBrush);
}

void PlotPicture::resizeEvent(QResizeEvent* event)
{
    QFrame::resizeEvent(event);
    replot();
    emit x_got_resize_event();
}

void PlotPicture::changeEvent(QEvent* event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        replot();
}

QRect PlotPicture::plotArea() const
{
    if (m_layout.groups.empty())
        return {};
    const QRect area = contentsRect();
    const PlotLayout::Frame& first = m_layout.groups.front();
    const PlotLayout::Frame& last = m_layout.groups.back();
    const auto x = [&](float part) {
        return area.left() + static_cast<int>(part * static_cast<float>(area.width()));
    };
    const auto y = [&](float part) {
        return area.top() + static_cast<int>((1.0F - part) * static_cast<float>(area.height()));
    };
    return {QPoint(x(first.x1), y(first.y2)), QPoint(x(first.x2), y(last.y1))};
}

QRect PlotPicture::groupArea(int group) const
{
    const QRect area = contentsRect();
    for (std::size_t i = 0; i < m_layout.groups.size(); ++i) {
        if (static_cast<int>(m_layout.groupOf[i]) != group)
            continue;
        const auto y = [&](float part) {
            return area.top() + static_cast<int>((1.0F - part) * static_cast<float>(area.height()));
        };
        const QRect all = plotArea();
        return {QPoint(all.left(), y(m_layout.groups[i].y2)), QPoint(all.right(), y(m_layout.groups[i].y1))};
    }
    return {};
}

double PlotPicture::xAt(int pixel) const
{
    const QRect area = plotArea();
    if (area.width() < 2)
        return m_plot.x1();
    return m_plot.xAtFraction((pixel - area.left() + 0.5) / (area.width() - 1.0));
}

int PlotPicture::pixelOf(double x) const
{
    constexpr double kFar = 1e6;
    const QRect area = plotArea();
    const double at = m_plot.fractionOf(x) * (area.width() - 1.0);
    return area.left() + (std::isfinite(at) ? static_cast<int>(std::floor(std::clamp(at, -kFar, kFar))) : -1);
}

int PlotPicture::groupAt(const QPoint& pixel) const
{
    for (const std::size_t g : m_layout.groupOf) {
        // Groups may have gone since the picture was drawn.
        if (g >= m_plot.groups().size())
            break;
        const QRect area = groupArea(static_cast<int>(g));
        if (pixel.y() >= area.top() && pixel.y() <= area.bottom())
            return static_cast<int>(g);
    }
    return -1;
}

double PlotPicture::yAt(int group, int pixel) const
{
    const QRect area = groupArea(group);
    const Group& g = m_plot.groups()[static_cast<std::size_t>(group)];
    const double part = area.height() < 2 ? 0.0 : (area.bottom() - pixel) / (area.height() - 1.0);
    const double low = g.toScale(g.y1());
    return g.fromScale(low + part * (g.toScale(g.y2()) - low));
}

int PlotPicture::pixelOfY(int group, double y) const
{
    const QRect area = groupArea(group);
    const Group& g = m_plot.groups()[static_cast<std::size_t>(group)];
    const double low = g.toScale(g.y1());
    const double part = (g.toScale(y) - low) / (g.toScale(g.y2()) - low);
    return std::isfinite(part) && std::fabs(part) < 1e6
               ? area.bottom() - static_cast<int>(std::lround(part * (area.height() - 1.0)))
               : -1;
}

QRect PlotPicture::colorBarArea(int group) const
{
    const QRect area = contentsRect();
    for (const PlotLayout::ColorBar& bar : m_layout.colorBars)
        if (static_cast<int>(bar.group) == group)
            return QRect(
                QPoint(
                    area.left() + static_cast<int>(bar.frame.x1 * static_cast<float>(area.width())),
                    area.top() + static_cast<int>((1.0F - bar.frame.y2) * static_cast<float>(area.height()))),
                QPoint(area.left() + static_cast<int>(bar.frame.x2 * static_cast<float>(area.width())),
                       area.top() +
                           static_cast<int>((1.0F - bar.frame.y1) * static_cast<float>(area.height()))));
    return {};
}

PlotPicture::Place PlotPicture::placeOf(const QPoint& pixel) const
{
    const QRect area = plotArea();
    if (area.isEmpty() || !m_text.isEmpty())
        return {};
    for (const PlotLayout::ColorBar& bar : m_layout.colorBars)
        if (bar.group < m_plot.groups().size() && colorBarArea(static_cast<int>(bar.group)).contains(pixel))
            return {Zone::ColorBar, static_cast<int>(bar.group)};
    const int group = groupAt(pixel);
    const bool inWidth = pixel.x() >= area.left() && pixel.x() <= area.right();
    if (group >= 0 && inWidth)
        return {Zone::Plot, group};
    if (group >= 0 && pixel.x() < area.left())
        return {Zone::YAxis, group};
    if (pixel.y() > area.bottom() && inWidth)
        return {Zone::XAxis, -1};
    if (pixel.y() < area.top() && inWidth)
        return {Zone::Margin, -1};
    return {};
}

}  // namespace veltrac
