#include "core/DiskSync.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <future>
#include <string>
#include <system_error>

namespace veltrac {

namespace {

namespace fs = std::filesystem;

// Some tens of milliseconds of a usual disk.
constexpr std::int64_t kPieceBytes = 4 * 1024 * 1024;
constexpr std::chrono::milliseconds kBetweenLooks(20);

[[noreturn]] void failToSync(const std::string& what, int error)
{
    throw std::system_error(error, std::generic_category(), what);
}

class OpenPath
{
public:
    OpenPath(const fs::path& path, int flags) : m_descriptor(::open(path.c_str(), flags | O_CLOEXEC))
    {
        if (m_descriptor < 0)
            failToSync(path.string(), errno);
    }
    ~OpenPath() { ::close(m_descriptor); }
    OpenPath(const OpenPath&) = delete;
    OpenPath& operator=(const OpenPath&) = delete;
    operator int() const noexcept { return m_descriptor; }

private:
    int m_descriptor;
};

void syncOpen(int descriptor, const std::string& what)
{
    // Some file systems cannot sync everything; they say so, and nothing more can be done there.
    if (::fsync(descriptor) != 0 && errno != EINVAL)
        failToSync(what, errno);
}

// Piece by piece first, so that it can be given up between two of them.
void syncInPieces(int descriptor, const std::string& what, const std::atomic<bool>& isWanted)
{
#ifdef __linux__
    struct stat state = {};
    const std::int64_t bytes = ::fstat(descriptor, &state) == 0 ? state.st_size : 0;
    constexpr unsigned kWritten =
        SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER;
    // What fails here fails below too, or need not be done.
    for (std::int64_t at = 0; at < bytes && isWanted; at += kPieceBytes)
        if (::sync_file_range(descriptor, at, kPieceBytes, kWritten) != 0)
            break;
#endif
    if (isWanted)
        syncOpen(descriptor, what);
}

JobOutcome syncBeside(int descriptor, const std::string& what, const GoesOn& goesOn)
{
    if (!goesOn) {
        syncOpen(descriptor, what);
        return JobOutcome::Done;
    }
    if (!goesOn())
        return JobOutcome::Cancelled;
    std::atomic<bool> isWanted = true;
    std::future<void> synced =
        std::async(std::launch::async, [&] { syncInPieces(descriptor, what, isWanted); });
    while (synced.wait_for(kBetweenLooks) != std::future_status::ready)
        if (!goesOn())
            isWanted = false;
    synced.get();
    return isWanted ? JobOutcome::Done : JobOutcome::Cancelled;
}

}  // namespace

void syncToDisk(const fs::path& file)
{
    syncOpen(OpenPath(file, O_RDONLY), file.string());
}

JobOutcome syncToDisk(const fs::path& file, const GoesOn& goesOn)
{
    return syncBeside(OpenPath(file, O_RDONLY), file.string(), goesOn);
}

JobOutcome syncToDisk(int descriptor, const GoesOn& goesOn)
{
    return syncBeside(descriptor, "sync", goesOn);
}

void syncDirectory(const fs::path& directory)
{
    syncOpen(OpenPath(directory.empty() ? "." : directory, O_RDONLY | O_DIRECTORY), directory.string());
}

}  // namespace veltrac
