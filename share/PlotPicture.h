// A plot as a painted widget: what is shown, its colours, and where on the widget things lie.
//
// Painting never throws and reads at most what a frame needs.
#pragma once

#include <QColor>
#include <QFrame>
#include <QPixmap>
#include <QString>

#include <optional>
#include <vector>

#include "core/Plot2D.h"
#include "share/PlotPainter.h"

namespace veltrac {

class PlotPicture : public QFrame
{
    Q_OBJECT

public:
    explicit PlotPicture(QWidget* parent = nullptr);

    Plot2D& plot() noexcept { return m_plot; }
    const Plot2D& plot() const noexcept { return m_plot; }
    // Draws anew; nothing is read but what the frame needs.
    void replot();
    // Shows nothing but a text, as where a source is missing; the plot again where it is empty.
    void showText(const QString& text);
    const QString& text() const noexcept { return m_text; }
    // The present picture with its cursors.
    QImage image();

    // The colours of the indexes 7 and up on a light ground; change them and call replot().
    std::vector<QColor>& colors() noexcept { return m_colors; }
    const std::vector<QColor>& colors() const noexcept { return m_colors; }
    static std::vector<QColor> defaultColors();
    // What the present picture is drawn with; and what it would be on a light ground.
    PlotLook screenLook() const;
    PlotLook lightLook() const;
    // As it is on this ground.
    QColor colorOf(const Variable& variable) const;

    // The cursor that keys move, whose flag is filled.
    Plot2D::Cursor activeCursor() const noexcept { return m_activeCursor; }
    void setActiveCursor(Plot2D::Cursor which) noexcept { m_activeCursor = which; }
    // A rubber band over the picture, or none.
    void setBand(std::optional<QRect> band);

    // -- Places; pixels of this widget --

    double xAt(int pixel) const;
    int pixelOf(double x) const;
    // The plot's frames from left to right; empty before the first picture.
    QRect plotArea() const;
    QRect groupArea(int group) const;
    // The group (of plot().groups()) at a pixel, axis included; -1 where there is none.
    int groupAt(const QPoint& pixel) const;
    double yAt(int group, int pixel) const;
    int pixelOfY(int group, double y) const;
    // The colour bar of a group's picture; empty where there is none.
    QRect colorBarArea(int group) const;
    // The margin lies above the frames.
    enum class Zone { None, Plot, XAxis, YAxis, Margin, ColorBar };
    struct Place
    {
        Zone zone = Zone::None;
        int group = -1;
    };
    Place placeOf(const QPoint& pixel) const;
    // Of the present picture.
    const PlotLayout& pictureLayout() const noexcept { return m_layout; }

    QSize sizeHint() const override { return {900, 520}; }
    QSize minimumSizeHint() const override { return {240, 140}; }

signals:
    void x_got_resize_event();

protected:
    // Shows another plot, of which there is no picture yet.
    void setPlot(Plot2D plot);

    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void drawPicture();
    void drawCursor(QPainter& painter, Plot2D::Cursor which);
    void drawLevels(QPainter& painter);
    void drawBand(QPainter& painter, const QRect& band);
    bool isDarkGround() const;

    Plot2D m_plot;
    std::vector<QColor> m_colors;
    QString m_text;  // shown instead of a plot
    QPixmap m_picture;
    PlotLayout m_layout;
    bool m_stale = true;
    Plot2D::Cursor m_activeCursor = Plot2D::A;
    std::optional<QRect> m_band;
};

}  // namespace veltrac
