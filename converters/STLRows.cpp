#include "converters/STLRows.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/Characters.h"
#include "core/Utf8.h"
#include "core/WorkerPool.h"

namespace veltrac {

namespace {

constexpr std::size_t kLongestRow = 1U << 20;
constexpr std::size_t kPieceBytes = 1U << 16;
constexpr std::size_t kMostPieceCells = 1U << 18;
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

STLRows::STLRows(const std::filesystem::path& file, const STLFormat& format, STLPass pass)
    : m_format(format), m_pass(pass), m_reader(file, kLongestRow), m_clock(format), m_titles(format)
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
    WorkerPool& pool = WorkerPool::shared();
    std::vector<Piece> pieces(pool.slots());
    const WorkerPool::Stages stages{[&](std::size_t slot) { return take(pieces[slot]); },
                                    [&](std::size_t slot) { read(pieces[slot]); },
                                    [&](std::size_t slot) {
                                        for (std::size_t i = 0; i < pieces[slot].lines.size(); ++i) {
                                            show(pieces[slot], i);
                                            onLine();
                                        }
                                    }};
    return pool.run(stages, goesOn);
}

// -- A piece --

bool STLRows::take(Piece& piece)
{
    piece.firstNumber = m_taken + 1;
    piece.text.clear();
    piece.lines.clear();
    const std::size_t most =
        std::max<std::size_t>(1, kMostPieceCells / std::max<std::size_t>(1, m_format.columns.size()));
    while (piece.text.size() < kPieceBytes && piece.lines.size() < most && m_reader.next()) {
        piece.text += m_reader.text();
        Line line;
        line.end = piece.text.size();
        line.isCut = m_reader.isCut();
        piece.lines.push_back(line);
        ++m_taken;
    }
    return !piece.lines.empty();
}

void STLRows::read(Piece& piece) const
{
    piece.cells.clear();
    piece.values.clear();
    piece.troubles.clear();
    std::vector<std::string_view> cells;
    std::uint64_t number = piece.firstNumber;
    std::size_t begin = 0;
    std::size_t rows = 0;
    for (Line& line : piece.lines) {
        const std::string_view text = std::string_view(piece.text).substr(begin, line.end - begin);
        begin = line.end;
        Found found{piece.troubles, {}};
        line.kind = readCells(line, text, number, cells, found);
        line.cellTroubles = line.valueTroubles = piece.troubles.size();
        if (line.kind == Kind::Cells) {
            line.row = rows++;
            piece.cells.insert(piece.cells.end(), cells.begin(),
                               cells.begin() + static_cast<std::ptrdiff_t>(m_format.columns.size()));
            piece.values.resize(rows * m_takenColumns.size());
            if (!m_numbersTexts) {
                readValues(cells, number, valuesOf(piece, line), found, nullptr);
                line.valueTroubles = piece.troubles.size();
                line.losses = found.losses;
            }
        }
        ++number;
    }
}

STLRows::Kind STLRows::readCells(const Line& line, std::string_view text, std::uint64_t number,
                                 std::vector<std::string_view>& cells, Found& found) const
{
    if (number < m_format.firstDataLine)
        return Kind::NoData;
    if (!holdsData(text))
        return m_titles.isTitle(text) ? Kind::Title : Kind::NoData;
    if (line.isCut) {
        found.troubles.push_back(trouble(number, STLProblem::LineTooLong, -1, text));
        return Kind::NoCells;
    }
    const std::size_t columns = m_format.columns.size();
    splitCells(text, m_format.cells, cells);
    const std::size_t there = cells.size();
    // A separator at the end of the line is no cell too many.
    const bool tooMany = there > columns && !(there == columns + 1 && cells.back().empty());
    cells.resize(std::max(there, columns));
    if (m_titles.has(text, cells))
        return Kind::Title;
    if (there < columns || tooMany)
        found.troubles.push_back(
            trouble(number, tooMany ? STLProblem::TooManyCells : STLProblem::TooFewCells, -1, text));
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

std::span<const std::string_view> STLRows::cellsOf(const Piece& piece, const Line& line) const
{
    const std::size_t columns = m_format.columns.size();
    return std::span(piece.cells).subspan(line.row * columns, columns);
}

std::span<float> STLRows::valuesOf(Piece& piece, const Line& line) const
{
    return std::span(piece.values).subspan(line.row * m_takenColumns.size(), m_takenColumns.size());
}

// -- The present line --

void STLRows::show(Piece& piece, std::size_t index)
{
    const Line& line = piece.lines[index];
    m_lineNumber = piece.firstNumber + index;
    const std::size_t begin = index == 0 ? 0 : piece.lines[index - 1].valueTroubles;
    m_troubles.assign(piece.troubles.begin() + static_cast<std::ptrdiff_t>(begin),
                      piece.troubles.begin() + static_cast<std::ptrdiff_t>(line.cellTroubles));
    m_hasRow = false;
    if (line.kind == Kind::NoData)
        return;
    if (line.kind == Kind::Title) {
        ++m_losses.titleLines;
        return;
    }
    m_hasRow = line.kind == Kind::Cells && readTime(cellsOf(piece, line)) && takeValues(piece, index);
    m_losses.skippedLines += m_hasRow ? 0 : 1;
}

bool STLRows::readTime(std::span<const std::string_view> cells)
{
    if (m_format.timeSource == STLTimeSource::Typed || m_pass == STLPass::WithoutTimes)
        return true;
    const std::optional<double> seconds = m_clock.read(cells);
    const int column = seconds ? m_format.timeColumn : m_clock.unreadable();
    if (!seconds || std::fabs(*seconds) > kFarthest) {
        m_troubles.push_back(trouble(m_lineNumber,
                                     seconds ? STLProblem::FarTime : STLProblem::UnreadableStamp, column,
                                     cells[static_cast<std::size_t>(column)]));
        return false;
    }
    m_seconds = *seconds;
    return true;
}

// False where the line is no row: without a time of its own, one without any number.
bool STLRows::takeValues(Piece& piece, std::size_t index)
{
    const Line& line = piece.lines[index];
    m_values = valuesOf(piece, line);
    Found found{m_troubles, line.losses};
    if (m_numbersTexts)
        readValues(cellsOf(piece, line), m_lineNumber, valuesOf(piece, line), found, &m_texts);
    else
        m_troubles.insert(m_troubles.end(),
                          piece.troubles.begin() + static_cast<std::ptrdiff_t>(line.cellTroubles),
                          piece.troubles.begin() + static_cast<std::ptrdiff_t>(line.valueTroubles));
    const bool empty = m_format.timeSource == STLTimeSource::Typed && !m_troubles.empty() &&
                       found.losses.missingCells() == m_values.size();
    // A line of another shape with words where numbers should be is none of the table's.
    const bool misshapen = !m_troubles.empty() && m_troubles.front().column < 0 &&
                           found.losses.notNumbers > 1 && found.losses.notNumbers * 2 > m_values.size();
    if (empty || misshapen) {
        const std::size_t begin = index == 0 ? 0 : piece.lines[index - 1].end;
        m_troubles.assign(1, trouble(m_lineNumber, STLProblem::NoNumber, -1,
                                     std::string_view(piece.text).substr(begin, line.end - begin)));
        return false;
    }
    for (const STLTrouble& trouble : m_troubles) {
        m_losses.shortRows += trouble.problem == STLProblem::TooFewCells ? 1 : 0;
        m_losses.longRows += trouble.problem == STLProblem::TooManyCells ? 1 : 0;
    }
    m_losses.emptyCells += found.losses.emptyCells;
    m_losses.notNumbers += found.losses.notNumbers;
    return true;
}

// -- Values --

// `texts` is where texts are numbered; without it none of the columns has any that are.
void STLRows::readValues(std::span<const std::string_view> cells, std::uint64_t number,
                         std::span<float> values, Found& found, std::map<std::size_t, STLTexts>* texts) const
{
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = valueOf(m_takenColumns[i], cells[m_takenColumns[i]], number, found, texts);
}

float STLRows::valueOf(std::size_t column, std::string_view cell, std::uint64_t number, Found& found,
                       std::map<std::size_t, STLTexts>* texts) const
{
    const STLColumn& wanted = m_format.columns[column];
    if (!wanted.numberTexts) {
        if (const auto value = readValue(cell, wanted, m_format.cells))
            return static_cast<float>(*value);
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
