#include "core/PlotValues.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace veltrac {

PlotValues::PlotValues(std::vector<double> x, const std::vector<std::vector<float>>& columns)
    : m_x(std::move(x))
{
    m_rows = static_cast<std::uint32_t>(m_x.size());
    m_columns = static_cast<std::uint32_t>(columns.size());
    m_timeKind = TimeKind::EachRow;
    constexpr double kSlack = 1e-3;  // of a step
    for (std::size_t row = 2; row < m_x.size(); ++row)
        if (const double step = m_x[1] - m_x[0]; std::abs(m_x[row] - m_x[row - 1] - step) > kSlack * step)
            m_evenlySpaced = false;
    m_values.resize(m_x.size() * columns.size());
    for (std::size_t c = 0; c < columns.size(); ++c) {
        if (columns[c].size() != m_x.size())
            throw std::invalid_argument("PlotValues: a column is not as long as its x");
        for (std::size_t row = 0; row < m_x.size(); ++row)
            m_values[row * columns.size() + c] = columns[c][row];
    }
}

void PlotValues::readRows(std::uint32_t first, std::uint32_t count, float* out) const
{
    std::copy_n(&m_values[std::size_t{first - 1} * m_columns], std::size_t{count} * m_columns, out);
}

double PlotValues::timeInRow(std::uint32_t row, const float* /*values*/) const
{
    return m_x[row - 1];
}

float PlotValues::readValue(std::uint32_t column, std::uint32_t row) const
{
    return m_values[std::size_t{row - 1} * m_columns + column - 1];
}

const float* PlotValues::rowsInMemory(std::uint32_t bucket) const
{
    return &m_values[std::size_t{bucket} * bucketRows() * m_columns];
}

}  // namespace veltrac
