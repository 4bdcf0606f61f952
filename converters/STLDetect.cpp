#include "converters/STLDetect.h"

#include <algorithm>
#include <map>

#include "converters/STLGuess.h"
#include "converters/STLSample.h"

namespace {

constexpr std::size_t kMostColumns = 4096;
constexpr double kSingleCellFactor = 0.7;
constexpr double kCloseSecond = 0.9;
constexpr char kSeparators[] = {'\t', ';', '|', ',', ' '};

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
    std::size_t cells = 0;  // the commonest count
    double score = 0.0;
};

double worth(STLKind kind)
{
    return kind == STLKind::Text ? 0.0 : kind == STLKind::Missing ? 0.5 : 1.0;
}

Reading scored(const STLSample& sample, char separator, char decimal)
{
    STLCells cells;
    cells.separator = separator;
    cells.decimal = decimal;
    struct Lines
    {
        std::size_t count = 0;
        double worth = 0.0;
    };
    std::map<std::size_t, Lines> byCount;
    std::vector<std::string_view> line;
    std::size_t looked = 0;
    for (const STLLine& text : sample.lines) {
        if (startsWithRemark(text.text, separator))
            continue;
        ++looked;
        Lines& lines = byCount[splitCells(text.text, separator, line)];
        ++lines.count;
        for (const std::string_view cell : line)
            lines.worth += worth(readToken(cell, cells).kind);
    }
    Reading reading{separator, decimal};
    std::size_t most = 0;
    for (const auto& [count, lines] : byCount) {
        if (lines.count <= most || count == 0)
            continue;
        most = lines.count;
        reading.cells = count;
        const auto typed = lines.worth / static_cast<double>(lines.count * count);
        reading.score = static_cast<double>(lines.count) / static_cast<double>(looked) * typed;
    }
    if (reading.cells == 1)
        reading.score *= kSingleCellFactor;
    return reading;
}

std::vector<Reading> allReadings(const STLSample& sample)
{
    std::vector<Reading> readings;
    for (const char separator : kSeparators)
        for (const char decimal : {'.', ','})
            if (separator != decimal)
                readings.push_back(scored(sample, separator, decimal));
    // The earlier one wins a tie.
    std::stable_sort(readings.begin(), readings.end(),
                     [](const Reading& a, const Reading& b) { return a.score > b.score; });
    return readings;
}

std::string noLineOfNumbers(const std::filesystem::path& file)
{
    return "No line of numbers was found in " + file.filename().string() + ".";
}

STLFormat formatOf(const std::filesystem::path& file, const STLSample& sample, const Reading& reading)
{
    STLFormat format;
    format.cells.separator = reading.separator;
    format.cells.decimal = reading.decimal;
    if (reading.score <= 0.0)
        throw STLError(noLineOfNumbers(file));
    if (reading.cells > kMostColumns)
        throw STLError("The lines hold " + std::to_string(reading.cells) + " cells; at most " +
                       std::to_string(kMostColumns) + " columns can be imported.");
    for (const STLLine& line : sample.lines)
        if (!isUtf8(line.text))
            format.encoding = STLEncoding::Windows1252;

    const std::vector<STLRow> all = rowsOf(sample.lines, format, reading.cells);
    const std::vector<STLKind> kinds = kindsOf(all, reading.cells);
    const std::vector<STLRow> head = rowsOf(sample.head, format, reading.cells);
    const std::size_t firstData = firstDataRow(head, kinds);
    if (firstData == head.size())
        throw STLError(noLineOfNumbers(file));

    for (const STLKind kind : kinds)
        format.columns.push_back({kind, true, false, {}, {}});
    format.firstDataLine = head[firstData].line->number;
    guessNames(format, head, firstData);
    std::vector<STLRow> data;
    for (const STLRow& row : all)
        if (row.line->number == 0 || row.line->number >= format.firstDataLine)
            data.push_back(row);
    guessHead(format, sample);
    guessTime(format, data);
    return format;
}

}  // namespace

STLFormat detectFormat(const std::filesystem::path& file)
{
    const STLSample sample = readSample(file);
    const std::vector<Reading> readings = allReadings(sample);
    STLFormat format = formatOf(file, sample, readings[0]);
    const Reading& second = readings[1];
    if (second.score > kCloseSecond * readings[0].score &&
        (second.cells != readings[0].cells || second.decimal != readings[0].decimal)) {
        format.otherSeparator = second.separator;
        format.otherDecimal = second.decimal;
    }
    return format;
}

STLFormat detectFormat(const std::filesystem::path& file, char separator, char decimal)
{
    const STLSample sample = readSample(file);
    return formatOf(file, sample, scored(sample, separator, decimal));
}
