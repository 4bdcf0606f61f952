#include "filter/SaveResults.h"

#include <string>
#include <vector>

#include "core/ColumnCopy.h"
#include "core/ColumnNames.h"
#include "core/CopyFile.h"
#include "core/Rebuild.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"

namespace veltrac {

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

namespace {

// A column that is added bears a name of its own: "A_f", "A_f~2", …
void nameApart(TSFILE& file, std::uint32_t column)
{
    const std::string wanted = file.columnName(column);
    std::vector<std::string> taken;
    for (std::uint32_t c = 1; c < column; ++c)
        taken.emplace_back(file.columnName(c));
    file.columnName(column, columnNameApart(wanted, taken).c_str());
}

}  // namespace

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
        nameApart(made, column);
        return copyColumnValues(work, 2, made, column, count, partOf(progress, 50, 100));
    });
}

}  // namespace veltrac
