#include "converters/STLSample.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/LineReader.h"

namespace veltrac {

namespace {

constexpr std::size_t kLinesAPlace = 200;
constexpr std::size_t kLongestSampledLine = 1U << 20;
constexpr std::size_t kMostHeadLines = 1000;
constexpr std::size_t kMostHeadBytes = 1U << 22;
constexpr int kRunOfDataLines = 5;
constexpr std::size_t kFewLines = 20;  // one in so many

void collect(LineReader& reader, std::size_t count, std::vector<STLLine>& lines)
{
    for (std::size_t taken = 0; taken < count && reader.next();) {
        if (isEmptyLine(reader.text()))
            continue;
        lines.push_back({std::string(reader.text()), 0});
        ++taken;
    }
}

// Of a file that is all in the head.
void pickLines(STLSample& sample)
{
    std::vector<const STLLine*> filled;
    for (const STLLine& line : sample.head)
        if (!isEmptyLine(line.text))
            filled.push_back(&line);
    const std::size_t count = filled.size();
    std::size_t next = 0;
    for (const std::size_t from : {std::size_t{0}, count / 2, count - std::min(count, kLinesAPlace)})
        for (std::size_t i = std::max(from, next); i < std::min(from + kLinesAPlace, count); next = ++i)
            sample.lines.push_back(*filled[i]);
}

// Of a longer one; the head is read already.
void collectLines(LineReader& reader, STLSample& sample)
{
    for (const STLLine& line : sample.head)
        if (sample.lines.size() < kLinesAPlace && !isEmptyLine(line.text))
            sample.lines.push_back(line);
    const std::uint64_t start = reader.position();
    const std::uint64_t end = reader.fileBytes();
    const std::uint64_t tail = end - std::min<std::uint64_t>(end, 1U << 16);
    for (const std::uint64_t from : {std::max(start, end / 2), std::max(start, tail)}) {
        reader.seek(from);
        collect(reader, kLinesAPlace, sample.lines);
    }
}

void refuseBinary(const STLSample& sample)
{
    if (sample.lines.empty())
        throw STLError("The file is empty.");
    std::size_t wide = 0;
    std::size_t binary = 0;
    for (const STLLine& line : sample.lines) {
        const auto zeros = static_cast<std::size_t>(std::count(line.text.begin(), line.text.end(), '\0'));
        binary += zeros > 0 ? 1 : 0;
        wide += zeros * 4 > line.text.size() ? 1 : 0;
    }
    if (wide * 2 > sample.lines.size())
        throw STLError(
            "The file is written in UTF-16 without a byte order mark. Save it as UTF-8 or plain text and "
            "import it again.");
    // A logger that lost its power leaves a stretch of zeros, which is one line that is skipped.
    if (binary * kFewLines > sample.lines.size())
        throw STLError("The file holds binary data; it is no text file.");
}

// Whether texts stand in all columns of numbers, as in a line of names. Where that is but one column, a time
// beside it tells a row.
bool isTitle(const STLRow& row, const std::vector<STLKind>& kinds)
{
    std::size_t numbers = 0;
    bool timed = false;
    for (std::size_t c = 0; c < kinds.size(); ++c) {
        if (kinds[c] == STLKind::Number && row.cells[c].kind != STLKind::Text)
            return false;
        numbers += kinds[c] == STLKind::Number ? 1 : 0;
        timed = timed || (row.cells[c].kind != STLKind::Text && row.cells[c].kind != STLKind::Missing);
    }
    return numbers > 1 || (numbers == 1 && !timed);
}

bool sameTitle(const STLRow& a, const STLRow& b, const std::vector<STLKind>& kinds)
{
    for (std::size_t c = 0; c < kinds.size(); ++c)
        if ((kinds[c] == STLKind::Number || kinds[c] == STLKind::Text) && a.cells[c].text != b.cells[c].text)
            return false;
    return true;
}

bool fits(const STLRow& row, const std::vector<STLKind>& kinds)
{
    std::size_t same = 0;
    std::size_t numbers = 0;
    std::size_t wanted = 0;
    if (isTitle(row, kinds))
        return false;
    for (std::size_t c = 0; c < kinds.size(); ++c) {
        const STLKind kind = row.cells[c].kind;
        same += kind == kinds[c] || kind == STLKind::Missing ? 1 : 0;
        wanted += kinds[c] != STLKind::Text && kinds[c] != STLKind::Missing ? 1 : 0;
        numbers += kind != STLKind::Text && kind != STLKind::Missing && kind == kinds[c] ? 1 : 0;
    }
    return same * 2 >= kinds.size() && (wanted == 0 || numbers > 0);
}

// Whether no value of a row is known, as a sensor that is off leaves them.
bool isAllMissing(const STLRow& row, const std::vector<STLKind>& kinds)
{
    for (std::size_t c = 0; c < kinds.size(); ++c)
        if (row.cells[c].kind != STLKind::Missing &&
            (kinds[c] != STLKind::Text || row.cells[c].kind != STLKind::Text))
            return false;
    return true;
}

// A dash, or nothing, may also stand for no unit.
bool holdsDash(const STLRow& row)
{
    return std::any_of(row.cells.begin(), row.cells.end(), [](const STLToken& cell) {
        return cell.text.size() < 2 && cell.kind == STLKind::Missing;
    });
}

// Words before a number are a line of the head ("Sample Interval,4e-08"), however few columns there are.
bool beginsWithWords(const STLRow& row, const std::vector<STLKind>& kinds)
{
    return row.cells[0].kind == STLKind::Text && kinds[0] != STLKind::Text && kinds.size() <= 2;
}

}  // namespace

STLSample readSample(const std::filesystem::path& file)
{
    LineReader reader(file, kLongestSampledLine);
    STLSample sample;
    std::uint64_t number = 0;
    bool whole = false;
    while (sample.head.size() < kMostHeadLines && reader.position() < kMostHeadBytes) {
        whole = !reader.next();
        if (whole)
            break;
        if (reader.isCut())
            throw STLError("Line " + std::to_string(number + 1) +
                           " is longer than a million bytes; this does not look like lines of numbers.");
        sample.head.push_back({std::string(reader.text()), ++number});
    }
    if (whole)
        pickLines(sample);
    else
        collectLines(reader, sample);
    refuseBinary(sample);
    return sample;
}

std::vector<STLRow> rowsOf(const std::vector<STLLine>& lines, const STLFormat& format, std::size_t count)
{
    std::vector<STLRow> rows;
    std::vector<std::string_view> cells;
    for (const STLLine& line : lines) {
        if (isEmptyLine(line.text) || isRemark(line.text, format) || isRule(line.text))
            continue;
        if (splitCells(line.text, format.cells, cells) == count + 1 && cells.back().empty())
            cells.pop_back();
        if (cells.size() != count)
            continue;
        STLRow row{&line, {}};
        for (const std::string_view cell : cells)
            row.cells.push_back(readToken(cell, format.cells));
        rows.push_back(std::move(row));
    }
    return rows;
}

namespace {

// What the cells of a line are, without an empty one behind the last separator.
std::vector<STLToken> tokensOf(const STLLine& line, const STLFormat& format)
{
    std::vector<std::string_view> cells;
    splitCells(line.text, format.cells, cells);
    if (!cells.empty() && cells.back().empty())
        cells.pop_back();
    std::vector<STLToken> tokens;
    tokens.reserve(cells.size());
    for (const std::string_view cell : cells)
        tokens.push_back(readToken(cell, format.cells));
    return tokens;
}

bool isText(const STLToken& token)
{
    return token.kind == STLKind::Text;
}

bool isTyped(const STLToken& token)
{
    return token.kind != STLKind::Text && token.kind != STLKind::Missing;
}

// Whether numbers can be the names of the columns behind a first one of texts: years, or whole numbers in
// equal steps.
bool canBeNames(const std::vector<STLToken>& tokens, const std::vector<STLKind>& kinds)
{
    return tokens.size() + 1 == kinds.size() && tokens.size() >= 2 && kinds.front() == STLKind::Text &&
           std::all_of(tokens.begin(), tokens.end(),
                       [](const STLToken& token) { return token.kind == STLKind::Number; }) &&
           numericNames(tokens) >= NumericNames::Equal;
}

// Whether a line is a row of missing values, marked as such, with texts where the others have them.
bool isMarkedRow(const std::vector<STLToken>& tokens, const std::vector<STLKind>& kinds)
{
    bool marked = false;
    for (std::size_t c = 0; c < tokens.size(); ++c) {
        if (tokens[c].kind != STLKind::Missing &&
            (!isText(tokens[c]) || c >= kinds.size() || kinds[c] != STLKind::Text))
            return false;
        marked = marked || (tokens[c].kind == STLKind::Missing && !tokens[c].text.empty());
    }
    return marked && tokens.size() == kinds.size();
}

// Empty rows may stand between the names and the first row with a number.
std::uint64_t firstEmptyRow(const STLSample& sample, const STLFormat& format,
                            const std::vector<STLKind>& kinds, std::uint64_t dataLine)
{
    const std::size_t columns = kinds.size();
    for (std::uint64_t first = dataLine; first > 1; --first) {
        const std::vector<STLToken> tokens = tokensOf(sample.head[first - 2], format);
        if (isMarkedRow(tokens, kinds))
            continue;
        if (std::any_of(tokens.begin(), tokens.end(), isText))
            return tokens.size() == columns ? first : dataLine;
        if (tokens.size() + 1 < columns || std::any_of(tokens.begin(), tokens.end(), isTyped))
            break;
    }
    return dataLine;
}

// Whether another line has as many cells, and numbers among them.
bool isCountAgain(const STLSample& sample, const STLFormat& format, const STLLine& line, std::size_t count)
{
    return std::any_of(sample.lines.begin(), sample.lines.end(), [&](const STLLine& other) {
        if (other.number == line.number || isRemark(other.text, format))
            return false;
        const std::vector<STLToken> tokens = tokensOf(other, format);
        return tokens.size() == count && std::any_of(tokens.begin(), tokens.end(), isTyped);
    });
}

}  // namespace

std::uint64_t firstRaggedLine(const STLSample& sample, const STLFormat& format,
                              const std::vector<STLKind>& kinds, std::uint64_t dataLine)
{
    for (; dataLine > 1; --dataLine) {
        const STLLine& above = sample.head[dataLine - 2];
        const std::vector<STLToken> tokens = tokensOf(above, format);
        bool typed = false;
        bool row = !isRemark(above.text, format) && !canBeNames(tokens, kinds);
        const bool repeated =
            tokens.size() < kinds.size() || isCountAgain(sample, format, above, tokens.size());
        for (std::size_t c = 0; c < tokens.size(); ++c) {
            const bool worded =
                repeated && tokens.size() != kinds.size() && (c >= kinds.size() || kinds[c] == STLKind::Text);
            row = row && (!isText(tokens[c]) || worded);
            typed = typed || isTyped(tokens[c]);
        }
        if (!row || !typed)
            break;
    }
    return format.cells.separator == ' ' || kinds.size() < 2 ? dataLine
                                                             : firstEmptyRow(sample, format, kinds, dataLine);
}

std::size_t namedColumns(const STLSample& sample, const STLFormat& format, std::size_t usual)
{
    std::vector<STLToken> above;
    for (const STLLine& line : sample.head) {
        if (isEmptyLine(line.text) || isRemark(line.text, format))
            continue;
        std::vector<STLToken> tokens = tokensOf(line, format);
        if (std::none_of(tokens.begin(), tokens.end(), isTyped)) {
            above = std::move(tokens);
            continue;
        }
        std::size_t named = above.size();
        if (named <= usual)
            return 0;
        // Above the names of rows there is none.
        named += tokens.size() == named + 1 && isText(tokens.front()) ? 1 : 0;
        return std::any_of(sample.lines.begin(), sample.lines.end(),
                           [&](const STLLine& other) {
                               const std::vector<STLToken> cells = tokensOf(other, format);
                               return cells.size() == named &&
                                      std::any_of(cells.begin(), cells.end(), isTyped);
                           })
                   ? named
                   : 0;
    }
    return 0;
}

NumericNames numericNames(const std::vector<STLToken>& cells)
{
    constexpr double kFirstYear = 1500.0;
    constexpr double kLastYear = 2200.0;
    std::vector<double> numbers;
    for (const STLToken& token : cells) {
        if (token.kind != STLKind::Number && token.kind != STLKind::Text && !token.text.empty())
            return NumericNames::None;
        if (token.kind == STLKind::Number)
            numbers.push_back(token.value);
    }
    bool equal = numbers.size() > 2;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (numbers[i] != std::floor(numbers[i]) || (i > 0 && !(numbers[i] > numbers[i - 1])))
            return NumericNames::None;
        equal = equal && (i == 0 || numbers[i] - numbers[i - 1] == numbers[1] - numbers[0]);
    }
    return numbers.size() > 1 && numbers.front() >= kFirstYear && numbers.back() <= kLastYear
               ? NumericNames::Years
           : equal           ? NumericNames::Equal
           : numbers.empty() ? NumericNames::None
                             : NumericNames::Rising;
}

std::vector<STLKind> kindsOf(const std::vector<STLRow>& rows, std::size_t count)
{
    std::vector<std::array<std::size_t, kSTLKinds>> votes(count);
    for (const STLRow& row : rows)
        for (std::size_t c = 0; c < count; ++c)
            ++votes[c][static_cast<std::size_t>(row.cells[c].kind)];
    std::vector<STLKind> kinds;
    for (auto& vote : votes) {
        // What is missing says nothing of the others, unless nothing else is there.
        vote[0] = 0;
        const auto best = std::max_element(vote.begin(), vote.end());
        kinds.push_back(*best == 0 ? STLKind::Missing : static_cast<STLKind>(best - vote.begin()));
    }
    return kinds;
}

namespace {

// Whether a row of texts beside a time is a line of names, as some tools write: no cell of it stands in the
// rows below, and numbers do.
bool isTimedTitle(const std::vector<STLRow>& rows, std::size_t row, const std::vector<STLKind>& kinds)
{
    const std::size_t last = std::min(rows.size(), row + 1 + static_cast<std::size_t>(kRunOfDataLines));
    std::size_t texts = 0;
    bool numbers = false;
    for (std::size_t c = 0; c < kinds.size(); ++c) {
        const STLToken& cell = rows[row].cells[c];
        if (kinds[c] == STLKind::Number && !isText(cell))
            return false;
        numbers = numbers || kinds[c] == STLKind::Number;
        if (!isText(cell))
            continue;
        ++texts;
        for (std::size_t i = row + 1; i < last; ++i)
            if (rows[i].cells[c].text == cell.text ||
                (kinds[c] == STLKind::Number && isText(rows[i].cells[c])))
                return false;
    }
    return numbers && texts > 1 && last > row + 1;
}

// Where names of two and more tables stand above their rows again and again: the first row of the table that
// has the most; rows.size() where they do not.
std::size_t firstRowOfTables(const std::vector<STLRow>& rows, const std::vector<STLKind>& kinds)
{
    struct Table
    {
        std::size_t names;
        std::size_t times = 0;
        std::size_t rows = 0;
    };
    std::vector<Table> tables;
    auto table = tables.end();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (isTitle(rows[i], kinds)) {
            table = std::find_if(tables.begin(), tables.end(),
                                 [&](const Table& t) { return sameTitle(rows[t.names], rows[i], kinds); });
            table = table == tables.end() ? tables.insert(table, Table{i}) : table;
            ++table->times;
        } else if (table != tables.end()) {
            ++table->rows;
        }
    }
    std::erase_if(tables, [](const Table& t) { return t.times < 2 || t.rows == 0; });
    const auto most = std::max_element(tables.begin(), tables.end(),
                                       [](const Table& a, const Table& b) { return a.rows < b.rows; });
    return tables.size() < 2 ? rows.size() : most->names + 1;
}

}  // namespace

std::size_t firstDataRow(const std::vector<STLRow>& rows, const std::vector<STLKind>& kinds)
{
    if (const std::size_t first = firstRowOfTables(rows, kinds); first < rows.size())
        return first;
    for (std::size_t first = 0; first < rows.size(); ++first) {
        bool all = !beginsWithWords(rows[first], kinds) && !isTimedTitle(rows, first, kinds);
        // Blocks may be shorter than the run: the names above the first one stand above each.
        int run = 0;
        for (std::size_t i = first; all && i < rows.size() && run < kRunOfDataLines; ++i) {
            const bool repeated = first > 0 && i > first && isTitle(rows[i], kinds) &&
                                  sameTitle(rows[i], rows[first - 1], kinds);
            all = repeated || fits(rows[i], kinds) || (i > first && isAllMissing(rows[i], kinds));
            run += repeated ? 0 : 1;
        }
        if (!all)
            continue;
        while (first > 0 && isAllMissing(rows[first - 1], kinds) && !holdsDash(rows[first - 1]))
            --first;
        return first;
    }
    return rows.size();
}

}  // namespace veltrac
