#include "converters/STLFormat.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "core/Characters.h"
#include "core/TimeUnits.h"
#include "core/Utf8.h"

namespace veltrac {

namespace {

// The last word of a text, in small letters: "ms" of "time_ms", "Zeit in ms" and "ms".
std::string lastWord(std::string_view text)
{
    while (!text.empty() && std::ispunct(static_cast<unsigned char>(text.back())) != 0)
        text.remove_suffix(1);
    std::string word(text.substr(text.find_last_of(" _-[(/") + 1));
    std::transform(word.begin(), word.end(), word.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return word;
}

}  // namespace

bool timesAreUnix(STLTimeSource source)
{
    return source == STLTimeSource::UnixSeconds || source == STLTimeSource::UnixMilliseconds ||
           source == STLTimeSource::UnixMicroseconds || source == STLTimeSource::UnixNanoseconds;
}

bool timesAreNumbers(STLTimeSource source)
{
    return source == STLTimeSource::ElapsedSeconds || timesAreUnix(source);
}

bool timesAreElapsed(STLTimeSource source)
{
    return source == STLTimeSource::ElapsedTime || source == STLTimeSource::ElapsedSeconds;
}

bool tellsTime(const STLFormat& format, std::size_t column)
{
    const int c = static_cast<int>(column);
    const bool hasParts = format.timeSource == STLTimeSource::DateParts || clockIsInParts(format);
    return format.timeSource != STLTimeSource::Typed &&
           (c == format.timeColumn || c == format.dateColumn || c == format.zoneColumn ||
            (hasParts &&
             std::find(format.partColumns.begin(), format.partColumns.end(), c) != format.partColumns.end()));
}

bool clockIsInParts(const STLFormat& format)
{
    return format.timeSource == STLTimeSource::DateAndTime && format.timeColumn >= 0 &&
           format.timeColumn == format.partColumns[static_cast<std::size_t>(STLDatePart::Hour)];
}

bool datesAlone(const STLFormat& format)
{
    switch (format.timeSource) {
        case STLTimeSource::Stamp:
            return format.timeColumn >= 0 &&
                   format.columns[static_cast<std::size_t>(format.timeColumn)].kind == STLKind::Date;
        case STLTimeSource::DateParts:
            return format.partColumns[static_cast<std::size_t>(STLDatePart::Hour)] < 0;
        default:
            return format.timeSource == STLTimeSource::DecimalYears ||
                   format.timeSource == STLTimeSource::SerialDays;
    }
}

namespace {

// That of the column of times; 0 for none.
double unitOfTimes(const STLFormat& format)
{
    const auto column = static_cast<std::size_t>(format.timeColumn);
    return format.timeColumn < 0 || column >= format.columns.size() ? 0.0 : namedUnit(format.columns[column]);
}

}  // namespace

double namedUnit(const STLColumn& times)
{
    const double unit = secondsOfUnit(lastWord(times.unit));
    return unit > 0.0 ? unit : secondsOfUnit(lastWord(times.name));
}

bool secondsAreAssumed(const STLFormat& format)
{
    return unitOfTimes(format) <= 0.0;
}

double secondsPerUnit(const STLFormat& format)
{
    switch (format.timeSource) {
        case STLTimeSource::UnixMilliseconds:
            return 1e-3;
        case STLTimeSource::UnixMicroseconds:
            return 1e-6;
        case STLTimeSource::UnixNanoseconds:
            return 1e-9;
        case STLTimeSource::ElapsedSeconds:
            return secondsAreAssumed(format) ? 1.0 : unitOfTimes(format);
        default:
            return 1.0;
    }
}

std::string_view bareCell(std::string_view cell, const STLColumn& column)
{
    if (!column.prefix.empty() && cell.starts_with(column.prefix)) {
        cell.remove_prefix(column.prefix.size());
        cell.remove_prefix(std::min(cell.find_first_not_of(' '), cell.size()));
    }
    if (!column.suffix.empty() && cell.ends_with(column.suffix)) {
        cell.remove_suffix(column.suffix.size());
        cell = cell.substr(0, cell.find_last_not_of(' ') + 1);
    }
    return cell;
}

std::optional<double> readFactored(std::string_view cell, double factor, const STLCells& cells)
{
    constexpr std::string_view kLetters = "KMGTPE";
    const bool bytes = cell.ends_with('B');
    cell.remove_suffix(bytes ? 1 : 0);
    const bool binary = cell.ends_with('i');
    cell.remove_suffix(binary ? 1 : 0);
    if (cell.empty())
        return std::nullopt;
    const char last = cell.back();
    const std::size_t power =
        kLetters.find(last == 'k' || last == 'g' || last == 't' ? static_cast<char>(last - 32) : last);
    if (power == std::string_view::npos && (binary || !bytes))
        return std::nullopt;
    double product = 1.0;
    for (std::size_t i = 0; power != std::string_view::npos && i <= power; ++i)
        product *= factor;
    cell.remove_suffix(product > 1.0 ? 1 : 0);
    const auto number = readNumber(withoutTail(cell), cells);
    return number ? std::optional(*number * product) : std::nullopt;
}

std::optional<double> readValue(std::string_view cell, const STLColumn& column, const STLCells& cells)
{
    if (const auto number = readNumber(cell, cells))
        return number;
    if (column.factor > 0.0)
        return readFactored(cell, column.factor, cells);
    const std::string_view bare = bareCell(cell, column);
    return bare.size() == cell.size() ? std::nullopt : readNumber(bare, cells);
}

std::string_view keyBefore(std::string_view cell, const STLCells& cells)
{
    for (const std::string_view currency : {"$", "\xE2\x82\xAC", "\xC2\xA3"})
        if (cell.starts_with(currency) && readNumber(cell.substr(currency.size()), cells))
            return cell.substr(0, currency.size());
    const std::size_t sign = cell.find_first_of("=:");
    const bool word = !cell.empty() && std::isalpha(static_cast<unsigned char>(cell.front())) != 0;
    if (!word || sign == std::string_view::npos)
        return {};
    std::string_view value = cell.substr(sign + 1);
    value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
    // The first colon of a stamp stands within its time.
    const bool stamped = cell[sign] == '=' && (readStamp(value) || readTime(value));
    const bool known = stamped || readNumber(value, cells) || !unitBehind(value, cells).empty();
    return known ? cell.substr(0, sign + 1) : std::string_view();
}

std::string_view unitBehind(std::string_view cell, const STLCells& cells)
{
    constexpr std::size_t kLongestUnit = 8;
    const std::size_t digit = cell.find_last_of("0123456789");
    const std::size_t blank = cell.rfind(' ');
    // "m/s2" ends in a digit too, behind a blank.
    const bool apart = blank != std::string_view::npos && blank + 1 < cell.size();
    const std::size_t at = apart ? blank + 1 : digit == std::string_view::npos ? 0 : digit + 1;
    const std::string_view unit = cell.substr(std::min(at, cell.size()));
    // In a cell that holds two numbers, the second is no unit.
    if (at == 0 || unit.empty() || unit.size() > kLongestUnit || isDigit(unit.front()) ||
        readNumber(unit, cells))
        return {};
    // Letters that follow the digits at once are a unit only where they mean one: "3D" is none.
    const bool sign = unit.front() == '%' || static_cast<unsigned char>(unit.front()) >= 0x80;
    if (!apart && !sign && secondsOfUnit(unit) <= 0.0 && unit != "V" && unit != "A" && unit != "mV" &&
        unit != "mA" && unit != "C" && unit != "W" && unit != "Hz")
        return {};
    const std::string_view number = cell.substr(0, at);
    return readNumber(number.substr(0, number.find_last_not_of(' ') + 1), cells) ? unit : std::string_view();
}

namespace {

// The sign of a remark at a line's beginning; empty where there is none.
std::string_view remarkSign(std::string_view line, const STLFormat& format)
{
    const std::size_t at = line.find_first_not_of(" \t");
    if (at == std::string_view::npos)
        return {};
    const std::string_view text = line.substr(at);
    // Most lines begin with a number, and no sign does so.
    if (isDigit(text.front()))
        return {};
    for (const std::string& sign : format.remarks)
        if (!sign.empty() && text.starts_with(sign) &&
            !(sign.size() == 1 && sign.front() == format.cells.separator))
            return text.substr(0, sign.size());
    return {};
}

}  // namespace

bool isEmptyLine(std::string_view line)
{
    return line.find_first_not_of(" \t\r") == std::string_view::npos;
}

bool isRule(std::string_view line)
{
    if (line.find_first_not_of("+-|=: \t\r") != std::string_view::npos)
        return false;
    // "| --- | :-- |"
    const std::size_t bar = line.find('|');
    const std::size_t behind = bar == std::string_view::npos ? bar : line.find_first_not_of(" :", bar + 1);
    return (behind != std::string_view::npos && line.substr(behind).starts_with("---")) ||
           (line.find("----") != std::string_view::npos || line.find("====") != std::string_view::npos ||
            line.find("--|") != std::string_view::npos || line.find("-+-") != std::string_view::npos ||
            line.find("|--") != std::string_view::npos || line.find("|-|") != std::string_view::npos ||
            line.find("|:-") != std::string_view::npos);
}

bool isRemark(std::string_view line, const STLFormat& format)
{
    // A frame is one; a line of dashes alone may be a row of missing values.
    const bool mayBeFrame = !line.empty() && (line.front() == '+' || line.front() == '|' ||
                                              line.front() == ' ' || line.front() == '-');
    return (mayBeFrame && line.find_first_of("+|") != std::string_view::npos && isRule(line)) ||
           !remarkSign(line, format).empty();
}

std::string_view withoutRemark(std::string_view line, const STLFormat& format)
{
    const std::string_view sign = remarkSign(line, format);
    return sign.empty() ? line
                        : line.substr(static_cast<std::size_t>(sign.data() + sign.size() - line.data()));
}

std::string lowered(std::string_view text)
{
    std::string lower(text);
    for (char& c : lower)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    return lower;
}

std::string decoded(std::string_view bytes, STLEncoding encoding)
{
    return encoding == STLEncoding::Utf8 ? std::string(bytes) : utf8OfWindows1252(bytes);
}

std::string cellText(std::string_view cell, STLEncoding encoding)
{
    std::string text = decoded(cell, encoding);
    for (std::size_t at = text.find("\"\""); at != std::string::npos; at = text.find("\"\"", at + 1))
        text.erase(at, 1);
    return text;
}

}  // namespace veltrac
