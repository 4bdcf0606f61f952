#include "filter/SaveResults.h"

#include "core/ColumnCopy.h"
#include "core/CopyFile.h"
#include "core/Rebuild.h"
#include "core/TsNames.h"

JobOutcome saveToNewFile(const TSFILE& work, const std::filesystem::path& target, const Progress& progress)
{
    return copyWholeFile(work.descriptor(), std::filesystem::absolute(target), progress);
}

JobOutcome saveToColumns(TSFILE& work, const std::filesystem::path& target, const ResultColumns& columns,
                         std::uint32_t count, const Progress& progress, std::filesystem::path& backupPath)
{
    ColumnTarget file{openTsFile(target.string(), false), target.string()};
    const std::uint32_t to[] = {columns.input, columns.output};
    return overwriteColumns(work, file, to, count, progress, backupPath);
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
    return rebuildTsFile(target, samples, column, partOf(progress, 0, 50), [&](TSFILE& made) {
        copyColumnInfo(work, 2, made, column);
        return copyColumnValues(work, 2, made, column, count, partOf(progress, 50, 100));
    });
}
