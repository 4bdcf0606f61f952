#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>

#include "converters/STLNames.h"
#include "core/Characters.h"

namespace veltrac {

namespace {

struct Listed
{
    std::size_t number;
    std::string_view name;
    std::string_view unit;
};

// A part of a text without the blanks around it.
std::string_view bare(std::string_view text)
{
    const std::size_t from = text.find_first_not_of(" \t");
    return from == std::string_view::npos ? std::string_view() : withoutTail(text.substr(from));
}

// "#   2 X_IMAGE    Position along x   [pixel]", "# Column 2: x (mm)", "# col2 = x".
std::optional<Listed> listedName(const STLLine& line, const STLFormat& format)
{
    const std::string_view text = bare(withoutRemark(line.text, format));
    std::size_t at = 0;
    for (const std::string_view word : {"column", "col", "field", "c"})
        if (lowered(text.substr(0, word.size())) == word) {
            at = word.size();
            break;
        }
    // Without a word for it, only a remark is such a list.
    if (at == 0 && !isRemark(line.text, format))
        return std::nullopt;
    at = std::min(text.find_first_not_of(" .#", at), text.size());
    Listed listed{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + at, end, listed.number);
    const std::string_view behind(stop, static_cast<std::size_t>(end - stop));
    const std::size_t from = behind.find_first_not_of(" \t:=.)-");
    if (error != std::errc() || from == 0 || from == std::string_view::npos)
        return std::nullopt;
    listed.name = behind.substr(from);
    if (listed.name.back() == ']') {
        const std::size_t open = listed.name.rfind('[');
        if (open != std::string_view::npos && open > 0) {
            listed.unit = bare(listed.name.substr(open + 1, listed.name.size() - open - 2));
            listed.name = withoutTail(listed.name.substr(0, open));
        }
    }
    // What stands some blanks behind the name explains it.
    listed.name =
        withoutTail(listed.name.substr(0, std::min(listed.name.find("  "), listed.name.find('\t'))));
    const bool worded = std::any_of(listed.name.begin(), listed.name.end(),
                                    [](char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; });
    return worded ? std::optional(listed) : std::nullopt;
}

// What stands behind "Columns are:" in a remark, or behind the "#L" of a spectrum; empty where neither does.
std::string_view labelledText(const STLLine& line, const STLFormat& format)
{
    if (line.text.starts_with("#L "))
        return bare(std::string_view(line.text).substr(3));
    const std::string_view text = bare(withoutRemark(line.text, format));
    const std::size_t colon = text.find(':');
    if (!isRemark(line.text, format) || colon == std::string_view::npos)
        return {};
    const std::string label = lowered(text.substr(0, colon));
    return label.starts_with("column") || label.starts_with("field") || label.starts_with("variable") ||
                   label.starts_with("names")
               ? bare(text.substr(colon + 1))
               : std::string_view();
}

std::vector<std::string_view> partsBetween(std::string_view text, std::string_view between)
{
    std::vector<std::string_view> parts;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(between, at), text.size());
        if (const std::string_view part = bare(text.substr(at, end - at)); !part.empty())
            parts.push_back(part);
        at = end + between.size();
    }
    return parts;
}

// Names in a remark that says so, however many others stand between it and the data.
void guessLabelledNames(STLFormat& format, const STLSample& sample)
{
    for (const STLLine& line : sample.head) {
        if (line.number >= format.firstDataLine)
            return;
        const std::string_view text = labelledText(line, format);
        for (const std::string_view between : {"  ", "\t", ",", ";", " "}) {
            const std::vector<std::string_view> names = partsBetween(text, between);
            if (names.size() != format.columns.size())
                continue;
            format.namesLine = line.number;
            format.namesInRemark = true;
            format.unmatchedLine = 0;
            for (std::size_t c = 0; c < names.size(); ++c) {
                format.columns[c].heading = names[c];
                format.columns[c].name = cellText(names[c], format.encoding);
            }
            splitUnits(format);
            break;
        }
    }
}

}  // namespace

void guessListedNames(STLFormat& format, const STLSample& sample)
{
    if (format.namesLine == 0)
        guessLabelledNames(format, sample);
    if (format.namesLine != 0 && !format.namesInRemark)
        return;
    std::vector<Listed> list;
    for (const STLLine& line : sample.head) {
        if (line.number >= format.firstDataLine)
            break;
        const auto listed = listedName(line, format);
        if (listed && (list.empty() ? listed->number <= 1 : listed->number > list.back().number))
            list.push_back(*listed);
        else if (list.size() == 1)
            list.clear();
    }
    const std::size_t first = list.empty() ? 0 : list.front().number;
    const std::size_t columns = format.columns.size();
    // A column that is told as several numbers leaves some of them out.
    if (list.size() < 2 || list.size() * 2 < columns || list.back().number - first >= columns)
        return;
    for (STLColumn& column : format.columns)
        column.heading = column.name = column.unit = std::string();
    format.namesLine = format.unitsLine = format.unmatchedLine = 0;
    format.namesInRemark = false;
    format.namesListed = true;
    for (const Listed& listed : list) {
        STLColumn& column = format.columns[listed.number - first];
        column.name = decoded(listed.name, format.encoding);
        column.unit = decoded(listed.unit, format.encoding);
    }
    splitUnits(format);
}

}  // namespace veltrac
