// A swatch of one colour.
#pragma once

#include <QColor>
#include <QWidget>

class ColorField : public QWidget
{
    Q_OBJECT

public:
    explicit ColorField(const QColor& color, QWidget* parent = nullptr);

    const QColor& color() const noexcept { return m_color; }
    void setColor(const QColor& color);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor m_color;
};
