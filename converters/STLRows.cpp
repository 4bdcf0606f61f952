#include "converters/STLRows.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/Characters.h"
#include "core/Utf8.h"

namespace veltrac {

namespace {

constexpr std::size_t kLongestRow = 1U << 20;
constexpr std::size_t kLongestTrouble = 40;
constexpr std::size_t kMostTexts = 10000;
constexpr double kFarthest = 4294967295.0;  // seconds that a time column can count: 136 years
constexpr float kNoValue = std::numeric_limits<float>::quiet_NaN();

}  // namespace

STLRows::STLRows(const std::filesystem::path& file, const STLFormat& format, STLPass pass)
    : m_format(format), m_pass(pass), m_reader(file, kLongestRow), m_clock(format)
{
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        const STLColumn& column = format.columns[c];
        if (column.take)
            m_taken.push_back(c);
        if (column.kind == STLKind::Number && !column.heading.empty() &&
            !readNumber(column.heading, format.cells))
            m_headed.push_back(c);
    }
    m_values.resize(m_taken.size());
}

bool STLRows::next()
{
    m_troubles.clear();
    m_hasRow = false;
    if (!m_reader.next())
        return false;
    ++m_lineNumber;
    if (m_lineNumber < m_format.firstDataLine || !holdsData(m_reader.text()))
        return true;
    const bool hasCells = readCells();
    if (hasCells && isTitle()) {
        m_troubles.clear();
        ++m_losses.titleLines;
        return true;
    }
    m_hasRow = hasCells && readTime() && readValues();
    m_losses.skippedLines += m_hasRow ? 0 : 1;
    return true;
}

// Whether a line is neither empty nor a remark.
bool STLRows::holdsData(std::string_view line) const
{
    // Most lines begin with a digit.
    if (!line.empty() && isDigit(line.front()))
        return true;
    return line.find_first_not_of(" \t\r") != std::string_view::npos && !isRemark(line, m_format);
}

bool STLRows::readCells()
{
    const std::string_view line = m_reader.text();
    if (m_reader.isCut()) {
        note(STLProblem::LineTooLong, -1, line);
        return false;
    }
    const std::size_t columns = m_format.columns.size();
    splitCells(line, m_format.cells, m_cells);
    if (m_cells.size() < columns) {
        note(STLProblem::TooFewCells, -1, line);
        m_cells.resize(columns);
    } else if (m_cells.size() > columns && !(m_cells.size() == columns + 1 && m_cells.back().empty())) {
        // A separator at the end of the line is no cell too many.
        note(STLProblem::TooManyCells, -1, line);
    }
    return true;
}

// Whether the names of the columns stand there again, as above each block of some tools' output.
bool STLRows::isTitle() const
{
    return !m_headed.empty() && std::all_of(m_headed.begin(), m_headed.end(), [this](std::size_t c) {
        return m_cells[c] == m_format.columns[c].heading;
    });
}

bool STLRows::readTime()
{
    if (m_format.timeSource == STLTimeSource::Typed || m_pass == STLPass::WriteValues)
        return true;
    const std::optional<double> seconds = m_clock.read(m_cells);
    const int column = seconds ? m_format.timeColumn : m_clock.unreadable();
    if (!seconds || std::fabs(*seconds) > kFarthest) {
        note(seconds ? STLProblem::FarTime : STLProblem::UnreadableStamp, column,
             m_cells[static_cast<std::size_t>(column)]);
        return false;
    }
    m_seconds = *seconds;
    return true;
}

// False where the line is no row: without a time of its own, one without any number.
bool STLRows::readValues()
{
    const STLLosses before = m_losses;
    for (std::size_t i = 0; i < m_taken.size(); ++i)
        m_values[i] = valueOf(m_taken[i], m_cells[m_taken[i]]);
    if (m_format.timeSource != STLTimeSource::Typed || m_troubles.empty() ||
        m_losses.missingCells() - before.missingCells() != m_values.size())
        return true;
    m_losses = before;
    return false;
}

float STLRows::valueOf(std::size_t column, std::string_view cell)
{
    const STLColumn& wanted = m_format.columns[column];
    if (!wanted.numberTexts) {
        if (m_pass == STLPass::Check && isNumber(cell, m_format.cells))
            return 0.0F;
        if (const auto number = readValue(cell, wanted, m_format.cells))
            return static_cast<float>(*number);
        if (wanted.kind == STLKind::Time)
            if (const auto time = veltrac::readTime(cell))
                return static_cast<float>(static_cast<double>(time->micros) / kMicrosPerSecond);
    }
    if (isMissing(cell, m_format.cells)) {
        ++m_losses.emptyCells;
        return kNoValue;
    }
    if (const float number = wanted.numberTexts ? textNumber(column, cell) : 0.0F; number > 0.0F)
        return number;
    ++m_losses.notNumbers;
    note(STLProblem::NotANumber, static_cast<int>(column), cell);
    return kNoValue;
}

// 1, 2, … by the order in which the texts of a column come; 0 where there are too many.
float STLRows::textNumber(std::size_t column, std::string_view cell)
{
    STLTexts& texts = m_texts[column];
    auto known = texts.find(cell);
    if (known == texts.end() && texts.size() < kMostTexts)
        known = texts.emplace(cell, static_cast<int>(texts.size()) + 1).first;
    return known == texts.end() ? 0.0F : static_cast<float>(known->second);
}

void STLRows::note(STLProblem problem, int column, std::string_view text)
{
    const std::string quote = decoded(text.substr(0, kLongestTrouble), m_format.encoding);
    m_troubles.push_back({m_lineNumber, column, problem,
                          text.size() > kLongestTrouble ? cutTo(quote, kLongestTrouble - 1) + "…" : quote});
}

}  // namespace veltrac
