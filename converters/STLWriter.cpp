#include "converters/STLWriter.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "core/TSFILE.h"

namespace veltrac {

namespace {

constexpr std::size_t kBufferedValues = 1U << 16;
constexpr float kMissingValue = std::numeric_limits<float>::quiet_NaN();

}  // namespace

STLWriter::STLWriter(TSFILE& target, const STLFormat& format, const STLCheck& found)
    : m_target(target),
      m_format(format),
      m_found(found),
      m_timeColumns(found.target.timeColumns),
      m_last(found.target.columns, kMissingValue),
      m_lastRow(found.target.columns, 0)
{
    const std::uint64_t values = std::uint64_t{found.target.samples} * found.target.columns;
    m_rows.reserve(std::min<std::uint64_t>(kBufferedValues, values) + found.target.columns);
}

bool STLWriter::takesRowsAsTheyAre() const
{
    return !m_found.target.resampled && m_timeColumns == 0 && m_format.fill == STLFill::NaN;
}

void STLWriter::addRows(std::span<const float> values)
{
    flushRows();
    const std::size_t rows = values.size() / m_found.target.columns;
    m_target.writeRows(static_cast<std::uint32_t>(m_written + 1), static_cast<std::uint32_t>(rows),
                       values.data());
    m_written += rows;
}

void STLWriter::add(double seconds, std::span<const float> values)
{
    if (m_found.target.resampled)
        addResampled(seconds, values);
    else
        addRow(seconds, values);
}

JobOutcome STLWriter::finish(const Progress& progress)
{
    flushRows();
    if (m_found.steps.newestFirst && turnRound(progress) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    m_target.flush(true);
    return JobOutcome::Done;
}

// Every point of the grid between the row before and this one is interpolated, unless a gap lies there.
void STLWriter::addResampled(double seconds, std::span<const float> values)
{
    const double step = m_found.target.dt;
    const double width = seconds - m_beforeSeconds;
    const bool gap = width > kGapSteps * std::max(step, m_found.steps.typical);
    std::vector<float> point(values.size());
    while (m_written < m_found.target.samples &&
           static_cast<double>(m_written) * step <= seconds + step * 1e-6) {
        const double at = static_cast<double>(m_written) * step;
        const double share = m_before.empty() || width <= 0 ? 1.0 : (at - m_beforeSeconds) / width;
        const bool onRow = share > 1.0 - 1e-6;
        for (std::size_t c = 0; c < point.size(); ++c)
            point[c] = onRow ? values[c]
                       : gap ? kMissingValue
                             : static_cast<float>(m_before[c] +
                                                  share * (static_cast<double>(values[c]) - m_before[c]));
        addRow(at, point);
    }
    m_before.assign(values.begin(), values.end());
    m_beforeSeconds = seconds;
}

void STLWriter::addRow(double seconds, std::span<const float> values)
{
    ++m_written;
    if (m_timeColumns > 0) {
        const double start = m_found.target.startSeconds + static_cast<double>(m_found.target.startTime);
        double relative = seconds + m_found.firstSeconds - start;
        if (m_timeColumns == 2) {
            const double whole = std::floor(relative);
            m_rows.push_back(static_cast<float>(relative - whole));
            m_rows.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(whole)));
        } else {
            m_rows.push_back(static_cast<float>(relative));
        }
    }
    for (std::size_t c = 0; c < values.size(); ++c)
        m_rows.push_back(filled(c, values[c]));
    if (m_rows.size() >= kBufferedValues)
        flushRows();
}

float STLWriter::filled(std::size_t column, float value)
{
    // Of rows that will be turned round, what is previous in time comes later.
    const bool previousIsToCome = m_format.fill == STLFill::Previous && m_found.steps.newestFirst;
    if (std::isnan(value)) {
        switch (m_format.fill) {
            case STLFill::Zero:
                return 0.0F;
            case STLFill::Previous:
                return previousIsToCome ? value : m_last[column];
            default:
                return value;
        }
    }
    if (m_lastRow[column] + 1 < m_written) {
        if (previousIsToCome)
            fillGap(column, value, value);
        else if (m_format.fill == STLFill::Interpolated && m_lastRow[column] != 0)
            fillGap(column, m_last[column], value);
    }
    m_last[column] = value;
    m_lastRow[column] = m_written;
    return value;
}

// The rows since the last value are in the file or in the buffer already: both are gone back to.
void STLWriter::fillGap(std::size_t column, double before, double behind)
{
    const std::uint64_t first = m_lastRow[column];
    const double width = static_cast<double>(m_written - first);
    const std::size_t columns = m_found.target.columns;
    const std::size_t buffered = m_rows.size() / columns;
    const std::uint64_t inFile = m_written - 1 - buffered;
    for (std::uint64_t row = first + 1; row < m_written; ++row) {
        const double share = static_cast<double>(row - first) / width;
        const auto between = static_cast<float>(before + share * (behind - before));
        if (row <= inFile)
            m_target.setValue(static_cast<std::uint32_t>(row),
                              static_cast<std::uint32_t>(m_timeColumns + column + 1), between);
        else
            m_rows[(row - inFile - 1) * columns + m_timeColumns + column] = between;
    }
}

void STLWriter::flushRows()
{
    const std::size_t rows = m_rows.size() / m_found.target.columns;
    if (rows == 0)
        return;
    m_target.writeRows(static_cast<std::uint32_t>(m_written - rows + 1), static_cast<std::uint32_t>(rows),
                       m_rows.data());
    m_rows.clear();
}

// Exchanges runs of rows from both ends inwards.
JobOutcome STLWriter::turnRound(const Progress& progress)
{
    const std::size_t columns = m_found.target.columns;
    const auto longest = static_cast<std::uint32_t>(std::max<std::size_t>(kBufferedValues / columns, 1));
    const std::uint32_t half = m_found.target.samples / 2;
    std::vector<float> front;
    std::vector<float> back;
    const auto turn = [columns](std::vector<float>& rows) {
        for (std::size_t from = 0, to = rows.size() - columns; from < to; from += columns, to -= columns)
            std::swap_ranges(&rows[from], &rows[from] + columns, &rows[to]);
    };
    for (std::uint32_t done = 0; done < half;) {
        const std::uint32_t count = std::min(longest, half - done);
        const std::uint32_t last = m_found.target.samples - done - count + 1;
        front.resize(count * columns);
        back.resize(count * columns);
        m_target.readRows(done + 1, count, front.data());
        m_target.readRows(last, count, back.data());
        turn(front);
        turn(back);
        m_target.writeRows(done + 1, count, back.data());
        m_target.writeRows(last, count, front.data());
        done += count;
        if (!goesOn(progress, done, half))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

}  // namespace veltrac
