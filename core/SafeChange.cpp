#include "core/SafeChange.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <mutex>
#include <optional>
#include <system_error>
#include <vector>

#include "core/BlockFile.h"
#include "core/DiskSync.h"
#include "core/FileLock.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"

namespace veltrac {

namespace {

namespace fs = std::filesystem;

// Keeping the old values is the smaller part of a change, in hundredths.
constexpr std::uint64_t kKeepingShare = 25;

[[noreturn]] void refuse(int error, const fs::path& path)
{
    throw std::system_error(error, std::generic_category(), path.string());
}

// The real target of a file that may be made or replaced.
fs::path requireReplaceable(const fs::path& target)
{
    fs::path real = realPath(target);
    struct stat old = {};
    if (::stat(real.c_str(), &old) != 0)
        return real;
    // A rename would take the place of a device or a pipe, too.
    if (!S_ISREG(old.st_mode))
        refuse(S_ISDIR(old.st_mode) ? EISDIR : EINVAL, target);
    if (isWriteProtected(real))
        refuse(EACCES, target);
    return real;
}

fs::path directoryOf(const fs::path& file)
{
    const fs::path directory = file.parent_path();
    return directory.empty() ? "." : directory;
}

void keepOldValues(ColumnBackup& backup, std::span<const ColumnRange> ranges)
{
    std::vector<std::uint32_t> columns;
    for (const ColumnRange& range : ranges)
        columns.push_back(range.column);
    std::sort(columns.begin(), columns.end());
    columns.erase(std::unique(columns.begin(), columns.end()), columns.end());
    for (const std::uint32_t column : columns)
        backup.saveInfo(column);
}

}  // namespace

fs::path realPath(const fs::path& path)
{
    fs::path at = path;
    std::error_code notALink;
    // As many links as the system itself follows.
    constexpr int kMostLinks = 40;
    for (int i = 0; i < kMostLinks && fs::is_symlink(fs::symlink_status(at, notALink)); ++i) {
        const fs::path next = fs::read_symlink(at, notALink);
        if (notALink)
            break;
        at = next.is_absolute() ? next : at.parent_path() / next;
    }
    return at;
}

bool isWriteProtected(const fs::path& file)
{
    struct stat state = {};
    if (::stat(file.c_str(), &state) != 0)
        return false;
    // A superuser is asked too: who took all rights to write away meant it.
    return (state.st_mode & 0222) == 0 || ::access(file.c_str(), W_OK) != 0;
}

PendingFile::PendingFile(const fs::path& target, const std::string& stem, const std::string& extension)
    : m_real(requireReplaceable(target)), m_scratch(directoryOf(m_real), stem, extension)
{
}

void PendingFile::commit()
{
    m_scratch.putInPlace(m_real);
}

JobOutcome PendingFile::commit(const Progress& progress)
{
    return m_scratch.putInPlace(m_real, progress ? [&progress] { return progress(1, 1); } : GoesOn());
}

namespace {

using HeadBytes = std::vector<unsigned char>;

// The blocks in front of a file's values; fewer where the file is cut.
HeadBytes readHead(const BlockFile& file, std::uint64_t bytes)
{
    HeadBytes head(std::min(bytes, file.size()));
    const std::lock_guard guard(BlockFile::lock());
    if (file.readRun(0, head) != head.size())
        throw TS::IO_ERROR(static_cast<std::uint32_t>(head.size()), kShortRead, 1);
    return head;
}

void writeHead(BlockFile& file, const HeadBytes& head, std::size_t first, std::size_t last)
{
    const std::lock_guard guard(BlockFile::lock());
    errno = 0;
    if (file.writeRun(first, std::span(head).subspan(first, last - first)) != last - first)
        throw std::system_error(errno != 0 ? errno : EIO, std::generic_category());
}

HeadBytes changedHead(const HeadBytes& head, const std::function<void(TSFILE& copy)>& change)
{
    const ScratchFile scratch(scratchDirectory(), "veltrac-header", ".ts");
    {
        BlockFile copied(BlockFile::open(scratch.path().c_str(), false), false);
        writeHead(copied, head, 0, head.size());
    }
    const auto copy = openTsFile(scratch.path().string(), false);
    change(*copy);
    copy->flush(true);
    return readHead(BlockFile(BlockFile::duplicate(copy->descriptor()), true), head.size());
}

}  // namespace

void changeHeader(const fs::path& file, const std::function<void(TSFILE& copy)>& change)
{
    const auto whole = openTsFile(file.string(), false);
    // Who records into a ring holds it for hours, and leaves its texts to others.
    const bool isRing = whole->ringStart() != 0;
    std::optional<FileLock> lock;
    if (!isRing)
        lock.emplace(whole->descriptor());
    BlockFile target(BlockFile::duplicate(whole->descriptor()), false);
    const HeadBytes before = readHead(target, dataOffset(whole->columns()));
    const HeadBytes after = changedHead(before, change);
    const auto differs = [&](std::size_t i) { return before[i] != after[i]; };
    for (std::size_t first = 0; first < after.size(); ++first) {
        if (!differs(first))
            continue;
        // One write; but in a ring only what differs, so that its counts go on.
        std::size_t last = isRing ? first : after.size();
        while (isRing && last < after.size() && differs(last))
            ++last;
        while (!differs(last - 1))
            --last;
        try {
            writeHead(target, after, first, last);
        } catch (...) {
            const std::exception_ptr failure = std::current_exception();
            writeHead(target, before, first, last);
            std::rethrow_exception(failure);
        }
        first = last;
    }
    syncToDisk(target.descriptor(), {});
}

JobOutcome changeInPlace(const InPlaceChange& change, const Progress& progress, OldValues& old)
{
    std::uint64_t total = 0;
    for (const ColumnRange& range : change.ranges)
        total += range.count;
    // A file that is being made is its maker's already.
    std::optional<FileLock> lock;
    if (const char* const name = change.file.fileName(); name == nullptr || !isScratchFile(name))
        lock.emplace(change.file.descriptor());
    old.backup = std::make_unique<ColumnBackup>(change.file);
    keepOldValues(*old.backup, change.ranges);
    std::uint64_t kept = 0;
    for (const ColumnRange& range : change.ranges) {
        const Progress part = [&](std::uint64_t done, std::uint64_t /*of*/) {
            return goesOn(progress, (kept + done) * kKeepingShare, std::max<std::uint64_t>(total, 1) * 100);
        };
        if (old.backup->save(range.column, range.first, range.count, part) == JobOutcome::Cancelled) {
            old.backup.reset();
            return JobOutcome::Cancelled;
        }
        kept += range.count;
    }
    const Progress writing = [&](std::uint64_t done, std::uint64_t of) {
        return goesOn(progress, kKeepingShare * of + (100 - kKeepingShare) * done,
                      std::max<std::uint64_t>(of, 1) * 100);
    };
    try {
        if (change.write(change.file, writing) == JobOutcome::Done) {
            change.file.flush(true);
            if (syncToDisk(change.file.descriptor(), [&progress] { return goesOn(progress, 1, 1); }) ==
                JobOutcome::Done) {
                if (lock)
                    lock->requireNamed();
                old.backup->markDone();
                return JobOutcome::Done;
            }
        }
        old.lost = old.backup->path();
        old.backup->restore(change.file, progress);
    } catch (...) {
        const std::exception_ptr failure = std::current_exception();
        lock.reset();
        old.lost = old.backup->path();
        old.backup->restore(change.reopen());
        old.lost.clear();
        old.backup.reset();
        std::rethrow_exception(failure);
    }
    old.lost.clear();
    old.backup.reset();
    return JobOutcome::Cancelled;
}

}  // namespace veltrac
