// Files that are being made: under a name of their own, put in their place only when they are whole.
#pragma once

#include <filesystem>
#include <string>

#include "core/DiskSync.h"

namespace veltrac {

// The directory of scratch files: TMPDIR, else the system's own.
std::filesystem::path scratchDirectory();

// `stem`+`extension` in a directory, or `stem`_1, `stem`_2, … where that name is taken.
std::filesystem::path freeName(const std::filesystem::path& directory, const std::string& stem,
                               const std::string& extension);

// Syncs the file, renames it over `target` in one step, and syncs the directory: at every moment a whole
// file bears the name. Throws std::system_error, the finished file and the old target untouched.
void putInPlace(const std::filesystem::path& finished, const std::filesystem::path& target);
// The same, `goesOn` being asked while the disk is waited for. Cancelled before the name is taken: both files
// are untouched.
JobOutcome putInPlace(const std::filesystem::path& finished, const std::filesystem::path& target,
                      const GoesOn& goesOn);

// A scratch file that is gone when the object is, unless it was put in its place.
//
// The constructor makes an empty file under the first free name, so no other window or process can take
// it; it never uses or removes a file that was there. Throws std::system_error.
class ScratchFile
{
public:
    ScratchFile(const std::filesystem::path& directory, const std::string& stem,
                const std::string& extension);
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::filesystem::path& path() const noexcept { return m_path; }

    // As the functions above; afterwards the file is no scratch file any more, unless that was cancelled.
    void putInPlace(const std::filesystem::path& target) { putInPlace(target, {}); }
    JobOutcome putInPlace(const std::filesystem::path& target, const GoesOn& goesOn);
    // Leaves the file where it is when the object goes.
    void keep() noexcept { m_path.clear(); }

private:
    std::filesystem::path m_path;
};

}  // namespace veltrac
