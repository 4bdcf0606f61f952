#include "converters/STLLayout.h"

#include <algorithm>
#include <functional>

#include "core/Characters.h"

namespace veltrac {

namespace {

constexpr std::size_t kFewestRows = 2;  // of a table
constexpr std::size_t kMostTables = 8;
constexpr int kUntold = -1;

// A number for each column of a row, or kUntold, which is like any; empty where the row tells none.
using Layout = std::vector<int>;
using Measure = std::function<Layout(std::string_view line, const std::vector<std::string_view>& cells)>;

// How many digits stand behind the decimal sign; "0" and "NaN" tell nothing of it.
int decimalsOf(std::string_view cell, char sign)
{
    const std::size_t at = cell.find(sign);
    if (at == std::string_view::npos || !std::all_of(cell.begin() + static_cast<std::ptrdiff_t>(at) + 1,
                                                     cell.end(), [](char c) { return isDigit(c); }))
        return kUntold;
    return static_cast<int>(cell.size() - at - 1);
}

// How wide each column is with the blanks before it; of rows without blanks at their begin nothing is told,
// since those grow with their numbers.
Layout widthsOf(std::string_view line, const std::vector<std::string_view>& cells)
{
    if (!line.starts_with(' ') || line.find('\t') != std::string_view::npos)
        return {};
    Layout widths;
    const char* before = line.data();
    for (const std::string_view cell : cells) {
        const char* const end = cell.data() + cell.size();
        widths.push_back(static_cast<int>(end - before));
        before = end;
    }
    return widths;
}

std::size_t differences(const Layout& a, const Layout& b)
{
    std::size_t count = 0;
    for (std::size_t c = 0; c < a.size(); ++c)
        count += a[c] != b[c] && a[c] != kUntold && b[c] != kUntold ? 1 : 0;
    return count;
}

// Puts in what was untold so far.
void complete(Layout& layout, const Layout& row)
{
    for (std::size_t c = 0; c < layout.size(); ++c)
        layout[c] = layout[c] == kUntold ? row[c] : layout[c];
}

std::uint64_t changeOf(const STLSample& sample, const STLFormat& format, const Measure& measure)
{
    struct Table
    {
        Layout layout;
        std::size_t rows;
        std::uint64_t line;
    };
    std::vector<Table> tables;
    std::vector<std::string_view> cells;
    for (const STLLine& line : sample.head) {
        if (line.number < format.firstDataLine || isEmptyLine(line.text) || isRemark(line.text, format) ||
            splitCells(line.text, format.cells, cells) != format.columns.size())
            continue;
        Layout layout = measure(line.text, cells);
        if (layout.empty())
            return 0;
        if (!tables.empty() && differences(tables.back().layout, layout) == 0) {
            complete(tables.back().layout, layout);
            ++tables.back().rows;
            continue;
        }
        // What changes from row to row, or in one column only, is no other table.
        const bool isOther =
            tables.empty() || (tables.back().rows >= kFewestRows && tables.size() < kMostTables &&
                               differences(tables.back().layout, layout) > 1);
        if (!isOther)
            return 0;
        tables.push_back({std::move(layout), 1, line.number});
    }
    return tables.size() > 1 && tables.back().rows >= kFewestRows ? tables[1].line : 0;
}

}  // namespace

std::uint64_t changeOfLayout(const STLSample& sample, const STLFormat& format)
{
    if (format.columns.size() < 2 || !format.cells.edges.empty() || format.cells.bars)
        return 0;
    if (const std::uint64_t line =
            changeOf(sample, format,
                     [&](std::string_view /*line*/, const std::vector<std::string_view>& row) {
                         Layout decimals;
                         for (const std::string_view cell : row)
                             decimals.push_back(decimalsOf(cell, format.cells.decimal));
                         return decimals;
                     });
        line != 0)
        return line;
    return format.cells.separator == ' ' ? changeOf(sample, format, widthsOf) : 0;
}

}  // namespace veltrac
