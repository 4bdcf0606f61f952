#include "core/SourceColumn.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

#include "core/ColumnCopy.h"
#include "core/TSFILE.h"

namespace veltrac {

SourceColumn::SourceColumn(TSFILE& file, std::uint32_t column, std::uint32_t first, std::uint32_t last)
    : m_file(file), m_time(file), m_column(column), m_first(std::max(first, 1U))
{
    const std::uint32_t end = last == 0 ? m_time.rows() : std::min(last, m_time.rows());
    m_behind = m_time.oldestRow() + m_first - 2;
    m_samples = end < m_first ? 0 : end - m_first + 1;
}

void SourceColumn::read(std::uint32_t column, std::uint32_t first, std::span<float> out) const
{
    m_file.readColumn(column, m_behind + first, out);
}

void SourceColumn::readTimes(std::uint32_t first, std::span<double> out) const
{
    std::vector<float> part(out.size());
    read(m_file.timeColumn(), first, part);
    std::copy(part.begin(), part.end(), out.begin());
    if (m_file.time32Column() == 0)
        return;
    read(m_file.time32Column(), first, part);
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] += std::bit_cast<std::uint32_t>(part[i]);
}

void SourceColumn::readSteps(std::uint32_t first, std::span<double> out, bool own) const
{
    std::fill(out.begin(), out.end(), static_cast<double>(m_file.dt()));
    if (!own || m_file.timeColumn() == 0)
        return;
    // Behind the last sample there is no step; the sample time stands there.
    std::vector<double> times(std::min<std::size_t>(out.size() + 1, m_samples - first + 1));
    readTimes(first, times);
    for (std::size_t i = 0; i + 1 < times.size(); ++i)
        out[i] = times[i + 1] - times[i];
}

void SourceColumn::copyHeaderTo(TSFILE& result) const
{
    result.copyHeader(m_file);
    if (m_samples == 0)
        return;
    // The result's first sample lies one step behind its start. A series whose own times begin at 0 or one
    // step behind its start keeps that.
    const auto dt = static_cast<double>(m_file.dt());
    const std::uint32_t sample = m_time.firstSample() + m_first - 1;
    const double behind = m_time.elapsed(sample) - dt;
    if (sample != 1 || std::abs(behind) > dt)
        copyStartAt(m_file, behind, result);
}

}  // namespace veltrac
