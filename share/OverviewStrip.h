// The whole series in a low strip, with the view of a canvas as a frame to drag and to stretch.
#pragma once

#include <QPixmap>
#include <QWidget>

class PlotCanvas;

namespace veltrac {

class OverviewStrip : public QWidget
{
    Q_OBJECT

public:
    // The canvas is borrowed and lives at least as long.
    explicit OverviewStrip(PlotCanvas* canvas, QWidget* parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    enum class Part { Outside, Left, Right, Inside };

    void drawPicture();
    void forgetPicture();
    QRect strip() const;
    QRect frame() const;
    Part partAt(int pixel) const;
    double scaleAt(int pixel) const;
    int pixelOf(double x) const;

    PlotCanvas* m_canvas;
    QPixmap m_picture;
    bool m_stale = true;
    Part m_dragged = Part::Outside;
    bool m_dragging = false;
    double m_offset = 0.0;  // of the mouse from the frame's left edge, along the axis
    double m_width = 0.0;   // of the frame when the drag began
    int m_gesture = 0;
};

}  // namespace veltrac
