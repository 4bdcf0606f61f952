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

// Whether a path is one of the scratch files that this process is working on.
bool isScratchFile(const std::filesystem::path& path);

// Says by an advisory lock on an open descriptor that the scratch file behind it is needed. The system lets
// go of it when the process ends, however it ends.
void lockAsOwner(int descriptor) noexcept;

// Removes a scratch file of this user's that nobody has changed for an hour and nobody owns any more; false
// where it stays, also where the file system knows no locks.
bool removeIfStale(const std::filesystem::path& file) noexcept;

// A scratch file that is gone when the object is, unless it was put in its place.
//
// The constructor makes an empty file under the first free name, so no other window or process can take
// it. What a program that was killed has left under one of its names it removes, as removeIfStale() does; it
// never uses or removes another file that was there. A stem that does not begin with "veltrac-" or
// ".veltrac-" could be a name of the user's: such a file bears a mark, an extended attribute with its
// name, and without the mark none is removed. Throws std::system_error.
class ScratchFile
{
public:
    // Whether a file that would be removed holds nothing that anybody could want; null: no file does.
    using IsDone = bool (*)(const std::filesystem::path& file);

    ScratchFile(const std::filesystem::path& directory, const std::string& stem, const std::string& extension,
                IsDone isDone = nullptr);
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::filesystem::path& path() const noexcept { return m_path; }

    // As the functions above; afterwards the file is no scratch file any more, unless that was cancelled.
    void putInPlace(const std::filesystem::path& target) { putInPlace(target, {}); }
    JobOutcome putInPlace(const std::filesystem::path& target, const GoesOn& goesOn);
    // Comes under the name of another scratch file, whose contents go; it stays one.
    void takePlaceOf(ScratchFile& older);
    // Leaves the file where it is when the object goes.
    void keep() noexcept;

private:
    void make(const std::filesystem::path& file);
    bool removeLeft(const std::filesystem::path& file, IsDone isDone) const;

    std::filesystem::path m_path;
    bool m_isMarked = false;
    int m_owner = -1;  // a descriptor of the file whose lock tells others that somebody needs it
};

}  // namespace veltrac
