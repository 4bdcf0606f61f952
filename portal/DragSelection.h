// A drag with the mouse over a table that is longer than its view: told from place to place, and again and
// again while the mouse rests outside.
#pragma once

#include <QBasicTimer>
#include <QObject>
#include <QPoint>

class QWidget;

namespace veltrac {

class DragSelection : public QObject
{
    Q_OBJECT

public:
    // Listens to the viewport, which is its parent.
    explicit DragSelection(QWidget* viewport);

    // The left button went down where a drag may begin.
    void start() { m_isDragging = true; }
    void stop();

signals:
    // In the viewport's own coordinates, also outside of it.
    void x_dragged(const QPoint& place);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    QWidget* m_viewport;
    QBasicTimer m_timer;  // runs while the mouse is outside
    bool m_isDragging = false;
};

}  // namespace veltrac
