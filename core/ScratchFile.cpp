#include "core/ScratchFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <set>
#include <system_error>

#include "core/DiskSync.h"
#include "core/Utf8.h"

namespace veltrac {

namespace {

namespace fs = std::filesystem;

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
    syncToDisk(finished);
    // A link stays a link: what it points to is replaced.
    std::error_code notALink;
    const fs::path real = fs::is_symlink(target, notALink) ? fs::canonical(target, notALink) : target;
    fs::rename(finished, real.empty() ? target : real);
    syncDirectory(target.parent_path());
}

ScratchFile::ScratchFile(const fs::path& directory, const std::string& stem, const std::string& extension)
{
    for (int number = 0; m_path.empty(); ++number) {
        const fs::path candidate = numbered(directory, stem, extension, number);
        const int descriptor = ::open(candidate.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0666);
        if (descriptor >= 0) {
            ::close(descriptor);
            m_path = candidate;
            scratchFiles().add(m_path);
        } else if (errno != EEXIST) {
            fail(candidate.string());
        }
    }
}

ScratchFile::~ScratchFile()
{
    if (m_path.empty())
        return;
    std::error_code ignored;
    fs::remove(m_path, ignored);
    scratchFiles().remove(m_path);
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

void ScratchFile::putInPlace(const fs::path& target)
{
    veltrac::putInPlace(m_path, target);
    keep();
}

}  // namespace veltrac
