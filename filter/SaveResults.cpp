#include "filter/SaveResults.h"

#include "core/ColumnBackup.h"
#include "core/CopyFile.h"
#include "core/Rebuild.h"
#include "core/TsNames.h"
#include "filter/FilterRun.h"

namespace {

// A part of a longer job: `from` to `to` of its progress, in hundredths.
Progress part(const Progress& whole, std::uint64_t from, std::uint64_t to)
{
    return [&whole, from, to](std::uint64_t done, std::uint64_t total) {
        return goesOn(whole, from * total + (to - from) * done, 100 * total);
    };
}

JobOutcome copyValues(TSFILE& from, std::uint32_t fromCol, TSFILE& to, std::uint32_t toCol,
                      std::uint32_t count, const Progress& progress)
{
    return inRuns(count, progress, [&](std::uint32_t first, std::span<float> run) {
        from.readColumn(fromCol, first, run);
        to.writeColumn(toCol, first, run);
    });
}

}  // namespace

JobOutcome saveToNewFile(const TSFILE& work, const std::filesystem::path& target, const Progress& progress)
{
    return copyWholeFile(work.descriptor(), std::filesystem::absolute(target), progress);
}

JobOutcome saveToColumns(TSFILE& work, const std::filesystem::path& target, const ResultColumns& columns,
                         std::uint32_t count, const Progress& progress, std::filesystem::path& backupPath)
{
    const std::uint32_t to[2] = {columns.input, columns.output};
    auto file = openTsFile(target.string(), false);
    ColumnBackup backup(*file);
    for (std::uint32_t i = 0; i < 2; ++i) {
        if (to[i] == 0)
            continue;
        backup.saveInfo(to[i]);
        if (backup.save(to[i], 1, count, part(progress, 25 * i, 25 * i + 25)) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
    }
    try {
        for (std::uint32_t i = 0; i < 2; ++i) {
            if (to[i] == 0)
                continue;
            copyColumnInfo(work, i + 1, *file, to[i]);
            if (copyValues(work, i + 1, *file, to[i], count, part(progress, 50 + 25 * i, 75 + 25 * i)) ==
                JobOutcome::Cancelled) {
                backup.restore();
                return JobOutcome::Cancelled;
            }
        }
        file->flush(true);
    } catch (...) {
        // Opened anew: the one before may be stuck with a block that cannot be written.
        backupPath = backup.path();
        file.reset();
        backup.restore(*openTsFile(target.string(), false));
        backupPath.clear();
        throw;
    }
    return JobOutcome::Done;
}

JobOutcome saveToAddedColumn(TSFILE& work, const std::filesystem::path& target, std::uint32_t count,
                             const Progress& progress)
{
    std::uint32_t samples = 0;
    std::uint32_t column = 0;
    {
        const auto file = openTsFile(target.string(), true);
        samples = file->samples();
        column = file->columns() + 1;
    }
    return rebuildTsFile(target, samples, column, part(progress, 0, 50), [&](TSFILE& made) {
        copyColumnInfo(work, 2, made, column);
        return copyValues(work, 2, made, column, count, part(progress, 50, 100));
    });
}
