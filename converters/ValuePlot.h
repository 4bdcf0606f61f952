// A small picture of a series' first values.
#pragma once

#include <QWidget>

#include <vector>

namespace veltrac {

class ValuePlot : public QWidget
{
    Q_OBJECT

public:
    explicit ValuePlot(QWidget* parent = nullptr);

    // NaN breaks the line.
    void show(std::vector<float> values);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::vector<float> m_values;
};

}  // namespace veltrac
