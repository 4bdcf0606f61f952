#include "converters/STLTitles.h"

#include <algorithm>
#include <cctype>

#include "core/Characters.h"

namespace veltrac {

STLTitles::STLTitles(const STLFormat& format) : m_format(format)
{
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        const STLColumn& column = format.columns[c];
        // A time may stand above times.
        const bool mayDiffer = column.kind != STLKind::Number && column.kind != STLKind::Text;
        if (!mayDiffer && !column.heading.empty() && !readNumber(column.heading, format.cells))
            m_headed.push_back(c);
    }
}

bool STLTitles::isTitle(std::string_view line) const
{
    return !m_format.blockTitle.empty() && !line.empty() && line.front() == m_format.blockTitle.front() &&
           areAlikeButDigits(line, m_format.blockTitle);
}

bool STLTitles::has(std::string_view line, std::span<const std::string_view> cells) const
{
    // A label may stand before them ("Data: y x").
    const bool labelled = cells.size() > m_format.columns.size() && cells.front().ends_with(':');
    // Most rows differ from the names in the first letter already.
    const auto isHeading = [&](std::size_t c) {
        const std::string& heading = m_format.columns[c].heading;
        const std::string_view cell = cells[labelled ? c + 1 : c];
        return !cell.empty() && cell.front() == heading.front() && cell == heading;
    };
    if (!m_headed.empty() && std::all_of(m_headed.begin(), m_headed.end(), isHeading))
        return true;
    return isTitle(line);
}

bool areAlikeButDigits(std::string_view a, std::string_view b)
{
    const auto skipDigits = [](std::string_view& text) {
        text.remove_prefix(std::min(text.find_first_not_of("0123456789"), text.size()));
    };
    bool letters = false;
    while (!a.empty() && !b.empty() &&
           (a.front() == b.front() || (isDigit(a.front()) && isDigit(b.front())))) {
        const bool digit = isDigit(a.front());
        letters = letters || std::isalpha(static_cast<unsigned char>(a.front())) != 0;
        a.remove_prefix(1);
        b.remove_prefix(1);
        if (digit) {
            skipDigits(a);
            skipDigits(b);
        }
    }
    return letters && isEmptyLine(a) && isEmptyLine(b);
}

}  // namespace veltrac
