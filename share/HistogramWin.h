// The distribution of a variable's values, from a plot window.
#pragma once

#include <memory>

#include "share/Histogram.h"
#include "share/SubWindow.h"

class PlotCanvas;
class QCheckBox;
class QComboBox;
class QLineEdit;

namespace veltrac {

class HistogramWin : public SubWindow
{
    Q_OBJECT

public:
    // Rows of a variable that is built; `name` is what pictures are called.
    HistogramWin(std::shared_ptr<HsVariable> variable, const SampleRange& rows, const QString& name);

    const Histogram& histogram() const noexcept { return m_histogram; }

public slots:
    // Counts anew, with the bins of the field.
    void sl_count();

private:
    void createFields(QWidget& bar);
    void createMenus();
    void draw();
    void tell();

    std::shared_ptr<HsVariable> m_variable;
    SampleRange m_rows;
    Histogram m_histogram;
    PlotCanvas* m_canvas;
    QLineEdit* m_bins = nullptr;
    QComboBox* m_height = nullptr;
    QCheckBox* m_normal = nullptr;
};

}  // namespace veltrac
