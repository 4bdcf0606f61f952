#include "converters/STLSample.h"

#include <algorithm>
#include <array>

#include "core/LineReader.h"

namespace {

constexpr std::size_t kLinesAPlace = 200;
constexpr std::size_t kLongestLine = 1U << 20;
constexpr std::size_t kMostHeadLines = 1000;
constexpr int kRunOfDataLines = 5;

void collect(LineReader& reader, std::size_t count, std::vector<STLLine>& lines)
{
    for (std::size_t taken = 0; taken < count && reader.next();) {
        if (isEmptyLine(reader.text()))
            continue;
        lines.push_back({std::string(reader.text()), 0});
        ++taken;
    }
}

void refuseBinary(const STLSample& sample)
{
    if (sample.lines.empty())
        throw STLError("The file is empty.");
    const std::string& first = sample.lines.front().text;
    if (first.starts_with("\xFF\xFE") || first.starts_with("\xFE\xFF"))
        throw STLError("The file is written in UTF-16. Save it as UTF-8 or plain text and import it again.");
    std::size_t zeros = 0;
    std::size_t bytes = 0;
    for (const STLLine& line : sample.lines) {
        zeros += static_cast<std::size_t>(std::count(line.text.begin(), line.text.end(), '\0'));
        bytes += line.text.size();
    }
    if (zeros * 4 > bytes)
        throw STLError("The file is written in UTF-16. Save it as UTF-8 or plain text and import it again.");
    if (zeros > 0)
        throw STLError("The file holds binary data; it is no text file.");
}

bool fits(const STLRow& row, const std::vector<STLKind>& kinds)
{
    std::size_t same = 0;
    std::size_t numbers = 0;
    std::size_t wanted = 0;
    for (std::size_t c = 0; c < kinds.size(); ++c) {
        const STLKind kind = row.cells[c].kind;
        same += kind == kinds[c] || kind == STLKind::Missing ? 1 : 0;
        wanted += kinds[c] != STLKind::Text && kinds[c] != STLKind::Missing ? 1 : 0;
        numbers += kind != STLKind::Text && kind != STLKind::Missing && kind == kinds[c] ? 1 : 0;
    }
    return same * 2 >= kinds.size() && (wanted == 0 || numbers > 0);
}

}  // namespace

STLSample readSample(const std::filesystem::path& file)
{
    LineReader reader(file, kLongestLine);
    STLSample sample;
    std::uint64_t number = 0;
    while (sample.head.size() < kMostHeadLines && sample.lines.size() < kLinesAPlace && reader.next()) {
        if (reader.isCut())
            throw STLError("Line " + std::to_string(number + 1) +
                           " is longer than a million bytes; this does not look like lines of numbers.");
        sample.head.push_back({std::string(reader.text()), ++number});
        if (!isEmptyLine(reader.text()))
            sample.lines.push_back(sample.head.back());
    }
    const std::uint64_t start = reader.position();
    const std::uint64_t end = reader.fileBytes();
    const std::uint64_t tail = end > (1U << 16) ? end - (1U << 16) : 0;
    if (start < end / 2) {
        reader.seek(end / 2);
        collect(reader, kLinesAPlace, sample.lines);
    }
    if (start < tail) {
        reader.seek(tail);
        collect(reader, kLinesAPlace, sample.lines);
    }
    refuseBinary(sample);
    return sample;
}

bool isEmptyLine(std::string_view line)
{
    return line.find_first_not_of(" \t\r") == std::string_view::npos;
}

bool isUtf8(std::string_view text)
{
    for (std::size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        const std::size_t more = c < 0x80 ? 0 : (c & 0xE0U) == 0xC0 ? 1 : (c & 0xF0U) == 0xE0 ? 2 : 3;
        if (more == 3 && (c & 0xF8U) != 0xF0)
            return false;
        for (std::size_t k = 1; k <= more; ++k)
            if (i + k >= text.size() || (static_cast<unsigned char>(text[i + k]) & 0xC0U) != 0x80)
                return false;
        i += more + 1;
    }
    return true;
}

std::vector<STLRow> rowsOf(const std::vector<STLLine>& lines, const STLFormat& format, std::size_t count)
{
    std::vector<STLRow> rows;
    std::vector<std::string_view> cells;
    for (const STLLine& line : lines) {
        if (isEmptyLine(line.text) || isRemark(line.text, format))
            continue;
        if (splitCells(line.text, format.cells.separator, cells) == count + 1 && cells.back().empty())
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

std::size_t firstDataRow(const std::vector<STLRow>& rows, const std::vector<STLKind>& kinds)
{
    for (std::size_t first = 0; first < rows.size(); ++first) {
        const std::size_t end = std::min(rows.size(), first + kRunOfDataLines);
        bool all = true;
        for (std::size_t i = first; i < end; ++i)
            all = all && fits(rows[i], kinds);
        if (all)
            return first;
    }
    return rows.size();
}
