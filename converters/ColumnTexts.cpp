#include "converters/ColumnTexts.h"

#include <algorithm>
#include <cstdio>

#include "converters/STLFormat.h"
#include "core/TsHeader.h"

std::string cutTo(const std::string& text, std::size_t bytes)
{
    if (text.size() <= bytes)
        return text;
    std::size_t end = bytes;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end;
    return text.substr(0, end);
}

std::vector<std::string> uniqueColumnNames(const std::vector<std::string>& wanted)
{
    std::vector<std::string> names;
    for (const std::string& whole : wanted) {
        std::string name = cutTo(whole, kColumnNameLength);
        // "Time" and "Time32" tell the time of a ts-file: no other column is called so.
        const auto taken = [&](const std::string& text) {
            return text == "Time" || text == "Time32" ||
                   std::find(names.begin(), names.end(), text) != names.end();
        };
        for (int again = 2; taken(name); ++again) {
            const std::string tail = "~" + std::to_string(again);
            name = cutTo(whole, kColumnNameLength - tail.size()) + tail;
        }
        names.push_back(name);
    }
    return names;
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
