#include "filter/SaveResults.h"

#include "core/ColumnBackup.h"
#include "core/Rebuild.h"
#include "core/ScratchFile.h"
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

JobOutcome saveToNewFile(TSFILE& work, const std::filesystem::path& target, const Progress& progress)
{
    ScratchFile scratch(std::filesystem::absolute(target).parent_path(), "tmp", ".ts");
    {
        const auto made = createTsFile(scratch.path().string(), work.samples(), 2);
        made->copyHeader(work);
        for (const std::uint32_t col : {1U, 2U}) {
            copyColumnInfo(work, col, *made, col);
            if (copyValues(work, col, *made, col, work.samples(), part(progress, 50 * (col - 1), 50 * col)) ==
                JobOutcome::Cancelled)
                return JobOutcome::Cancelled;
        }
        made->flush(true);
    }
    scratch.putInPlace(std::filesystem::absolute(target));
    return JobOutcome::Done;
}

JobOutcome saveToColumns(TSFILE& work, TSFILE& target, const ResultColumns& columns, std::uint32_t count,
                         const Progress& progress, std::filesystem::path& backupPath)
{
    const std::uint32_t to[2] = {columns.input, columns.output};
    ColumnBackup backup(target);
    for (std::uint32_t i = 0; i < 2; ++i) {
        if (to[i] == 0)
            continue;
        backup.saveInfo(to[i]);
        if (backup.save(to[i], 1, count, part(progress, 25 * i, 25 * i + 25)) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
    }
    const auto putBack = [&] {
        backupPath = backup.path();
        backup.restore();
        backupPath.clear();
    };
    try {
        for (std::uint32_t i = 0; i < 2; ++i) {
            if (to[i] == 0)
                continue;
            copyColumnInfo(work, i + 1, target, to[i]);
            if (copyValues(work, i + 1, target, to[i], count, part(progress, 50 + 25 * i, 75 + 25 * i)) ==
                JobOutcome::Cancelled) {
                putBack();
                return JobOutcome::Cancelled;
            }
        }
        target.flush(true);
    } catch (...) {
        putBack();
        throw;
    }
    return JobOutcome::Done;
}

JobOutcome saveToAddedColumn(TSFILE& work, const std::filesystem::path& target, std::uint32_t count,
                             const Progress& progress, std::filesystem::path& backup)
{
    std::uint32_t samples = 0;
    std::uint32_t columns = 0;
    {
        const auto file = openTsFile(target.string(), true);
        samples = file->samples();
        columns = file->columns();
    }
    if (rebuildTsFile(target, samples, columns + 1, part(progress, 0, 50)) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    const auto takeAway = [&] { rebuildTsFile(target, samples, columns, {}); };
    try {
        const auto file = openTsFile(target.string(), false);
        if (saveToColumns(work, *file, {0, columns + 1}, count, part(progress, 50, 100), backup) ==
            JobOutcome::Done)
            return JobOutcome::Done;
    } catch (...) {
        takeAway();
        throw;
    }
    takeAway();
    return JobOutcome::Cancelled;
}
