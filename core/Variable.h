// One plotted column: where its values come from and how it looks.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "core/PlotSource.h"

class Variable
{
public:
    // A column (from 1) of a source.
    Variable(std::shared_ptr<veltrac::PlotSource> source, std::uint32_t column)
        : m_source(std::move(source)), m_column(column)
    {
    }

    // What the axis and the legend show; UTF-8.
    std::string label;
    std::string unit;
    int colorIndex = 7;  // in the driver's colour table, where variables have 7 and up
    int lineStyle = 0;   // 0 solid, 1 to 9 dashed; negative: markers only
    double widthMm = 0.25;
    int marker = 0;  // 0: none
    // Shown is gain * value + offset, at the sample's time plus timeShift, in units of x.
    double gain = 1.0;
    double offset = 0.0;
    double timeShift = 0.0;
    bool visible = true;
    bool isMark = false;  // a part of the picture that has no values to be read off

    const std::shared_ptr<veltrac::PlotSource>& source() const noexcept { return m_source; }
    std::uint32_t column() const noexcept { return m_column; }
    std::uint32_t rows() const noexcept { return m_source->rows(); }
    std::uint32_t firstRow() const noexcept { return m_source->firstRow(); }

    double shown(float raw) const noexcept { return gain * static_cast<double>(raw) + offset; }
    // Row firstRow() to rows(); throw the TS exceptions.
    double value(std::uint32_t row) const { return shown(m_source->value(m_column, row)); }
    double timeAt(std::uint32_t row) const { return m_source->timeOf(row) + timeShift; }
    // The last row at or before t; 0 where there is none.
    std::uint32_t sampleAt(double t) const { return m_source->rowAt(t - timeShift); }

private:
    std::shared_ptr<veltrac::PlotSource> m_source;
    std::uint32_t m_column;
};

namespace veltrac {

// The unit in a column's description: the text in its last pair of brackets, "Force [kN]" gives "kN".
std::string_view unitIn(std::string_view description);

}  // namespace veltrac
