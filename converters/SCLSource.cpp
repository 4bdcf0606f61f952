#include "converters/SCLSource.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>

#include "converters/STLHead.h"
#include "converters/STLSample.h"
#include "converters/STLSteps.h"
#include "converters/STLTimeText.h"
#include "converters/UnitWords.h"
#include "converters/WordedDates.h"
#include "core/FileTime.h"
#include "core/TextNumbers.h"
#include "core/Utf8.h"

namespace veltrac {

namespace {

constexpr std::size_t kLongestSclLine = 1U << 16;
constexpr std::size_t kLongestQuote = 40;
constexpr double kExactWithin = 1e-3;             // of the last digit
constexpr double kFirstYear = -62'135'596'800.0;  // the year 1 in seconds of the wall clock

// A decimal comma and a decimal point are both understood.
std::optional<double> numberIn(std::string_view word)
{
    const ParsedNumber number = parseNumber(word.data(), word.data() + word.size(), DecimalMark::Both);
    const bool whole = number.end == word.data() + word.size() && std::isfinite(number.value);
    return whole && !word.empty() ? std::optional(number.value) : std::nullopt;
}

bool isRemarkLine(std::string_view line)
{
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    return line.starts_with('#') || line.starts_with('%') || line.starts_with("//") || line.starts_with(';');
}

// A date, a time of the clock or both before the value, taken away from the line.
struct LineTime
{
    Stamp stamp;
    bool dated = false;
};

bool isGap(char c)
{
    return c == ' ' || c == '\t' || c == ';' || c == '\r';
}

std::optional<LineTime> takeLineTime(std::string_view& line)
{
    std::string_view rest = line;
    const auto skipGaps = [&rest] {
        while (!rest.empty() && isGap(rest.front()))
            rest.remove_prefix(1);
    };
    skipGaps();
    LineTime time;
    auto date = takeDate(rest);
    if (!date)
        date = takeWordedDate(rest);
    if (date) {
        time.dated = true;
        time.stamp.date = *date;
        if (!rest.empty() && rest.front() == 'T')
            rest.remove_prefix(1);
        skipGaps();
    }
    time.stamp.time = takeTime(rest);
    // Behind a blank, what looks like a zone is the value.
    if (time.stamp.time && !rest.empty() && !isGap(rest.front()))
        time.stamp.zoneMinutes = takeZone(rest);
    if (!time.dated && !time.stamp.time)
        return std::nullopt;
    if (!rest.empty() && !isGap(rest.front()) && !isGap(*(rest.data() - 1)))
        return std::nullopt;
    line = rest;
    return time;
}

// Seconds of the local wall clock, or since midnight; nothing for a day that the calendar lacks.
std::optional<double> secondsOf(const LineTime& time)
{
    const auto micros =
        time.dated ? localWallClock(time.stamp, DateOrder::DayMonth) : std::optional(time.stamp.time->micros);
    return micros ? std::optional(static_cast<double>(*micros) / kMicrosPerSecond) : std::nullopt;
}

// The words of a value line: numbers and markers of missing values. A word of text behind a number is its
// unit and left out, and so is a clock's time before it.
void readWords(std::string_view line, std::vector<STLToken>& tokens)
{
    static const STLCells kCells;
    tokens.clear();
    const bool timed = takeLineTime(line).has_value();
    const char* p = line.data();
    const char* const end = p + line.size();
    while ((p = std::find_if_not(p, end, isGap)) != end) {
        const char* const stop = std::find_if(p, end, isGap);
        const std::string_view word(p, static_cast<std::size_t>(stop - p));
        p = stop;
        if (const auto number = numberIn(word))
            tokens.push_back({STLKind::Number, word, *number});
        else if (isMissing(word, kCells))
            tokens.push_back({STLKind::Missing, word, 0.0});
        else if (tokens.empty() || tokens.back().kind != STLKind::Number)
            tokens.push_back({STLKind::Text, word, 0.0});
    }
    if (timed && tokens.empty())
        tokens.push_back({STLKind::Missing, line, 0.0});
}

struct HeadLine
{
    std::string key;
    std::string value;
};

std::optional<HeadLine> headLine(std::string_view line, STLEncoding encoding)
{
    const bool isRemark = isRemarkLine(line);
    line.remove_prefix(std::min(line.find_first_not_of("#%/; \t"), line.size()));
    std::size_t at = line.find_first_of(":=");
    // "; Sample Rate 8000"; elsewhere a word and a number are a value.
    if (at == std::string_view::npos && isRemark)
        at = endOfBareKey(line);
    if (at == std::string_view::npos)
        return std::nullopt;
    const auto cut = [&](std::string_view part) {
        const std::size_t from = part.find_first_not_of(" \t\"");
        const std::size_t to = part.find_last_not_of(" \t\r\"");
        return from == std::string_view::npos || to == std::string_view::npos || to < from
                   ? std::string()
                   : decoded(part.substr(from, to - from + 1), encoding);
    };
    HeadLine head{cut(line.substr(0, at)), cut(line.substr(at + 1))};
    return head.key.empty() || numberIn(head.key) ? std::nullopt : std::optional(head);
}

void useHead(SCLSource& source, const HeadLine& head)
{
    STLCells cells;
    cells.decimal = head.value.find(',') != std::string::npos ? ',' : '.';
    switch (keyOf(head.key)) {
        case STLKey::Start:
            if (const auto stamp = readStamp(head.value))
                source.start = localWallClock(*stamp, DateOrder::DayMonth);
            break;
        case STLKey::Interval:
            if (const auto step = readInterval(head.value, cells); step && isSampleTime(*step))
                source.step = step;
            break;
        case STLKey::Rate:
            if (const auto hertz = readRate(head.value, cells); hertz && isSampleTime(1.0 / *hertz))
                source.step = 1.0 / *hertz;
            break;
        case STLKey::Name:
            source.name = head.value;
            break;
        case STLKey::Unit:
            source.unit = head.value;
            break;
        case STLKey::Description:
            source.description = head.value;
            break;
        default:
            break;
    }
}

// The first numbers of the lines, or their clock times.
struct Times
{
    std::vector<double> seconds;
    double resolution = HUGE_VAL;  // of the finest one; infinite where all are exact

    void add(double time, double fineness)
    {
        seconds.push_back(time);
        resolution = std::min(resolution, fineness);
    }
};

// A constant step between times, and by how much it may be another one, as the times are rounded.
struct Rise
{
    double step;
    double slack;
};

constexpr std::array kRoundHertz = {100.0, 10.0, 1.0};
constexpr std::array kRoundSeconds = {3600.0, 60.0, 10.0, 1.0};

// The one multiple of the first unit that has any within the bounds; nothing where there are several.
std::optional<double> roundestWithin(double least, double most, std::span<const double> units)
{
    for (const double unit : units)
        if (const double first = unit * std::ceil(least / unit); first > 0.0 && first <= most)
            return first + unit > most ? std::optional(first) : std::nullopt;
    return std::nullopt;
}

// Where the times are no equal steps apart as they are written, whole hertz or seconds that explain them all
// as rounded ones go before other steps that do. A clock that is slower than the lines shows a time twice.
std::optional<Rise> constantRise(const Times& times, bool isClock)
{
    const double resolution = std::isfinite(times.resolution) ? times.resolution : 0.0;
    STLSteps steps(!isClock);
    for (const double time : times.seconds)
        steps.add(time, resolution);
    const STLStepFindings found = steps.findings(false);
    const bool rises = isClock ? found.least >= 0.0 : found.least > 0.0;
    if (!rises || found.newestFirst || !found.areEqual || !isSampleTime(found.typical))
        return std::nullopt;
    if (found.slowest > found.fastest)
        return Rise{found.typical, 0.0};
    double step = std::clamp(found.typical, found.slowest, found.fastest);
    if (found.greatest - found.least > kExactWithin * resolution) {
        const bool inHertz = step < 1.0 && found.slowest > 0.0;
        const auto round = inHertz ? roundestWithin(1.0 / found.fastest, 1.0 / found.slowest, kRoundHertz)
                                   : roundestWithin(found.slowest, found.fastest, kRoundSeconds);
        if (round)
            step = inHertz ? 1.0 / *round : *round;
    }
    return Rise{step, std::max(found.fastest - step, step - found.slowest)};
}

void useRise(SCLSource& source, const Rise& rise)
{
    if (source.step)
        return;
    source.step = rise.step;
    source.stepSlack = rise.slack;
}

// What the lines hold whose values come behind an index or a time, or in turn.
struct LineNumbers
{
    Times first;
    std::size_t least = SIZE_MAX;  // in a line
    std::size_t most = 0;

    void add(std::span<const STLToken> numbers)
    {
        // A whole number among others tells nothing of their digits.
        const std::string_view text = numbers.front().text;
        const std::size_t mark = text.find_first_of(".,");
        first.add(numbers.front().value,
                  mark == std::string_view::npos ? HUGE_VAL : resolutionOf(text, text[mark]));
        least = std::min(least, numbers.size());
        most = std::max(most, numbers.size());
    }
};

void judgeNumbers(SCLSource& source, const LineNumbers& lines)
{
    if (lines.most < 2)
        return;
    if (lines.least > 1) {
        const auto rise = constantRise(lines.first, false);
        source.skipsFirst = rise.has_value();
        // Steps of one count the lines; others are seconds.
        if (rise && rise->step != 1.0)
            useRise(source, *rise);
    }
    source.inTurn = lines.most > (source.skipsFirst ? 2 : 1);
}

// The clock's times before the values: their step, and the start where they tell the day.
struct LineTimes
{
    Times all;
    std::optional<double> first;  // on the wall clock
    bool complete = true;         // every value has one
};

void judgeTimes(SCLSource& source, const LineTimes& times)
{
    if (times.all.seconds.empty())
        return;
    const auto rise = times.complete ? constantRise(times.all, true) : std::nullopt;
    source.unevenTimes = !rise && times.all.seconds.size() > 1;
    if (rise)
        useRise(source, *rise);
    if (!times.first || source.start)
        return;
    // A step of thousands of years would begin before any calendar.
    const double start = *times.first - source.step.value_or(1.0);
    if (start >= kFirstYear)
        source.start = static_cast<Micros>(std::llround(start * kMicrosPerSecond));
}

// A line of words above the values. One word is their name, as a column's is, and so are those before a unit
// in brackets; others are prose. A unit below either is theirs.
void useWords(SCLSource& source, std::string_view line, STLEncoding encoding, bool isFirst)
{
    const std::size_t from = line.find_first_not_of(" \t\"");
    const std::size_t to = line.find_last_not_of(" \t\r\"");
    if (from == std::string_view::npos || to == std::string_view::npos || to < from)
        return;
    std::string name = decoded(line.substr(from, to - from + 1), encoding);
    std::string unit;
    splitUnit(name, unit);
    const std::string bare = withoutBrackets(name);
    if ((!isFirst || bare != name) && source.unit.empty() && isUnit(bare)) {
        source.unit = bare;
    } else if (!unit.empty() || name.find_first_of(" \t") == std::string::npos) {
        source.name = name;
        source.unit = unit.empty() ? source.unit : unit;
    }
}

// What the first lines of a log tell, one after the other: the head at once to the source, values and times
// for judgement.
struct Survey
{
    SCLSource& source;
    STLEncoding encoding;
    LineNumbers lines = {};
    LineTimes times = {};
    bool anyNumber = false;  // else all values are missing
    bool isNamed = false;
    bool hasWords = false;
    std::vector<STLToken> tokens = {};

    void take(const STLLine& line);
    void takeHead(const HeadLine& head, std::uint64_t line);
    void takeValues(const std::optional<LineTime>& time);
};

void Survey::takeHead(const HeadLine& head, std::uint64_t line)
{
    const bool names = keyOf(head.key) == STLKey::Name;
    // Behind values another name is another series'.
    if (names && isNamed && lines.most > 0)
        source.secondName = source.secondName == 0 ? line : source.secondName;
    else
        useHead(source, head);
    isNamed = isNamed || names;
}

void Survey::takeValues(const std::optional<LineTime>& time)
{
    std::erase_if(tokens, [](const STLToken& token) { return token.kind == STLKind::Text; });
    for (const STLToken& token : tokens) {
        source.decimalCommas = source.decimalCommas || token.text.find(',') != std::string_view::npos;
        anyNumber = anyNumber || token.kind == STLKind::Number;
    }
    lines.add(tokens);
    const auto seconds = time ? secondsOf(*time) : std::nullopt;
    times.complete = times.complete && seconds;
    if (!seconds)
        return;
    if (times.all.seconds.empty() && time->dated)
        times.first = seconds;
    times.all.add(*seconds, time->stamp.time ? resolutionOf(*time->stamp.time) : HUGE_VAL);
}

void Survey::take(const STLLine& line)
{
    std::string_view rest = line.text;
    const auto time = takeLineTime(rest);
    const auto head = time ? std::nullopt : headLine(line.text, encoding);
    if (head)
        takeHead(*head, line.number);
    if (head || isRemarkLine(line.text))
        return;
    readWords(line.text, tokens);
    const auto isText = [](const STLToken& token) { return token.kind == STLKind::Text; };
    if (std::all_of(tokens.begin(), tokens.end(), isText)) {
        if (lines.most == 0 && !isNamed)
            useWords(source, line.text, encoding, !hasWords);
        hasWords = true;
    } else if (lines.most > 0 || !isText(tokens.front())) {
        // "Serial;12345" above the first value is of the head; the reader passes over it too.
        takeValues(time);
    }
}

}  // namespace

SCLSource detectSource(const std::filesystem::path& file, std::uint64_t skipLines)
{
    SCLSource source;
    source.file = file;
    source.text = std::make_shared<const PlainText>(file);
    const STLSample sample = readSample(source.text->path());
    source.name = file.stem().string();
    const bool utf8 = std::all_of(sample.lines.begin(), sample.lines.end(),
                                  [](const STLLine& line) { return isUtf8(line.text); });
    Survey survey{source, utf8 ? STLEncoding::Utf8 : STLEncoding::Windows1252};
    for (const STLLine& line : sample.head)
        if (line.number > skipLines && !isEmptyLine(line.text))
            survey.take(line);
    if (!survey.anyNumber)
        throw STLError("No line of numbers was found in " + file.filename().string() + ".");
    judgeNumbers(source, survey.lines);
    judgeTimes(source, survey.times);
    return source;
}

SCLReader::SCLReader(const SCLSource& source, std::uint64_t skipLines)
    : m_source(source), m_lines(source.text->path(), kLongestSclLine), m_skipLines(skipLines)
{
}

bool SCLReader::next()
{
    m_trouble.clear();
    while (m_next >= m_tokens.size())
        if (!nextLine())
            return false;
    take(m_tokens[m_next++]);
    return true;
}

bool SCLReader::nextLine()
{
    while (m_lines.next()) {
        if (++m_lineNumber <= m_skipLines || isEmptyLine(m_lines.text()))
            continue;
        readWords(m_lines.text(), m_tokens);
        if (m_tokens.empty())
            continue;
        const bool number = m_tokens.front().kind != STLKind::Text;
        if (!number &&
            (isRemarkLine(m_lines.text()) || headLine(m_lines.text(), STLEncoding::Utf8) || !m_started))
            continue;
        m_started = true;
        m_next = m_source.skipsFirst && m_tokens.size() > 1 ? 1 : 0;
        // Without several values a line only one is taken of it.
        if (!m_source.inTurn)
            m_tokens.resize(std::min(m_tokens.size(), m_next + 1));
        return true;
    }
    return false;
}

void SCLReader::take(const STLToken& token)
{
    m_value = token.kind == STLKind::Number ? static_cast<float>(token.value)
                                            : std::numeric_limits<float>::quiet_NaN();
    if (token.kind == STLKind::Text)
        m_trouble = decoded(token.text.substr(0, kLongestQuote), STLEncoding::Windows1252);
    else if (m_lines.isCut() && m_next >= m_tokens.size())
        m_trouble = "a line of more than 65 536 bytes, cut";
}

}  // namespace veltrac
