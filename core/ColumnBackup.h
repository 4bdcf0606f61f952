// The old values of what a job overwrites in a ts-file, kept until the job is done.
//
// They stand in a synced scratch file in the scratch directory before the first new value is written. When
// the job fails or is cancelled, restore() puts them back; when even that fails, path() says where they lie,
// and readOldValues() and restoreOldValues() bring them back later. docs/ts-file.md tells the file's format.
#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/Progress.h"
#include "core/ScratchFile.h"

class TSFILE;

namespace veltrac {

// What a file of old values holds.
struct KeptValues
{
    // Samples `first` to `first` + `count` - 1 of a column.
    struct Range
    {
        std::uint32_t column = 0;
        std::uint32_t first = 0;
        std::uint32_t count = 0;
        std::uint64_t offset = 0;  // of its values in the scratch file
    };
    // A column's name, description and stamp.
    struct Info
    {
        std::uint32_t column = 0;
        std::string name;
        std::string description;
        int stamp[7] = {};
    };

    std::filesystem::path file;  // the ts-file that the values belong to, absolute
    std::string when;            // when they were kept, ISO 8601 with its zone
    std::vector<Range> ranges{};
    std::vector<Info> infos{};
};

class ColumnBackup
{
public:
    // Nothing is kept before save(). Borrows the file. Throws std::system_error where no scratch file can
    // be made.
    explicit ColumnBackup(TSFILE& file);

    // Keeps `count` samples of a column from sample `first` on, in units of their bits. Several ranges can
    // be kept; where they overlap, the first kept values come back. Throws the TS exceptions and
    // std::system_error.
    JobOutcome save(std::uint32_t col, std::uint32_t first, std::uint32_t count, const Progress& progress);
    // Keeps a column's name, description and stamp.
    void saveInfo(std::uint32_t col);

    // The job is done: nobody needs the values any more who does not undo it in this process. What a kill
    // then leaves of them is removed by a later job, which without this mark nobody does.
    void markDone() noexcept;

    // Puts everything back and flushes the file. Values that are still the old ones are not written, so a
    // disk that took no more is not asked again. Throws the TS exceptions or std::system_error; then the
    // scratch file stays for good.
    void restore() { restore(m_file); }
    // The same through another object, where the borrowed one is stuck with a block that cannot be written.
    // Progress is told, a cancel is not heard.
    void restore(TSFILE& file, const Progress& progress = {});

    // Puts the kept values among out[0 … size), the samples of a column from sample `first` on, into their
    // places there; the other places stay. The borrowed file is not needed. Throws std::system_error.
    void recall(std::uint32_t col, std::uint32_t first, std::span<float> out) const;

    // Where the old values lie.
    const std::filesystem::path& path() const noexcept { return m_path; }

private:
    void append(std::string_view head, std::ostream& out);
    void unmark();

    TSFILE& m_file;
    ScratchFile m_scratch;
    std::filesystem::path m_path;
    std::uint64_t m_bytes = 0;
    KeptValues m_kept;
    bool m_isDone = false;
};

// What a file of old values holds. Throws std::system_error where it cannot be read, std::runtime_error
// where it is none or is cut short.
KeptValues readOldValues(const std::filesystem::path& scratch);

// Writes the values, names, descriptions and stamps of a file of old values into `file` and flushes it. The
// scratch file stays. Nothing stops it halfway: progress is told, a cancel is not heard. Throws as
// readOldValues(), the TS exceptions, and std::out_of_range, nothing written, where the file has not so many
// samples or columns.
void restoreOldValues(const std::filesystem::path& scratch, TSFILE& file, const Progress& progress);

}  // namespace veltrac
