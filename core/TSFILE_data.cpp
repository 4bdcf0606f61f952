// TSFILE: growing, ring files, rows and runs of values.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/Vectors.h"

using namespace veltrac;

namespace {

// Rows that are taken apart at once: they stay in the processor's nearer caches, with what comes of them.
constexpr std::size_t kNearFloats = std::size_t{1} << 14;
// Columns a wanted one: of wider rows the wanted values are fetched one by one.
constexpr std::size_t kWide = 1024;

// Four neighbouring columns of n rows, four rows at a time; returns the rows that were taken.
std::size_t takeFourColumns(const float* from, std::size_t columns, std::size_t n,
                            std::span<const TSFILE::ColumnRun, 4> runs, std::size_t at)
{
    std::size_t i = 0;
    for (; i + 4 <= n; i += 4) {
        FourFloats row[4];
        for (std::size_t k = 0; k < 4; ++k)
            row[k] = vectorAt<FourFloats>(from + (i + k) * columns);
        const auto turned = transposed(row);
        for (std::size_t k = 0; k < 4; ++k)
            std::memcpy(runs[k].out + at + i, &turned[k], sizeof turned[k]);
    }
    return i;
}

// One column of n rows. Distances that are known beforehand make vector loops.
template <std::size_t kColumns = 0>
void takeColumn(const float* from, std::size_t columns, std::size_t n, float* out)
{
    const std::size_t stride = kColumns == 0 ? columns : kColumns;
    for (std::size_t i = 0; i < n; ++i)
        out[i] = from[i * stride];
}

// Takes columns out of n rows, to `at` and behind of each run.
void takeColumns(const float* rows, std::size_t columns, std::size_t n,
                 std::span<const TSFILE::ColumnRun> runs, std::size_t at)
{
    const auto takeOne = columns == 2 ? takeColumn<2> : columns == 3 ? takeColumn<3> : takeColumn<0>;
    while (!runs.empty()) {
        const std::uint32_t column = runs.front().column;
        const bool four = runs.size() >= 4 && runs[1].column == column + 1 && runs[2].column == column + 2 &&
                          runs[3].column == column + 3;
        const std::size_t done =
            four ? takeFourColumns(rows + column - 1, columns, n, runs.first<4>(), at) : 0;
        const auto together = runs.first(four ? 4 : 1);
        for (const TSFILE::ColumnRun& run : together)
            takeOne(rows + done * columns + run.column - 1, columns, n - done, run.out + at + done);
        runs = runs.subspan(together.size());
    }
}

}  // namespace

// -- Growing --

void TSFILE::setSize(std::uint32_t samples, std::uint32_t columns)
{
    resize(m_columnMajor ? columns : samples);
}

void TSFILE::resizeColumns(std::uint32_t newCount)
{
    if (newCount <= columns())
        return;
    m_columnMajor = true;
    try {
        resize(newCount);
    } catch (...) {
        m_columnMajor = false;
        throw;
    }
    m_columnMajor = false;
    // The header went out with the flag up: no file keeps it, not even one without samples.
    writeHeader();
}

void TSFILE::resize(std::uint32_t newCount)
{
    readHeader(0, 0);
    const std::uint32_t count = m_columnMajor ? m_header.columns : m_header.samples;
    if (newCount <= count)
        return;
    const std::uint32_t newSamples = m_columnMajor ? m_header.samples : newCount;
    const std::uint32_t newColumns = m_columnMajor ? newCount : m_header.columns;

    const std::uint64_t oldBytes = dataBytes(m_header.samples, m_header.columns);
    const std::uint64_t newBytes = dataBytes(newSamples, newColumns);
    const std::uint64_t shift =
        m_columnMajor ? kBlockBytes * ((std::uint64_t{newCount} - 1) / kColumnsPerBlock + 2) - m_dataOffset
                      : 0;
    if (m_dataOffset + newBytes + shift >= kFileLimit)
        throw TS::IO_ERROR(static_cast<std::uint32_t>(descriptor()), static_cast<std::uint32_t>(kFileLimit),
                           1);

    m_data.flush();
    writeZeros(m_dataOffset + oldBytes, m_dataOffset + newBytes + shift);
    if (shift > 0)
        moveData(newBytes, shift);
    if (m_columnMajor)
        addColumnRecords(newCount);
    else
        m_header.samples = newCount;
    try {
        writeHeader();
    } catch (...) {
        (m_columnMajor ? m_header.columns : m_header.samples) = count;
        throw;
    }
}

void TSFILE::writeZeros(std::uint64_t from, std::uint64_t to)
{
    // What the file does not reach yet is zeros as soon as the platform has room for it.
    const std::uint64_t reached = std::max(from, std::min(to, m_file.size()));
    const std::uint64_t end = m_file.reserve(reached, to) ? reached : to;
    static constexpr float kZeros[DataRuns::kRunFloats] = {};
    for (std::uint64_t offset = from; offset < end;) {
        const std::size_t count =
            std::min<std::uint64_t>(DataRuns::kRunFloats, (end - offset) / sizeof(float));
        std::size_t done = 0;
        if (!readOnly()) {
            const std::lock_guard guard(BlockFile::lock());
            done = m_file.writeBlocks(offset, {kZeros, count});
        }
        offset += done * kBlockBytes;
        // The block at which it came short says why.
        if (done * kBlockFloats < count) {
            m_file.write(offset, Block{});
            offset += kBlockBytes;
        }
    }
}

// Moves the data section up, last block first, and clears the room that it leaves.
void TSFILE::moveData(std::uint64_t bytes, std::uint64_t shift)
{
    m_data.drop();
    for (std::uint64_t left = bytes; left > 0; left -= kBlockBytes) {
        const std::uint64_t offset = m_dataOffset + left - kBlockBytes;
        Block block;
        m_file.read(offset, block);
        m_file.write(offset + shift, block);
    }
    writeZeros(m_dataOffset, m_dataOffset + shift);
}

void TSFILE::addColumnRecords(std::uint32_t newCount)
{
    const std::uint32_t oldCount = m_header.columns;
    m_header.columns = newCount;
    try {
        changeColumns(oldCount + 1, newCount, [](std::uint32_t col, ColumnRecord record) {
            record.clear();
            record.setName(((col < 10 ? "Column-0" : "Column-") + std::to_string(col)).c_str());
        });
    } catch (...) {
        m_header.columns = oldCount;
        throw;
    }
}

// -- Ring files --

void TSFILE::setRingMode(bool on)
{
    readHeader(0, 0);
    if ((m_header.ringStart != 0) == on)
        return;
    if (on) {
        storeInHeader(&TsHeader::ringStart, std::uint32_t{1});
        return;
    }
    if (readOnly())
        throw TS::READONLY_VIOLATION(m_name);

    m_data.flush();
    if (unfold()) {
        const float moved = static_cast<float>(m_header.ringStart) * m_header.dt;
        if (columnNumber("Time") == 0) {
            if (m_header.startSeconds != 0)
                m_header.startSeconds += static_cast<std::uint32_t>(wholePart(moved));
            else
                startTime(m_header.startTime + moved);
        }
        m_header.lastSample = m_header.ringStart = 0;
        m_data.drop();
    }
    writeHeader();
}

// Rotates, a second time where the first failed and TMPDIR names a scratch directory. Without TMPDIR an
// unfold that moved nothing counts as done, on purpose: the file ends as an ordinary one either way.
bool TSFILE::unfold()
{
    try {
        rotate();
        return true;
    } catch (const TS::IO_ERROR&) {
        if (std::getenv("TMPDIR") == nullptr)
            return true;
    }
    try {
        rotate();
        return true;
    } catch (const TS::IO_ERROR&) {
        return false;
    }
}

void TSFILE::rotate()
{
    const std::uint64_t rowBytes = std::uint64_t{m_header.columns} * sizeof(float);
    const std::uint64_t bytes = rowBytes * m_header.samples;
    if (bytes == 0)
        return;
    // A header that lies must not make us ask for its memory.
    if (m_dataOffset + bytes > m_file.size() || bytes >= kFileLimit)
        throw TS::IO_ERROR(m_dataOffset, static_cast<std::uint32_t>(bytes), 1);
    const auto split = static_cast<std::size_t>((m_header.ringStart - 1) % m_header.samples * rowBytes);

    std::vector<unsigned char> data;
    try {
        data.resize(static_cast<std::size_t>(bytes));
    } catch (const std::bad_alloc&) {
        return;
    }
    const std::lock_guard guard(BlockFile::lock());
    if (m_file.readRun(m_dataOffset, data) != data.size())
        throw TS::IO_ERROR(m_dataOffset, static_cast<std::uint32_t>(bytes), 1);
    std::rotate(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(split), data.end());
    if (const std::size_t moved = m_file.writeRun(m_dataOffset, data); moved != data.size())
        throw TS::IO_ERROR(m_dataOffset, static_cast<std::uint32_t>(moved) + 200000U, 1);
}

// -- Checks behind the inlined accesses --

std::uint64_t TSFILE::elementAnywhere(std::uint32_t col, std::uint32_t sample) noexcept
try {
    requireSample(sample);
    return m_data.elementIndex(col, sample);
} catch (...) {
    return m_data.refused();
}

void TSFILE::requireSample(std::uint32_t& sample)
{
    readHeader(0, 0);
    if (m_header.ringStart != 0 && m_header.samples != 0)
        sample = (sample - 1) % m_header.samples + 1;
    if (sample > m_header.samples)
        throw TS::ILL_SAMPLE(sample, m_header.samples, 1);
}

std::uint32_t TSFILE::requireWritable(std::uint32_t col, std::uint32_t sample)
{
    readHeader(0, 0);
    const bool ring = m_header.ringStart != 0;
    if (sample == 0 || (sample > m_header.samples && !ring))
        throw TS::ILL_SAMPLE(sample, m_header.samples, 0);
    // Folding a ring of no rows fails as it does for a reader.
    if (m_header.samples == 0)
        throw TS::ILL_SAMPLE(sample, 0, 1);
    std::uint32_t row = sample;
    if (sample > m_header.samples) {
        if (m_header.lastSample < sample) {
            m_header.lastSample = sample;
            m_header.ringStart = sample - m_header.samples + 1;
        }
        row = (sample - 1) % m_header.samples + 1;
    }
    if (col == 0 || col > m_header.columns)
        throw TS::ILL_COLUMN(col, m_header.columns, 0);
    if (ring)
        m_header.lastSample = std::max(m_header.lastSample, row);
    return row;
}

void TSFILE::requireRun(Direction direction, std::uint32_t first, std::size_t count)
{
    readHeader(0, 0);
    const std::uint64_t end = std::uint64_t{first} + count;
    if (count == 0 || end - 1 <= m_header.samples)
        return;
    const std::uint32_t sample = std::max(first, m_header.samples + 1);
    throw TS::ILL_SAMPLE(sample, m_header.samples, direction == Direction::Read ? 1 : 0);
}

// -- Runs --

// The row of a ring file's sample, counted from 0, and how many samples follow each other from there.
TSFILE::RingPart TSFILE::ringPart(std::uint32_t sample, std::uint64_t count) const noexcept
{
    const std::uint32_t behind = sample - 1U;
    const std::uint32_t row = behind % m_header.samples;
    const std::uint64_t beforeWrap = (std::uint64_t{1} << 32) - behind;
    return {row + 1, std::min({count, beforeWrap, std::uint64_t{m_header.samples - row}})};
}

void TSFILE::readColumn(std::uint32_t col, std::uint32_t first, std::span<float> out)
{
    readHeader(0, 0);
    const bool swapped = m_order == ByteOrder::Swapped;
    if (m_header.ringStart == 0) {
        requireRun(Direction::Read, first, out.size());
        m_runs.read({m_data.elementIndex(col, first), m_header.columns, out.size()}, out.data(), swapped);
        return;
    }
    while (!out.empty()) {
        requireSample(first);
        const RingPart part = ringPart(first, out.size());
        const auto count = static_cast<std::size_t>(part.count);
        m_runs.read({m_data.elementIndex(col, part.row), m_header.columns, count}, out.data(), swapped);
        first += static_cast<std::uint32_t>(count);
        out = out.subspan(count);
    }
}

void TSFILE::readColumns(std::uint32_t first, std::uint32_t count, std::span<const ColumnRun> runs)
{
    const std::size_t columns = std::max<std::uint32_t>(1, TSFILE::columns());
    if (columns > kWide * runs.size()) {
        for (const ColumnRun& run : runs)
            readColumn(run.column, first, {run.out, count});
        return;
    }
    const std::size_t most = std::max<std::size_t>(1, kNearFloats / columns);
    float* const rows = m_runs.room(std::min<std::size_t>(most, count) * columns);
    for (std::size_t done = 0; done < count;) {
        const std::size_t n = std::min(most, count - done);
        const auto sample = static_cast<std::uint32_t>(first + done);
        try {
            readRows(sample, static_cast<std::uint32_t>(n), rows);
            takeColumns(rows, columns, n, runs, done);
        } catch (const TS::Failure&) {
            // The values that are wanted may all be there; where one is not, it says so.
            for (std::size_t i = 0; i < n; ++i)
                for (const ColumnRun& run : runs)
                    run.out[done + i] = value(static_cast<std::uint32_t>(sample + i), run.column);
        }
        done += n;
    }
}

void TSFILE::writeColumn(std::uint32_t col, std::uint32_t first, std::span<const float> in)
{
    readHeader(0, 0);
    if (m_header.ringStart != 0) {
        for (std::size_t i = 0; i < in.size(); ++i)
            setValue(first + static_cast<std::uint32_t>(i), col, in[i]);
        return;
    }
    if (in.empty())
        return;
    requireRun(Direction::Write, first, in.size());
    requireWritable(col, first);
    m_runs.write({m_data.elementIndex(col, first), m_header.columns, in.size()}, in.data(),
                 m_order == ByteOrder::Swapped);
}

void TSFILE::readRows(std::uint32_t first, std::uint32_t count, float* out)
{
    readHeader(0, 0);
    const std::size_t columns = m_header.columns;
    const bool swapped = m_order == ByteOrder::Swapped;
    if (m_header.ringStart == 0) {
        requireRun(Direction::Read, first, count);
        m_runs.read({m_data.elementIndex(1, first), 1, count * columns}, out, swapped);
        return;
    }
    while (count > 0) {
        requireSample(first);
        const RingPart part = ringPart(first, count);
        const auto values = static_cast<std::size_t>(part.count) * columns;
        m_runs.read({m_data.elementIndex(1, part.row), 1, values}, out, swapped);
        first += static_cast<std::uint32_t>(part.count);
        count -= static_cast<std::uint32_t>(part.count);
        out += values;
    }
}

void TSFILE::writeRows(std::uint32_t first, std::uint32_t count, const float* in)
{
    readHeader(0, 0);
    const std::size_t columns = m_header.columns;
    if (count == 0 || columns == 0)
        return;
    if (m_header.ringStart != 0) {
        for (std::uint32_t row = 0; row < count; ++row)
            for (std::uint32_t col = 1; col <= columns; ++col)
                setValue(first + row, col, in[row * columns + col - 1]);
        return;
    }
    requireRun(Direction::Write, first, count);
    requireWritable(1, first);
    m_runs.write({m_data.elementIndex(1, first), 1, count * columns}, in, m_order == ByteOrder::Swapped);
}

// -- Rows --

template <typename Value>
void TSFILE::readRowOf(std::uint32_t sample, Value* out)
{
    requireSample(sample);
    const std::uint64_t first = m_data.elementIndex(1, sample);
    for (std::uint64_t done = 0; done < m_header.columns;) {
        const std::span<const float> slots = m_data.run(first + done, false);
        const std::size_t count = std::min<std::uint64_t>(slots.size(), m_header.columns - done);
        for (std::size_t i = 0; i < count; ++i)
            out[done + i] = native(slots[i]);
        done += count;
    }
}

void TSFILE::readRow(std::uint32_t sample, float* out)
{
    readRowOf(sample, out);
}

void TSFILE::readRow(std::uint32_t sample, double* out)
{
    readRowOf(sample, out);
}

template <typename Value>
void TSFILE::writeRowOf(std::uint32_t sample, const Value* in, bool flushing)
{
    const std::uint32_t count = columns();
    for (std::uint32_t col = 1; col <= count; ++col)
        setValue(sample, col, static_cast<float>(in[col - 1]));
    if (m_header.lastSample < sample) {
        m_header.lastSample = sample;
        if (sample > m_header.samples)
            m_header.ringStart = sample - m_header.samples + 1;
    }
    if (flushing)
        flush(true);
}

void TSFILE::writeRow(std::uint32_t sample, const float* in, bool flushing)
{
    writeRowOf(sample, in, flushing);
}

void TSFILE::writeRow(std::uint32_t sample, const double* in, bool flushing)
{
    writeRowOf(sample, in, flushing);
}
