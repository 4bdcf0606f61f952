#include "converters/STLHead.h"

#include <algorithm>
#include <map>

#include "core/FileTime.h"
#include "core/TimeUnits.h"

namespace veltrac {

std::optional<double> readInterval(std::string_view text, const STLCells& cells)
{
    const std::size_t end =
        std::min(text.find_first_of(" \tabcdfghijklmnopqrstuvwxyzHMS\xC2\xCE\xB5"), text.size());
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
    const std::size_t end = std::min(text.find_first_of(" \tkKMGHhsS/"), text.size());
    const auto number = readNumber(text.substr(0, end), cells);
    std::string_view unit = text.substr(end);
    unit.remove_prefix(std::min(unit.find_first_not_of(" \t"), unit.size()));
    double factor = 1.0;
    for (const auto& [prefix, size] :
         {std::pair('k', 1e3), std::pair('K', 1e3), std::pair('M', 1e6), std::pair('G', 1e9)})
        if (unit.starts_with(prefix)) {
            factor = size;
            unit.remove_prefix(1);
        }
    const std::string word = lowered(unit.substr(0, unit.find_first_of(" \t,;")));
    const bool known = word.empty() || word == "hz" || word == "s/s" || word == "sps" || word == "sa/s" ||
                       word == "samples/s" || word == "1/s" || word == "/s" || word == "samples/sec" ||
                       word == "samples";
    return number && known ? std::optional(*number * factor) : std::nullopt;
}

namespace {

// "Sample Interval [ms]" without the unit, and the unit.
std::string withoutUnit(const std::string& key)
{
    const std::size_t bracket = key.find_first_of("[(");
    if (bracket == std::string::npos || bracket == 0 || (key.back() != ']' && key.back() != ')'))
        return key;
    return key.substr(0, key.find_last_not_of(' ', bracket - 1) + 1);
}

std::string unitOf(const std::string& key)
{
    const std::size_t bracket = withoutUnit(key).size();
    const std::size_t from = key.find_first_of("[(", bracket);
    return from == std::string::npos || bracket == key.size() ? std::string()
                                                              : key.substr(from + 1, key.size() - from - 2);
}

}  // namespace

bool tellsKey(std::string_view line)
{
    const std::size_t from = line.find_first_not_of("#%/; \t");
    const std::size_t at = line.find_first_of(":=");
    if (from == std::string_view::npos || at == std::string_view::npos || at <= from)
        return false;
    const std::string_view key = line.substr(from, at - from);
    return keyOf(std::string(key.substr(0, key.find_last_not_of(" \t\"") + 1))) != STLKey::Other;
}

std::size_t endOfBareKey(std::string_view text)
{
    const std::size_t digit = text.find_first_of("0123456789.");
    const bool isTold =
        digit != std::string_view::npos && digit > 0 && text[digit - 1] == ' ' &&
        keyOf(std::string(text.substr(0, text.find_last_not_of(' ', digit - 1) + 1))) != STLKey::Other;
    return isTold ? digit - 1 : std::string_view::npos;
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
                                                                     {"delta_t", STLKey::Interval},
                                                                     {"deltat", STLKey::Interval},
                                                                     {"tstep", STLKey::Interval},
                                                                     {"sampletime", STLKey::Interval},
                                                                     {"sampleinterval", STLKey::Interval},
                                                                     {"samplinginterval", STLKey::Interval},
                                                                     {"sample period", STLKey::Interval},
                                                                     {"sampling period", STLKey::Interval},
                                                                     {"sampling time", STLKey::Interval},
                                                                     {"time step", STLKey::Interval},
                                                                     {"timestep", STLKey::Interval},
                                                                     {"delta t", STLKey::Interval},
                                                                     {"rate", STLKey::Rate},
                                                                     {"samplerate", STLKey::Rate},
                                                                     {"sample_rate", STLKey::Rate},
                                                                     {"sampling_rate", STLKey::Rate},
                                                                     {"sample frequency", STLKey::Rate},
                                                                     {"samplingrate", STLKey::Rate},
                                                                     {"samplefrequency", STLKey::Rate},
                                                                     {"samplingfrequency", STLKey::Rate},
                                                                     {"abtastrate", STLKey::Rate},
                                                                     {"fs", STLKey::Rate},
                                                                     {"f_s", STLKey::Rate},
                                                                     {"frequency", STLKey::Rate},
                                                                     {"sample rate", STLKey::Rate},
                                                                     {"sampling rate", STLKey::Rate},
                                                                     {"sampling frequency", STLKey::Rate},
                                                                     {"title", STLKey::Description},
                                                                     {"description", STLKey::Description},
                                                                     {"tool", STLKey::Tool},
                                                                     {"name", STLKey::Name},
                                                                     {"unit", STLKey::Unit}};
    const auto found = known.find(lowered(withoutUnit(key)));
    return found == known.end() ? STLKey::Other : found->second;
}

namespace {

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
        if (at == std::string_view::npos)
            at = endOfBareKey(text);
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
    // Some tell it for each channel, some the unit behind the key.
    const auto first = [&cells](const std::string& key, const std::string& value) {
        const std::string text =
            value.substr(0, cells.separator == ' ' ? value.npos : value.find(cells.separator));
        return readNumber(text, cells) ? text + ' ' + unitOf(key) : text;
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
                if (const auto step = readInterval(first(key, value), cells); step && isSampleTime(*step))
                    setStep(format, *step);
                break;
            case STLKey::Rate:
                if (const auto hertz = readRate(first(key, value), cells);
                    hertz && isSampleTime(1.0 / *hertz))
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

void guessHead(STLFormat& format, const STLSample& sample)
{
    findHead(format, sample);
    useHead(format);
}

}  // namespace veltrac
