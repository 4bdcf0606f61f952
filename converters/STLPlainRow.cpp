#include "converters/STLPlainRow.h"

#include <algorithm>
#include <cmath>

#include "converters/PlainNumber.h"

namespace veltrac {

namespace {

// Whether a word between blanks can be nothing but a cell of its own: no name, no stamp of several words.
bool beginsNumber(char c)
{
    return isDigit(c) || c == '-' || c == '+' || c == '.';
}

}  // namespace

STLPlainRow::STLPlainRow(const STLFormat& format)
    : m_separator(format.cells.separator),
      m_decimal(format.cells.decimal),
      m_isUsable(format.cells.edges.empty() && !format.cells.rowNames && !format.cells.bars &&
                 m_separator != m_decimal && m_separator != '|' && !beginsNumber(m_separator))
{
    const auto isNumbered = [](const STLColumn& column) { return column.take && column.numberTexts; };
    const bool numbersTexts = std::any_of(format.columns.begin(), format.columns.end(), isNumbered);
    m_taken.reserve(format.columns.size());
    for (const STLColumn& column : format.columns)
        m_taken.push_back(column.take && !numbersTexts ? 1 : 0);
}

bool STLPlainRow::read(std::string_view line, std::span<std::string_view> cells, std::span<float> values,
                       std::vector<std::size_t>& unread) const
{
    if (!m_isUsable)
        return false;
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    unread.clear();
    return m_separator == ' ' ? readBetweenBlanks(line, cells, values, unread)
                              : readSeparated(line, cells, values, unread);
}

bool STLPlainRow::readSeparated(std::string_view line, std::span<std::string_view> cells,
                                std::span<float> values, std::vector<std::size_t>& unread) const
{
    const char* at = line.data();
    const char* const end = at + line.size();
    Taken into{values, unread};
    for (std::size_t c = 0; c < m_taken.size(); ++c) {
        if (c != 0 && at++ == end)
            return false;
        while (at != end && isBlank(*at) && *at != m_separator)
            ++at;
        if (at != end && *at == '"')
            return false;
        cells[c] = withoutTail(takeCell(at, end, c, into));
    }
    // A separator at the end of the line is no cell too many.
    return at == end || at + 1 == end;
}

bool STLPlainRow::readBetweenBlanks(std::string_view line, std::span<std::string_view> cells,
                                    std::span<float> values, std::vector<std::size_t>& unread) const
{
    const char* at = line.data();
    const char* const end = at + line.size();
    Taken into{values, unread};
    for (std::size_t c = 0;; ++c) {
        while (at != end && isBlank(*at))
            ++at;
        if (at == end)
            return c == m_taken.size();
        if (c == m_taken.size() || !beginsNumber(*at))
            return false;
        cells[c] = takeCell(at, end, c, into);
        // Signs of a sentence behind a number are none of it.
        if (at[-1] == ',' || at[-1] == ':')
            return false;
    }
}

// The cell of a column that begins at `at`, which is left behind it.
std::string_view STLPlainRow::takeCell(const char*& at, const char* end, std::size_t column,
                                       Taken& into) const
{
    const char* const from = at;
    const bool isNumber = m_taken[column] != 0 && takeNumber(at, end, into.values[into.count]);
    if (!isNumber)
        passCell(at, end);
    if (m_taken[column] != 0) {
        if (!isNumber)
            into.unread.push_back(into.count);
        ++into.count;
    }
    return {from, static_cast<std::size_t>(at - from)};
}

// Leaves `at` anywhere in the cell where it holds no plain number.
bool STLPlainRow::takeNumber(const char*& at, const char* end, float& value) const
{
    const bool isNegative = at != end && *at == '-';
    if (isNegative || (at != end && *at == '+'))
        ++at;
    const auto number = takePlainNumber(at, end, m_decimal);
    // A comma behind a number is no decimal one.
    if (!number || !(at == end || endsCell(*at)) || at[-1] == ',')
        return false;
    value = static_cast<float>(isNegative ? -number->value() : number->value());
    // Of larger ones it is told how far they are rounded.
    return std::fabs(value) < static_cast<float>(kMostExactWhole);
}

void STLPlainRow::passCell(const char*& at, const char* end) const
{
    while (at != end && !endsCell(*at))
        ++at;
}

}  // namespace veltrac
