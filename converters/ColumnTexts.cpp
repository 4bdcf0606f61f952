#include "converters/ColumnTexts.h"

#include <algorithm>
#include <cstdio>

#include "converters/STLFormat.h"
#include "core/ColumnNames.h"
#include "core/TsHeader.h"
#include "core/Utf8.h"

namespace veltrac {

std::vector<std::string> uniqueColumnNames(const std::vector<std::string>& wanted)
{
    // These tell the time of a ts-file: no other column is called so.
    std::vector<std::string> taken = {"Time", "Time32"};
    for (const std::string& name : wanted)
        taken.push_back(columnNameApart(name, taken));
    return {taken.begin() + 2, taken.end()};
}

std::string nameWithUnit(const std::string& name, const std::string& unit)
{
    if (unit.empty())
        return cutTo(name, kColumnTextLength);
    const std::string bracketed = "[" + unit + "]";
    const std::string room =
        cutTo(name, kColumnTextLength - std::min(bracketed.size() + 1, kColumnTextLength));
    return cutTo(room.empty() ? bracketed : room + " " + bracketed, kColumnTextLength);
}

void requireFits(std::uint64_t samples, std::uint32_t columns)
{
    if (samples <= UINT32_MAX && tsFileBytes(static_cast<std::uint32_t>(samples), columns) < kFileLimit)
        return;
    char size[32];
    std::snprintf(size, sizeof size, "%.1f GB", static_cast<double>(samples) * columns * sizeof(float) / 1e9);
    throw STLError("The result would need " + std::string(size) +
                   "; a ts-file holds less than 2 GB. Take fewer columns, rows or every n-th row.");
}

}  // namespace veltrac
