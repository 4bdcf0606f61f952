// Paints on a widget (inside its paint event), on a picture or on a printer.
//
// Lines are drawn between whole pixels, unless smooth ones are asked for: pixel x = left + trunc(width · nx),
// pixel y = top + trunc((1 − ny) · height). The screen counts as 75 dots per inch, whatever its real
// resolution. On a picture with a device pixel ratio pixels are those that it is made of, and widths, texts
// and glyphs grow with the ratio; on such a widget pixels are logical ones.
#pragma once

#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QPolygon>
#include <QPolygonF>
#include <QRect>

#include <memory>

#include "share/BasicDriver.h"
#include "share/ImageDevice.h"
#include "share/SmoothDevice.h"

class QPaintDevice;
class QWidget;

class QtDriver : public BasicDriver, public veltrac::ImageDevice, public veltrac::SmoothDevice
{
public:
    // Borrowed, and not looked at before BeginPage(). Of a QFrame the contents rectangle is drawn on.
    explicit QtDriver(QWidget* target);
    explicit QtDriver(QPaintDevice* device);
    ~QtDriver() override;

    void BeginPage(int flags) override;
    void EndPage() override;
    void Flush() override;
    void SetClip(bool on) override;
    // Erases with the painter's background.
    void ClearViewport() override;
    void DrawMarker(float x, float y, int marker, int size) override;
    void SetColor(float r, float g, float b) override;
    void SetLineStyle(int style) override;
    void SetLineWidth(float width) override;
    void DeviceLineTo(float x, float y) override;
    void DeviceMoveTo(float x, float y) override;
    void Dot(float x, float y) override;
    void Arc(float x, float y, float radius, float startAngle, float endAngle, bool fill) override;
    void Polyline(const float* points, int count, bool closed, bool fill) override;
    void FontControl(float size, int flags) override;
    void Text(const char* string, int length, float angle, int flags) override;
    void TextExtent(const char* string, float* width, float* height) override;
    void DrawStamp(int id, const char* text) override;
    void UpdateScale() override;
    void DrawImage(float x1, float y1, float x2, float y2, const veltrac::PixelImage& image) override;

    void setSmooth(bool on) override;

    // Slots 45 and 46.
    virtual void PixelMoveTo(int x, int y);
    virtual void PixelLineTo(int x, int y);

    // Pixels of the device, y downwards. Good from BeginPage() on.
    const QRect& deviceRectangle() const noexcept { return m_deviceRectangle; }
    const QRect& viewportRectangle() const noexcept { return m_viewportRectangle; }
    // Between BeginPage() and EndPage(), unless the device cannot be painted on.
    bool isPainting() const { return m_painter.isActive(); }
    int characterUnit() const noexcept { return m_characterUnit; }
    int lineUnit() const noexcept { return m_lineUnit; }

private:
    void findDeviceRectangle();
    void subtractPageMargins();
    void chooseUnits();
    bool isPageEngine() const;
    // What the sizes that are meant for the screen are multiplied by.
    float magnification() const;
    void drawPoints();
    void applyPen();
    QPoint pixelOf(float deviceX, float deviceY) const;
    QPointF placeOf(float deviceX, float deviceY) const;

    QPainter m_painter;
    QWidget* m_target = nullptr;
    QPaintDevice* m_device = nullptr;
    QRect m_deviceRectangle;
    QRect m_viewportRectangle;
    std::unique_ptr<QFont> m_font;
    std::unique_ptr<QFontMetrics> m_metrics;
    float m_pixelRatio = 1.0F;  // of a picture
    int m_characterUnit = 11;
    int m_lineUnit = 13;
    int m_pixelFontSize = 11;
    float m_fontSize = 1.0F;
    // The polyline that is not drawn yet.
    struct Stroke
    {
        QPolygon points;
        QPoint start;  // of what the points will be
        bool isSmooth = false;
        QPolygonF places;  // instead of the points of a smooth one
    };
    Stroke m_stroke;
    int m_penWidth = 1;
};
