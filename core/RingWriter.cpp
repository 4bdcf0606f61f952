#include "core/RingWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <limits>
#include <mutex>
#include <system_error>

#include "core/FileIdentity.h"
#include "core/TsExceptions.h"

namespace veltrac {

namespace {

// No more than this share of a ring gives way before rows that come are there.
constexpr std::uint32_t kParts = 8;
constexpr std::size_t kRowsWorthASync = 1024;

[[noreturn]] void failWith(int error, const std::filesystem::path& file)
{
    throw std::system_error(error, std::generic_category(), file.string());
}

int openRing(const std::filesystem::path& file)
{
    const int descriptor = BlockFile::open(file.c_str(), false);
    if (descriptor < 0)
        failWith(errno, file);
    return descriptor;
}

}  // namespace

RingWriter::RingWriter(std::filesystem::path file) : m_path(std::move(file)), m_file(openRing(m_path), false)
{
    // Where the file system knows no locks, two recorders cannot be told from one.
    try {
        m_lock.emplace(m_file.descriptor());
    } catch (const std::system_error& e) {
        if (e.code().value() != EWOULDBLOCK)
            throw;
        throw RingRefusal("another program is recording into it");
    }
    Block image;
    try {
        m_file.read(0, image);
    } catch (const TS::IO_ERROR&) {
        throw RingRefusal("it is no ts-file");
    }
    m_header = decodeHeader(image, m_order);
    if (m_header.version > kHighestVersion)
        throw RingRefusal("it is no ts-file");
    if (m_header.ringStart == 0)
        throw RingRefusal("it is no ring file: its rows are samples that stay");
    if (m_header.samples == 0 || m_header.columns == 0)
        throw RingRefusal("it has no room for rows");
    if (m_file.size() < tsFileBytes(m_header.samples, m_header.columns))
        throw RingRefusal("it is cut short");
}

void RingWriter::put(std::uint64_t offset, std::span<const unsigned char> bytes)
{
    const std::lock_guard guard(BlockFile::lock());
    errno = 0;
    if (m_file.writeRun(offset, bytes) != bytes.size())
        failWith(errno != 0 ? errno : ENOSPC, m_path);
}

void RingWriter::putWord(std::uint64_t offset, std::uint32_t value)
{
    if (m_order == ByteOrder::Swapped)
        value = swapBytes(value);
    unsigned char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    put(offset, bytes);
}

void RingWriter::sync() const
{
    // Pipes and some network drives have nothing to be synced; that is no failure of the write.
    while (::fdatasync(m_file.descriptor()) != 0)
        if (errno != EINTR) {
            if (errno == EINVAL || errno == EROFS)
                return;
            failWith(errno, m_path);
        }
}

// Rows written into a file that bears another name by now, or none, would be lost without a word.
void RingWriter::requireInPlace() const
{
    const auto named = identityOf(m_path);
    if (!named)
        throw RingRefusal("it was removed while rows were recorded");
    if (*named != identityOf(m_file.descriptor()))
        throw RingRefusal("another file has taken its place while rows were recorded");
}

void RingWriter::setStart(std::uint32_t seconds, float rest)
{
    m_header.startSeconds = seconds;
    m_header.startTime = rest;
    putWord(kStartTimeAt, std::bit_cast<std::uint32_t>(rest));
    putWord(kStartSecondsAt, seconds);
}

void RingWriter::putRows(std::uint32_t row, std::span<const float> rows)
{
    if (m_order == ByteOrder::Swapped) {
        m_swapped.assign(rows.begin(), rows.end());
        for (float& v : m_swapped)
            v = swapBytes(v);
        rows = m_swapped;
    }
    const std::uint64_t at =
        dataOffset(m_header.columns) + std::uint64_t{row} * m_header.columns * sizeof(float);
    put(at, {reinterpret_cast<const unsigned char*>(rows.data()), rows.size_bytes()});
}

void RingWriter::write(std::span<const float> rows)
{
    const std::size_t width = m_header.columns;
    requireInPlace();
    if (rows.size() / width > numbersLeft())
        throw RingRefusal("its samples have used up all numbers");
    const std::size_t part = std::max<std::size_t>(1, m_header.samples / kParts);
    m_syncsParts = part >= kRowsWorthASync;
    while (!rows.empty()) {
        const std::size_t taken = std::min(part * width, rows.size());
        writePart(rows.first(taken));
        rows = rows.subspan(taken);
    }
    sync();
}

// Rows for at most a part of the ring.
void RingWriter::writePart(std::span<const float> rows)
{
    const std::size_t width = m_header.columns;
    const auto count = static_cast<std::uint32_t>(rows.size() / width);
    const std::uint32_t capacity = m_header.samples;
    const std::uint32_t last = m_header.lastSample + count;
    moveStart(std::max(m_header.ringStart, last > capacity ? last - capacity + 1 : std::uint32_t{1}));
    const std::uint32_t row = m_header.lastSample % capacity;
    const std::size_t beforeSeam = std::min(count, capacity - row) * width;
    putRows(row, rows.first(beforeSeam));
    if (beforeSeam < rows.size())
        putRows(0, rows.subspan(beforeSeam));
    if (m_syncsParts)
        sync();
    moveEnd(last);
}

void RingWriter::writeMissing(std::uint32_t count)
{
    constexpr std::size_t kRunFloats = std::size_t{1} << 16;
    const auto run = static_cast<std::uint32_t>(std::max<std::size_t>(1, kRunFloats / m_header.columns));
    const std::vector<float> missing(std::size_t{std::min(run, count)} * m_header.columns,
                                     std::numeric_limits<float>::quiet_NaN());
    for (std::uint32_t done = 0; done < count; done += std::min(run, count - done))
        write(std::span(missing).first(std::size_t{std::min(run, count - done)} * m_header.columns));
}

void RingWriter::moveStart(std::uint32_t sample)
{
    if (sample == m_header.ringStart)
        return;
    putWord(kRingStartAt, sample);
    if (m_syncsParts)
        sync();
    m_header.ringStart = sample;
}

void RingWriter::moveEnd(std::uint32_t sample)
{
    putWord(kLastSampleAt, sample);
    m_header.lastSample = sample;
}

}  // namespace veltrac
