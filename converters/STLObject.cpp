#include "converters/STLObject.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <functional>
#include <tuple>

#include "converters/ColumnTexts.h"
#include "converters/STLSteps.h"
#include "converters/STLWriter.h"
#include "core/ColumnCopy.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "core/Utf8.h"

using namespace veltrac;

namespace {

constexpr double kFinest = 0.001;  // of the step, that a column of times has to tell
constexpr double kLatestStart = 4294967295.0;
// Of two columns of time; zones shift by less than a day.
constexpr double kLongestRun = kLatestStart - 86400.0;

// Whether a pass over the file finds the same under both formats: all else only settles what becomes of it.
bool readAlike(const STLFormat& a, const STLFormat& b)
{
    const auto fields = [](const STLFormat& f) {
        return std::tie(f.encoding, f.cells, f.remarks, f.firstDataLine, f.timeSource, f.timeColumn,
                        f.dateColumn, f.zoneColumn, f.partColumns, f.timeIsHhmm, f.yearsInMonths,
                        f.monthsInDigits, f.order, f.greenwich, f.fromRow, f.toRow, f.everyNth);
    };
    return fields(a) == fields(b) && secondsPerUnit(a) == secondsPerUnit(b) &&
           std::equal(a.columns.begin(), a.columns.end(), b.columns.begin(), b.columns.end(),
                      [](const STLColumn& x, const STLColumn& y) {
                          return x.take == y.take && x.numberTexts == y.numberTexts;
                      });
}

std::function<bool()> lookAt(const STLRows& rows, const Progress& progress)
{
    return [&rows, &progress] { return goesOn(progress, rows.position(), rows.fileBytes()); };
}

}  // namespace

STLObject::STLObject(std::filesystem::path file) : m_file(std::move(file)) {}

JobOutcome STLObject::unpack(const Progress& progress)
{
    m_text = PlainText::unpacked(m_file, progress);
    return m_text ? JobOutcome::Done : JobOutcome::Cancelled;
}

const PlainText& STLObject::text()
{
    if (!m_text || !m_text->isCurrent())
        m_text.emplace(m_file);
    return *m_text;
}

void STLObject::detect()
{
    m_format = detectFormat(text());
    m_readFormat.reset();
}

void STLObject::detect(char separator, char decimal, char grouping)
{
    m_format = detectFormat(text(), separator, decimal, grouping);
    m_readFormat.reset();
}

// -- Check --

bool STLObject::isRead() const
{
    return m_readFormat && readAlike(m_format, *m_readFormat) && isUnchanged(m_file, m_readState);
}

JobOutcome STLObject::check(const Progress& progress)
{
    if (!isRead() && readAll(progress) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    m_found = m_read;
    settleResult();
    settleStart();
    return JobOutcome::Done;
}

JobOutcome STLObject::readAll(const Progress& progress)
{
    m_readFormat.reset();
    m_readState = stateOf(m_file);
    bool wrongOrder = false;
    if (readThrough(progress, wrongOrder) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    // A date further down tells what those in the sample left open; else the steps between all dates may.
    const bool bySteps = m_format.orderInDoubt && !wrongOrder && m_read.order.bySteps &&
                         m_read.order.bySteps->order != m_format.order;
    if (m_format.orderInDoubt && (wrongOrder || bySteps)) {
        m_format.order = m_format.order == DateOrder::DayMonth ? DateOrder::MonthDay : DateOrder::DayMonth;
        m_format.orderInDoubt = bySteps;
        if (readThrough(progress, wrongOrder) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
    }
    m_format.orderInDoubt = m_format.orderInDoubt && !m_read.order.text.empty();
    m_format.orderBySteps = m_read.order.bySteps && m_read.order.bySteps->proven;
    m_readFormat = m_format;
    return JobOutcome::Done;
}

bool STLObject::isChosen(std::uint64_t row) const
{
    const std::uint64_t first = std::max<std::uint64_t>(m_format.fromRow, 1);
    return row >= first && (m_format.toRow == 0 || row <= m_format.toRow) &&
           (m_format.everyNth <= 1 || (row - first) % m_format.everyNth == 0);
}

JobOutcome STLObject::readThrough(const Progress& progress, bool& wrongOrder)
{
    m_read = STLCheck();
    STLRows rows(text().path(), m_format, STLPass::Whole);
    auto kept = std::make_unique<STLKeptRows>(rows.columns());
    m_kept.reset();
    const STLClock& clock = rows.clock();
    STLSteps steps(timesAreNumbers(m_format.timeSource));
    Micros shift = 0;  // of the clock, at the first chosen row
    double lastLag = 0.0;
    const auto onLine = [&] {
        m_read.troubleCount += rows.troubles().size();
        for (const STLTrouble& trouble : rows.troubles())
            if (m_read.troubles.size() < kMostTroubles)
                m_read.troubles.push_back(trouble);
        if (!rows.hasRow())
            return;
        ++m_read.rows;
        m_read.troubledRows += rows.troubles().empty() ? 0 : 1;
        if (!isChosen(m_read.rows))
            return;
        ClockLag& lag = m_read.lag;
        if (m_read.chosen++ == 0) {
            m_read.chosenFrom = rows.seconds();
            shift = clock.changes().shift();
            lag.first = lag.least = lag.most = clock.lag();
        }
        lag.least = std::min(lag.least, clock.lag());
        lag.most = std::max(lag.most, clock.lag());
        lag.ranOn = lag.ranOn || clock.isSkipped();
        lastLag = clock.lag();
        kept->add(rows.seconds(), lastLag, rows.values());
        if (m_format.timeSource != STLTimeSource::Typed)
            steps.add(rows.seconds(), std::isfinite(clock.resolution()) ? clock.resolution() : 0.0);
    };
    if (rows.walk(onLine, lookAt(rows, progress)) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    if (kept->isWhole())
        m_kept = std::move(kept);
    const DateCells& dates = clock.dates();
    wrongOrder = dates.contradictsOrder();
    if (dates.provesOrder())
        m_format.orderInDoubt = false;
    m_read.order.bySteps = dates.steps().verdict();
    m_read.order.text = dates.steps().ambiguousText();
    m_read.order.date = midnight(dates.steps().ambiguousDate(), m_format.order).value_or(0);
    m_read.losses = rows.losses();
    m_read.breaks = rows.breaks();
    m_read.texts = rows.texts();
    m_read.steps = steps.findings(m_read.losses.titleLines != 0 || m_format.rowsAreLabelled);
    m_read.zoned = clock.zoned();
    m_read.lag.changes = clock.changes().count();
    m_read.firstWall = clock.firstWall() + std::llround(m_read.chosenFrom * kMicrosPerSecond) - shift;
    m_read.firstSeconds = clock.firstSeconds() + m_read.chosenFrom;
    if (m_read.steps.newestFirst) {
        m_read.lag.first = lastLag;
        m_read.firstWall -= std::llround(m_read.steps.span * kMicrosPerSecond);
        m_read.firstSeconds -= m_read.steps.span;
    }
    return JobOutcome::Done;
}

void STLObject::settleResult()
{
    STLCheck& found = m_found;
    if (found.rows == 0)
        throw STLError("No line of numbers was found in " + m_file.filename().string() + ".");
    if (found.chosen == 0)
        throw STLError("No row is chosen.");
    if (m_format.timeSource == STLTimeSource::Typed) {
        const double step = m_format.typedStep * std::max(m_format.everyNth, 1U);
        found.steps.areEqual = true;
        found.steps.typical = found.steps.least = found.steps.greatest = step;
        found.steps.span = found.steps.latest = step * static_cast<double>(found.chosen - 1);
    }
    // A float tells a time to 2^-24 of its size.
    const double typical = found.steps.typical > 0.0 ? found.steps.typical : 1.0;
    const bool coarse = found.steps.span * std::ldexp(1.0, -24) > kFinest * typical;
    found.target.timeResult =
        m_format.timeResult.value_or(found.steps.areEqual || found.chosen < 2 ? STLTimeResult::Constant
                                     : coarse                                 ? STLTimeResult::TimeTwoColumns
                                                                              : STLTimeResult::TimeColumn);
    found.target.resampled = found.target.timeResult == STLTimeResult::Resampled;
    if (found.target.resampled && (found.steps.least < 0.0 || found.steps.newestFirst))
        throw STLError("The times of the rows run backwards; they cannot be put at equal steps.");

    double step = typical;
    std::uint64_t samples = found.chosen;
    if (found.target.resampled) {
        step = m_format.resampleStep > 0.0 ? m_format.resampleStep : step;
        samples = static_cast<std::uint64_t>(std::min(found.steps.span / step + 1e-6, 4e9)) + 1;
    }
    found.target.dt = static_cast<float>(step);
    if (!(found.target.dt > 0.0F) || !std::isfinite(found.target.dt))
        throw STLError("A ts-file cannot tell steps of this size.");

    const auto taken = std::count_if(m_format.columns.begin(), m_format.columns.end(),
                                     [](const STLColumn& column) { return column.take; });
    if (taken == 0)
        throw STLError(std::any_of(m_format.columns.begin(), m_format.columns.end(),
                                   [](const STLColumn& column) { return column.kind == STLKind::Number; })
                           ? "No column of numbers is chosen."
                           : "No column of numbers was found in " + m_file.filename().string() + '.');
    found.target.columns = static_cast<std::uint32_t>(taken);
    found.target.samples = static_cast<std::uint32_t>(std::min<std::uint64_t>(samples, UINT32_MAX));
}

// The start is told so that the first sample lies one step behind it. Before 1970 there is no start, nor
// behind 2106: such a series, and one whose own seconds begin below 0, carries its times in a column of their
// own, negative ones. So does one that runs for longer than the whole seconds of two columns count, 136
// years.
void STLObject::settleStart()
{
    STLCheck& found = m_found;
    const bool typed = m_format.timeSource == STLTimeSource::Typed;
    const bool elapsed = timesAreElapsed(m_format.timeSource);
    const Micros wall = typed || elapsed ? m_format.typedStart : found.firstWall;
    const bool dated = (!typed && !elapsed) || m_format.typedStart != 0;
    // A start that is typed is the file's: the first row lies one step behind it.
    double first = elapsed ? found.firstSeconds : 0.0;
    if (typed)
        first = m_format.typedStep * static_cast<double>(std::max<std::uint64_t>(m_format.fromRow, 1));
    if (dated) {
        const Micros whole = wall - (wall % kMicrosPerSecond + kMicrosPerSecond) % kMicrosPerSecond;
        const double fraction = static_cast<double>(wall - whole) / kMicrosPerSecond;
        const bool greenwich = m_format.greenwich || (found.zoned && !typed && !elapsed);
        const auto seconds = greenwich ? whole / kMicrosPerSecond : localSeconds(whole);
        first += static_cast<double>(seconds) + fraction;
    }
    found.firstSeconds = first;

    found.target.timeColumns = found.target.timeResult == STLTimeResult::TimeColumn       ? 1
                               : found.target.timeResult == STLTimeResult::TimeTwoColumns ? 2
                                                                                          : 0;
    // Rows at equal steps are taken as they count, others by what the local clock shows.
    const auto followsClock = [&found] {
        return found.target.timeColumns > 0 && !found.target.resampled && !found.lag.ranOn;
    };
    // Whole seconds are unsigned: times that run back behind the first one must not be negative. In summer
    // they lie an hour earlier than the wall clock counts.
    const double summer =
        found.steps.earliest < 0.0 && followsClock() ? found.lag.first - found.lag.least : 0.0;
    const double least = found.target.timeColumns > 0 ? first + found.steps.earliest - summer : first;
    double start = found.target.timeColumns > 0 ? least : first - static_cast<double>(found.target.dt);
    // What a float's rounding leaves of a start at 0.
    if (std::fabs(start) < 1e-6 * found.target.dt)
        start = 0.0;
    const bool runsTooLong =
        found.target.timeColumns == 2 && first + found.steps.latest - start > kLongestRun;
    if ((dated ? start : least) < 0.0 || start > kLatestStart || runsTooLong) {
        found.target.timeColumns = 1;
        start = 0.0;
    }
    found.target.onLocalClock = followsClock();
    found.target.startSeconds = static_cast<std::uint32_t>(std::max(start, 0.0));
    found.target.startTime =
        found.target.timeColumns > 0 ? 0.0F : static_cast<float>(start - found.target.startSeconds);
    const double farthest = std::max(std::fabs(first - start), std::fabs(first - start + found.steps.latest));
    found.target.coarseness = found.target.timeColumns == 1 ? std::ldexp(farthest, -24) : 0.0;
    found.target.columns += found.target.timeColumns;
    requireFits(found.target.samples, found.target.columns);
}

// -- Names --

std::vector<std::string> STLObject::columnNames() const
{
    std::vector<std::string> wanted;
    int number = 0;
    for (const STLColumn& column : m_format.columns) {
        ++number;
        if (column.take)
            wanted.push_back(!column.label.empty() ? column.label
                             : column.name.empty() ? "Col-" + std::to_string(number)
                                                   : column.name);
    }
    return uniqueColumnNames(wanted);
}

std::string STLObject::columnDescription(std::size_t column) const
{
    const STLColumn& source = m_format.columns[column];
    if (!source.description.empty())
        return cutTo(source.description, kColumnTextLength);
    if (const auto texts = m_found.texts.find(column); texts != m_found.texts.end()) {
        std::vector<std::string> byNumber(texts->second.size());
        for (const auto& [text, number] : texts->second)
            byNumber[static_cast<std::size_t>(number) - 1] = cellText(text, m_format.encoding);
        std::string list;
        for (std::size_t i = 0; i < byNumber.size() && list.size() < kColumnTextLength; ++i)
            list += (i == 0 ? "" : " ") + std::to_string(i + 1) + "=" + byNumber[i];
        return cutTo(list, kColumnTextLength);
    }
    return nameWithUnit(source.name, source.unit);
}

// -- Write --

void STLObject::writeHeader(TSFILE& target) const
{
    target.description(cutTo(m_format.description, kFileDescription.width - 1).c_str());
    target.timeUnit("Time[s]");
    target.dt(m_found.target.dt);
    target.setStart(m_found.target.startSeconds, m_found.target.startTime);
    // 0 stamps a column with the time of the import: there is no other.
    const auto stamp = static_cast<std::time_t>(std::max(m_found.firstSeconds, 0.0));
    if (m_found.target.timeColumns > 0)
        target.makeTimeColumns(1, m_found.target.timeColumns == 2 ? 2 : 0);
    for (std::uint32_t c = 1; c <= m_found.target.timeColumns; ++c)
        target.stampColumn(c, stamp);
    std::uint32_t column = m_found.target.timeColumns;
    const std::vector<std::string> names = columnNames();
    std::size_t taken = 0;
    for (std::size_t c = 0; c < m_format.columns.size(); ++c) {
        if (!m_format.columns[c].take)
            continue;
        target.columnName(++column, names[taken++].c_str());
        target.columnDescription(column, columnDescription(c).c_str());
        target.stampColumn(column, stamp);
    }
}

JobOutcome STLObject::write(TSFILE& target, const Progress& progress)
{
    if (stateOf(m_file) != m_readState)
        throw changed();
    writeHeader(target);
    STLWriter writer(target, m_format, m_found);
    const Progress reading = m_found.steps.newestFirst ? partOf(progress, 0, 80) : progress;
    if ((m_kept ? writeKept(writer, reading) : writeFromText(writer, reading)) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    if (writer.written() != m_found.target.samples)
        throw changed();
    m_kept.reset();
    return writer.finish(partOf(progress, 80, 100));
}

STLError STLObject::changed() const
{
    return STLError(m_file.filename().string() + " has changed while it was read. Import it again.");
}

double STLObject::writtenTime(double seconds, double lag, std::uint64_t chosen) const
{
    if (m_format.timeSource == STLTimeSource::Typed)
        return m_found.steps.typical * static_cast<double>(chosen);
    const double from = m_found.chosenFrom - (m_found.steps.newestFirst ? m_found.steps.span : 0.0);
    return seconds - from + (m_found.target.onLocalClock ? lag - m_found.lag.first : 0.0);
}

JobOutcome STLObject::writeKept(STLWriter& writer, const Progress& progress)
{
    if (writer.takesRowsAsTheyAre()) {
        for (std::size_t i = 0; i < m_kept->pieces(); ++i) {
            writer.addRows(m_kept->piece(i));
            if (!goesOn(progress, i, m_kept->pieces()))
                return JobOutcome::Cancelled;
        }
        return JobOutcome::Done;
    }
    constexpr std::size_t kRowsALook = 1024;
    for (std::size_t i = 0; i < m_kept->size(); ++i) {
        const STLKeptRows::Row row = m_kept->row(i);
        writer.add(writtenTime(row.seconds, row.lag, i), row.values);
        if (i % kRowsALook == 0 && !goesOn(progress, i, m_kept->size()))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

JobOutcome STLObject::writeFromText(STLWriter& writer, const Progress& progress)
{
    // Where every line is a row, and its time is not written, the times have been read for good.
    const bool timesWanted =
        m_found.losses.skippedLines != 0 || m_found.target.resampled || m_found.target.timeColumns != 0;
    STLRows rows(text().path(), m_format, timesWanted ? STLPass::Whole : STLPass::WithoutTimes);
    std::uint64_t row = 0;
    std::uint64_t chosen = 0;
    const auto onLine = [&] {
        if (!rows.hasRow() || !isChosen(++row))
            return;
        if (chosen == m_found.chosen)
            throw changed();
        writer.add(writtenTime(rows.seconds(), rows.clock().lag(), chosen++), rows.values());
    };
    if (rows.walk(onLine, lookAt(rows, progress)) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    if (row != m_found.rows)
        throw changed();
    return JobOutcome::Done;
}

JobOutcome veltrac::importSTL(STLObject& log, const std::filesystem::path& target, const Progress& progress)
{
    PendingFile pending(target, ".veltrac-new", ".ts");
    {
        const auto file =
            createTsFile(pending.path().string(), log.found().target.samples, log.found().target.columns);
        if (log.write(*file, progress) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
    }
    return pending.commit(progress);
}
