#include "share/ColorField.h"

#include <QPainter>
#include <QStyleOption>

ColorField::ColorField(const QColor& color, QWidget* parent) : QWidget(parent)
{
    setColor(color);
}

void ColorField::setColor(const QColor& color)
{
    m_color = color;
    setStyleSheet(QStringLiteral("background-color:") + color.name());
    setAccessibleName(color.name());
}

QSize ColorField::sizeHint() const
{
    const int height = fontMetrics().height() * 3 / 2;
    return {3 * height, height};
}

void ColorField::paintEvent(QPaintEvent* /*event*/)
{
    // A subclass of QWidget shows its style sheet only when it draws itself by the style.
    QStyleOption option;
    option.initFrom(this);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
}
