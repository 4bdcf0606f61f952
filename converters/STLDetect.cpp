#include "converters/STLDetect.h"

#include <algorithm>
#include <set>

#include "converters/STLClock.h"
#include "converters/STLHead.h"
#include "converters/STLLayout.h"
#include "converters/STLNames.h"
#include "converters/STLReading.h"
#include "converters/STLSample.h"
#include "converters/STLTables.h"
#include "converters/STLTimeGuess.h"
#include "core/Utf8.h"

namespace veltrac {

namespace {

constexpr std::size_t kMostColumns = 4096;
constexpr std::size_t kMostWholeReadings = 4;

std::string noLineOfNumbers(const std::filesystem::path& file)
{
    return "No line of numbers was found in " + file.filename().string() + ".";
}

// The cells of a line, told apart.
std::string shownCells(std::string_view line, const STLCells& cells, STLEncoding encoding)
{
    constexpr std::size_t kLongestShown = 120;
    std::vector<std::string_view> parts;
    splitCells(line, cells, parts);
    std::string text;
    for (const std::string_view part : parts)
        text += (text.empty() ? "" : " | ") + cellText(part, encoding);
    return text.size() > kLongestShown ? cutTo(text, kLongestShown) + "…" : text;
}

// Simulators may write the values of a row below each other, behind a list of their names.
void refuseLists(const STLSample& sample)
{
    bool listed = false;
    for (const STLLine& line : sample.head) {
        listed = listed || line.text.starts_with("Variables:");
        if (listed && line.text.starts_with("Values:"))
            throw STLError("The values of each row stand below each other, from line " +
                           std::to_string(line.number + 1) +
                           " on. Write them as a table, a line for each row, and import that.");
    }
}

// Objects and their arrays: what looks like rows of them is none.
void refuseJson(const STLSample& sample)
{
    std::string begin;
    for (std::size_t i = 0; i < sample.head.size() && begin.size() < 2; ++i)
        for (const char c : sample.head[i].text)
            if (!isBlank(c) && c != '\r')
                begin += c;
    if (begin.starts_with("{\"") || begin.starts_with("[{"))
        throw STLError("This is JSON. Write it as a table, a line for each row, and import that.");
}

// Whether a column tells the times of the rows that were looked at, and they go one way.
void weighTimes(STLEvidence& evidence, const STLFormat& format, const std::vector<STLRow>& data)
{
    if (format.timeSource == STLTimeSource::Typed)
        return;
    constexpr std::size_t kMostTurns = 2;  // between the places that were looked at
    STLClock clock(format);
    std::vector<std::string_view> cells;
    std::size_t risen = 0;
    std::size_t fallen = 0;
    std::size_t read = 0;
    double before = 0.0;
    for (const STLRow& row : data) {
        cells.clear();
        for (const STLToken& token : row.cells)
            cells.push_back(token.text);
        const auto seconds = clock.read(cells);
        if (!seconds)
            continue;
        risen += read > 0 && *seconds > before ? 1 : 0;
        fallen += read > 0 && *seconds < before ? 1 : 0;
        before = *seconds;
        ++read;
    }
    evidence.timeColumn = format.timeColumn;
    evidence.times = data.empty() ? 0.0 : static_cast<double>(read) / static_cast<double>(data.size());
    evidence.timesGoOneWay = risen + fallen > 0 && std::min(risen, fallen) <= kMostTurns;
}

STLEvidence evidenceOf(const STLReading& reading, const STLFormat& format, const STLSample& sample,
                       const std::vector<STLRow>& data)
{
    STLEvidence evidence{reading.cells, reading.lines, reading.typed};
    const std::size_t first = static_cast<std::size_t>(format.firstDataLine) - 1;
    if (first < sample.head.size())
        evidence.firstRow = shownCells(sample.head[first].text, format.cells, format.encoding);
    evidence.namesLine = format.namesLine;
    evidence.namesMatch = (format.namesLine != 0 || format.namesListed) && !format.namesInDoubt &&
                          (format.unmatchedLine == 0 || format.unmatchedLine == format.namesLine);
    weighTimes(evidence, format, data);
    return evidence;
}

// A reading with its names and times. What is found only in part speaks against it more than what is not
// there at all.
double scoreOf(const STLReading& reading, const STLFormat& format)
{
    constexpr double kNone = 0.95;
    constexpr double kInPart = 0.85;
    const STLEvidence& evidence = format.evidence;
    const double names = evidence.namesMatch                                ? 1.0
                         : format.namesInDoubt || format.unmatchedLine != 0 ? kInPart
                                                                            : kNone;
    const double times = evidence.timeColumn < 0 ? kNone : evidence.timesGoOneWay ? evidence.times : kInPart;
    return reading.score * names * times;
}

// Takes the rows of other tables out of those that are looked at.
void leaveOtherTables(STLFormat& format, const STLSample& sample, std::vector<STLRow>& data)
{
    const std::set<std::uint64_t> lines = otherTablesLines(sample, format);
    if (lines.empty())
        return;
    std::erase_if(data, [&lines](const STLRow& row) { return lines.contains(row.line->number); });
    const std::vector<STLKind> kinds = kindsOf(data, format.columns.size());
    for (std::size_t c = 0; c < kinds.size(); ++c)
        format.columns[c].kind = kinds[c];
}

// "[1]  5 11 16", "[4]  23 36 58": how many values stand before a line's.
bool runOn(const std::vector<STLRow>& data, std::size_t columns)
{
    if (columns < 3 || data.size() < 2)
        return false;
    for (std::size_t i = 0; i < 2; ++i)
        if (data[i].cells[0].text != '[' + std::to_string(1 + i * (columns - 1)) + ']')
            return false;
    return true;
}

STLFormat formatOf(const std::filesystem::path& file, const STLSample& sample, STLReading reading)
{
    STLFormat format;
    format.cells.separator = reading.separator;
    format.cells.decimal = reading.decimal;
    format.cells.grouping = reading.grouping;
    format.groupsAssumed = reading.thousands;
    format.cells.edges = reading.edges;
    format.cells.rowNames = reading.rowNames;
    format.cells.bars = reading.bars;
    refuseLists(sample);
    refuseJson(sample);
    if (isProse(reading))
        throw STLError(noLineOfNumbers(file));
    if (reading.cells > kMostColumns)
        throw STLError("The lines hold " + std::to_string(reading.cells) + " cells; at most " +
                       std::to_string(kMostColumns) + " columns can be imported.");
    for (const STLLine& line : sample.lines)
        if (!isUtf8(line.text))
            format.encoding = STLEncoding::Windows1252;

    reading.cells = std::max(reading.cells, namedColumns(sample, format, reading.cells));
    std::vector<STLRow> all = rowsOf(sample.lines, format, reading.cells);
    markFactored(all, reading.cells, format.cells);
    const std::vector<STLKind> kinds = kindsOf(all, reading.cells);
    std::vector<STLRow> head = rowsOf(sample.head, format, reading.cells);
    markFactored(head, reading.cells, format.cells);
    const std::size_t firstData = firstDataRow(head, kinds);
    if (firstData == head.size())
        throw STLError(noLineOfNumbers(file));

    format.firstDataLine = firstRaggedLine(sample, format, kinds, head[firstData].line->number);
    std::vector<STLRow> data;
    for (const STLRow& row : all)
        if (row.line->number == 0 || row.line->number >= format.firstDataLine)
            data.push_back(row);
    // Again, without the head.
    for (const STLKind kind : kindsOf(data, reading.cells))
        format.columns.emplace_back().kind = kind;
    guessNames(format, head, firstData);
    guessNamesAbove(format, sample, data);
    guessListedNames(format, sample);
    leaveOtherTables(format, sample, data);
    findFactors(format, data);
    findSuffixes(format, data);
    dropNamesOfCells(format);
    guessNumericNames(format, head, firstData);
    findBlockTitle(format, sample);
    if (!data.empty() && data.front().line->number == format.namesLine && format.namesLine != 0)
        data.erase(data.begin());
    for (STLColumn& column : format.columns)
        if (column.unit.empty())
            column.unit = decoded(column.suffix, format.encoding);
    listTitles(format, sample);
    format.valuesRunOn = runOn(data, format.columns.size());
    guessHead(format, sample);
    if (format.description.empty())
        format.description = file.stem().string();
    findCompactDates(format, data);
    guessTime(format, data);
    format.evidence = evidenceOf(reading, format, sample, data);
    return format;
}

struct WholeReading
{
    STLFormat format;
    double score;
};

// The best reading of the cells and those that come near to it and find other cells, each with its names and
// times; the best one first.
std::vector<WholeReading> wholeReadings(const std::filesystem::path& file, const STLSample& sample)
{
    const std::vector<STLReading> readings = allReadings(sample);
    const STLReading& best = readings.front();
    std::vector<WholeReading> wholes;
    wholes.push_back({formatOf(file, sample, best), 0.0});
    wholes.front().score = scoreOf(best, wholes.front().format);
    for (auto r = readings.begin() + 1; r != readings.end() && wholes.size() < kMostWholeReadings; ++r) {
        const bool oneWithComma =
            r->cells == 1 && r->decimal == ',' && r->score > kNearReading * kSingleCellFactor;
        if (r->grouping != 0 || r->cells == best.cells ||
            (r->score <= kNearReading * best.score && !oneWithComma))
            continue;
        try {
            STLFormat format = formatOf(file, sample, *r);
            const double score = scoreOf(*r, format);
            wholes.push_back({std::move(format), score});
        } catch (const STLError&) {
            // Its cells are alike, but no rows come of them.
        }
    }
    std::stable_sort(wholes.begin(), wholes.end(),
                     [](const WholeReading& a, const WholeReading& b) { return a.score > b.score; });
    return wholes;
}

// Whether words stand above cells that are parted in another way: whose they are is a guess.
bool areNamesApart(const STLSample& sample, const STLFormat& format)
{
    if (format.namesLine == 0 || format.namesLine > sample.head.size() || format.cells.separator == ' ' ||
        format.columns.size() < 2)
        return false;
    std::string_view names = withoutTail(withoutRemark(sample.head[format.namesLine - 1].text, format));
    names.remove_prefix(std::min(names.find_first_not_of(" \t"), names.size()));
    return names.find(format.cells.separator) == std::string_view::npos &&
           names.find(' ') != std::string_view::npos;
}

// What is looked for once, in the reading that was chosen.
void judgeChosen(const STLSample& sample, STLFormat& format)
{
    format.otherLayoutLine = changeOfLayout(sample, format);
    format.namesAreApart = areNamesApart(sample, format);
}

}  // namespace

STLFormat detectFormat(const PlainText& text)
{
    const STLSample sample = readSample(text.path());
    std::vector<WholeReading> wholes = wholeReadings(text.file(), sample);
    STLFormat format = std::move(wholes.front().format);
    if (wholes.size() > 1) {
        const STLFormat& second = wholes[1].format;
        format.otherSeparator = second.cells.separator;
        format.otherDecimal = second.cells.decimal;
        format.otherEvidence = second.evidence;
    }
    judgeChosen(sample, format);
    return format;
}

STLFormat detectFormat(const PlainText& text, char separator, char decimal, char grouping)
{
    const STLSample sample = readSample(text.path());
    STLFormat format = formatOf(text.file(), sample, scoredReading(sample, separator, decimal, grouping));
    judgeChosen(sample, format);
    return format;
}

void takeNames(const PlainText& text, STLFormat& format)
{
    const STLSample sample = readSample(text.path());
    format.namesListed = format.namesAreApart = false;
    for (STLColumn& column : format.columns) {
        column.heading.clear();
        column.name.clear();
        column.unit.clear();
    }
    std::vector<std::string_view> cells;
    for (const STLLine& line : sample.head) {
        if (line.number != format.namesLine && line.number != format.unitsLine)
            continue;
        splitCells(withoutRemark(line.text, format), format.cells, cells);
        cells.resize(format.columns.size());
        for (std::size_t c = 0; c < cells.size(); ++c) {
            STLColumn& column = format.columns[c];
            if (line.number == format.namesLine)
                column.heading = cells[c];
            (line.number == format.namesLine ? column.name : column.unit) =
                cellText(cells[c], format.encoding);
        }
    }
    splitUnits(format);
}

}  // namespace veltrac
