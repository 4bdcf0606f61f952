#include "calc/SourceColumn.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

#include "core/ColumnCopy.h"

namespace veltrac {

std::uint32_t heldRows(TSFILE& file)
{
    const std::uint32_t oldest = file.ringStart();
    if (oldest == 0)
        return file.samples();
    const std::uint32_t last = file.lastSample();
    return last < oldest ? 0 : std::min(file.samples(), last - oldest + 1);
}

SourceColumn::SourceColumn(TSFILE& file, std::uint32_t column, std::uint32_t first, std::uint32_t last)
    : m_file(file), m_column(column), m_first(std::max(first, 1U)), m_behind(oldestRow(file) + m_first - 2)
{
    const std::uint32_t held = heldRows(file);
    const std::uint32_t end = last == 0 ? held : std::min(last, held);
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
    const std::uint32_t oldest = std::max(m_file.ringStart(), 1U);
    if (m_first == 1 && oldest == 1)
        return;
    const double dt = m_file.dt();
    double start = static_cast<double>(m_file.startTime());
    if (m_file.timeColumn() == 0) {
        start += (oldest - 1.0 + m_first - 1.0) * dt;
    } else if (m_samples > 0) {
        // The first sample of equal steps lies one of them behind the start.
        double time = 0.0;
        readTimes(1, {&time, 1});
        start += time - dt;
    }
    // A file with a clock keeps whole seconds there: the 32-bit start is fine below a second alone.
    if (m_file.startSeconds() != 0) {
        const double whole = std::floor(start);
        result.startSeconds(static_cast<std::uint32_t>(m_file.startSeconds() + whole));
        start -= whole;
    }
    result.startTime(static_cast<float>(start));
}

}  // namespace veltrac
