// The old values of what a job overwrites in a ts-file, kept until the job is done.
//
// They stand in a synced scratch file in the scratch directory before the first new value is written. When
// the job fails or is cancelled, restore() puts them back; when even that fails, path() says where they lie.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <span>
#include <vector>

#include "core/Progress.h"
#include "core/ScratchFile.h"
#include "core/TSFILE.h"

namespace veltrac {

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

    // Puts everything back and flushes the file. Values that are still the old ones are not written, so a
    // disk that took no more is not asked again. Throws the TS exceptions or std::system_error; then the
    // scratch file stays for good.
    void restore() { restore(m_file); }
    // The same through another object, where the borrowed one is stuck with a block that cannot be written.
    void restore(TSFILE& file);

    // Puts the kept values among out[0 … size), the samples of a column from sample `first` on, into their
    // places there; the other places stay. The borrowed file is not needed. Throws std::system_error.
    void recall(std::uint32_t col, std::uint32_t first, std::span<float> out) const;

    // Where the old values lie.
    const std::filesystem::path& path() const noexcept { return m_path; }

private:
    struct Range
    {
        std::uint32_t col;
        std::uint32_t first;
        std::uint32_t count;
        std::uint64_t offset;  // in the scratch file
    };
    struct Info
    {
        std::uint32_t col;
        std::string name;
        std::string description;
        int stamp[7];
    };

    static void restoreRange(TSFILE& file, const Range& range, std::istream& in);

    static void restoreInfo(TSFILE& file, const Info& info);

    TSFILE& m_file;
    ScratchFile m_scratch;
    std::filesystem::path m_path;
    std::uint64_t m_bytes = 0;
    std::vector<Range> m_ranges;
    std::vector<Info> m_infos;
};

}  // namespace veltrac
