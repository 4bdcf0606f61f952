#include "converters/STLDetect.h"

#include <algorithm>
#include <map>

#include "converters/STLFixedWidth.h"
#include "converters/STLHead.h"
#include "converters/STLNames.h"
#include "converters/STLSample.h"
#include "converters/STLTimeGuess.h"
#include "core/Utf8.h"

namespace veltrac {

namespace {

constexpr std::size_t kMostColumns = 4096;
constexpr double kSingleCellFactor = 0.7;
constexpr double kSingleDateFactor = 0.3;
constexpr double kCloseSecond = 0.9;
constexpr char kSeparators[] = {'\t', ';', '|', ',', ' '};
constexpr char kGroupings[] = {0, '.', ',', ' ', '\''};

bool startsWithRemark(std::string_view line, char separator)
{
    const std::size_t at = line.find_first_not_of(" \t");
    const std::string_view text = at == std::string_view::npos ? std::string_view() : line.substr(at);
    return text.starts_with('#') || text.starts_with('%') || text.starts_with("//") ||
           (separator != ';' && text.starts_with(';'));
}

struct Reading
{
    char separator;
    char decimal;
    char grouping = 0;
    std::size_t cells = 0;  // the count that scores best
    double score = 0.0;
    double lines = 0.0;                   // the shares that make it: lines with that count,
    double typed = 0.0;                   // and their cells that are no texts
    std::vector<std::size_t> edges = {};  // of a table of fixed widths
};

// Lines of words have now this count of them, now that, and few are numbers.
bool isProse(const Reading& reading)
{
    constexpr double kFewLines = 0.8;
    constexpr double kFewCells = 0.3;
    return reading.score <= 0.0 || (reading.lines < kFewLines && reading.typed < kFewCells);
}

double worth(STLKind kind)
{
    return kind == STLKind::Text ? 0.0 : kind == STLKind::Missing ? 0.5 : 1.0;
}

Reading scored(const STLSample& sample, char separator, char decimal, char grouping = 0)
{
    STLCells cells;
    cells.separator = separator;
    cells.decimal = decimal;
    cells.grouping = grouping;
    struct Lines
    {
        std::size_t count = 0;
        double worth = 0.0;
        std::size_t endInSeparator = 0;
        std::size_t endInNumber = 0;
        std::size_t dates = 0;
    };
    std::map<std::size_t, Lines> byCount;
    std::vector<std::string_view> line;
    std::size_t looked = 0;
    for (const STLLine& text : sample.lines) {
        if (startsWithRemark(text.text, separator) || isRule(text.text))
            continue;
        ++looked;
        // A separator at the end of a line makes no cell of its own.
        const bool endsInSeparator = splitCells(text.text, separator, line) > 1 && line.back().empty();
        if (endsInSeparator)
            line.pop_back();
        Lines& lines = byCount[line.size()];
        ++lines.count;
        lines.endInSeparator += endsInSeparator ? 1 : 0;
        lines.endInNumber += !line.empty() && readToken(line.back(), cells).kind == STLKind::Number ? 1 : 0;
        for (const std::string_view cell : line) {
            const STLKind kind = readToken(cell, cells).kind;
            const bool number = kind == STLKind::Text &&
                                (!unitBehind(cell, cells).empty() || !keyBefore(cell, cells).empty());
            lines.worth += worth(number ? STLKind::Number : kind);
            lines.dates += kind == STLKind::Date || kind == STLKind::Stamp ? 1 : 0;
        }
    }
    Reading reading{separator, decimal, grouping};
    for (const auto& [count, lines] : byCount) {
        if (count == 0)
            continue;
        const double typed = lines.worth / static_cast<double>(lines.count * count);
        const double share = static_cast<double>(lines.count) / static_cast<double>(looked);
        // Dates alone are no values: their parts may be cells.
        const double single = lines.dates * 2 > lines.count ? kSingleDateFactor : kSingleCellFactor;
        const double score = share * typed * (count == 1 ? single : 1.0);
        if (score > reading.score)
            reading = {separator, decimal, grouping, count, score, share, typed};
    }
    // Unless it is the cell of a last column that is mostly empty.
    const auto longer = byCount.find(reading.cells + 1);
    if (longer != byCount.end() && longer->second.endInNumber > 1 &&
        byCount[reading.cells].endInSeparator == byCount[reading.cells].count)
        ++reading.cells;
    return reading;
}

// A table of blanks in which lines lack cells, as one of fixed widths, where that explains more lines.
Reading inFixedWidths(const STLSample& sample, Reading reading)
{
    if (reading.separator != ' ' || reading.lines == 1.0)
        return reading;
    std::vector<std::size_t> edges = fixedEdges(sample, reading.decimal);
    if (edges.size() < reading.cells)
        return reading;
    reading.cells = edges.size();
    reading.edges = std::move(edges);
    return reading;
}

std::vector<Reading> allReadings(const STLSample& sample)
{
    // Only a cell in quotes can hold its separator, as its decimal sign or between thousands.
    const bool quoted = std::any_of(sample.lines.begin(), sample.lines.end(), [](const STLLine& line) {
        return line.text.find('"') != std::string::npos;
    });
    std::vector<Reading> readings;
    for (const char grouping : kGroupings)
        for (const char separator : kSeparators)
            for (const char decimal : {'.', ','})
                if (grouping != decimal && (quoted || (separator != decimal && grouping != separator)))
                    readings.push_back(scored(sample, separator, decimal, grouping));
    // The earlier one wins a tie, so digits are grouped only where that explains more.
    std::stable_sort(readings.begin(), readings.end(),
                     [](const Reading& a, const Reading& b) { return a.score > b.score; });
    readings.front() = inFixedWidths(sample, std::move(readings.front()));
    return readings;
}

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

STLEvidence evidenceOf(const Reading& reading, const STLFormat& format, const STLSample& sample)
{
    STLCells cells = format.cells;
    cells.separator = reading.separator;
    cells.edges = reading.edges;
    const std::size_t first = static_cast<std::size_t>(format.firstDataLine) - 1;
    return {reading.cells, reading.lines, reading.typed,
            first < sample.head.size() ? shownCells(sample.head[first].text, cells, format.encoding)
                                       : std::string()};
}

STLFormat formatOf(const std::filesystem::path& file, const STLSample& sample, Reading reading)
{
    STLFormat format;
    format.cells.separator = reading.separator;
    format.cells.decimal = reading.decimal;
    format.cells.grouping = reading.grouping;
    format.cells.edges = reading.edges;
    if (isProse(reading))
        throw STLError(noLineOfNumbers(file));
    if (reading.cells > kMostColumns)
        throw STLError("The lines hold " + std::to_string(reading.cells) + " cells; at most " +
                       std::to_string(kMostColumns) + " columns can be imported.");
    for (const STLLine& line : sample.lines)
        if (!isUtf8(line.text))
            format.encoding = STLEncoding::Windows1252;

    reading.cells = std::max(reading.cells, namedColumns(sample, format, reading.cells));
    const std::vector<STLRow> all = rowsOf(sample.lines, format, reading.cells);
    const std::vector<STLKind> kinds = kindsOf(all, reading.cells);
    const std::vector<STLRow> head = rowsOf(sample.head, format, reading.cells);
    const std::size_t firstData = firstDataRow(head, kinds);
    if (firstData == head.size())
        throw STLError(noLineOfNumbers(file));

    format.firstDataLine = firstRaggedLine(sample, format, head[firstData].line->number);
    std::vector<STLRow> data;
    for (const STLRow& row : all)
        if (row.line->number == 0 || row.line->number >= format.firstDataLine)
            data.push_back(row);
    // Again, without the head.
    for (const STLKind kind : kindsOf(data, reading.cells))
        format.columns.emplace_back().kind = kind;
    guessNames(format, head, firstData);
    guessNamesAbove(format, sample, data);
    findSuffixes(format, data);
    guessNumericNames(format, head, firstData);
    for (STLColumn& column : format.columns)
        if (column.unit.empty())
            column.unit = decoded(column.suffix, format.encoding);
    guessHead(format, sample);
    if (format.description.empty())
        format.description = file.stem().string();
    findCompactDates(format, data);
    guessTime(format, data);
    format.evidence = evidenceOf(reading, format, sample);
    return format;
}

}  // namespace

STLFormat detectFormat(const PlainText& text)
{
    const STLSample sample = readSample(text.path());
    const std::vector<Reading> readings = allReadings(sample);
    STLFormat format = formatOf(text.file(), sample, readings[0]);
    const auto second = std::find_if(readings.begin() + 1, readings.end(), [&](const Reading& r) {
        const bool oneWithComma =
            r.cells == 1 && r.decimal == ',' && r.score > kCloseSecond * kSingleCellFactor;
        return r.grouping == 0 && r.cells != readings[0].cells &&
               (r.score > kCloseSecond * readings[0].score || oneWithComma);
    });
    if (second != readings.end()) {
        format.otherSeparator = second->separator;
        format.otherDecimal = second->decimal;
        format.otherEvidence = evidenceOf(*second, format, sample);
    }
    return format;
}

STLFormat detectFormat(const PlainText& text, char separator, char decimal)
{
    const STLSample sample = readSample(text.path());
    return formatOf(text.file(), sample, inFixedWidths(sample, scored(sample, separator, decimal)));
}

void takeNames(const PlainText& text, STLFormat& format)
{
    const STLSample sample = readSample(text.path());
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
