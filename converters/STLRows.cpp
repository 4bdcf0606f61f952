#include "converters/STLRows.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "core/Characters.h"
#include "core/Utf8.h"
#include "core/WorkerPool.h"

namespace veltrac {

namespace {

constexpr std::size_t kLongestRow = 1U << 20;
constexpr std::size_t kPieceBytes = 1U << 16;
constexpr std::size_t kMostPieceCells = 1U << 20;
constexpr std::size_t kLongestTrouble = 40;
constexpr std::size_t kMostTexts = 10000;
constexpr double kFarthest = 4294967295.0;  // seconds that a time column can count: 136 years
constexpr float kNoValue = std::numeric_limits<float>::quiet_NaN();

// 1, 2, … by the order in which the texts of a column come; 0 where there are too many.
float textNumber(STLTexts& texts, std::string_view cell)
{
    auto known = texts.find(cell);
    if (known == texts.end() && texts.size() < kMostTexts)
        known = texts.emplace(cell, static_cast<int>(texts.size()) + 1).first;
    return known == texts.end() ? 0.0F : static_cast<float>(known->second);
}

}  // namespace

void STLLosses::addCells(const STLLosses& ofRow)
{
    emptyCells += ofRow.emptyCells;
    notNumbers += ofRow.notNumbers;
    roundedCells += ofRow.roundedCells;
    mostRounded = std::max(mostRounded, ofRow.mostRounded);
}

STLRows::STLRows(const std::filesystem::path& file, const STLFormat& format, STLPass pass)
    : m_format(format),
      m_pass(pass),
      m_reader(file, kLongestRow),
      m_clock(format),
      m_titles(format),
      m_tables(format),
      m_plain(format)
{
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        const STLColumn& column = format.columns[c];
        if (column.take)
            m_takenColumns.push_back(c);
        m_numbersTexts = m_numbersTexts || (column.take && column.numberTexts);
    }
}

JobOutcome STLRows::walk(const std::function<void()>& onLine, const std::function<bool()>& goesOn)
{
    passHead();
    WorkerPool& pool = WorkerPool::shared();
    std::vector<Piece> pieces(pool.slots());
    const WorkerPool::Stages stages{[&](std::size_t slot) { return take(pieces[slot]); },
                                    [&](std::size_t slot) { read(pieces[slot]); },
                                    [&](std::size_t slot) {
                                        Piece& piece = pieces[slot];
                                        for (STLTrouble& trouble : piece.troubles)
                                            trouble.line += m_lineNumber;
                                        for (Place place; place.line < piece.lines.size(); ++place.line) {
                                            show(piece, place);
                                            onLine();
                                        }
                                    }};
    return pool.run(stages, goesOn);
}

// -- A piece --

void STLRows::passHead()
{
    while (m_lineNumber + 1 < m_format.firstDataLine && m_reader.next())
        ++m_lineNumber;
}

bool STLRows::take(Piece& piece)
{
    // Lines with cells are two bytes long at least, their ends included.
    const std::size_t most = 2 * kMostPieceCells / std::max<std::size_t>(1, m_format.columns.size());
    if (!m_reader.nextLines(std::min(kPieceBytes, most)))
        return false;
    piece.text.assign(m_reader.text());
    piece.isCut = m_reader.isCut();
    return true;
}

void STLRows::read(Piece& piece) const
{
    piece.lines.clear();
    piece.odd.clear();
    piece.troubles.clear();
    piece.rows = 0;
    Desk desk;
    const std::string_view text = piece.text;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(m_reader.newLine(), begin), text.size());
        Found found{piece.troubles, {}};
        Odd odd;
        const std::size_t before = piece.troubles.size();
        const Kind kind = readLine(piece, text.substr(begin, end - begin), desk, found, odd);
        const bool isOdd = piece.troubles.size() != before || found.losses.areAny();
        piece.lines.push_back({static_cast<std::uint32_t>(end), static_cast<std::uint32_t>(desk.count), kind,
                               isOdd, desk.isNames});
        if (isOdd) {
            odd.valueTroubles = piece.troubles.size();
            odd.losses = found.losses;
            piece.odd.push_back(odd);
        }
        begin = end + 1;
    }
}

// For another row.
void STLRows::makeRoom(Piece& piece) const
{
    const std::size_t rows = piece.rows + 1;
    const std::size_t columns = std::max<std::size_t>(1, m_format.columns.size());
    if (piece.cells.size() >= rows * columns)
        return;
    constexpr std::size_t kCellsAtFirst = 4096;
    const std::size_t room = std::max(kCellsAtFirst / columns, 2 * rows);
    piece.cells.resize(room * columns);
    piece.values.resize(room * m_takenColumns.size());
    piece.times.resize(timesAreWanted() ? room : 0);
}

STLRows::Kind STLRows::readLine(Piece& piece, std::string_view text, Desk& desk, Found& found, Odd& odd) const
{
    if (!holdsData(text))
        return m_titles.isTitle(text) ? Kind::Title : Kind::NoData;
    const std::size_t number = piece.lines.size() + 1;
    if (piece.isCut) {
        found.troubles.push_back(trouble(number, STLProblem::LineTooLong, -1, text));
        odd.cellTroubles = found.troubles.size();
        return Kind::NoCells;
    }
    makeRoom(piece);
    const std::span<std::string_view> cells = cellsOf(piece, piece.rows);
    const std::span<float> values = valuesOf(piece, piece.rows);
    desk.count = cells.size();
    desk.isNames = false;
    if (m_plain.read(text, cells, values, desk.unread)) {
        if (m_titles.has(text, cells))
            return Kind::Title;
        desk.isNames = !values.empty() && desk.unread.size() == values.size() && m_tables.areNames(cells);
    } else {
        if (readCells(piece, text, desk, found) == Kind::Title)
            return Kind::Title;
        desk.unread.resize(values.size());
        std::iota(desk.unread.begin(), desk.unread.end(), std::size_t{0});
    }
    odd.cellTroubles = found.troubles.size();
    if (timesAreWanted())
        piece.times[piece.rows] = m_clock.reader().read(cells);
    ++piece.rows;
    if (!m_numbersTexts)
        for (const std::size_t i : desk.unread)
            values[i] = valueOf(m_takenColumns[i], cells[m_takenColumns[i]], number, found, nullptr);
    return Kind::Cells;
}

// The same of rows of every kind, without their values.
STLRows::Kind STLRows::readCells(Piece& piece, std::string_view text, Desk& desk, Found& found) const
{
    const std::size_t columns = m_format.columns.size();
    std::vector<std::string_view>& cells = desk.cells;
    splitCells(text, m_format.cells, cells);
    const std::size_t there = desk.count = cells.size();
    desk.isNames = m_tables.areNames(cells);
    // A separator at the end of the line is no cell too many.
    const bool tooMany = there > columns && !(there == columns + 1 && cells.back().empty());
    cells.resize(std::max(there, columns));
    if (m_titles.has(text, cells))
        return Kind::Title;
    if (there < columns || tooMany)
        found.troubles.push_back(trouble(
            piece.lines.size() + 1, tooMany ? STLProblem::TooManyCells : STLProblem::TooFewCells, -1, text));
    std::copy_n(cells.begin(), columns, cellsOf(piece, piece.rows).begin());
    return Kind::Cells;
}

// Whether a line is neither empty nor a remark.
bool STLRows::holdsData(std::string_view line) const
{
    // Most lines begin with a digit.
    if (!line.empty() && isDigit(line.front()))
        return true;
    return line.find_first_not_of(" \t\r") != std::string_view::npos && !isRemark(line, m_format);
}

std::span<std::string_view> STLRows::cellsOf(Piece& piece, std::size_t row) const
{
    const std::size_t columns = m_format.columns.size();
    return std::span(piece.cells).subspan(row * columns, columns);
}

std::span<float> STLRows::valuesOf(Piece& piece, std::size_t row) const
{
    return std::span(piece.values).subspan(row * m_takenColumns.size(), m_takenColumns.size());
}

// -- The present line --

void STLRows::show(Piece& piece, Place& place)
{
    const Line& line = piece.lines[place.line];
    ++m_lineNumber;
    m_troubles.clear();
    m_hasRow = false;
    if (line.isOdd) {
        const std::size_t begin = place.odd == 0 ? 0 : piece.odd[place.odd - 1].valueTroubles;
        const auto from = piece.troubles.begin() + static_cast<std::ptrdiff_t>(begin);
        m_troubles.assign(
            from, piece.troubles.begin() + static_cast<std::ptrdiff_t>(piece.odd[place.odd].cellTroubles));
    }
    switch (line.kind) {
        case Kind::NoData:
            m_tables.passBreak();
            m_behindBreak = m_anyRow;
            break;
        case Kind::Title:
            m_tables.passOwnNames();
            m_behindBreak = false;
            ++m_losses.titleLines;
            break;
        case Kind::NoCells:
            ++m_losses.skippedLines;
            break;
        case Kind::Cells:
            showCells(piece, place);
            ++place.row;
            break;
    }
    place.odd += line.isOdd ? 1 : 0;
}

// A line with cells is a row where it is none of another table's and has a time.
void STLRows::showCells(Piece& piece, const Place& place)
{
    const Line& line = piece.lines[place.line];
    const bool isOthers = line.isNames ? m_tables.passNames(line.cells) : m_tables.isOthers(line.cells);
    if (isOthers) {
        m_troubles.clear();
        if (line.isNames)
            m_troubles.push_back(lineTrouble(piece, place, STLProblem::OtherTable));
        ++m_losses.otherLines;
        m_behindBreak = false;
        return;
    }
    m_values = valuesOf(piece, place.row);
    m_hasRow = readTime(piece, place.row) && (!(line.isOdd || m_numbersTexts) || takeOddValues(piece, place));
    m_losses.skippedLines += m_hasRow ? 0 : 1;
    m_anyRow = m_anyRow || m_hasRow;
    m_lastSeconds = m_hasRow ? m_seconds : m_lastSeconds;
    if (m_behindBreak && m_hasRow) {
        m_behindBreak = false;
        if (++m_breaks.count == 1)
            m_breaks.firstLine = m_lineNumber;
    }
}

STLTrouble STLRows::lineTrouble(const Piece& piece, const Place& place, STLProblem problem) const
{
    const std::size_t begin = place.line == 0 ? 0 : piece.lines[place.line - 1].end + 1;
    const std::string_view text = piece.text;
    return trouble(m_lineNumber, problem, -1, text.substr(begin, piece.lines[place.line].end - begin));
}

bool STLRows::timesAreWanted() const
{
    return m_format.timeSource != STLTimeSource::Typed && m_pass == STLPass::Whole;
}

bool STLRows::readTime(Piece& piece, std::size_t row)
{
    if (!timesAreWanted())
        return true;
    const std::span<const std::string_view> cells = cellsOf(piece, row);
    const std::optional<double> seconds = m_clock.read(cells, piece.times[row]);
    if (seconds && std::fabs(*seconds) <= kFarthest) {
        m_seconds = *seconds;
        return true;
    }
    const int column = seconds ? m_format.timeColumn : m_clock.unreadable();
    m_troubles.push_back(trouble(m_lineNumber, seconds ? STLProblem::FarTime : STLProblem::UnreadableStamp,
                                 column, cells[static_cast<std::size_t>(column)]));
    return false;
}

// What a row lacks, and its values where texts are numbered. False where the line is no row: without a time
// of its own, one without any number, and so is a short one whose time runs back.
bool STLRows::takeOddValues(Piece& piece, const Place& place)
{
    const bool isOdd = piece.lines[place.line].isOdd;
    Found found{m_troubles, isOdd ? piece.odd[place.odd].losses : STLLosses()};
    if (m_numbersTexts) {
        const auto cells = cellsOf(piece, place.row);
        const auto values = valuesOf(piece, place.row);
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = valueOf(m_takenColumns[i], cells[m_takenColumns[i]], m_lineNumber, found, &m_texts);
    } else {
        const Odd& odd = piece.odd[place.odd];
        m_troubles.insert(m_troubles.end(),
                          piece.troubles.begin() + static_cast<std::ptrdiff_t>(odd.cellTroubles),
                          piece.troubles.begin() + static_cast<std::ptrdiff_t>(odd.valueTroubles));
    }
    const bool empty = m_format.timeSource == STLTimeSource::Typed && !m_troubles.empty() &&
                       found.losses.missingCells() == m_values.size();
    // A line of another shape with words where numbers should be is none of the table's.
    const bool misshapen = !m_troubles.empty() && m_troubles.front().column < 0 &&
                           found.losses.notNumbers > 1 && found.losses.notNumbers * 2 > m_values.size();
    // A line that was cut within its time tells an earlier one.
    const bool brokenOff = !m_troubles.empty() && m_troubles.front().problem == STLProblem::TooFewCells &&
                           found.losses.missingCells() == m_values.size() && m_lastSeconds > 0.0 &&
                           m_seconds < m_lastSeconds;
    if (empty || misshapen || brokenOff) {
        m_troubles.assign(1, lineTrouble(piece, place, STLProblem::NoNumber));
        return false;
    }
    for (const STLTrouble& trouble : m_troubles) {
        m_losses.shortRows += trouble.problem == STLProblem::TooFewCells ? 1 : 0;
        m_losses.longRows += trouble.problem == STLProblem::TooManyCells ? 1 : 0;
    }
    m_losses.addCells(found.losses);
    return true;
}

// -- Values --

float STLRows::Found::rounded(double value)
{
    const auto kept = static_cast<float>(value);
    const double off = std::fabs(value - static_cast<double>(kept));
    if (std::fabs(value) > kMostExactWhole && off > 0.0) {
        ++losses.roundedCells;
        losses.mostRounded = std::max(losses.mostRounded, off);
    }
    return kept;
}

// `texts` is where texts are numbered; without it none of the columns has any that are.
float STLRows::valueOf(std::size_t column, std::string_view cell, std::uint64_t number, Found& found,
                       std::map<std::size_t, STLTexts>* texts) const
{
    const STLColumn& wanted = m_format.columns[column];
    if (!wanted.numberTexts) {
        if (const auto value = readValue(cell, wanted, m_format.cells))
            return found.rounded(*value);
        if (wanted.kind == STLKind::Time)
            if (const auto time = veltrac::readTime(cell))
                return static_cast<float>(static_cast<double>(time->micros) / kMicrosPerSecond);
    }
    if (isMissing(cell, m_format.cells)) {
        ++found.losses.emptyCells;
        return kNoValue;
    }
    if (wanted.numberTexts && texts != nullptr)
        if (const float value = textNumber((*texts)[column], cell); value > 0.0F)
            return value;
    ++found.losses.notNumbers;
    found.troubles.push_back(trouble(number, STLProblem::NotANumber, static_cast<int>(column), cell));
    return kNoValue;
}

STLTrouble STLRows::trouble(std::uint64_t number, STLProblem problem, int column, std::string_view text) const
{
    const std::string quote = decoded(text.substr(0, kLongestTrouble), m_format.encoding);
    return {number, column, problem,
            text.size() > kLongestTrouble ? cutTo(quote, kLongestTrouble - 1) + "…" : quote};
}

}  // namespace veltrac
