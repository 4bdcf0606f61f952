// Samples in memory for plots of what is no file: a filter's characteristic, a spectrum on its way.
#pragma once

#include <vector>

#include "core/PlotSource.h"

namespace veltrac {

class PlotValues : public PlotSource
{
public:
    // One x a row, which may be anything (a frequency) and must not fall, and the same number of values in
    // each column. Throws std::invalid_argument where the counts differ.
    PlotValues(std::vector<double> x, const std::vector<std::vector<float>>& columns);

    void readRows(std::uint32_t first, std::uint32_t count, float* out) const override;

protected:
    double timeInRow(std::uint32_t row, const float* values) const override;
    float readValue(std::uint32_t column, std::uint32_t row) const override;
    const float* rowsInMemory(std::uint32_t bucket) const override;

private:
    std::vector<double> m_x;
    std::vector<float> m_values;  // row by row
};

}  // namespace veltrac
