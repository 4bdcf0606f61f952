#include "converters/STLTables.h"

#include <algorithm>

#include "converters/STLTitles.h"
#include "core/Characters.h"

namespace veltrac {

STLTables::STLTables(const STLFormat& format)
    : m_format(format),
      m_ownNames(static_cast<std::size_t>(
          std::count_if(format.columns.begin(), format.columns.end(),
                        [](const STLColumn& column) { return !column.heading.empty(); })))
{
    for (std::size_t c = 0; c < format.columns.size(); ++c)
        if (format.columns[c].kind == STLKind::Number)
            m_numbers.push_back(c);
}

bool STLTables::areNames(std::span<const std::string_view> cells) const
{
    // Most rows have a number where a number should be.
    const auto beginsNumber = [&](std::size_t c) {
        return c < cells.size() && (cells[c].empty() || isDigit(cells[c].front()) || cells[c].front() == '-');
    };
    if (m_ownNames == 0 || cells.size() < 2 || std::any_of(m_numbers.begin(), m_numbers.end(), beginsNumber))
        return false;
    std::set<std::string_view> words;
    for (std::size_t c = 0; c < cells.size(); ++c) {
        const STLKind kind = readToken(cells[c], m_format.cells).kind;
        const bool isTime = words.empty() && kind != STLKind::Number && kind != STLKind::Missing;
        if (kind != STLKind::Text && !isTime)
            return false;
        // What the own names have twice, others may have too.
        const bool isOwn = c < m_format.columns.size() && cells[c] == m_format.columns[c].heading;
        if (kind == STLKind::Text && !words.insert(cells[c]).second && !isOwn)
            return false;
    }
    return words.size() > 1;
}

bool STLTables::passNames(std::size_t count)
{
    m_names = count;
    m_namesApart = m_behindBreak;
    m_behindBreak = false;
    return m_namesApart;
}

bool STLTables::isBelowOthers(std::size_t count)
{
    const std::size_t own = m_format.columns.size();
    if (m_names != 0) {
        // Names that stand as the own ones do tell a table of as many columns.
        const bool alike = m_names == m_ownNames && (m_namesApart || m_ownNames != own);
        const bool near = count + 1 >= m_names && count <= m_names + 1;
        m_others = (count == own ? alike : near) ? count : 0;
    } else if (count == own && m_others != own) {
        m_others = 0;
    }
    m_names = 0;
    return m_others != 0;
}

std::set<std::uint64_t> otherTablesLines(const STLSample& sample, const STLFormat& format)
{
    STLTables tables(format);
    const STLTitles titles(format);
    std::set<std::uint64_t> lines;
    bool any = false;
    std::vector<std::string_view> cells;
    for (const STLLine& line : sample.head) {
        if (line.number < format.firstDataLine)
            continue;
        if (isEmptyLine(line.text) || isRemark(line.text, format)) {
            tables.passBreak();
            continue;
        }
        const std::size_t count = splitCells(line.text, format.cells, cells);
        const bool isNames = tables.areNames(cells);
        cells.resize(std::max(count, format.columns.size()));
        const bool isTitle = titles.has(line.text, cells);
        bool isOther = false;
        if (isTitle)
            tables.passOwnNames();
        else
            isOther = isNames ? tables.passNames(count) : tables.isOthers(count);
        any = any || (isOther && !isNames);
        if (isTitle || isOther)
            lines.insert(line.number);
    }
    return any ? lines : std::set<std::uint64_t>();
}

}  // namespace veltrac
