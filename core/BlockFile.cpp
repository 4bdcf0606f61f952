#include "core/BlockFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>

#include "core/TsExceptions.h"

namespace veltrac {

namespace {

constexpr long long kSeekFailed = -1;

// What one positioned transfer came to: the bytes moved, or kSeekFailed.
// pread and pwrite are the seek and the transfer in one call, which halves the cost of a block.
template <typename Transfer>
long long retried(Transfer transfer)
{
    for (;;) {
        const ssize_t moved = transfer();
        if (moved >= 0)
            return moved;
        if (errno == EINTR)
            continue;
        return errno == ESPIPE || errno == EINVAL || errno == EBADF ? kSeekFailed : 0;
    }
}

long long readAt(int fd, std::uint64_t offset, void* to, std::size_t count)
{
    return retried([&] { return ::pread(fd, to, count, static_cast<off_t>(offset)); });
}

long long writeAt(int fd, std::uint64_t offset, const void* from, std::size_t count)
{
    return retried([&] { return ::pwrite(fd, from, count, static_cast<off_t>(offset)); });
}

TS::IO_ERROR seekError(int descriptor, std::uint64_t offset)
{
    return {static_cast<std::uint32_t>(descriptor), static_cast<std::uint32_t>(offset), 1};
}

}  // namespace

BlockFile::BlockFile(int descriptor, bool readOnly) noexcept : m_descriptor(descriptor), m_readOnly(readOnly)
{
}

BlockFile::~BlockFile()
{
    ::close(m_descriptor);
}

int BlockFile::create(const char* name) noexcept
{
    return ::open(name, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
}

int BlockFile::open(const char* name, bool readOnly) noexcept
{
    return ::open(name, (readOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC);
}

int BlockFile::duplicate(int descriptor) noexcept
{
    return ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
}

void BlockFile::read(std::uint64_t offset, Block& block) const
{
    requireReachable(offset);
    const std::lock_guard guard(lock());
    const long long moved = readAt(m_descriptor, offset, block.data(), block.size());
    if (moved == kSeekFailed)
        throw seekError(m_descriptor, offset);
    if (moved != static_cast<long long>(block.size()))
        throw TS::IO_ERROR(static_cast<std::uint32_t>(offset), static_cast<std::uint32_t>(moved) + kShortRead,
                           1);
}

void BlockFile::write(std::uint64_t offset, const Block& block)
{
    if (m_readOnly)
        throw TS::READONLY_VIOLATION(static_cast<std::uint32_t>(offset), 0, 1);
    requireReachable(offset);
    const std::lock_guard guard(lock());
    const long long moved = writeAt(m_descriptor, offset, block.data(), block.size());
    if (moved == kSeekFailed)
        throw seekError(m_descriptor, offset);
    if (moved != static_cast<long long>(block.size()))
        throw TS::IO_ERROR(static_cast<std::uint32_t>(offset),
                           static_cast<std::uint32_t>(moved) + kShortWrite, 1);
}

std::size_t BlockFile::readRun(std::uint64_t offset, std::span<unsigned char> bytes) const
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        const long long moved = readAt(m_descriptor, offset + done, bytes.data() + done, bytes.size() - done);
        if (moved <= 0)
            break;
        done += static_cast<std::size_t>(moved);
    }
    return done;
}

std::size_t BlockFile::writeRun(std::uint64_t offset, std::span<const unsigned char> bytes)
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        const long long moved =
            writeAt(m_descriptor, offset + done, bytes.data() + done, bytes.size() - done);
        if (moved <= 0)
            break;
        done += static_cast<std::size_t>(moved);
    }
    return done;
}

std::size_t BlockFile::readBlocksLocked(std::uint64_t offset, std::span<float> values) const
{
    auto* const bytes = reinterpret_cast<unsigned char*>(values.data());
    return readRun(offset, {bytes, values.size_bytes()}) / kBlockBytes;
}

std::size_t BlockFile::writeBlocks(std::uint64_t offset, std::span<const float> values)
{
    const auto* const bytes = reinterpret_cast<const unsigned char*>(values.data());
    return writeRun(offset, {bytes, values.size_bytes()}) / kBlockBytes;
}

std::size_t BlockFile::readBlocks(std::uint64_t offset, std::span<float> values) const
{
    const std::lock_guard guard(lock());
    return readBlocksLocked(offset, values);
}

std::optional<std::size_t> BlockFile::copyRun(const BlockFile& from, std::uint64_t offset,
                                              std::size_t count) noexcept
{
#ifdef __linux__
    auto source = static_cast<off_t>(offset);
    auto target = static_cast<off_t>(offset);
    const ssize_t moved = ::copy_file_range(from.m_descriptor, &source, m_descriptor, &target, count, 0);
    if (moved >= 0)
        return static_cast<std::size_t>(moved);
#else
    (void)from, (void)offset, (void)count;
#endif
    return std::nullopt;
}

bool BlockFile::reserve(std::uint64_t offset, std::uint64_t end) noexcept
{
#ifdef __linux__
    if (m_readOnly || offset >= end)
        return false;
    // Not posix_fallocate(), which on file systems that cannot do it writes a byte into each block.
    for (;;) {
        if (::fallocate(m_descriptor, 0, static_cast<off_t>(offset), static_cast<off_t>(end - offset)) == 0)
            return true;
        if (errno != EINTR)
            return false;
    }
#else
    return offset > end;
#endif
}

std::uint64_t BlockFile::size() const noexcept
{
    struct stat status = {};
    return ::fstat(m_descriptor, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

std::mutex& BlockFile::lock()
{
    // Never destroyed: a file object may outlive the static objects of main.
    static auto* const mutex = new std::mutex;
    return *mutex;
}

void BlockFile::requireReachable(std::uint64_t offset) const
{
    if (offset >= kFileLimit)
        throw seekError(m_descriptor, offset);
}

}  // namespace veltrac
