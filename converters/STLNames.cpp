#include "converters/STLNames.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>

#include "converters/STLCourse.h"
#include "converters/STLHead.h"
#include "converters/STLNamePlaces.h"
#include "converters/STLTitles.h"
#include "converters/UnitWords.h"
#include "core/TimeUnits.h"
#include "core/Utf8.h"

namespace veltrac {

namespace {

bool isMostlyText(const STLRow& row)
{
    std::size_t texts = 0;
    std::size_t filled = 0;
    for (const STLToken& token : row.cells) {
        texts += token.kind == STLKind::Text ? 1 : 0;
        filled += token.text.empty() ? 0 : 1;
    }
    return filled > 0 && texts * 2 > filled;
}

bool isRowOfNumbers(const STLRow& row)
{
    return std::all_of(row.cells.begin(), row.cells.end(),
                       [](const STLToken& token) { return token.kind == STLKind::Number; });
}

std::size_t filledCells(const STLRow& row)
{
    return static_cast<std::size_t>(
        std::count_if(row.cells.begin(), row.cells.end(), [](const STLToken& t) { return !t.text.empty(); }));
}

bool looksLikeUnits(const STLRow& row)
{
    static const std::vector<std::string_view> known = {
        "s",     "ms",   "min",     "h",      "hz",      "khz", "v",   "mv",  "a",   "ma",   "w",
        "kw",    "c",    "f",       "k",      "m",       "mm",  "cm",  "km",  "m/s", "m/s2", "g",
        "kg",    "n",    "kn",      "nm",     "pa",      "kpa", "mpa", "hpa", "bar", "mbar", "%",
        "ppm",   "rpm",  "deg",     "rad",    "db",      "l",   "l/s", "j",   "-",   "sec",  "volts",
        "deg c", "degc", "celsius", "kelvin", "degrees", "ts",  "rn"};
    std::size_t units = 0;
    std::size_t filled = 0;
    bool empties = false;
    for (const STLToken& token : row.cells) {
        if (token.text.empty()) {
            empties = true;
            continue;
        }
        ++filled;
        const std::string lower = lowered(token.text);
        // "[V]", but not "U[V]", which is a name and its unit.
        const std::size_t bracket = lower.find_first_of("[(");
        const bool sign = (bracket == 0 || (bracket == std::string::npos &&
                                            lower.find_first_of("%/\xB0\xB5\xC2") != std::string::npos)) &&
                          lower.size() <= 10;
        units += sign || std::find(known.begin(), known.end(), lower) != known.end() ? 1 : 0;
    }
    return units > 0 && (units * 2 >= filled || (empties && units * 3 >= filled));
}

// Whether a text stands in a column of numbers: what differs so from the rows below is no row.
bool hasTextAboveNumbers(const STLRow& row, const STLFormat& format)
{
    for (std::size_t c = 0; c < format.columns.size(); ++c)
        if (format.columns[c].kind == STLKind::Number &&
            !readValue(row.cells[c].text, format.columns[c], format.cells) &&
            readToken(bareCell(row.cells[c].text, format.columns[c]), format.cells).kind == STLKind::Text)
            return true;
    return false;
}

// Whether a row of words can be names: between blanks, a sentence with a date or with numbers that do not
// rise is none.
bool mayBeNames(const STLRow& row, const STLFormat& format)
{
    const auto isClock = [](STLKind kind) {
        return kind == STLKind::Date || kind == STLKind::Time || kind == STLKind::Stamp;
    };
    bool numbers = false;
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        if (isClock(row.cells[c].kind) && !isClock(format.columns[c].kind))
            return format.cells.separator != ' ';
        numbers = numbers || row.cells[c].kind == STLKind::Number;
    }
    return !numbers || format.cells.separator != ' ' || numericNames(row.cells) != NumericNames::None;
}

// "5N  S  N": how wide and of which kind the columns are.
bool tellsKinds(const STLRow& row)
{
    bool digits = false;
    for (const STLToken& token : row.cells) {
        const std::size_t letter = token.text.find_first_not_of("0123456789");
        if (letter == std::string_view::npos || letter + 1 != token.text.size() ||
            std::string_view("SNMD").find(token.text.back()) == std::string_view::npos)
            return false;
        digits = digits || letter > 0;
    }
    return digits || row.cells.size() > 2;
}

// "@type xy" tells a program what to do, and "x =" what follows.
bool isCommand(std::string_view line)
{
    const std::size_t last = line.find_last_not_of(" \t\r");
    return line.starts_with('@') || (last != std::string_view::npos && line[last] == '=');
}

// Whether numbers that do not rise stand among names, or a single one among words between blanks.
bool holdsOddNumbers(const STLRow& row, const STLFormat& format)
{
    const auto numbers = std::count_if(row.cells.begin(), row.cells.end(),
                                       [](const STLToken& token) { return token.kind == STLKind::Number; });
    if (numbers == 1 && format.cells.separator == ' ' && numericNames(row.cells) == NumericNames::Rising)
        return true;
    for (std::size_t c = 0; c < format.columns.size(); ++c)
        if (row.cells[c].kind == STLKind::Number && format.columns[c].kind == STLKind::Number)
            return numericNames(row.cells) == NumericNames::None;
    return false;
}

// "s;-;-": units, and a marker of missing values where there is none.
bool areUnitsAndDashes(const STLRow& row)
{
    return looksLikeUnits(row) && std::all_of(row.cells.begin(), row.cells.end(), [](const STLToken& token) {
               return token.kind == STLKind::Text || token.kind == STLKind::Missing;
           });
}

// Whether most words, but not all, stand in brackets: what names the others stands above, and is lost.
bool areBracketed(const STLRow& row)
{
    const auto count =
        static_cast<std::size_t>(std::count_if(row.cells.begin(), row.cells.end(), [](const STLToken& token) {
            return token.text.starts_with('(') || token.text.starts_with('[');
        }));
    return count * 2 > row.cells.size() && count < row.cells.size();
}

// "Data: y" above the first column.
std::string_view withoutLabel(std::string_view name)
{
    const std::size_t colon = name.find(": ");
    if (colon == std::string_view::npos)
        return name;
    const std::string label = lowered(name.substr(0, colon));
    const bool known = label == "data" || label == "fields" || label == "columns" || label == "names" ||
                       label == "header" || label == "variables" || label == "format";
    return known ? name.substr(name.find_first_not_of(' ', colon + 1)) : name;
}

void putNames(STLFormat& format, const STLRow& names, const STLRow* units)
{
    format.namesLine = names.line->number;
    format.unitsLine = units == nullptr ? 0 : units->line->number;
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        format.columns[c].heading = names.cells[c].text;
        format.columns[c].name =
            cellText(c == 0 ? withoutLabel(names.cells[c].text) : names.cells[c].text, format.encoding);
        if (units != nullptr)
            format.columns[c].unit = cellText(units->cells[c].text, format.encoding);
    }
    splitUnits(format);
}

}  // namespace

void guessNames(STLFormat& format, const std::vector<STLRow>& rows, std::size_t firstData)
{
    const STLRow* names = nullptr;
    const STLRow* units = nullptr;
    for (std::size_t i = firstData; i-- > 0;) {
        // Rows of numbers between two lines of words part two tables.
        if (names != nullptr && isRowOfNumbers(rows[i]))
            break;
        if (!isMostlyText(rows[i]) || tellsKey(rows[i].line->text) || !mayBeNames(rows[i], format) ||
            tellsKinds(rows[i]) || isCommand(rows[i].line->text))
            continue;
        // Names stand above lines of units, and above those that tell how each value was made.
        if (names != nullptr && !looksLikeUnits(*names) && filledCells(*names) >= filledCells(rows[i]))
            break;
        if (names != nullptr)
            units = names;
        names = &rows[i];
    }
    if (names != nullptr && units == nullptr && names + 1 < rows.data() + firstData &&
        areUnitsAndDashes(names[1]))
        units = names + 1;
    if (names == nullptr || (units == nullptr && areBracketed(*names)))
        return;
    putNames(format, *names, units);
    format.namesInDoubt = format.namesAsked = holdsOddNumbers(*names, format);
}

namespace {

// Whether the first cell of a row of rising numbers is empty, as that of none below is: the corner of a
// table.
bool hasEmptyCorner(const std::vector<STLRow>& rows, std::size_t first)
{
    const std::vector<STLToken>& cells = rows[first].cells;
    for (std::size_t c = 1; c < cells.size(); ++c)
        if (cells[c].kind != STLKind::Number || (c > 1 && !(cells[c].value > cells[c - 1].value)))
            return false;
    return cells.size() > 2 && cells.front().text.empty() &&
           std::none_of(rows.begin() + static_cast<std::ptrdiff_t>(first) + 1, rows.end(),
                        [](const STLRow& row) { return row.cells.front().text.empty(); });
}

}  // namespace

void guessNumericNames(STLFormat& format, const std::vector<STLRow>& rows, std::size_t firstData)
{
    if (format.namesLine != 0 || format.namesListed || firstData + 2 >= rows.size() ||
        rows[firstData].line->number != format.firstDataLine)
        return;
    const STLRow& names = rows[firstData];
    const bool cornered = hasEmptyCorner(rows, firstData);
    const NumericNames sort = cornered ? NumericNames::Years : numericNames(names.cells);
    const bool differs = hasTextAboveNumbers(names, format);
    const bool named = format.unmatchedLine != 0;  // though nobody knows which
    if (sort == NumericNames::None ||
        (!differs && sort <= (named ? NumericNames::Equal : NumericNames::Rising)))
        return;
    const std::size_t below = rows.size() - firstData - 1;
    const auto alike = static_cast<std::size_t>(
        std::count_if(rows.begin() + static_cast<std::ptrdiff_t>(firstData) + 1, rows.end(),
                      [sort](const STLRow& row) { return numericNames(row.cells) >= sort; }));
    if (!differs && !cornered && alike * 2 > below)
        return;
    // Where some of the rows are like it, they all are taken for rows.
    format.namesInDoubt = !differs;
    format.namesAsked = !differs && !cornered && (sort != NumericNames::Years || alike > 0);
    if (!differs && !cornered && alike * 4 > below)
        return;
    format.namesLine = names.line->number;
    format.firstDataLine = format.namesLine + 1;
    for (std::size_t c = 0; c < format.columns.size(); ++c)
        format.columns[c].name = cellText(names.cells[c].text, format.encoding);
}

namespace {

// Whether the data's first column only counts or names its rows.
bool namesRows(const STLFormat& format, const std::vector<STLRow>& data)
{
    if (format.columns.front().kind != STLKind::Number)
        return format.columns.front().kind == STLKind::Text;
    for (std::size_t i = 1; i < std::min<std::size_t>(data.size(), 5); ++i)
        if (data[i].cells[0].value != data[i - 1].cells[0].value + 1.0)
            return false;
    return data.size() > 1;
}

// Whether the names, one short, can belong to the columns behind the first one: its cells are whole numbers,
// each another one, and rise where the names are set out in columns; or they are no numbers, or all stand in
// quotes.
bool mayHaveRowNames(std::string_view line, const STLFormat& format, const std::vector<STLRow>& data)
{
    if (format.columns.front().kind != STLKind::Number || line.find('"') != std::string_view::npos)
        return true;
    const bool areSet = areSetOut(line);
    std::set<double> known;
    double before = -std::numeric_limits<double>::infinity();
    // Of a longer log the places that are looked at may lie one over the other.
    for (std::size_t i = 0; i < std::min(data.size(), kPlaceRows); ++i) {
        const STLToken& cell = data[i].cells[0];
        const bool fits = areSet ? cell.value > before : known.insert(cell.value).second;
        if (cell.kind != STLKind::Number || cell.value != std::floor(cell.value) || !fits)
            return false;
        before = cell.value;
    }
    return true;
}

// Whether a name above a column of dates or times says so.
bool namesTimes(std::string_view name, STLKind kind)
{
    if (kind != STLKind::Date && kind != STLKind::Time && kind != STLKind::Stamp)
        return false;
    const std::string lower = lowered(name);
    return lower.find("date") != std::string::npos || lower.find("time") != std::string::npos ||
           lower.find("datum") != std::string::npos || lower.find("zeit") != std::string::npos;
}

std::vector<std::string_view> wordsBetween(std::string_view line, std::string_view signs)
{
    std::vector<std::string_view> words;
    for (std::size_t from = line.find_first_not_of(signs); from != std::string_view::npos;) {
        const std::size_t end = std::min(line.find_first_of(signs, from), line.size());
        words.push_back(line.substr(from, end - from));
        from = line.find_first_not_of(signs, end);
    }
    return words;
}

// Numbers and dates in a remark are told, and name nothing.
bool anyIsTyped(const std::vector<std::string_view>& cells, const STLCells& how)
{
    return std::any_of(cells.begin(), cells.end(), [&](std::string_view cell) {
        const STLKind kind = readToken(cell, how).kind;
        return kind != STLKind::Text && kind != STLKind::Missing;
    });
}

// "Data: y x"
void dropLabel(std::vector<std::string_view>& cells, std::size_t columns)
{
    if (cells.size() == columns + 1 && cells.front().ends_with(':'))
        cells.erase(cells.begin());
}

// Every other word is a unit such as "KB/s".
bool areUnitsAndWords(const std::vector<std::string_view>& cells)
{
    for (std::size_t c = 0; c + 1 < cells.size(); c += 2)
        if (cells[c].find('/') == std::string_view::npos || !isUnit(std::string(cells[c])))
            return false;
    return true;
}

// Whether most cells are words.
bool areWords(const std::vector<std::string_view>& cells, const STLCells& how)
{
    const auto texts = std::count_if(cells.begin(), cells.end(), [&](std::string_view cell) {
        return readToken(cell, how).kind == STLKind::Text;
    });
    return static_cast<std::size_t>(texts) * 2 > cells.size();
}

// Whether a line of remarks holds units, so that one above it may hold the names: half of its words are, and
// of more than a letter.
bool areUnitsBelow(const STLRow& row)
{
    const auto units = std::count_if(row.cells.begin(), row.cells.end(), [](const STLToken& token) {
        return token.text.size() > 1 && isUnit(std::string(token.text));
    });
    return static_cast<std::size_t>(units) * 2 >= row.cells.size();
}

// Puts the cells of a line over the columns; false where they cannot be matched.
bool matchNames(std::vector<std::string_view>& cells, std::string_view line, const STLFormat& format,
                const std::vector<STLRow>& data)
{
    const std::size_t columns = format.columns.size();
    const bool blanks = format.cells.separator == ' ';
    // "face |bytes packets|" above a table of blanks, and blanks above one of tabs.
    if (cells.size() != columns && (blanks || cells.size() == 1)) {
        std::vector<std::string_view> words = wordsBetween(line, blanks ? " \t\r|" : " \r");
        if (words.size() == columns)
            cells = std::move(words);
    }
    dropLabel(cells, columns);
    if (blanks && cells.size() != columns && format.cells.edges.empty()) {
        std::vector<std::string_view> names = namesByEnds(line, data, format);
        if (names.empty())
            names = namesByPlace(line, data, format);
        if (!names.empty())
            cells = std::move(names);
    }
    // "KB/s in  KB/s out": two words each.
    if (cells.size() == 2 * columns && blanks && areUnitsAndWords(cells)) {
        for (std::size_t c = 0; c < columns; ++c)
            cells[c] = {cells[2 * c].data(),
                        static_cast<std::size_t>(cells[2 * c + 1].data() + cells[2 * c + 1].size() -
                                                 cells[2 * c].data())};
        cells.resize(columns);
    }
    if (cells.size() < columns && namesTimes(cells.front(), format.columns.front().kind) &&
        (cells.size() + 1 < columns || format.columns[1].kind != STLKind::Time)) {
        // They begin with the first column, and the last ones have none.
        cells.resize(columns);
    } else if (cells.size() + 1 == columns && columns > 1) {
        // One stands above a date and its time, or the first column has none.
        std::size_t empty = 0;
        for (std::size_t c = 0; c + 1 < columns; ++c)
            if (format.columns[c].kind == STLKind::Date && format.columns[c + 1].kind == STLKind::Time)
                empty = c + 1;
        if (empty == 0 && (columns == 2 ? !namesRows(format, data) : !mayHaveRowNames(line, format, data)))
            return false;
        cells.insert(cells.begin() + static_cast<std::ptrdiff_t>(empty), std::string_view());
    }
    return cells.size() == columns || (cells.size() > columns && !blanks);
}

// As many words as columns, of which two are one name and another column has none.
void namesToEnds(STLFormat& format, const STLSample& sample, const std::vector<STLRow>& data)
{
    if (format.namesLine == 0 || format.unitsLine != 0 || format.cells.separator != ' ')
        return;
    const std::vector<std::string_view> names =
        namesByEnds(sample.head[format.namesLine - 1].text, data, format);
    for (std::size_t c = 0; c < names.size(); ++c) {
        format.columns[c].heading = names[c];
        format.columns[c].name = cellText(names[c], format.encoding);
        format.columns[c].unit.clear();
    }
    splitUnits(format);
}

// Cuts a line above the rows as these are cut.
void splitAbove(const STLLine& line, const STLFormat& format, std::vector<std::string_view>& cells)
{
    const bool isFixed = !format.cells.edges.empty();
    // Places in a table of fixed widths count from the remark's sign on.
    splitCells(isFixed ? std::string_view(line.text) : withoutRemark(line.text, format), format.cells, cells);
    if (isFixed && isRemark(line.text, format))
        cells.front().remove_prefix(std::min(cells.front().find_first_not_of("#%/; "), cells.front().size()));
}

// The lines next above the rows whose cells stand over the columns, as rows, the topmost first. Words next
// above them that do not are told in the format.
std::vector<STLRow> rowsAbove(STLFormat& format, const STLSample& sample, const std::vector<STLRow>& data)
{
    const std::size_t columns = format.columns.size();
    std::vector<STLRow> rows;
    std::vector<std::string_view> cells;
    bool remark = false;
    for (std::size_t i = std::min<std::size_t>(format.firstDataLine - 1, sample.head.size()); i-- > 0;) {
        const STLLine& line = sample.head[i];
        const std::string_view text = withoutRemark(line.text, format);
        if (isEmptyLine(text) || isRule(line.text))
            continue;
        if (isCommand(line.text))
            break;
        const bool isFirst = rows.empty();
        if (remark && (!isRemark(line.text, format) || rows.size() > 1 || !areUnitsBelow(rows.front())))
            break;
        remark = isRemark(line.text, format);
        splitAbove(line, format, cells);
        // Names with a cell for each column were looked at, though the last ones are empty, or one ends the
        // line.
        const bool wasSeen = cells.size() == columns || (cells.size() == columns + 1 && cells.back().empty());
        while (!cells.empty() && cells.back().empty())
            cells.pop_back();
        if (!remark && (wasSeen || cells.size() == columns))
            break;
        if (remark)
            dropLabel(cells, columns);
        const std::size_t words = cells.size();
        const bool fits = remark ? (isFirst || isRemark(rows.front().line->text, format)) &&
                                       words == columns && !anyIsTyped(cells, format.cells)
                                 : !cells.empty() && matchNames(cells, text, format, data);
        if (isFirst && !remark && words > 1 && (!fits || cells.size() > columns) &&
            areWords(cells, format.cells)) {
            format.unmatchedLine = line.number;
            format.unmatchedWords = words;
        }
        if (!fits)
            break;
        STLRow row{&line, {}};
        for (std::size_t c = 0; c < columns; ++c)
            row.cells.push_back(readToken(cells[c], format.cells));
        rows.insert(rows.begin(), std::move(row));
    }
    return rows;
}

}  // namespace

void guessNamesAbove(STLFormat& format, const STLSample& sample, const std::vector<STLRow>& data)
{
    namesToEnds(format, sample, data);
    const std::vector<STLRow> rows = rowsAbove(format, sample, data);
    // A remark is taken for names only where nothing else is; a word or two are prose.
    const std::size_t fewest = format.cells.separator == ' ' ? 3 : 2;
    const bool allRemarks = !rows.empty() && isRemark(rows.back().line->text, format);
    if (!rows.empty() && !allRemarks && format.namesLine == 0 && !isMostlyText(rows.back()) &&
        numericNames(rows.back().cells) >= NumericNames::Equal) {
        putNames(format, rows.back(), nullptr);
        format.namesInDoubt = true;
        format.namesAsked = numericNames(rows.back().cells) != NumericNames::Years;
        return;
    }
    if (std::none_of(rows.begin(), rows.end(), isMostlyText) ||
        (allRemarks && (format.namesLine != 0 || format.columns.size() < fewest)))
        return;
    for (STLColumn& column : format.columns)
        column.heading = column.name = column.unit = std::string();
    format.namesInRemark = allRemarks;
    if (allRemarks)
        putNames(format, rows.front(), rows.size() > 1 ? &rows.back() : nullptr);
    else
        guessNames(format, rows, rows.size());
}

void findBlockTitle(STLFormat& format, const STLSample& sample)
{
    if (format.namesLine == 0 || format.namesLine > sample.head.size())
        return;
    // Names in a remark stand above each block as a remark.
    const std::string& names = sample.head[format.namesLine - 1].text;
    if (isRemark(names, format)) {
        format.blockTitle = names;
        return;
    }
    if (format.namesLine < 2)
        return;
    const std::string& above = sample.head[format.namesLine - 2].text;
    if (!isRemark(above, format) && areAlikeButDigits(above, above) &&
        above.find_first_of("0123456789") != std::string::npos)
        format.blockTitle = above;
}

void listTitles(STLFormat& format, const STLSample& sample)
{
    constexpr std::size_t kMostListed = 10;
    constexpr std::size_t kLongest = 40;
    for (const STLLine& line : sample.head) {
        if (line.number >= format.firstDataLine)
            return;
        if (isEmptyLine(line.text) || isRemark(line.text, format) || isRule(line.text) ||
            tellsKey(line.text) || line.number == format.namesLine || line.number == format.unitsLine)
            continue;
        if (++format.titleCount <= kMostListed)
            format.titles.emplace_back(line.number, cutTo(decoded(line.text, format.encoding), kLongest));
    }
}

void splitUnits(STLFormat& format)
{
    for (STLColumn& column : format.columns)
        splitUnit(column.name, column.unit);
}

namespace {

// The text that most cells of a column bear, as `part` tells it; empty where they differ.
template <typename Part>
std::string commonPart(const std::vector<STLRow>& data, std::size_t column, Part part)
{
    std::map<std::string_view, std::size_t> votes;
    std::size_t filled = 0;
    for (const STLRow& row : data) {
        filled += row.cells[column].kind == STLKind::Missing ? 0 : 1;
        if (const std::string_view text = part(row.cells[column].text); !text.empty())
            ++votes[text];
    }
    const auto best = std::max_element(votes.begin(), votes.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    return best == votes.end() || best->second * 2 <= filled ? std::string() : std::string(best->first);
}

// "temp=" and "Temp: " as a name.
std::string nameOfKey(std::string_view key, STLEncoding encoding)
{
    return cellText(key.substr(0, key.find_last_not_of(" :=") + 1), encoding);
}

}  // namespace

void findSuffixes(STLFormat& format, std::vector<STLRow>& data)
{
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        STLColumn& column = format.columns[c];
        if (column.kind != STLKind::Text)
            continue;
        column.prefix =
            commonPart(data, c, [&](std::string_view cell) { return keyBefore(cell, format.cells); });
        column.suffix = commonPart(
            data, c, [&](std::string_view cell) { return unitBehind(bareCell(cell, column), format.cells); });
        if (column.prefix.empty() && column.suffix.empty())
            continue;
        if (column.name.empty())
            column.name = nameOfKey(column.prefix, format.encoding);
        std::map<STLKind, std::size_t> kinds;
        for (STLRow& row : data) {
            row.cells[c] = readToken(bareCell(row.cells[c].text, column), format.cells);
            ++kinds[row.cells[c].kind];
        }
        kinds.erase(STLKind::Missing);
        const auto most = std::max_element(kinds.begin(), kinds.end(),
                                           [](const auto& a, const auto& b) { return a.second < b.second; });
        column.kind = most == kinds.end() ? STLKind::Number : most->first;
    }
}

void dropNamesOfCells(STLFormat& format)
{
    const auto tellsItself = [&](const STLColumn& column) {
        const bool keyed = !column.prefix.empty() && format.cells.separator == ' ';
        return keyed || (!column.suffix.empty() && unitBehind(column.heading, format.cells) == column.suffix);
    };
    if (format.namesLine == 0 || std::none_of(format.columns.begin(), format.columns.end(), tellsItself))
        return;
    format.namesLine = format.unitsLine = 0;
    for (STLColumn& column : format.columns) {
        column.heading = column.unit = std::string();
        column.name = nameOfKey(column.prefix, format.encoding);
    }
}

}  // namespace veltrac
