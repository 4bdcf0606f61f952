#include "core/ScratchFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "core/DiskSync.h"
#include "core/LateRelease.h"
#include "core/Utf8.h"

namespace veltrac {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

// The stem loses its end, at a whole character, where the name would be too long for a directory.
fs::path numbered(const fs::path& directory, const std::string& stem, const std::string& extension,
                  int number)
{
    constexpr std::size_t kLongestName = 255;
    const std::string ending = number == 0 ? extension : '_' + std::to_string(number) + extension;
    return directory / (cutTo(stem, kLongestName - std::min(kLongestName, ending.size())) + ending);
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
    // It is too late for a cancel.
    syncDirectory(target.parent_path(), goesOn ? [&goesOn] { return goesOn(), true; } : GoesOn());
    return JobOutcome::Done;
}

ScratchFile::ScratchFile(const fs::path& directory, const std::string& stem, const std::string& extension)
{
    for (int number = 0; m_path.empty(); ++number) {
        const fs::path candidate = numbered(directory, stem, extension, number);
        const int descriptor = ::open(candidate.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0666);
        if (descriptor >= 0) {
            ::close(descriptor);
            m_path = candidate;
        } else if (errno != EEXIST) {
            fail(candidate.string());
        }
    }
}

ScratchFile::~ScratchFile()
{
    if (m_path.empty())
        return;
    const LateRelease contents(m_path);
    std::error_code ignored;
    fs::remove(m_path, ignored);
}

JobOutcome ScratchFile::putInPlace(const fs::path& target, const GoesOn& goesOn)
{
    const JobOutcome outcome = veltrac::putInPlace(m_path, target, goesOn);
    if (outcome == JobOutcome::Done)
        m_path.clear();
    return outcome;
}

}  // namespace veltrac
