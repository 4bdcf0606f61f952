// The name of a file that is being made where an old file may stand.
//
// An old file of that name is moved aside first. Until keep() the destructor removes what was begun and
// gives the old file its name back, so that a job that fails or is cancelled leaves everything as it was.
#pragma once

#include <filesystem>
#include <optional>

#include "core/ScratchFile.h"

namespace veltrac {

class FileInTheMaking
{
public:
    // Throws std::system_error where the old file cannot be moved.
    explicit FileInTheMaking(std::filesystem::path target);
    ~FileInTheMaking();
    FileInTheMaking(const FileInTheMaking&) = delete;
    FileInTheMaking& operator=(const FileInTheMaking&) = delete;

    const std::filesystem::path& path() const noexcept { return m_target; }
    // The new file is whole: syncs it, then lets the old one go. Throws std::system_error, nothing kept.
    void keep();

private:
    std::filesystem::path m_target;
    std::optional<ScratchFile> m_old;
    bool m_kept = false;
};

}  // namespace veltrac
