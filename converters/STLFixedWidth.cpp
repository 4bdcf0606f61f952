#include "converters/STLFixedWidth.h"

#include <algorithm>
#include <map>

namespace veltrac {

namespace {

constexpr std::size_t kFewestLines = 4;
constexpr double kNearlyAllLines = 0.9;

// The lines of a table: those with a number, in ASCII and without tabs.
std::vector<std::string_view> tableLines(const STLSample& sample, const STLCells& cells)
{
    std::vector<std::string_view> lines;
    std::vector<std::string_view> words;
    std::size_t firstTexts = 0;
    std::size_t mostTexts = 0;  // of the others
    for (const STLLine& line : sample.lines) {
        std::string_view text = line.text;
        text = text.substr(0, text.find_last_not_of(" \r") + 1);
        if (std::any_of(text.begin(), text.end(),
                        [](char c) { return c == '\t' || static_cast<unsigned char>(c) >= 0x80; }))
            return {};
        splitCells(text, ' ', words);
        const auto numbers = std::count_if(words.begin(), words.end(), [&](std::string_view word) {
            return readToken(word, cells).kind == STLKind::Number;
        });
        if (numbers == 0)
            continue;
        const std::size_t texts = words.size() - static_cast<std::size_t>(numbers);
        (lines.empty() ? firstTexts : mostTexts) = std::max(lines.empty() ? texts : mostTexts, texts);
        lines.push_back(text);
    }
    // Names may hold numbers, too.
    if (lines.size() > kFewestLines && firstTexts > mostTexts + 1)
        lines.erase(lines.begin());
    return lines;
}

struct Span
{
    std::size_t from;
    std::size_t to;
};

// The stretches between the places that are blank in all lines.
std::vector<Span> filledSpans(const std::vector<std::string_view>& lines)
{
    std::vector<bool> filled;
    for (const std::string_view line : lines) {
        filled.resize(std::max(filled.size(), line.size()));
        for (std::size_t i = 0; i < line.size(); ++i)
            filled[i] = filled[i] || line[i] != ' ';
    }
    std::vector<Span> spans;
    for (std::size_t i = 0; i < filled.size(); ++i) {
        if (filled[i] && (i == 0 || !filled[i - 1]))
            spans.push_back({i, i});
        if (filled[i])
            spans.back().to = i + 1;
    }
    return spans;
}

// Whether the cells of a span begin, or end, below each other.
bool isAligned(const std::vector<std::string_view>& lines, const Span& span)
{
    std::map<std::size_t, std::size_t> begins;
    std::map<std::size_t, std::size_t> ends;
    std::size_t count = 0;
    for (const std::string_view line : lines) {
        const std::string_view cell = line.substr(std::min(span.from, line.size()), span.to - span.from);
        const std::size_t from = cell.find_first_not_of(' ');
        if (from == std::string_view::npos)
            continue;
        ++count;
        ++begins[from];
        ++ends[cell.find_last_not_of(' ')];
    }
    const auto most = [](const std::map<std::size_t, std::size_t>& places) {
        std::size_t best = 0;
        for (const auto& [place, n] : places)
            best = std::max(best, n);
        return static_cast<double>(best);
    };
    return std::max(most(begins), most(ends)) >= kNearlyAllLines * static_cast<double>(count);
}

}  // namespace

std::vector<std::size_t> fixedEdges(const STLSample& sample, char decimal)
{
    STLCells cells;
    cells.separator = ' ';
    cells.decimal = decimal;
    const std::vector<std::string_view> lines = tableLines(sample, cells);
    const std::vector<Span> spans = filledSpans(lines);
    if (lines.size() < kFewestLines || spans.size() < 2)
        return {};
    std::vector<std::size_t> edges;
    for (const Span& span : spans) {
        if (!isAligned(lines, span))
            return {};
        edges.push_back(span.from);
    }
    edges.front() = 0;
    // Cells with blanks inside, or empty ones, are what blanks alone do not tell.
    std::vector<std::string_view> words;
    const std::size_t usual = splitCells(lines.front(), ' ', words);
    const bool ragged = std::any_of(lines.begin(), lines.end(), [&](std::string_view line) {
        return splitCells(line, ' ', words) != usual;
    });
    return ragged ? edges : std::vector<std::size_t>();
}

}  // namespace veltrac
