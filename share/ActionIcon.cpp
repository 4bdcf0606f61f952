#include "share/ActionIcon.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>

namespace veltrac {

namespace {

class PlateEngine : public QIconEngine
{
public:
    explicit PlateEngine(const QIcon& icon) : m_icon(icon) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override
    {
        const bool isHighlighted = mode == QIcon::Active || mode == QIcon::Selected;
        if (isHighlighted) {
            constexpr double kRounding = 0.15;  // of the side
            painter->save();
            painter->setRenderHint(QPainter::Antialiasing);
            painter->setPen(Qt::NoPen);
            painter->setBrush(QGuiApplication::palette().color(QPalette::Base));
            painter->drawRoundedRect(rect, kRounding * rect.width(), kRounding * rect.height());
            painter->restore();
        }
        m_icon.paint(painter, rect, Qt::AlignCenter, isHighlighted ? QIcon::Normal : mode, state);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }
    QIconEngine* clone() const override { return new PlateEngine(m_icon); }

private:
    QIcon m_icon;
};

}  // namespace

QIcon actionIcon(const QString& image)
{
    const QIcon icon(QStringLiteral(":/img_") + image);
    return icon.isNull() ? icon : QIcon(new PlateEngine(icon));
}

}  // namespace veltrac
