// Tables of other columns that stand between the rows of a log, as tools write them that tell several things
// in turn: which lines are theirs.
#pragma once

#include <cstdint>
#include <set>
#include <span>
#include <string_view>
#include <vector>

#include "converters/STLSample.h"

namespace veltrac {

class STLTables
{
public:
    // Borrows the format.
    explicit STLTables(const STLFormat& format);

    // Whether the cells of a line, which gives none of the log's own names, can be the names of other
    // columns: words, each another one, behind a time at most. For any thread.
    bool areNames(std::span<const std::string_view> cells) const;

    // The lines in their order. One without data:
    void passBreak() { m_behindBreak = true; }
    // The log's own names.
    void passOwnNames() { m_names = m_others = 0; }
    // What can be other names, with their count; whether they stand apart, so that they are no row.
    bool passNames(std::size_t count);
    // A row, with the count of its cells; whether it is another table's.
    bool isOthers(std::size_t count)
    {
        // Most logs are one table.
        m_behindBreak = false;
        return m_names + m_others != 0 && isBelowOthers(count);
    }

private:
    bool isBelowOthers(std::size_t count);

    const STLFormat& m_format;
    std::vector<std::size_t> m_numbers;  // columns of numbers
    std::size_t m_ownNames;              // words above the log's own columns
    bool m_behindBreak = false;
    bool m_namesApart = false;
    std::size_t m_names = 0;   // of the line before
    std::size_t m_others = 0;  // cells of the other table's first row; 0 outside of any
};

// The numbers of the lines, among the first ones, that are names or other tables' rows; none where there is
// one table only.
std::set<std::uint64_t> otherTablesLines(const STLSample& sample, const STLFormat& format);

}  // namespace veltrac
