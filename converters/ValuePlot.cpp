#include "converters/ValuePlot.h"

#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <cmath>
#include <limits>

namespace veltrac {

namespace {

constexpr int kMargin = 4;
constexpr qreal kDot = 1.5;

}  // namespace

ValuePlot::ValuePlot(QWidget* parent) : QWidget(parent)
{
    setMinimumHeight(120);
    setAccessibleName(QStringLiteral("Plot of the first values"));
}

void ValuePlot::show(std::vector<float> values)
{
    m_values = std::move(values);
    update();
}

QSize ValuePlot::sizeHint() const
{
    return {400, 200};
}

void ValuePlot::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().base());
    double least = std::numeric_limits<double>::infinity();
    double most = -least;
    for (const float v : m_values) {
        if (std::isfinite(v)) {
            least = std::min(least, static_cast<double>(v));
            most = std::max(most, static_cast<double>(v));
        }
    }
    if (!(least <= most))
        return;
    painter.setPen(palette().text().color());
    const int line = fontMetrics().height();
    painter.drawText(rect().adjusted(kMargin, kMargin, -kMargin, -kMargin), Qt::AlignLeft | Qt::AlignTop,
                     QString::number(most));
    painter.drawText(rect().adjusted(kMargin, kMargin, -kMargin, -kMargin), Qt::AlignLeft | Qt::AlignBottom,
                     QString::number(least));

    const QRectF area = QRectF(rect()).adjusted(kMargin, kMargin + line, -kMargin, -kMargin - line);
    const double range = most > least ? most - least : 1.0;
    const double across = m_values.size() > 1 ? area.width() / static_cast<double>(m_values.size() - 1) : 0.0;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().highlight().color(), 1.2));
    QPolygonF run;
    const auto draw = [&] {
        // A value alone between missing ones.
        if (run.size() == 1)
            painter.drawEllipse(run.front(), kDot, kDot);
        painter.drawPolyline(run);
        run.clear();
    };
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        if (std::isfinite(m_values[i]))
            run << QPointF(
                area.left() + across * static_cast<double>(i),
                area.bottom() - (static_cast<double>(m_values[i]) - least) / range * area.height());
        else
            draw();
    }
    draw();
}

}  // namespace veltrac
