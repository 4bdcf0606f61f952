#include "converters/STLGuess.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "core/TimeUnits.h"

namespace veltrac {

namespace {

bool isMostlyText(const STLRow& row)
{
    std::size_t texts = 0;
    std::size_t filled = 0;
    for (const STLToken& token : row.cells) {
        texts += token.kind == STLKind::Text ? 1 : 0;
        filled += token.text.empty() ? 0 : 1;
    }
    return filled > 0 && texts * 2 > filled;
}

std::size_t filledCells(const STLRow& row)
{
    return static_cast<std::size_t>(
        std::count_if(row.cells.begin(), row.cells.end(), [](const STLToken& t) { return !t.text.empty(); }));
}

bool looksLikeUnits(const STLRow& row)
{
    static const std::vector<std::string_view> known = {
        "s",     "ms",   "min",     "h",      "hz",      "khz", "v",   "mv",  "a",   "ma",   "w",
        "kw",    "c",    "f",       "k",      "m",       "mm",  "cm",  "km",  "m/s", "m/s2", "g",
        "kg",    "n",    "kn",      "nm",     "pa",      "kpa", "mpa", "hpa", "bar", "mbar", "%",
        "ppm",   "rpm",  "deg",     "rad",    "db",      "l",   "l/s", "j",   "-",   "sec",  "volts",
        "deg c", "degc", "celsius", "kelvin", "degrees", "ts",  "rn"};
    std::size_t units = 0;
    std::size_t filled = 0;
    bool empties = false;
    for (const STLToken& token : row.cells) {
        if (token.text.empty()) {
            empties = true;
            continue;
        }
        ++filled;
        const std::string lower = lowered(token.text);
        const bool sign = lower.find_first_of("%/[(\xB0\xB5\xC2") != std::string::npos && lower.size() <= 10;
        units += sign || std::find(known.begin(), known.end(), lower) != known.end() ? 1 : 0;
    }
    return units > 0 && (units * 2 >= filled || (empties && units * 3 >= filled));
}

// "Force [kN]" and "Force (kN)" into name and unit.
void splitUnit(STLColumn& column)
{
    for (const auto& [open, close] : {std::pair('[', ']'), std::pair('(', ')')}) {
        const std::size_t from = column.name.rfind(open);
        if (!column.name.ends_with(close) || from == std::string::npos || from == 0)
            continue;
        if (column.unit.empty())
            column.unit = column.name.substr(from + 1, column.name.size() - from - 2);
        column.name.resize(column.name.find_last_not_of(' ', from - 1) + 1);
        return;
    }
}

std::string withoutBrackets(std::string unit)
{
    const bool bracketed = unit.size() >= 2 && ((unit.front() == '[' && unit.back() == ']') ||
                                                (unit.front() == '(' && unit.back() == ')'));
    return bracketed ? unit.substr(1, unit.size() - 2) : unit;
}

void findHead(STLFormat& format, const STLSample& sample)
{
    for (const STLLine& line : sample.head) {
        if (line.number >= format.firstDataLine)
            return;
        if (isEmptyLine(line.text) || line.number == format.namesLine || line.number == format.unitsLine)
            continue;
        std::string_view text = line.text;
        text.remove_prefix(std::min(text.find_first_not_of("#%/; \t"), text.size()));
        std::size_t at = text.find_first_of(":=");
        if (format.cells.separator != ' ')
            at = std::min(at, text.find(format.cells.separator));
        if (at == std::string_view::npos || at == 0 || at + 1 >= text.size())
            continue;
        const auto cut = [&](std::string_view part) {
            const std::size_t from = part.find_first_not_of(" \t\"");
            const std::size_t to = part.find_last_not_of(std::string(" \t\r\";") + format.cells.separator);
            return from == std::string_view::npos || to == std::string_view::npos || to < from
                       ? std::string()
                       : decoded(part.substr(from, to - from + 1), format.encoding);
        };
        format.head.emplace_back(cut(text.substr(0, at)), cut(text.substr(at + 1)));
    }
}

}  // namespace

std::string lowered(std::string_view text)
{
    std::string lower(text);
    for (char& c : lower)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    return lower;
}

std::optional<double> readInterval(std::string_view text, const STLCells& cells)
{
    const std::size_t end = std::min(text.find_first_of(" \tabcdfghijklmnopqrstuvwxyzHMS"), text.size());
    const auto number = readNumber(text.substr(0, end), cells);
    if (!number)
        return std::nullopt;
    std::string unit = lowered(text.substr(end));
    unit.erase(0,
               unit.find_first_not_of(' ') == std::string::npos ? unit.size() : unit.find_first_not_of(' '));
    const double seconds = unit.empty() ? 1.0 : secondsOfUnit(unit);
    return seconds > 0.0 ? std::optional(*number * seconds) : std::nullopt;
}

std::optional<double> readRate(std::string_view text, const STLCells& cells)
{
    const auto number = readNumber(text.substr(0, text.find_first_of(" \tkH")), cells);
    return number ? std::optional(*number * (text.find('k') == std::string_view::npos ? 1.0 : 1000.0))
                  : std::nullopt;
}

STLKey keyOf(const std::string& key)
{
    static const std::map<std::string, STLKey, std::less<>> known = {{"start", STLKey::Start},
                                                                     {"date", STLKey::Date},
                                                                     {"start date", STLKey::Date},
                                                                     {"time", STLKey::Time},
                                                                     {"start time", STLKey::Time},
                                                                     {"interval", STLKey::Interval},
                                                                     {"sample interval", STLKey::Interval},
                                                                     {"sampling interval", STLKey::Interval},
                                                                     {"sample time", STLKey::Interval},
                                                                     {"dt", STLKey::Interval},
                                                                     {"delta_x", STLKey::Interval},
                                                                     {"rate", STLKey::Rate},
                                                                     {"frequency", STLKey::Rate},
                                                                     {"sample rate", STLKey::Rate},
                                                                     {"sampling rate", STLKey::Rate},
                                                                     {"sampling frequency", STLKey::Rate},
                                                                     {"title", STLKey::Description},
                                                                     {"description", STLKey::Description},
                                                                     {"tool", STLKey::Tool},
                                                                     {"name", STLKey::Name},
                                                                     {"unit", STLKey::Unit}};
    const auto found = known.find(lowered(key));
    return found == known.end() ? STLKey::Other : found->second;
}

namespace {

void setStep(STLFormat& format, double seconds)
{
    format.typedStep = seconds;
    format.stepIsTold = true;
}

void useHead(STLFormat& format)
{
    std::optional<DateParts> date;
    std::optional<TimeOfDay> time;
    const STLCells& cells = format.cells;
    // Some tell it for each channel.
    const auto first = [&cells](const std::string& value) {
        return value.substr(0, cells.separator == ' ' ? value.npos : value.find(cells.separator));
    };
    for (const auto& [key, value] : format.head) {
        switch (keyOf(key)) {
            case STLKey::Start:
                if (const auto stamp = readStamp(value))
                    format.typedStart = localWallClock(*stamp, format.order).value_or(0);
                break;
            case STLKey::Date:
                date = date ? date : readDate(value);
                break;
            case STLKey::Time:
                time = time ? time : readTime(value);
                break;
            case STLKey::Interval:
                if (const auto step = readInterval(first(value), cells); step && *step > 0)
                    setStep(format, *step);
                break;
            case STLKey::Rate:
                if (const auto hertz = readRate(first(value), cells); hertz && *hertz > 0)
                    setStep(format, 1.0 / *hertz);
                break;
            case STLKey::Description:
                format.description = value;
                break;
            case STLKey::Tool:
                if (format.description.empty())
                    format.description = value;
                break;
            default:
                break;
        }
    }
    if (date && format.typedStart == 0)
        if (const auto day = midnight(*date, format.order))
            format.typedStart = *day + (time ? time->micros : 0);
}

}  // namespace

void guessNames(STLFormat& format, const std::vector<STLRow>& rows, std::size_t firstData)
{
    const STLRow* names = nullptr;
    const STLRow* units = nullptr;
    for (std::size_t i = firstData; i-- > 0;) {
        if (!isMostlyText(rows[i]))
            continue;
        // Names stand above lines of units, and above those that tell how each value was made.
        if (names != nullptr && !looksLikeUnits(*names) && filledCells(*names) >= filledCells(rows[i]))
            break;
        if (names != nullptr)
            units = names;
        names = &rows[i];
    }
    if (names == nullptr)
        return;
    format.namesLine = names->line->number;
    format.unitsLine = units == nullptr ? 0 : units->line->number;
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        format.columns[c].heading = names->cells[c].text;
        format.columns[c].name = cellText(names->cells[c].text, format.encoding);
        if (units != nullptr)
            format.columns[c].unit = cellText(units->cells[c].text, format.encoding);
    }
    splitUnits(format);
}

namespace {

// Whether the numbers of a row are rising years, or three and more whole ones in equal steps.
bool looksLikeNumericNames(const STLRow& row)
{
    constexpr double kFirstYear = 1500.0;
    constexpr double kLastYear = 2200.0;
    std::vector<double> numbers;
    for (const STLToken& token : row.cells) {
        if (token.kind != STLKind::Number && token.kind != STLKind::Text && !token.text.empty())
            return false;
        if (token.kind == STLKind::Number)
            numbers.push_back(token.value);
    }
    if (numbers.size() < 2)
        return false;
    const double step = numbers[1] - numbers[0];
    bool equal = numbers.size() > 2;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (numbers[i] != std::floor(numbers[i]) || (i > 0 && !(numbers[i] > numbers[i - 1])))
            return false;
        equal = equal && (i == 0 || numbers[i] - numbers[i - 1] == step);
    }
    return equal || (numbers.front() >= kFirstYear && numbers.back() <= kLastYear);
}

}  // namespace

void guessNumericNames(STLFormat& format, const std::vector<STLRow>& rows, std::size_t firstData)
{
    if (format.namesLine != 0 || firstData + 2 >= rows.size() ||
        rows[firstData].line->number != format.firstDataLine || !looksLikeNumericNames(rows[firstData]))
        return;
    const auto alike = static_cast<std::size_t>(std::count_if(
        rows.begin() + static_cast<std::ptrdiff_t>(firstData) + 1, rows.end(), looksLikeNumericNames));
    if (alike * 4 > rows.size() - firstData - 1)
        return;
    const STLRow& names = rows[firstData];
    format.namesLine = names.line->number;
    format.firstDataLine = format.namesLine + 1;
    format.namesInDoubt = true;
    for (std::size_t c = 0; c < format.columns.size(); ++c)
        format.columns[c].name = cellText(names.cells[c].text, format.encoding);
}

void guessNamesAbove(STLFormat& format, const STLSample& sample)
{
    const std::size_t columns = format.columns.size();
    std::vector<STLRow> rows;
    std::vector<std::string_view> cells;
    bool remark = false;
    for (std::size_t i = std::min<std::size_t>(format.firstDataLine - 1, sample.head.size());
         i-- > 0 && !remark;) {
        const STLLine& line = sample.head[i];
        const std::string_view text = withoutRemark(line.text, format);
        if (isEmptyLine(text))
            continue;
        remark = isRemark(line.text, format);
        splitCells(text, format.cells.separator, cells);
        while (!cells.empty() && cells.back().empty())
            cells.pop_back();
        if (remark ? !rows.empty() || cells.size() != columns : cells.size() <= columns)
            break;
        STLRow row{&line, {}};
        for (std::size_t c = 0; c < columns; ++c)
            row.cells.push_back(readToken(cells[c], format.cells));
        rows.insert(rows.begin(), std::move(row));
    }
    // A remark is taken for names only where nothing else is; a word or two are prose.
    const std::size_t fewest = format.cells.separator == ' ' ? 3 : 2;
    if (std::none_of(rows.begin(), rows.end(), isMostlyText) ||
        (remark && (format.namesLine != 0 || columns < fewest)))
        return;
    for (STLColumn& column : format.columns)
        column.heading = column.name = column.unit = std::string();
    guessNames(format, rows, rows.size());
}

void splitUnits(STLFormat& format)
{
    for (STLColumn& column : format.columns) {
        column.unit = withoutBrackets(column.unit);
        splitUnit(column);
    }
}

void guessHead(STLFormat& format, const STLSample& sample)
{
    findHead(format, sample);
    useHead(format);
}

void findSuffixes(STLFormat& format, const std::vector<STLRow>& data)
{
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        STLColumn& column = format.columns[c];
        std::map<std::string_view, std::size_t> votes;
        std::size_t filled = 0;
        for (const STLRow& row : data) {
            filled += row.cells[c].kind == STLKind::Missing ? 0 : 1;
            if (const std::string_view unit = unitBehind(row.cells[c].text, format.cells); !unit.empty())
                ++votes[unit];
        }
        const auto best = std::max_element(votes.begin(), votes.end(),
                                           [](const auto& a, const auto& b) { return a.second < b.second; });
        if (column.kind != STLKind::Text || best == votes.end() || best->second * 2 <= filled)
            continue;
        column.kind = STLKind::Number;
        column.suffix = best->first;
    }
}

}  // namespace veltrac
