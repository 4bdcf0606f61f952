// What tells that a file has changed since it was read.
#pragma once

#include <cstdint>
#include <filesystem>

namespace veltrac {

struct FileState
{
    std::uintmax_t bytes = 0;
    std::filesystem::file_time_type written;

    bool operator==(const FileState&) const = default;
};

// Throws std::system_error where the file is gone.
inline FileState stateOf(const std::filesystem::path& file)
{
    return {std::filesystem::file_size(file), std::filesystem::last_write_time(file)};
}

// False where the file is gone.
inline bool isUnchanged(const std::filesystem::path& file, const FileState& before)
{
    std::error_code gone;
    const FileState now{std::filesystem::file_size(file, gone), std::filesystem::last_write_time(file, gone)};
    return !gone && now == before;
}

}  // namespace veltrac
