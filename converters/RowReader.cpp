#include "converters/RowReader.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "converters/TimeStamps.h"
#include "core/WallClock.h"

namespace veltrac {

namespace {

constexpr float kNoValue = std::numeric_limits<float>::quiet_NaN();
constexpr std::size_t kLongestRow = std::size_t{1} << 20;  // bytes; what is longer is no row

}  // namespace

TextRows::TextRows(Layout layout)
    : m_layout(std::move(layout)),
      m_needed(1 + *std::max_element(m_layout.cells.begin(), m_layout.cells.end())),
      m_decimalIsSure(m_layout.knowsDecimal)
{
}

void TextRows::feed(std::string_view bytes, Rows& rows)
{
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        const std::string_view part = bytes.substr(0, end);
        if (end == std::string_view::npos || !m_rest.empty())
            m_rest.append(part.substr(0, kLongestRow - std::min(kLongestRow, m_rest.size())));
        m_overlong = m_overlong || m_rest.size() == kLongestRow;
        if (end == std::string_view::npos)
            return;
        takeLine(m_rest.empty() ? part : std::string_view(m_rest), rows);
        m_rest.clear();
        m_overlong = false;
        bytes.remove_prefix(end + 1);
    }
}

void TextRows::end(bool whole, Rows& rows)
{
    if (!m_rest.empty() && whole)
        takeLine(m_rest, rows);
    m_counts.endsWithin = !m_rest.empty() && !whole;
    m_rest.clear();
}

void TextRows::takeLine(std::string_view line, Rows& rows)
{
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (m_counts.rows + m_counts.headLines == 0 && line.starts_with(kMark))
        line.remove_prefix(kMark.size());
    const std::size_t first = line.find_first_not_of(" \t\r");
    if (first == std::string_view::npos || line[first] == '#')
        return;
    if (!m_known && !learn(line)) {
        ++m_counts.headLines;
        return;
    }
    if (m_overlong)
        m_cells.clear();
    else
        splitCells(line, m_layout.signs, m_cells);
    if (m_dateIsApart)
        joinDate();
    takeCells(rows);
}

// "2016-10-30 02:30:00" in two cells is one time.
void TextRows::joinDate()
{
    if (m_cells.size() < 2)
        return;
    m_stamp.assign(m_cells[0]).append(1, ' ').append(m_cells[1]);
    m_cells.erase(m_cells.begin());
    m_cells.front() = m_stamp;
}

void TextRows::takeCells(Rows& rows)
{
    bool isFaulty = false;
    std::size_t before = 0;
    if (m_layout.timed) {
        const auto time = m_cells.empty() ? std::nullopt : timeIn(m_cells.front(), numberIn(m_cells.front()));
        isFaulty = !time;
        rows.times.push_back(time.value_or(std::numeric_limits<double>::quiet_NaN()));
        before = 1;
    }
    for (const std::size_t cell : m_layout.cells) {
        const std::size_t at = before + cell;
        const auto number = at < m_cells.size() ? numberIn(m_cells[at]) : std::optional<double>();
        if (!number) {
            ++m_counts.missing;
            isFaulty = isFaulty || at >= m_cells.size() || !isMissing(m_cells[at], m_layout.signs);
        }
        rows.values.push_back(number ? static_cast<float>(*number) : kNoValue);
    }
    m_counts.faulty += isFaulty ? 1 : 0;
    ++m_counts.rows;
    ++rows.count;
}

// Until a number has shown its decimal sign, either will do: the first rows may hold whole ones.
std::optional<double> TextRows::numberIn(std::string_view cell)
{
    STLCells& signs = m_layout.signs;
    const auto number = readNumber(cell, signs);
    if (m_decimalIsSure || number) {
        m_decimalIsSure = m_decimalIsSure || cell.find(signs.decimal) != std::string_view::npos;
        return number;
    }
    const char known = signs.decimal;
    const char other = known == '.' ? ',' : '.';
    if (other == signs.separator || other == signs.grouping)
        return std::nullopt;
    signs.decimal = other;
    const auto otherwise = readNumber(cell, signs);
    m_decimalIsSure = otherwise.has_value();
    if (!otherwise)
        signs.decimal = known;
    return otherwise;
}

// Seconds as a number, or a date with its time.
std::optional<double> TextRows::timeIn(std::string_view cell, std::optional<double> seconds)
{
    if (seconds)
        return std::isfinite(*seconds) ? seconds : std::nullopt;
    const auto stamp = readStamp(cell);
    if (!stamp)
        return std::nullopt;
    const auto wall = localWallClock(*stamp, DateOrder::DayMonth);
    if (!wall)
        return std::nullopt;
    const Micros rest = (*wall % kMicrosPerSecond + kMicrosPerSecond) % kMicrosPerSecond;
    return static_cast<double>(localSeconds(*wall - rest)) + static_cast<double>(rest) / kMicrosPerSecond;
}

bool TextRows::fits(std::string_view line, const STLCells& signs, bool exactly)
{
    splitCells(line, signs, m_cells);
    m_dateIsApart = m_layout.timed && m_cells.size() > 1 && readDate(m_cells[0]) &&
                    m_cells[1].find(':') != std::string_view::npos && readTime(m_cells[1]);
    if (m_dateIsApart)
        joinDate();
    if (exactly ? m_cells.size() != cellsNeeded() : m_cells.size() < cellsNeeded())
        return false;
    if (m_layout.timed && !timeIn(m_cells.front(), readNumber(m_cells.front(), signs)))
        return false;
    // Marks alone may be a rule below the head ("--- ---"); a time, a number or a word makes a row.
    bool tells = m_layout.timed;
    const auto reads = [&](std::size_t cell) {
        const std::string_view text = m_cells[cell + (m_layout.timed ? 1 : 0)];
        const bool number = isNumber(text, signs);
        tells = tells || number || text.find_first_not_of("-.*") != std::string_view::npos;
        return number || isMissing(text, signs);
    };
    return std::all_of(m_layout.cells.begin(), m_layout.cells.end(), reads) && tells;
}

// Rather with just as many cells as there are columns than with more of them.
bool TextRows::learn(std::string_view line)
{
    for (const bool exactly : {true, false})
        for (const char decimal : {'.', ','})
            for (const char separator : {'\t', ';', '|', ',', ' '}) {
                STLCells signs = m_layout.signs;
                if (!m_layout.knowsDecimal)
                    signs.decimal = decimal;
                if (!m_layout.knowsSeparator)
                    signs.separator = separator;
                if (signs.separator == signs.decimal || signs.grouping == signs.decimal ||
                    !fits(line, signs, exactly))
                    continue;
                m_layout.signs = signs;
                m_known = true;
                return true;
            }
    return false;
}

FrameRows::FrameRows(std::size_t columns, bool timed)
    : m_columns(columns), m_timed(timed), m_frameBytes(columns * sizeof(float) + (timed ? sizeof(double) : 0))
{
}

void FrameRows::takeFrame(const char* frame, Rows& rows)
{
    double time = 0.0;
    std::memcpy(&time, frame, sizeof time);
    if (!std::isfinite(time))
        ++m_counts.faulty;
    rows.times.push_back(time);
    const std::size_t before = rows.values.size();
    rows.values.resize(before + m_columns);
    std::memcpy(rows.values.data() + before, frame + sizeof time, m_columns * sizeof(float));
}

void FrameRows::feed(std::string_view bytes, Rows& rows)
{
    const std::size_t from = rows.values.size();
    std::size_t count = 0;
    const auto take = [&](const char* frames, std::size_t n) {
        count += n;
        if (m_timed) {
            for (std::size_t i = 0; i < n; ++i)
                takeFrame(frames + i * m_frameBytes, rows);
            return;
        }
        const std::size_t before = rows.values.size();
        rows.values.resize(before + n * m_columns);
        std::memcpy(rows.values.data() + before, frames, n * m_frameBytes);
    };
    if (!m_rest.empty()) {
        const std::size_t lacking = std::min(m_frameBytes - m_rest.size(), bytes.size());
        m_rest.append(bytes.substr(0, lacking));
        bytes.remove_prefix(lacking);
        if (m_rest.size() < m_frameBytes)
            return;
        take(m_rest.data(), 1);
        m_rest.clear();
    }
    if (const std::size_t whole = bytes.size() / m_frameBytes; whole > 0) {
        take(bytes.data(), whole);
        bytes.remove_prefix(whole * m_frameBytes);
    }
    m_rest = bytes;
    m_counts.missing +=
        static_cast<std::uint64_t>(std::count_if(rows.values.begin() + static_cast<std::ptrdiff_t>(from),
                                                 rows.values.end(), [](float v) { return std::isnan(v); }));
    m_counts.rows += count;
    rows.count += count;
}

void FrameRows::end()
{
    m_counts.endsWithin = !m_rest.empty();
    m_rest.clear();
}

}  // namespace veltrac
