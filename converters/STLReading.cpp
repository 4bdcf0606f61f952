#include "converters/STLReading.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <string_view>

#include "converters/STLFixedWidth.h"
#include "converters/TimeStamps.h"
#include "core/Characters.h"

namespace veltrac {

namespace {

constexpr double kSingleDateFactor = 0.3;
constexpr double kHiddenFactor = 0.6;
constexpr double kGroupsFactor = 0.85;
constexpr std::size_t kFewLongRows = 20;  // one in so many
constexpr double kNearlyAllKnown = 0.95;
constexpr char kSeparators[] = {'\t', ';', '|', ',', ' '};
constexpr char kGroupings[] = {0, '.', ',', ' ', '\''};

bool startsWithRemark(std::string_view line, char separator)
{
    const std::size_t at = line.find_first_not_of(" \t");
    const std::string_view text = at == std::string_view::npos ? std::string_view() : line.substr(at);
    return text.starts_with('#') || text.starts_with('%') || text.starts_with("//") ||
           (separator != ';' && text.starts_with(';'));
}

// Whether a line has digits on both sides of the sign; where it may be a decimal one, three behind it.
bool mayGroup(std::string_view line, char grouping)
{
    const bool isDecimal = grouping == '.' || grouping == ',';
    const auto digitAt = [line](std::size_t at) { return at < line.size() && isDigit(line[at]); };
    for (std::size_t at = line.find(grouping, 1); at != std::string_view::npos;
         at = line.find(grouping, at + 1))
        if (digitAt(at - 1) && digitAt(at + 1) &&
            (!isDecimal || (digitAt(at + 2) && digitAt(at + 3) && !digitAt(at + 4))))
            return true;
    return false;
}

double worthOf(STLKind kind)
{
    return kind == STLKind::Text ? 0.0 : kind == STLKind::Missing ? 0.5 : 1.0;
}

STLCells cellsOf(char separator, char decimal, char grouping)
{
    STLCells cells;
    cells.separator = separator;
    cells.decimal = decimal;
    cells.grouping = grouping;
    return cells;
}

// "a";1;"b" as one cell: the separator is another one.
bool hidesQuotes(std::string_view cell)
{
    constexpr std::string_view kBetween = ";,|\t";
    std::size_t found = 0;
    for (std::size_t at = cell.find('"'); at != std::string_view::npos; at = cell.find('"', at + 1))
        found += (at > 0 && kBetween.find(cell[at - 1]) != std::string_view::npos) ||
                         (at + 1 < cell.size() && kBetween.find(cell[at + 1]) != std::string_view::npos)
                     ? 1
                     : 0;
    return found > 1;
}

// "10:00:05 up 3 days"
bool hidesTime(std::string_view cell)
{
    const std::string_view word = cell.substr(0, cell.find(' '));
    return word.size() < cell.size() && isDigit(word.front()) && (readTime(word) || readStamp(word));
}

// The lines of one count of cells, and what these are.
struct CountedLines
{
    std::size_t count = 0;
    double worth = 0.0;
    std::size_t endInSeparator = 0;
    std::size_t endInNumber = 0;
    std::size_t dates = 0;
    std::size_t numbers = 0;  // perhaps with a key or a unit
    std::size_t named = 0;    // begin with a text
    std::size_t known = 0;
    std::size_t hiding = 0;  // begin with a cell that holds several

    void add(const std::vector<std::string_view>& line, const STLCells& cells);
    // What speaks against rows of so many cells.
    double factor(std::size_t cells) const;
};

using LinesByCount = std::map<std::size_t, CountedLines>;

void CountedLines::add(const std::vector<std::string_view>& line, const STLCells& cells)
{
    ++count;
    for (std::size_t c = 0; c < line.size(); ++c) {
        const std::string_view cell = line[c];
        const STLKind kind = readToken(cell, cells).kind;
        const bool isName = c == 0 && kind == STLKind::Text;
        const bool isNumber =
            kind == STLKind::Text && (!unitBehind(cell, cells).empty() || !keyBefore(cell, cells).empty() ||
                                      readFactored(cell, kBinaryFactor, cells));
        named += isName ? 1 : 0;
        hiding += isName && (hidesTime(cell) || hidesQuotes(cell)) ? 1 : 0;
        endInNumber += c + 1 == line.size() && kind == STLKind::Number ? 1 : 0;
        worth += worthOf(isNumber ? STLKind::Number : kind);
        known += kind != STLKind::Text && kind != STLKind::Missing ? 1 : 0;
        dates += kind == STLKind::Date || kind == STLKind::Stamp ? 1 : 0;
        numbers += isNumber || kind == STLKind::Number ? 1 : 0;
    }
}

double CountedLines::factor(std::size_t cells) const
{
    // Dates alone are no values: their parts may be cells.
    const bool onlyDates = cells == 1 ? dates * 2 > count : numbers == 0;
    const double single = onlyDates ? kSingleDateFactor : cells == 1 ? kSingleCellFactor : 1.0;
    return single * (hiding * 2 > count ? kHiddenFactor : 1.0);
}

// A separator at the end of a line makes no cell of its own, unless it is that of a last column which is
// mostly empty.
void takeLongerLines(STLReading& reading, const LinesByCount& byCount, std::size_t looked)
{
    const auto lines = byCount.find(reading.cells);
    const auto longer = byCount.find(reading.cells + 1);
    if (reading.cells == 0 || longer == byCount.end() || lines->second.endInSeparator != lines->second.count)
        return;
    const auto both = static_cast<double>(longer->second.count + lines->second.count);
    if (longer->second.endInNumber > 1) {
        ++reading.cells;
    } else if (reading.separator == '\t' && static_cast<double>(longer->second.count * kFewLongRows) > both) {
        ++reading.cells;
        reading.score *= both / static_cast<double>(lines->second.count);
        reading.lines = both / static_cast<double>(looked);
    }
}

STLReading scored(const STLSample& sample, const STLCells& cells)
{
    LinesByCount byCount;
    std::vector<std::string_view> line;
    std::size_t looked = 0;
    for (const STLLine& text : sample.lines) {
        if (startsWithRemark(text.text, cells.separator) || isRule(text.text))
            continue;
        ++looked;
        const bool endsInSeparator =
            splitCells(text.text, cells, line) > 1 && cells.edges.empty() && line.back().empty();
        if (endsInSeparator)
            line.pop_back();
        CountedLines& lines = byCount[line.size()];
        lines.add(line, cells);
        lines.endInSeparator += endsInSeparator ? 1 : 0;
    }
    STLReading reading{cells.separator, cells.decimal, cells.grouping};
    reading.bars = cells.bars;
    for (const auto& [count, lines] : byCount) {
        reading.known += lines.known;
        if (count == 0)
            continue;
        const double typed = lines.worth / static_cast<double>(lines.count * count);
        const double share = static_cast<double>(lines.count) / static_cast<double>(looked);
        const double score = share * typed * lines.factor(count);
        if (score <= reading.score)
            continue;
        reading.cells = count;
        reading.score = score;
        reading.lines = share;
        reading.typed = typed;
        reading.rowNames = cells.rowNames && lines.named * 2 > lines.count;
    }
    takeLongerLines(reading, byCount, looked);
    return reading;
}

// A table of blanks in which lines lack cells, or have too many, as one of fixed widths or with names of rows
// in several words, where that explains more lines.
STLReading inWords(const STLSample& sample, STLReading reading)
{
    if (reading.separator != ' ' || reading.bars || reading.lines == 1.0 || isProse(reading))
        return reading;
    STLCells cells = cellsOf(' ', reading.decimal, reading.grouping);
    cells.edges = fixedEdges(sample, reading.decimal);
    // Names of rows in several words are one cell, where others have a cell more.
    if (cells.edges.size() > 1 && cells.edges.size() + 1 >= reading.cells) {
        STLReading fixed = scored(sample, cells);
        fixed.edges = cells.edges;
        // Edges that cut through words lose numbers.
        if (static_cast<double>(fixed.known) >= kNearlyAllKnown * static_cast<double>(reading.known))
            return fixed;
    }
    cells.edges.clear();
    cells.rowNames = true;
    const STLReading named = scored(sample, cells);
    return named.rowNames && named.cells > 1 && named.lines > reading.lines ? named : reading;
}

// Whether a column has numbers of groups of three digits ("2.990") beside smaller whole ones ("375"), as one
// of decimals has not, and nowhere in the table the sign parts other digits.
bool areThousands(const STLSample& sample, const STLReading& reading)
{
    constexpr std::size_t kFewestGroups = 5;
    constexpr std::size_t kFewestSmall = 20;  // one number in so many
    constexpr double kThousand = 1000.0;
    struct Column
    {
        std::size_t grouped = 0;
        std::size_t small = 0;
        std::size_t large = 0;  // without a sign
    };
    const STLCells cells = cellsOf(reading.separator, reading.decimal, reading.grouping);
    const STLCells decimals = cellsOf(reading.separator, reading.grouping, 0);
    std::vector<Column> columns(reading.cells);
    std::vector<std::string_view> row;
    for (const STLLine& line : sample.lines) {
        if (startsWithRemark(line.text, reading.separator) ||
            splitCells(line.text, cells, row) < reading.cells)
            continue;
        for (std::size_t c = 0; c < reading.cells; ++c) {
            const STLToken token = readToken(row[c], cells);
            const bool isNumber = token.kind == STLKind::Number;
            const bool isLarge = isNumber && std::fabs(token.value) >= kThousand;
            const bool hasSign = row[c].find(reading.grouping) != std::string_view::npos;
            if (hasSign && (isNumber ? !isLarge : readToken(row[c], decimals).kind == STLKind::Number))
                return false;
            columns[c].grouped += isNumber && hasSign ? 1 : 0;
            columns[c].small += isNumber && !isLarge ? 1 : 0;
            columns[c].large += isLarge && !hasSign ? 1 : 0;
        }
    }
    return std::any_of(columns.begin(), columns.end(), [](const Column& column) {
        return column.grouped >= kFewestGroups && column.large == 0 &&
               column.small * kFewestSmall >= column.grouped;
    });
}

// Blanks cut lines at tabs too. Where nearly all lines with tabs have as many of them, blanks stand within
// the cells.
void preferTabs(const STLSample& sample, std::vector<STLReading>& readings)
{
    constexpr double kWithin = 0.85;
    constexpr double kNearlyAsMuch = 0.6;
    constexpr double kMostLines = 0.5;
    constexpr double kNearlyAllTabs = 0.8;
    const auto scoreOfTabs = [](const STLReading& reading) {
        return reading.separator == '\t' && reading.cells > 1 ? reading.score : 0.0;
    };
    const auto tabs = std::max_element(
        readings.begin(), readings.end(),
        [&scoreOfTabs](const STLReading& a, const STLReading& b) { return scoreOfTabs(a) < scoreOfTabs(b); });
    const auto tabbed = std::count_if(sample.lines.begin(), sample.lines.end(), [](const STLLine& line) {
        return line.text.find('\t') != std::string::npos;
    });
    const double fewest =
        kNearlyAllTabs * static_cast<double>(tabbed) / static_cast<double>(sample.lines.size());
    if (scoreOfTabs(*tabs) <= 0.0 || tabs->lines < std::max(kMostLines, fewest))
        return;
    for (STLReading& reading : readings)
        if (reading.separator == ' ' && tabs->typed >= kNearlyAsMuch * reading.typed)
            reading.score *= kWithin;
}

}  // namespace

STLReading scoredReading(const STLSample& sample, char separator, char decimal, char grouping)
{
    return inWords(sample, scored(sample, cellsOf(separator, decimal, grouping)));
}

std::vector<STLReading> allReadings(const STLSample& sample)
{
    const auto anyLine = [&sample](auto holds) {
        return std::any_of(sample.lines.begin(), sample.lines.end(), holds);
    };
    const auto has = [&anyLine](char c) {
        return anyLine([c](const STLLine& line) { return line.text.find(c) != std::string::npos; });
    };
    // Only a cell in quotes can hold its separator, as its decimal sign or between thousands.
    const bool quoted = has('"');
    const bool hasComma = has(',');
    // What stands nowhere separates nothing: one such separator is as good as all.
    std::string separators;
    bool hasAbsent = false;
    for (const char separator : kSeparators) {
        const bool isThere = has(separator);
        if (isThere || !hasAbsent)
            separators += separator;
        hasAbsent = hasAbsent || !isThere;
    }
    std::vector<STLReading> readings;
    for (const char grouping : kGroupings) {
        if (grouping != 0 &&
            !anyLine([grouping](const STLLine& line) { return mayGroup(line.text, grouping); }))
            continue;
        for (const char separator : separators)
            for (const char decimal : {'.', ','})
                if ((decimal == '.' || hasComma || grouping == '.') && grouping != decimal &&
                    (quoted || (separator != decimal && grouping != separator)))
                    readings.push_back(scored(sample, cellsOf(separator, decimal, grouping)));
    }
    // "|--" draws a branch of a tree.
    if (has('|') && !anyLine([](const STLLine& line) { return line.text.find("|-") != std::string::npos; })) {
        STLCells cells = cellsOf(' ', '.', 0);
        cells.bars = true;
        readings.push_back(scored(sample, cells));
        // Between bars alone, cells may hold blanks.
        readings.back().score *= kGroupsFactor;
    }
    preferTabs(sample, readings);
    constexpr double kClearer = 1.001;
    const auto scoresLess = [](const STLReading& a, const STLReading& b) { return a.score < b.score; };
    const double best = std::max_element(readings.begin(), readings.end(), scoresLess)->score;
    for (STLReading& reading : readings)
        if ((reading.grouping == '.' || reading.grouping == ',') && reading.score * kClearer > best &&
            areThousands(sample, reading)) {
            reading.thousands = true;
            reading.score *= kClearer;
        }
    // The earlier one wins a tie, so digits are grouped only where that explains more.
    std::stable_sort(readings.begin(), readings.end(),
                     [&](const STLReading& a, const STLReading& b) { return scoresLess(b, a); });
    readings.front() = inWords(sample, std::move(readings.front()));
    return readings;
}

bool isProse(const STLReading& reading)
{
    constexpr double kFewLines = 0.8;
    constexpr double kFewCells = 0.3;
    return reading.score <= 0.0 || (reading.lines < kFewLines && reading.typed < kFewCells);
}

}  // namespace veltrac
