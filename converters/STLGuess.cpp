#include "converters/STLGuess.h"

#include <algorithm>
#include <map>

namespace {

std::string lowered(std::string_view text)
{
    std::string lower(text);
    for (char& c : lower)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    return lower;
}

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
        if (at == std::string_view::npos && format.cells.separator != ' ')
            at = text.find(format.cells.separator);
        if (at == std::string_view::npos || at == 0 || at + 1 >= text.size())
            continue;
        const auto cut = [&](std::string_view part) {
            const std::size_t from = part.find_first_not_of(" \t\"");
            const std::size_t to = part.find_last_not_of(" \t\r\";");
            return from == std::string_view::npos || to == std::string_view::npos || to < from
                       ? std::string()
                       : decoded(part.substr(from, to - from + 1), format.encoding);
        };
        format.head.emplace_back(cut(text.substr(0, at)), cut(text.substr(at + 1)));
    }
}

}  // namespace

std::optional<double> readInterval(std::string_view text, const STLCells& cells)
{
    const std::size_t end = std::min(text.find_first_of(" \tabcdfghijklmnopqrstuvwxyzHMS"), text.size());
    const auto number = readNumber(text.substr(0, end), cells);
    if (!number)
        return std::nullopt;
    std::string unit = lowered(text.substr(end));
    unit.erase(0,
               unit.find_first_not_of(' ') == std::string::npos ? unit.size() : unit.find_first_not_of(' '));
    static const std::map<std::string, double> seconds = {
        {"", 1.0}, {"s", 1.0}, {"sec", 1.0}, {"ms", 1e-3}, {"us", 1e-6}, {"min", 60.0}, {"h", 3600.0}};
    const auto found = seconds.find(unit);
    return found == seconds.end() ? std::nullopt : std::optional(*number * found->second);
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

void useHead(STLFormat& format)
{
    std::optional<DateParts> date;
    std::optional<TimeOfDay> time;
    STLCells cells = format.cells;
    for (const auto& [key, value] : format.head) {
        switch (keyOf(key)) {
            case STLKey::Start:
                if (const auto stamp = readStamp(value))
                    format.typedStart = localWallClock(*stamp, format.order).value_or(0);
                break;
            case STLKey::Date:
                date = readDate(value);
                break;
            case STLKey::Time:
                time = readTime(value);
                break;
            case STLKey::Interval:
                if (const auto step = readInterval(value, cells); step && *step > 0)
                    format.typedStep = *step;
                break;
            case STLKey::Rate:
                if (const auto hertz = readRate(value, cells); hertz && *hertz > 0)
                    format.typedStep = 1.0 / *hertz;
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

void findOrder(STLFormat& format, const std::vector<STLRow>& rows, int column)
{
    bool ambiguous = false;
    for (const STLRow& row : rows) {
        std::string_view text = row.cells[static_cast<std::size_t>(column)].text;
        const auto date = takeDate(text);
        if (!date)
            continue;
        if (const auto stamp = readStamp(row.cells[static_cast<std::size_t>(column)].text);
            stamp && stamp->zoneMinutes)
            format.greenwich = true;
        if (date->yearFirst || date->dayFirst)
            continue;
        ambiguous = true;
        if (date->first > 12 || date->second > 12) {
            format.order = date->first > 12 ? DateOrder::DayMonth : DateOrder::MonthDay;
            return;
        }
    }
    format.orderInDoubt = ambiguous;
}

bool namesTime(const std::string& name)
{
    const std::string lower = lowered(name);
    return lower == "t" || lower == "s" || lower.starts_with("time") || lower.starts_with("zeit") ||
           lower.starts_with("elapsed") || lower.starts_with("sec") || lower.starts_with("unix") ||
           lower.starts_with("epoch") || lower.starts_with("timestamp");
}

bool rises(const std::vector<STLRow>& rows, std::size_t column)
{
    // The three places that were looked at may overlap; within a place the column has to rise.
    std::size_t risen = 0;
    std::size_t pairs = 0;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const STLToken& before = rows[i - 1].cells[column];
        const STLToken& now = rows[i].cells[column];
        if (before.kind != STLKind::Number || now.kind != STLKind::Number)
            continue;
        ++pairs;
        risen += now.value > before.value ? 1 : 0;
    }
    return pairs > 0 && pairs - risen <= 2;
}

void findNumericTime(STLFormat& format, const std::vector<STLRow>& data)
{
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        if (format.columns[c].kind != STLKind::Number || data.empty() || !rises(data, c))
            continue;
        const double first = data.front().cells[c].value;
        constexpr double kYear1990 = 631152000.0;
        constexpr double kYear2100 = 4102444800.0;
        const bool seconds = first > kYear1990 && first < kYear2100;
        const bool millis = first > kYear1990 * 1e3 && first < kYear2100 * 1e3;
        if ((seconds || millis) && (c == 0 || namesTime(format.columns[c].name)))
            format.timeSource = seconds ? STLTimeSource::UnixSeconds : STLTimeSource::UnixMilliseconds;
        else if (namesTime(format.columns[c].name))
            format.timeSource = STLTimeSource::ElapsedSeconds;
        else
            continue;
        format.greenwich = format.timeSource != STLTimeSource::ElapsedSeconds;
        format.timeColumn = static_cast<int>(c);
        return;
    }
}

// Times of day that go on from the start's own count from its midnight.
void startAtMidnight(STLFormat& format, const std::vector<STLRow>& data)
{
    if (format.typedStart == 0 || data.empty())
        return;
    const Micros ofDay = format.typedStart % kMicrosPerDay;
    const auto first = readTime(data.front().cells[static_cast<std::size_t>(format.timeColumn)].text);
    constexpr Micros kNear = 3600 * kMicrosPerSecond;
    if (ofDay > 0 && first && first->micros >= ofDay && first->micros < ofDay + kNear)
        format.typedStart -= ofDay;
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
        format.columns[c].name = decoded(names->cells[c].text, format.encoding);
        if (units != nullptr)
            format.columns[c].unit = decoded(units->cells[c].text, format.encoding);
    }
    splitUnits(format);
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

void guessTime(STLFormat& format, const std::vector<STLRow>& data)
{
    const auto firstOf = [&](STLKind kind) {
        const auto found = std::find_if(format.columns.begin(), format.columns.end(),
                                        [&](const STLColumn& c) { return c.kind == kind; });
        return found == format.columns.end() ? -1 : static_cast<int>(found - format.columns.begin());
    };
    const int stamp = firstOf(STLKind::Stamp);
    const int date = firstOf(STLKind::Date);
    const int time = firstOf(STLKind::Time);
    if (stamp >= 0) {
        format.timeSource = STLTimeSource::Stamp;
        format.timeColumn = stamp;
    } else if (date >= 0 && time >= 0) {
        format.timeSource = STLTimeSource::DateAndTime;
        format.timeColumn = time;
        format.dateColumn = date;
    } else if (date >= 0) {
        format.timeSource = STLTimeSource::Stamp;
        format.timeColumn = date;
    } else if (time >= 0) {
        format.timeSource = STLTimeSource::ElapsedTime;
        format.timeColumn = time;
        startAtMidnight(format, data);
    } else {
        findNumericTime(format, data);
    }
    if (const int dated = format.dateColumn >= 0 ? format.dateColumn : format.timeColumn;
        dated >= 0 && format.timeSource != STLTimeSource::ElapsedTime)
        findOrder(format, data, dated);

    for (std::size_t c = 0; c < format.columns.size(); ++c)
        format.columns[c].take =
            format.columns[c].kind == STLKind::Number && static_cast<int>(c) != format.timeColumn;
}
