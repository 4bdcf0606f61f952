#include "share/PsLines.h"

#include <algorithm>

#include "share/Transliteration.h"

namespace veltrac {

namespace {

// One number without trailing zeros, without a bare point, and without a lone leading zero.
std::string compactNumber(std::string number)
{
    if (number.find('.') == std::string::npos)
        return number;
    number.erase(number.find_last_not_of('0') + 1);
    if (number.back() == '.')
        number.pop_back();
    const std::size_t first = number.starts_with('-') ? 1 : 0;
    if (number.compare(first, 2, "0.") == 0)
        number.erase(first, 1);
    return number;
}

}  // namespace

std::string compactedLine(const std::string& line)
{
    static constexpr const char* kNumber = "+-.0123456789";
    std::string out;
    for (std::size_t i = 0; i < line.size();) {
        const std::size_t end = std::min(line.find_first_not_of(kNumber, i), line.size());
        if (end > i) {
            out += compactNumber(line.substr(i, end - i));
            i = end;
            continue;
        }
        if (line[i] != ' ' || out.empty() || out.back() != ' ')
            out += line[i];
        ++i;
    }
    return out;
}

std::string textLine(const std::string& head, const std::string& standard, const std::string& tail)
{
    std::string line = head + '(';
    for (const char glyph : standard) {
        const std::string escaped = escapedGlyph(glyph);
        if (line.size() + escaped.size() + 1 + tail.size() > kPsLineLength)
            break;
        line += escaped;
    }
    return line + ')' + tail;
}

}  // namespace veltrac
