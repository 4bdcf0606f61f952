#include <algorithm>
#include <set>

#include "converters/STLNames.h"

namespace veltrac {

namespace {

// What K means: 1024 to those who tell bytes, 1000 where only k and M stand there, or the name tells a
// frequency or a resistance.
double factorOf(const STLColumn& column, const std::set<std::string_view>& signs)
{
    const std::string name = lowered(column.name);
    for (const char* const word : {"hz", "freq", "ohm"})
        if (name.find(word) != std::string::npos)
            return kDecimalFactor;
    return std::all_of(signs.begin(), signs.end(),
                       [](std::string_view sign) { return sign == "k" || sign == "M" || sign == "kB"; })
               ? kDecimalFactor
               : kBinaryFactor;
}

// What stands behind the digits of a cell.
std::string_view signBehind(std::string_view cell)
{
    const std::size_t digit = cell.find_last_of("0123456789.,");
    const std::size_t from = cell.find_first_not_of(' ', digit == std::string_view::npos ? 0 : digit + 1);
    return from == std::string_view::npos ? std::string_view() : cell.substr(from);
}

}  // namespace

void markFactored(std::vector<STLRow>& rows, std::size_t count, const STLCells& cells)
{
    constexpr std::size_t kSome = 4;  // one in so many
    for (std::size_t c = 0; c < count; ++c) {
        std::vector<STLRow*> factored;
        std::size_t numbers = 0;
        for (STLRow& row : rows) {
            const STLToken& cell = row.cells[c];
            numbers += cell.kind == STLKind::Number ? 1 : 0;
            if (cell.kind == STLKind::Text && readFactored(cell.text, kBinaryFactor, cells))
                factored.push_back(&row);
        }
        if ((factored.size() + numbers) * 2 <= rows.size() || factored.size() * kSome < rows.size())
            continue;
        for (STLRow* const row : factored)
            row->cells[c].kind = STLKind::Number;
    }
}

void findFactors(STLFormat& format, std::vector<STLRow>& data)
{
    std::vector<std::size_t> sizes;
    std::set<std::string_view> allSigns;
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        std::set<std::string_view> signs;
        const bool all = std::all_of(data.begin(), data.end(), [&](const STLRow& row) {
            const std::string_view text = row.cells[c].text;
            if (readNumber(text, format.cells) || isMissing(text, format.cells))
                return true;
            signs.insert(signBehind(text));
            return readFactored(text, kBinaryFactor, format.cells).has_value();
        });
        if (!all || signs.empty())
            continue;
        // One that stands apart behind all numbers is their unit.
        if (signs.size() == 1 && !unitBehind(data.front().cells[c].text, format.cells).empty()) {
            format.columns[c].kind = STLKind::Text;
            continue;
        }
        sizes.push_back(c);
        allSigns.merge(signs);
    }
    for (const std::size_t c : sizes) {
        STLColumn& column = format.columns[c];
        column.factor = factorOf(column, allSigns);
        column.kind = STLKind::Number;
        for (STLRow& row : data)
            if (const auto value = readFactored(row.cells[c].text, column.factor, format.cells))
                row.cells[c] = {STLKind::Number, row.cells[c].text, *value};
    }
}

}  // namespace veltrac
