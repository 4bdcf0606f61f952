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
        if (mayDiffer || column.heading.empty() || readNumber(column.heading, format.cells))
            continue;
        m_headed.push_back(c);
        m_names += (m_names.empty() ? "" : " ") + column.heading;
    }
}

bool STLTitles::isTitle(std::string_view line) const
{
    return !m_format.blockTitle.empty() && !line.empty() && line.front() == m_format.blockTitle.front() &&
           areAlikeButDigits(line, m_format.blockTitle);
}

bool STLTitles::has(std::string_view line, std::span<const std::string_view> cells) const
{
    // Most rows differ from the names in the first letter already.
    const auto isHeading = [&](std::size_t c) {
        const std::string& heading = m_format.columns[c].heading;
        return !cells[c].empty() && cells[c].front() == heading.front() && cells[c] == heading;
    };
    if (!m_headed.empty() && std::all_of(m_headed.begin(), m_headed.end(), isHeading))
        return true;
    return isTitle(line) || endsInNames(line);
}

// Whether the names stand at the end of a line: behind a label, or one cell short, they are in other columns.
bool STLTitles::endsInNames(std::string_view line) const
{
    const auto isBetween = [this](char c) {
        return isBlank(c) || c == '\r' || c == '"' || c == '|' || c == m_format.cells.separator;
    };
    const auto skip = [&] {
        while (!line.empty() && isBetween(line.back()))
            line.remove_suffix(1);
    };
    skip();
    for (std::size_t n = m_names.size(); n-- > 0;) {
        if (isBetween(m_names[n])) {
            if (line.empty() || !isBetween(line.back()))
                return false;
            skip();
        } else if (line.empty() || line.back() != m_names[n]) {
            return false;
        } else {
            line.remove_suffix(1);
        }
    }
    return m_headed.size() > 1 && (line.empty() || isBetween(line.back()));
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
