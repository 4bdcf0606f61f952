// Which file of all there are stands under a name, whatever becomes of the name, and how it was left by the
// last who wrote it.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <optional>

namespace veltrac {

struct FileIdentity
{
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    bool operator==(const FileIdentity&) const = default;
};

inline FileIdentity identityOf(const struct stat& status) noexcept
{
    return {status.st_dev, status.st_ino};
}

// Of the file behind a descriptor, and of the one that bears a name, or nothing.
inline FileIdentity identityOf(int descriptor) noexcept
{
    struct stat status = {};
    ::fstat(descriptor, &status);
    return identityOf(status);
}

inline std::optional<FileIdentity> identityOf(const std::filesystem::path& path) noexcept
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return identityOf(status);
}

// Another one where a file was replaced, written or cut.
struct FileStamp
{
    FileIdentity file;
    std::int64_t bytes = 0;
    std::int64_t nanoseconds = 0;  // of the last write, since 1970
    bool operator==(const FileStamp&) const = default;
};

// Nothing where no file bears the name.
inline std::optional<FileStamp> stampOf(const std::filesystem::path& path) noexcept
{
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return FileStamp{identityOf(status), status.st_size,
                     status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec};
}

}  // namespace veltrac
