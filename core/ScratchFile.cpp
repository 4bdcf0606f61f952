#include "core/ScratchFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <set>
#include <system_error>
#include <utility>

#include "core/DiskSync.h"
#include "core/FileIdentity.h"
#include "core/LateRelease.h"
#include "core/Utf8.h"

namespace veltrac {

namespace {

namespace fs = std::filesystem;

// What tells a scratch file from one of the user's that has its name: it holds that name, so that a file that
// has got another one is none any more.
constexpr const char* kMark = "user.veltrac.scratch";

bool setMark(int descriptor, const fs::path& file)
{
    const std::string name = file.filename().string();
    return ::fsetxattr(descriptor, kMark, name.data(), name.size(), 0) == 0;
}

bool bearsMark(const fs::path& file)
{
    const std::string name = file.filename().string();
    std::string mark(name.size(), '\0');
    const ssize_t length = ::lgetxattr(file.c_str(), kMark, mark.data(), mark.size());
    return length == static_cast<ssize_t>(name.size()) && mark == name;
}

[[noreturn]] void fail(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

// The scratch files that there are, by their absolute names.
class Registry
{
public:
    void add(const fs::path& path)
    {
        const std::lock_guard guard(m_lock);
        m_paths.insert(named(path));
    }
    void remove(const fs::path& path)
    {
        const std::lock_guard guard(m_lock);
        m_paths.erase(named(path));
    }
    bool has(const fs::path& path) const
    {
        const std::lock_guard guard(m_lock);
        return m_paths.count(named(path)) != 0;
    }

private:
    static fs::path named(const fs::path& path)
    {
        std::error_code none;
        return fs::absolute(path, none).lexically_normal();
    }

    mutable std::mutex m_lock;
    std::set<fs::path> m_paths;
};

// Never destroyed: a scratch file may outlive the static objects of main.
Registry& scratchFiles()
{
    static auto* const files = new Registry;
    return *files;
}

// The stem loses its end, at a whole character, where the name would be too long for a directory.
fs::path numbered(const fs::path& directory, const std::string& stem, const std::string& extension,
                  int number)
{
    constexpr std::size_t kLongestName = 255;
    const std::string ending = number == 0 ? extension : '_' + std::to_string(number) + extension;
    return directory / (cutTo(stem, kLongestName - std::min(kLongestName, ending.size())) + ending);
}

// A file that gets its name when it bears the mark already: a kill leaves none without it. Returns the
// descriptor; below 0 where the name is taken, or the file system does not do that.
int makeMarked(const fs::path& file)
{
    const fs::path directory = file.parent_path();
    const int descriptor =
        ::open(directory.empty() ? "." : directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    if (descriptor < 0)
        return descriptor;
    const std::string unnamed = "/proc/self/fd/" + std::to_string(descriptor);
    if (setMark(descriptor, file) &&
        ::linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, file.c_str(), AT_SYMLINK_FOLLOW) == 0)
        return descriptor;
    ::close(descriptor);
    return -1;
}

}  // namespace

fs::path scratchDirectory()
{
    const char* const named = std::getenv("TMPDIR");
    return named != nullptr && *named != '\0' ? fs::path(named) : fs::temp_directory_path();
}

fs::path freeName(const fs::path& directory, const std::string& stem, const std::string& extension)
{
    for (int number = 0;; ++number) {
        fs::path candidate = numbered(directory, stem, extension, number);
        if (!fs::exists(fs::symlink_status(candidate)))
            return candidate;
    }
}

void putInPlace(const fs::path& finished, const fs::path& target)
{
    putInPlace(finished, target, {});
}

JobOutcome putInPlace(const fs::path& finished, const fs::path& target, const GoesOn& goesOn)
{
    // The new file keeps the rights that the user gave the old one.
    struct stat old = {};
    const bool exists = ::stat(target.c_str(), &old) == 0;
    // A rename would take the place of a device or a pipe, too.
    if (exists && !S_ISREG(old.st_mode)) {
        errno = S_ISDIR(old.st_mode) ? EISDIR : EINVAL;
        fail(target.string());
    }
    if (exists && ::chmod(finished.c_str(), old.st_mode & 07777) != 0)
        fail(finished.string());
    if (syncToDisk(finished, goesOn) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    // A link stays a link: what it points to is replaced.
    std::error_code notALink;
    const fs::path real = fs::is_symlink(target, notALink) ? fs::canonical(target, notALink) : target;
    {
        const LateRelease oldContents(target);
        fs::rename(finished, real.empty() ? target : real);
    }
    // A name or two: nobody waits for them, and nobody is asked for whom it is too late to cancel.
    syncDirectory(target.parent_path());
    return JobOutcome::Done;
}

void lockAsOwner(int descriptor) noexcept
{
    // Without locks nobody removes the file, which is all that they are for.
    ::flock(descriptor, LOCK_EX | LOCK_NB);
}

bool removeIfStale(const fs::path& file) noexcept
{
    constexpr std::time_t kStaleSeconds = 3600;
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    struct stat open = {};
    struct stat named = {};
    // Who holds the lock is the only one to remove it: the name still leads to the file that was looked at.
    const bool goes = ::fstat(descriptor, &open) == 0 && S_ISREG(open.st_mode) &&
                      open.st_uid == ::geteuid() && std::time(nullptr) - open.st_mtime > kStaleSeconds &&
                      ::flock(descriptor, LOCK_EX | LOCK_NB) == 0 && ::lstat(file.c_str(), &named) == 0 &&
                      identityOf(named) == identityOf(open) && ::unlink(file.c_str()) == 0;
    ::close(descriptor);
    return goes;
}

ScratchFile::ScratchFile(const fs::path& directory, const std::string& stem, const std::string& extension,
                         IsDone isDone)
    : m_isMarked(!stem.starts_with("veltrac-") && !stem.starts_with(".veltrac-"))
{
    int number = 0;
    while (m_path.empty()) {
        const fs::path candidate = numbered(directory, stem, extension, number);
        make(candidate);
        if (m_path.empty() && !removeLeft(candidate, isDone))
            ++number;
    }
    // Several jobs at once may have been killed.
    constexpr int kLookedAt = 16;
    for (int next = number + 1; next <= number + kLookedAt; ++next)
        removeLeft(numbered(directory, stem, extension, next), isDone);
}

// Leaves the path empty where the name is taken.
void ScratchFile::make(const fs::path& file)
{
    int descriptor = m_isMarked ? makeMarked(file) : -1;
    if (descriptor < 0)
        descriptor = ::open(file.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0666);
    if (descriptor < 0 && errno != EEXIST)
        fail(file.string());
    if (descriptor < 0)
        return;
    lockAsOwner(descriptor);
    m_owner = descriptor;
    m_path = file;
    scratchFiles().add(m_path);
}

bool ScratchFile::removeLeft(const fs::path& file, IsDone isDone) const
{
    return (!m_isMarked || bearsMark(file)) && (isDone == nullptr || isDone(file)) && removeIfStale(file);
}

ScratchFile::~ScratchFile()
{
    std::error_code ignored;
    if (!m_path.empty()) {
        fs::remove(m_path, ignored);
        scratchFiles().remove(m_path);
    }
    if (m_owner >= 0)
        closeLate(m_owner);
}

void ScratchFile::keep() noexcept
{
    scratchFiles().remove(m_path);
    m_path.clear();
}

bool isScratchFile(const fs::path& path)
{
    return scratchFiles().has(path);
}

JobOutcome ScratchFile::putInPlace(const fs::path& target, const GoesOn& goesOn)
{
    const JobOutcome outcome = veltrac::putInPlace(m_path, target, goesOn);
    if (outcome == JobOutcome::Done) {
        if (m_isMarked)
            ::fremovexattr(m_owner, kMark);
        // Whoever opens it next may lock it for himself, although it is closed later.
        ::flock(m_owner, LOCK_UN);
        keep();
    }
    return outcome;
}

void ScratchFile::takePlaceOf(ScratchFile& older)
{
    fs::rename(m_path, older.m_path);
    if (older.m_isMarked)
        setMark(m_owner, older.m_path);
    keep();
    std::swap(m_owner, older.m_owner);
}

}  // namespace veltrac
