// Changing files of the user's so that nothing is lost, whatever happens in between: whole files take their
// name in one step, values inside a file can be put back.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "core/ColumnBackup.h"
#include "core/Progress.h"
#include "core/ScratchFile.h"

class TSFILE;

namespace veltrac {

// A file that is being made to become `target`.
//
// It is written under a scratch name beside the file that the target's name leads to (also through links
// into another file system), so that taking its place is one rename. Until commit() an old target stands
// untouched; without it the destructor removes what was made.
class PendingFile
{
public:
    // Makes the empty scratch file: `stem`+`extension`, or the next free name. Throws std::system_error where
    // none can be made, or where the target may not be replaced: a directory, a device, a write-protected
    // file.
    explicit PendingFile(const std::filesystem::path& target, const std::string& stem = ".veltrac-new",
                         const std::string& extension = ".tmp");

    // What is to be written, and closed before commit().
    const std::filesystem::path& path() const noexcept { return m_scratch.path(); }
    // The file that commit() makes or replaces.
    const std::filesystem::path& realTarget() const noexcept { return m_real; }

    // Gives the finished file the rights of the old one, syncs it, renames it over the old one in one step
    // and syncs the directory: at every moment a whole file bears the name. Throws std::system_error, the old
    // target untouched.
    void commit();
    // The same, `progress` being told that all is done while the disk is waited for. Cancelled: the file has
    // not taken the target's place, and goes with this object.
    JobOutcome commit(const Progress& progress);

private:
    std::filesystem::path m_real;
    ScratchFile m_scratch;
};

// The file that a path leads to, links followed even where nothing is there yet.
std::filesystem::path realPath(const std::filesystem::path& path);
// Whether nobody may write the file by its rights; false where there is none.
bool isWriteProtected(const std::filesystem::path& file);

// Samples of a column, from sample `first` on.
struct ColumnRange
{
    std::uint32_t column = 1;
    std::uint32_t first = 1;
    std::uint32_t count = 0;
};

// A change of values in a file, in place.
struct InPlaceChange
{
    TSFILE& file;
    std::span<const ColumnRange> ranges;  // all that may change, with the columns' texts and stamps
    // Writes the new values; Cancelled where the user has given up. What it throws fails the change.
    std::function<JobOutcome(TSFILE& file, const Progress& progress)> write;
    // Lets go of `file`, which may be stuck with a block that cannot be written, and opens it again. `file`
    // is not used any more then.
    std::function<TSFILE&()> reopen;
};

// What has become of the old values.
struct OldValues
{
    std::unique_ptr<ColumnBackup> backup{};  // after Done: still kept, for an undo; dropping it removes them
    std::filesystem::path lost{};            // where they lie if they could not be put back
};

// Keeps the old values in a synced scratch file, writes the new ones, flushes and syncs the file. When
// writing fails or the user cancels, the old values are put back, and the failure is thrown on: the TS
// exceptions, std::system_error, or what `write` throws.
JobOutcome changeInPlace(const InPlaceChange& change, const Progress& progress, OldValues& old);

// Changes the header and the columns' texts of a file, and nothing else of it: `change` sets them in a copy,
// from which they come into the file with one write, synced. Throws what `change` throws, the TS exceptions
// and std::system_error; the file then is as it was.
void changeHeader(const std::filesystem::path& file, const std::function<void(TSFILE& copy)>& change);

}  // namespace veltrac
