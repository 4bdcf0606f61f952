#include "share/QtDriver.h"

#include <QBrush>
#include <QImage>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainterPath>
#include <QPen>
#include <QVector>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "share/DashPatterns.h"
#include "share/HeaderText.h"
#include "share/QtCompat.h"

using namespace veltrac;

namespace {

constexpr int kScreenDotsPerInch = 75;
constexpr int kCharacterUnit = 11;
constexpr int kLineUnit = 13;
constexpr int kReservedPoints = 1000;

// Far outside of any device, and within what the raster engine clips exactly.
constexpr float kFarPixels = 30000.0F;

int truncated(float pixels)
{
    if (!(pixels > -kFarPixels))
        return -static_cast<int>(kFarPixels);
    return static_cast<int>(std::min(pixels, kFarPixels));
}

qreal within(float pixels)
{
    return static_cast<qreal>(pixels > -kFarPixels ? std::min(pixels, kFarPixels) : -kFarPixels);
}

int component(float part)
{
    constexpr float kFull = 255.0F;
    return static_cast<int>(std::lround(part >= 0.0F ? std::min(part, 1.0F) * kFull : 0.0F));
}

}  // namespace

QtDriver::QtDriver(QWidget* target) : m_target(target) {}

QtDriver::QtDriver(QPaintDevice* device) : m_device(device) {}

QtDriver::~QtDriver()
{
    if (m_painter.isActive())
        m_painter.end();
}

void QtDriver::BeginPage(int flags)
{
    BasicDriver::BeginPage(flags);
    if (m_painter.isActive())
        m_painter.end();
    m_stroke.points.clear();
    m_stroke.places.clear();
    m_stroke.isSmooth = false;
    m_pixelRatio = 1.0F;
    if (m_target != nullptr)
        m_painter.begin(m_target);
    else if (m_device != nullptr)
        m_painter.begin(m_device);
    findDeviceRectangle();
    UpdateScale();
    SetClip(false);
    chooseUnits();
    FontControl(1.0F, 0);
    m_stroke.points.reserve(kReservedPoints);
    // What is filled before any SetColor() has the colour that lines have then.
    if (m_painter.isActive())
        m_painter.setBrush(m_painter.pen().color());
    applyPen();
    if (flags != 0)
        ClearViewport();
    SelectColor(kTextColor);
}

void QtDriver::EndPage()
{
    drawPoints();
    BasicDriver::EndPage();
    if (!m_painter.isActive())
        return;
    if (m_painter.paintEngine()->type() == kPostScriptEngine)
        if (auto* const pages = dynamic_cast<QPagedPaintDevice*>(m_painter.device()))
            pages->newPage();
    m_painter.end();
}

void QtDriver::Flush()
{
    drawPoints();
    BasicDriver::Flush();
}

// Today's printers are driven by the PDF engine where they once had a PostScript one: both have so many
// pixels that sizes must follow the page.
bool QtDriver::isPageEngine() const
{
    if (!m_painter.isActive())
        return false;
    const QPaintEngine::Type type = m_painter.paintEngine()->type();
    return type == kPostScriptEngine || type == QPaintEngine::Pdf;
}

void QtDriver::findDeviceRectangle()
{
    if (m_target != nullptr) {
        m_deviceRectangle = m_target->inherits("QFrame") ? m_target->contentsRect() : m_target->rect();
    } else if (m_device != nullptr) {
        m_deviceRectangle = QRect(0, 0, m_device->width(), m_device->height());
        const double ratio = m_device->devicePixelRatioF();
        if (m_painter.isActive() && ratio == 1.0) {
            m_painter.setWindow(m_deviceRectangle);
            m_painter.setViewport(m_deviceRectangle);
        } else if (m_painter.isActive()) {
            // Every pixel of a high-density picture counts, while sizes stay those of its logical ones.
            m_painter.scale(1.0 / ratio, 1.0 / ratio);
            m_pixelRatio = static_cast<float>(ratio);
        }
    }
    if (m_painter.isActive() && m_painter.paintEngine()->type() == kPostScriptEngine)
        subtractPageMargins();
    m_deviceXMin = 0.0F;
    m_deviceYMin = 0.0F;
    m_deviceXMax = static_cast<float>(std::max(m_deviceRectangle.width(), 1));
    m_deviceYMax = static_cast<float>(std::max(m_deviceRectangle.height(), 1));
}

void QtDriver::subtractPageMargins()
{
    QMargins margins;
    if (const auto* const pages = dynamic_cast<QPagedPaintDevice*>(m_painter.device()))
        margins = pages->pageLayout().marginsPixels(m_painter.device()->logicalDpiX());
    const int substitute = m_deviceRectangle.width() / 12;
    const auto margin = [substitute](int given) { return given > 0 ? given : substitute; };
    m_deviceRectangle.adjust(margin(margins.left()), margin(margins.top()), -margin(margins.right()),
                             -margin(margins.bottom()));
}

void QtDriver::chooseUnits()
{
    m_characterUnit = truncated(kCharacterUnit * m_pixelRatio);
    m_lineUnit = truncated(kLineUnit * m_pixelRatio);
    if (!isPageEngine())
        return;
    const int width = m_deviceRectangle.width();
    m_characterUnit = width < m_deviceRectangle.height() ? width / 60 : width / 80;
    m_lineUnit = static_cast<int>(m_characterUnit * 1.4);
}

float QtDriver::magnification() const
{
    return isPageEngine() ? static_cast<float>(m_characterUnit) / kCharacterUnit : m_pixelRatio;
}

void QtDriver::UpdateScale()
{
    BasicDriver::UpdateScale();
    const QPoint topLeft = pixelOf(m_viewX1 * m_deviceXMax, m_viewY2 * m_deviceYMax);
    const QPoint bottomRight = pixelOf(m_viewX2 * m_deviceXMax, m_viewY1 * m_deviceYMax);
    m_viewportRectangle = QRect(topLeft, bottomRight) & m_deviceRectangle;
}

QPoint QtDriver::pixelOf(float deviceX, float deviceY) const
{
    const float ny = deviceY / m_deviceYMax;
    return {m_deviceRectangle.left() + truncated(deviceX),
            m_deviceRectangle.top() + truncated((1.0F - ny) * m_deviceYMax)};
}

QPointF QtDriver::placeOf(float deviceX, float deviceY) const
{
    return {m_deviceRectangle.left() + within(deviceX),
            m_deviceRectangle.top() + within(m_deviceYMax - deviceY)};
}

void QtDriver::setSmooth(bool on)
{
    if (on == m_stroke.isSmooth)
        return;
    Flush();
    m_stroke.isSmooth = on;
    if (m_painter.isActive())
        m_painter.setRenderHint(QPainter::Antialiasing, on);
}

void QtDriver::SetClip(bool on)
{
    Flush();
    if (m_painter.isActive())
        m_painter.setClipRect(on ? m_viewportRectangle : m_deviceRectangle);
}

void QtDriver::ClearViewport()
{
    Flush();
    if (m_painter.isActive())
        m_painter.eraseRect(m_viewportRectangle);
}

void QtDriver::SetColor(float r, float g, float b)
{
    if (isCurrentColor(r, g, b))
        return;
    drawPoints();
    BasicDriver::SetColor(r, g, b);
    if (!m_painter.isActive()) {
        std::puts("QtDriver::SetColor - painter not ready!");
        return;
    }
    const QColor colour(component(r), component(g), component(b));
    QPen pen = m_painter.pen();
    pen.setColor(colour);
    m_painter.setPen(pen);
    m_painter.setBrush(colour);
}

void QtDriver::SetLineStyle(int style)
{
    drawPoints();
    m_lineStyle = style;
    applyPen();
}

void QtDriver::SetLineWidth(float width)
{
    drawPoints();
    m_lineWidth = width;
    constexpr float kMmPerInch = 25.4F;
    const int logicalPixels = std::max(1, truncated(kScreenDotsPerInch * width / kMmPerInch));
    m_penWidth = std::max(1, truncated(static_cast<float>(logicalPixels) * m_pixelRatio));
    applyPen();
}

void QtDriver::applyPen()
{
    if (!m_painter.isActive())
        return;
    QPen pen = m_painter.pen();
    pen.setWidth(m_penWidth);
    pen.setJoinStyle(Qt::RoundJoin);
    const DashPattern& pattern = dashPattern(m_lineStyle);
    if (pattern[0] == 0) {
        pen.setStyle(Qt::SolidLine);
        pen.setCapStyle(Qt::RoundCap);
    } else {
        // Qt counts dashes in pen widths. A point of the paper is nearly a pixel of the screen.
        QVector<qreal> dashes;
        for (const int length : pattern)
            if (length > 0)
                dashes.append(static_cast<qreal>(length) * static_cast<qreal>(magnification()) / m_penWidth);
        pen.setDashPattern(dashes);
        pen.setCapStyle(Qt::FlatCap);
    }
    m_painter.setPen(pen);
}

void QtDriver::drawPoints()
{
    if (m_stroke.places.size() > 1) {
        if (m_painter.isActive())
            m_painter.drawPolyline(m_stroke.places);
        m_stroke.places.remove(0, m_stroke.places.size() - 1);
    }
    if (m_stroke.points.size() < 2)
        return;
    if (m_painter.isActive())
        m_painter.drawPolyline(m_stroke.points);
    m_stroke.start = m_stroke.points.last();
    m_stroke.points.resize(0);  // keeps the memory, as clear() would not
}

void QtDriver::PixelMoveTo(int x, int y)
{
    drawPoints();
    m_stroke.points.resize(0);
    m_stroke.start = QPoint(x, y);
}

void QtDriver::PixelLineTo(int x, int y)
{
    if (m_stroke.points.isEmpty())
        m_stroke.points.append(m_stroke.start);
    m_stroke.points.append(QPoint(x, y));
}

void QtDriver::DeviceMoveTo(float x, float y)
{
    m_x = x;
    m_y = y;
    const QPoint pixel = pixelOf(x, y);
    PixelMoveTo(pixel.x(), pixel.y());
    m_stroke.places.clear();
    if (m_stroke.isSmooth)
        m_stroke.places.append(placeOf(x, y));
}

void QtDriver::DeviceLineTo(float x, float y)
{
    m_x = x;
    m_y = y;
    if (m_stroke.isSmooth) {
        m_stroke.places.append(placeOf(x, y));
        return;
    }
    const QPoint pixel = pixelOf(x, y);
    PixelLineTo(pixel.x(), pixel.y());
}

void QtDriver::Dot(float x, float y)
{
    drawPoints();
    MoveTo(x, y);
    if (m_painter.isActive() && std::isfinite(m_x) && std::isfinite(m_y))
        m_painter.drawPoint(m_stroke.start);
}

void QtDriver::DrawMarker(float x, float y, int marker, int size)
{
    MoveTo(x, y);
    if (!m_painter.isActive() || !std::isfinite(m_x) || !std::isfinite(m_y))
        return;
    const QPen before = m_painter.pen();
    // Whole pixels: at 150 % strokes of one and a half would be one or two wide, by their place.
    m_painter.setPen(QPen(before.color(), static_cast<qreal>(std::max(1.0F, std::floor(magnification())))));
    const QPoint centre = m_stroke.start;
    const float unit = static_cast<float>(size) * magnification() / 4.0F;
    const auto offset = [unit](float part) { return static_cast<int>(std::lround(part * unit)); };
    QPolygon outline;
    for (const MarkerStroke* s = MarkerStrokes(marker); s->code != MarkerStroke::End; ++s) {
        if (s->code == MarkerStroke::Fill) {
            m_painter.drawPolygon(outline);
            outline.clear();
            continue;
        }
        if (s->code == MarkerStroke::Move) {
            m_painter.drawPolyline(outline);
            outline.clear();
        }
        outline << centre + QPoint(offset(s->x), -offset(s->y));
    }
    m_painter.drawPolyline(outline);
    m_painter.setPen(before);
}

void QtDriver::Arc(float x, float y, float radius, float startAngle, float endAngle, bool fill)
{
    MoveTo(x, y);
    const float pixels = deviceRadius(radius);
    if (!m_painter.isActive() || !std::isfinite(m_x + m_y + pixels + startAngle + endAngle))
        return;
    // As PostScript has it: counterclockwise, from the start on to the end.
    float sweep = endAngle - startAngle;
    if (sweep < 0.0F)
        sweep += 360.0F * std::ceil(-sweep / 360.0F);
    const auto r = static_cast<qreal>(pixels);
    const QRectF box(m_stroke.start.x() - r, m_stroke.start.y() - r, 2.0 * r, 2.0 * r);
    QPainterPath path;
    path.arcMoveTo(box, static_cast<qreal>(startAngle));
    path.arcTo(box, static_cast<qreal>(startAngle), static_cast<qreal>(std::min(sweep, 360.0F)));
    if (fill)
        m_painter.fillPath(path, m_painter.brush());
    else
        m_painter.strokePath(path, m_painter.pen());
}

void QtDriver::DrawImage(float x1, float y1, float x2, float y2, const veltrac::PixelImage& image)
{
    drawPoints();
    m_stroke.points.resize(0);
    if (!m_painter.isActive())
        return;
    float left = 0.0F, bottom = 0.0F, right = 0.0F, top = 0.0F;
    WorldToDevice(x1, y1, &left, &bottom);
    WorldToDevice(x2, y2, &right, &top);
    const QImage pixels(image.rgb.data(), image.width, image.height, 3 * image.width, QImage::Format_RGB888);
    m_painter.drawImage(QRect(pixelOf(left, top), pixelOf(right, bottom)), pixels);
}

void QtDriver::Polyline(const float* points, int count, bool closed, bool fill)
{
    if (count < 1)
        return;
    MoveTo(points[0], points[1]);
    for (int i = 1; i < count; ++i)
        LineTo(points[2 * i], points[2 * i + 1]);
    if (closed || fill)
        LineTo(points[0], points[1]);
    if (!fill) {
        drawPoints();
        return;
    }
    if (m_painter.isActive()) {
        const QPen before = m_painter.pen();
        m_painter.setPen(Qt::NoPen);
        if (m_stroke.isSmooth)
            m_painter.drawPolygon(m_stroke.places);
        else
            m_painter.drawPolygon(m_stroke.points);
        m_painter.setPen(before);
    }
    m_stroke.points.resize(0);
    m_stroke.places.clear();
}

void QtDriver::FontControl(float size, int flags)
{
    drawPoints();
    if (!m_font)
        m_font = std::make_unique<QFont>();
    switch (flags & kFontFamilyMask) {
        case kFontTimes:
            m_font->setFamily(QStringLiteral("utopia"));
            m_font->setStyleHint(QFont::Serif);
            break;
        case kFontCourier:
            m_font->setFamily(QStringLiteral("courier"));
            m_font->setStyleHint(QFont::TypeWriter);
            break;
        default:
            m_font->setFamily(QStringLiteral("helvetica"));
            m_font->setStyleHint(QFont::SansSerif);
    }
    m_font->setBold((flags & kFontBold) != 0);
    m_fontSize = size;
    m_pixelFontSize = std::max(1, truncated(static_cast<float>(m_characterUnit) * size));
    m_characterHeight = static_cast<float>(m_pixelFontSize);
    m_font->setPixelSize(m_pixelFontSize);
    if (m_painter.isActive()) {
        m_painter.setFont(*m_font);
        m_metrics = std::make_unique<QFontMetrics>(*m_font, m_painter.device());
    } else {
        std::puts("QtDriver::FontControl - painter not ready!");
        m_metrics = std::make_unique<QFontMetrics>(*m_font);
    }
}

void QtDriver::Text(const char* string, int length, float angle, int flags)
{
    drawPoints();
    const std::size_t bytes =
        length > 0 ? strnlen(string, static_cast<std::size_t>(length)) : std::strlen(string);
    const QString text = headerText(QByteArray(string, static_cast<int>(bytes)).constData());
    if (text.isEmpty() || !m_painter.isActive() || !std::isfinite(m_x) || !std::isfinite(m_y))
        return;
    if ((flags & (kFontFamilyMask | kFontBold)) != 0)
        FontControl(m_fontSize, flags & (kFontFamilyMask | kFontBold));

    const float h = std::clamp(m_hJustification, 0.0F, 1.0F);
    const float left = h * static_cast<float>(m_metrics->horizontalAdvance(text)) +
                       kJustificationShift * m_characterHeight * (m_hJustification - h);
    const float down = m_vJustification * m_characterHeight;
    const QPoint at = pixelOf(m_x, m_y);
    const QPointF offset(std::round(static_cast<qreal>(-left)), std::round(static_cast<qreal>(down)));
    if (angle == 0.0F) {
        m_painter.drawText(at + offset, text);
        return;
    }
    m_painter.save();
    m_painter.translate(at);
    m_painter.rotate(static_cast<qreal>(-angle));
    m_painter.drawText(offset, text);
    m_painter.restore();
}

void QtDriver::TextExtent(const char* string, float* width, float* height)
{
    if (!m_metrics)
        FontControl(1.0F, 0);
    if (width != nullptr)
        *width = static_cast<float>(m_metrics->horizontalAdvance(headerText(string))) / m_deviceXMax;
    if (height != nullptr)
        *height = static_cast<float>(m_metrics->height()) / m_deviceYMax;
}

void QtDriver::DrawStamp(int id, const char* text)
{
    drawPoints();
    if (!m_painter.isActive())
        return;
    m_painter.save();
    QFont font = *m_font;
    font.setFamily(QStringLiteral("helvetica"));
    font.setItalic(true);
    font.setBold(true);
    font.setPixelSize(std::max(1, m_characterUnit * 2 / 3));
    m_painter.setFont(font);
    m_painter.setPen(QColor::fromRgbF(0, 0, static_cast<ColorPart>(0.3)));
    const QString stamp = headerText(text);
    const int inset = m_characterUnit / 2;
    const QPoint at(m_deviceRectangle.left() + inset, m_deviceRectangle.bottom() - inset);
    m_painter.drawText(at, stamp);
    if (id == 1) {
        m_painter.setBrush(Qt::NoBrush);
        const QRect ink = QFontMetrics(font, m_painter.device()).boundingRect(stamp);
        m_painter.drawRect(ink.translated(at).adjusted(-inset / 2, -inset / 2, inset / 2, inset / 2));
    }
    m_painter.restore();
}
