#include "core/DiskSync.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <future>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "core/BlockFile.h"

namespace veltrac {

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kPieceBytes = 4 * 1024 * 1024;
constexpr std::chrono::milliseconds kBetweenLooks(20);

[[noreturn]] void failToSync(const std::string& what, int error)
{
    throw std::system_error(error, std::generic_category(), what);
}

// A descriptor of its own.
class OwnDescriptor
{
public:
    OwnDescriptor(int descriptor, const std::string& what) : m_descriptor(descriptor)
    {
        if (m_descriptor < 0)
            failToSync(what, errno);
    }
    ~OwnDescriptor() { ::close(m_descriptor); }
    OwnDescriptor(const OwnDescriptor&) = delete;
    OwnDescriptor& operator=(const OwnDescriptor&) = delete;
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

// What the thread that waits for the disk and the one that waits for it share.
struct Sync
{
    Sync(int descriptor, std::string file) : opened(descriptor, file), what(std::move(file)) {}

    OwnDescriptor opened;
    std::string what;
    std::atomic<bool> isWanted = true;

    // Piece by piece first, so that it can be given up between two of them.
    void run() const
    {
#ifdef __linux__
        struct stat state = {};
        const std::int64_t bytes = ::fstat(opened, &state) == 0 ? state.st_size : 0;
        constexpr unsigned kWritten =
            SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER;
        // What fails here fails below too, or need not be done.
        for (std::int64_t at = 0; at < bytes && isWanted; at += kPieceBytes)
            if (::sync_file_range(opened, at, kPieceBytes, kWritten) != 0)
                break;
#endif
        if (isWanted)
            syncOpen(opened, what);
    }
};

// A disk that is busy may keep the thread for seconds. Where nobody waits to its end, nobody needs what it
// does any more.
class SyncThread
{
public:
    explicit SyncThread(std::shared_ptr<Sync> sync) : m_sync(std::move(sync))
    {
        std::packaged_task<void()> task([kept = m_sync] { kept->run(); });
        m_synced = task.get_future();
        m_thread = std::thread(std::move(task));
    }
    ~SyncThread()
    {
        m_sync->isWanted = false;
        if (m_thread.joinable())
            m_thread.detach();
    }
    SyncThread(const SyncThread&) = delete;
    SyncThread& operator=(const SyncThread&) = delete;

    bool isDone() const { return m_synced.wait_for(kBetweenLooks) == std::future_status::ready; }
    void finish()
    {
        m_thread.join();
        m_synced.get();
    }

private:
    std::shared_ptr<Sync> m_sync;
    std::future<void> m_synced;
    std::thread m_thread;
};

enum class Cancel { Leaves, Waits };

// Takes the descriptor over.
JobOutcome syncBeside(int descriptor, const std::string& what, const GoesOn& goesOn,
                      Cancel cancel = Cancel::Leaves)
{
    const auto sync = std::make_shared<Sync>(descriptor, what);
    if (!goesOn) {
        syncOpen(sync->opened, what);
        return JobOutcome::Done;
    }
    if (!goesOn())
        return JobOutcome::Cancelled;
    SyncThread thread(sync);
    while (!thread.isDone()) {
        if (goesOn())
            continue;
        sync->isWanted = false;
        if (cancel == Cancel::Leaves)
            return JobOutcome::Cancelled;
    }
    thread.finish();
    return sync->isWanted ? JobOutcome::Done : JobOutcome::Cancelled;
}

}  // namespace

void syncToDisk(const fs::path& file)
{
    syncToDisk(file, {});
}

JobOutcome syncToDisk(const fs::path& file, const GoesOn& goesOn)
{
    return syncBeside(::open(file.c_str(), O_RDONLY | O_CLOEXEC), file.string(), goesOn);
}

JobOutcome syncToDisk(int descriptor, const GoesOn& goesOn)
{
    // What is left of the wait would hold the locks of a file that is still in use.
    return syncBeside(BlockFile::duplicate(descriptor), "sync", goesOn, Cancel::Waits);
}

void syncDirectory(const fs::path& directory)
{
    const fs::path named = directory.empty() ? "." : directory;
    syncBeside(::open(named.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), named.string(), {});
}

}  // namespace veltrac
