// Writes rows into a ring file while others read it, so that whatever stops the writer leaves a ring of which
// every sample that the header names is there.
//
// A row of a full ring takes the place of the oldest one. So rows are written in parts of at most an eighth
// of the ring, each in three steps, of which each is on the disk before the next one begins:
//
//     1. ringStart goes past the samples whose rows will be overwritten
//     2. the rows
//     3. lastSample goes to the last one of them
//
// A kill in between leaves a ring that holds up to an eighth less than it has room for. In rings of fewer
// than 8 192 rows, where a part is not worth three waits for the disk, only the whole of a write is waited
// for: they outlast a kill all the same, but not any cut of the power.
//
// Each of the header's changes is one aligned word, so that no reader sees half of it, and the texts that a
// header editor writes meanwhile stay. A reader that reads a row and finds afterwards that ringStart is still
// at or before its sample has read the right row (TSFILE::ringStartOnDisk()).
//
// The file is locked against a second writer of this kind.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/BlockFile.h"
#include "core/FileLock.h"
#include "core/TsHeader.h"

namespace veltrac {

// Why a file takes no rows, in words for the user: "it is no ring file".
struct RingRefusal : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

class RingWriter
{
public:
    // Opens the ring file of exactly that name. Throws RingRefusal, and std::system_error where it cannot be
    // opened.
    explicit RingWriter(std::filesystem::path file);

    const std::filesystem::path& path() const noexcept { return m_path; }
    std::uint32_t samples() const noexcept { return m_header.samples; }
    std::uint32_t columns() const noexcept { return m_header.columns; }
    std::uint32_t ringStart() const noexcept { return m_header.ringStart; }
    std::uint32_t lastSample() const noexcept { return m_header.lastSample; }
    float dt() const noexcept { return m_header.dt; }
    // Seconds since the epoch from which the file's times count.
    double start() const noexcept { return m_header.startSeconds + static_cast<double>(m_header.startTime); }

    // Of a file that holds no rows yet.
    void setStart(std::uint32_t seconds, float rest);
    // Appends rows of columns() values each; on return they are on the disk. Throws std::system_error, and
    // RingRefusal where the file has been replaced or removed: what was written before stands.
    void write(std::span<const float> rows);
    // Appends so many rows of missing values. Throws as write().
    void writeMissing(std::uint32_t count);
    // How many more samples have a number.
    std::uint32_t numbersLeft() const noexcept { return UINT32_MAX - m_header.lastSample; }

private:
    void requireInPlace() const;
    void writePart(std::span<const float> rows);
    void moveStart(std::uint32_t sample);
    void moveEnd(std::uint32_t sample);
    void putWord(std::uint64_t offset, std::uint32_t value);
    void putRows(std::uint32_t row, std::span<const float> rows);
    void put(std::uint64_t offset, std::span<const unsigned char> bytes);
    void sync() const;

    std::filesystem::path m_path;
    BlockFile m_file;
    std::optional<FileLock> m_lock;
    ByteOrder m_order = ByteOrder::Unknown;
    TsHeader m_header;
    bool m_syncsParts = true;
    std::vector<float> m_swapped;
};

}  // namespace veltrac
