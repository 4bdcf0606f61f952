#include <algorithm>
#include <set>

#include "converters/STLNames.h"

namespace veltrac {

namespace {

constexpr double kDecimal = 1000.0;
constexpr double kBinary = 1024.0;

// What K means: 1024 to those who tell bytes, 1000 where only k and M stand there, or the name tells a
// frequency or a resistance.
double factorOf(const STLColumn& column, const std::set<std::string_view>& signs)
{
    const std::string name = lowered(column.name);
    for (const char* const word : {"hz", "freq", "ohm"})
        if (name.find(word) != std::string::npos)
            return kDecimal;
    return std::all_of(signs.begin(), signs.end(),
                       [](std::string_view sign) { return sign == "k" || sign == "M" || sign == "kB"; })
               ? kDecimal
               : kBinary;
}

// What stands behind the digits of a cell.
std::string_view signBehind(std::string_view cell)
{
    const std::size_t digit = cell.find_last_of("0123456789.,");
    const std::size_t from = cell.find_first_not_of(' ', digit == std::string_view::npos ? 0 : digit + 1);
    return from == std::string_view::npos ? std::string_view() : cell.substr(from);
}

}  // namespace

void findFactors(STLFormat& format, std::vector<STLRow>& data)
{
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        STLColumn& column = format.columns[c];
        std::set<std::string_view> signs;
        const bool all = std::all_of(data.begin(), data.end(), [&](const STLRow& row) {
            const STLToken& cell = row.cells[c];
            if (cell.kind != STLKind::Text)
                return cell.kind == STLKind::Number || cell.kind == STLKind::Missing;
            signs.insert(signBehind(cell.text));
            return readFactored(cell.text, kBinary, format.cells).has_value();
        });
        // One sign behind all numbers is their unit.
        if (!all || signs.empty() ||
            (signs.size() == 1 && column.kind == STLKind::Text &&
             !unitBehind(data.front().cells[c].text, format.cells).empty()))
            continue;
        column.factor = factorOf(column, signs);
        column.kind = STLKind::Number;
        for (STLRow& row : data)
            if (STLToken& cell = row.cells[c]; cell.kind == STLKind::Text)
                cell = {STLKind::Number, cell.text, *readFactored(cell.text, column.factor, format.cells)};
    }
}

}  // namespace veltrac
