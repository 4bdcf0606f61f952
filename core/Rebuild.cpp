#include "core/Rebuild.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "core/BlockFile.h"
#include "core/FileLock.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"

namespace veltrac {

namespace {

constexpr std::uint32_t kRebuiltBytes = 1U << 20;

// Counts that the file does not hold would be copied as far as they go, through a buffer of their size.
void requireHeld(TSFILE& from, const BlockFile& image, std::uint32_t samples)
{
    const std::uint64_t needed = tsFileBytes(samples, from.columns());
    if (needed > image.size())
        throw TS::IO_ERROR(static_cast<std::uint32_t>(std::min<std::uint64_t>(image.size(), UINT32_MAX)),
                           kShortRead, 1);
}

// Makes a file of zeros in the byte order of another: a program on the machine that wrote the old one goes
// on reading it.
std::unique_ptr<TSFILE> createInOrderOf(const BlockFile& from, const std::string& name, std::uint32_t samples,
                                        std::uint32_t columns)
{
    std::unique_ptr<TSFILE> made = createTsFile(name, samples, columns);
    Block header;
    from.read(0, header);
    ByteOrder order = ByteOrder::Unknown;
    decodeHeader(header, order);
    if (order != ByteOrder::Swapped)
        return made;

    // Zeros and texts read the same either way: the header's numbers are all that changes.
    made->flush(true);
    made.reset();
    {
        BlockFile file(BlockFile::open(name.c_str(), false), false);
        file.read(0, header);
        ByteOrder native = ByteOrder::Unknown;
        encodeHeader(decodeHeader(header, native), 0, ByteOrder::Swapped, header);
        file.write(0, header);
    }
    return openTsFile(name, false);
}

// Copies the values that both files have, a run of rows at a time.
JobOutcome copyValues(TSFILE& from, TSFILE& to, const Progress& progress)
{
    const std::uint32_t oldColumns = from.columns();
    const std::uint32_t newColumns = to.columns();
    const std::uint32_t samples = std::min(from.samples(), to.samples());
    const std::uint32_t columns = std::min(oldColumns, newColumns);
    if (columns == 0)
        return JobOutcome::Done;

    const std::uint32_t widest = std::max(oldColumns, newColumns);
    const std::uint32_t most = std::max<std::uint32_t>(1, kRebuiltBytes / sizeof(float) / widest);
    const std::uint32_t run = std::min(most, samples);
    std::vector<float> in(std::size_t{run} * oldColumns);
    std::vector<float> out(std::size_t{run} * newColumns, 0.0F);
    for (std::uint32_t done = 0; done < samples;) {
        const std::uint32_t count = std::min(run, samples - done);
        from.readRows(done + 1, count, in.data());
        for (std::size_t row = 0; row < count; ++row)
            std::copy_n(&in[row * oldColumns], columns, &out[row * newColumns]);
        to.writeRows(done + 1, count, out.data());
        done += count;
        if (!goesOn(progress, done, samples))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

}  // namespace

void copyColumnInfo(TSFILE& from, std::uint32_t fromCol, TSFILE& to, std::uint32_t toCol)
{
    // The texts stand in one buffer for all files.
    to.columnName(toCol, std::string(from.columnName(fromCol)).c_str());
    to.columnDescription(toCol, std::string(from.columnDescription(fromCol)).c_str());
    if (from.columnTime(fromCol) > 0) {
        int stamp[7];
        from.columnStamp(fromCol, stamp);
        to.setColumnStamp(toCol, stamp);
    } else {
        to.stampColumn(toCol);
    }
}

JobOutcome rebuildTsFile(const std::filesystem::path& file, std::uint32_t newSamples,
                         std::uint32_t newColumns, const Progress& progress,
                         const std::function<JobOutcome(TSFILE& made)>& fill)
{
    return rebuildTsFileAs(file, file, newSamples, newColumns, progress, fill);
}

JobOutcome rebuildTsFileAs(const std::filesystem::path& file, const std::filesystem::path& target,
                           std::uint32_t newSamples, std::uint32_t newColumns, const Progress& progress,
                           const std::function<JobOutcome(TSFILE& made)>& fill)
{
    const std::unique_ptr<TSFILE> from = openTsFile(file.string(), true);
    // Of two programs that rebuild one file the second works on the whole file of the first, or is refused.
    const FileLock lock(from->descriptor());
    if (from->ringStart() != 0)
        throw TS::READONLY_VIOLATION(file.string());
    const BlockFile image(BlockFile::duplicate(from->descriptor()), true);
    requireHeld(*from, image, std::min(from->samples(), newSamples));
    if (tsFileBytes(newSamples, newColumns) >= kFileLimit)
        throw TS::IO_ERROR(0, static_cast<std::uint32_t>(kFileLimit), 1);

    PendingFile pending(target, "tmp", ".ts");
    {
        const std::unique_ptr<TSFILE> made =
            createInOrderOf(image, pending.path().string(), newSamples, newColumns);
        TSFILE& to = *made;
        const std::uint32_t kept = std::min(from->columns(), newColumns);
        for (std::uint32_t col = 1; col <= kept; ++col)
            copyColumnInfo(*from, col, to, col);
        for (std::uint32_t col = kept + 1; col <= newColumns; ++col)
            to.stampColumn(col);
        to.copyHeader(*from);
        if (copyValues(*from, to, progress) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
        if (fill && fill(to) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
        to.flush(true);
    }
    lock.requireNamed();
    return pending.commit(progress);
}

}  // namespace veltrac
