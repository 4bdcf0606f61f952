// The one place where the program's ts-files meet the platform: a descriptor that moves 512-byte blocks
// and long runs of them.
//
// Every transfer passes one process-wide lock, so that file objects on different threads may share a
// process. Offsets are bytes from the file's start.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <span>

#include "core/TsHeader.h"

namespace veltrac {

// What marks the byte counts of a transfer that fell short, see TS::IO_ERROR.
inline constexpr std::uint32_t kShortRead = 100000;
inline constexpr std::uint32_t kShortWrite = 200000;

class BlockFile
{
public:
    // Owns the descriptor and closes it.
    BlockFile(int descriptor, bool readOnly) noexcept;
    ~BlockFile();
    BlockFile(const BlockFile&) = delete;
    BlockFile& operator=(const BlockFile&) = delete;

    // The platform's open calls; they return the descriptor, or a value below 1 when they fail.
    static int create(const char* name) noexcept;  // truncates; read and write; permission 0666
    static int open(const char* name, bool readOnly) noexcept;
    static int duplicate(int descriptor) noexcept;

    int descriptor() const noexcept { return m_descriptor; }
    bool readOnly() const noexcept { return m_readOnly; }

    // Throw TS::IO_ERROR: with descriptor and offset where no block can lie (at or beyond 2 GiB) or the
    // seek fails, with offset and byte count + 100000 (+ 200000) where fewer than 512 bytes move. A write
    // on a file opened for reading throws TS::READONLY_VIOLATION with the offset.
    void read(std::uint64_t offset, Block& block) const;
    void write(std::uint64_t offset, const Block& block);

    // Reads or writes a longer run and returns the bytes moved. The caller holds lock(), because its several
    // transfers may belong together.
    std::size_t readRun(std::uint64_t offset, std::span<unsigned char> bytes) const;
    std::size_t writeRun(std::uint64_t offset, std::span<const unsigned char> bytes);

    // The same for whole blocks of values, in blocks that were moved completely.
    std::size_t readBlocksLocked(std::uint64_t offset, std::span<float> values) const;
    std::size_t writeBlocks(std::uint64_t offset, std::span<const float> values);
    // Takes the lock itself.
    std::size_t readBlocks(std::uint64_t offset, std::span<float> values) const;

    // Copies up to `count` bytes of another file to the same offset of this one, inside the platform. Returns
    // the bytes copied, 0 at the other's end; nothing where the platform does not do that between the two, or
    // fails: readRun() and writeRun() do it then, or fail the same. The caller holds lock().
    std::optional<std::size_t> copyRun(const BlockFile& from, std::uint64_t offset,
                                       std::size_t count) noexcept;

    // Makes the file reach from `offset` to `end` with zeros that the disk has room for. False, with nothing
    // promised, where the platform does not do that or there is no room: they are to be written then, which
    // tells where it ends.
    bool reserve(std::uint64_t offset, std::uint64_t end) noexcept;

    // The file's present size in bytes, 0 where the platform does not tell.
    std::uint64_t size() const noexcept;

    // The process-wide lock.
    static std::mutex& lock();

private:
    void requireReachable(std::uint64_t offset) const;

    int m_descriptor;
    bool m_readOnly;
};

}  // namespace veltrac
