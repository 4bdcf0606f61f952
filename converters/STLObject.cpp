#include "converters/STLObject.h"

#include <algorithm>
#include <cmath>
#include <ctime>

#include "converters/ColumnTexts.h"
#include "converters/STLWriter.h"
#include "core/ScratchFile.h"
#include "core/TsNames.h"

namespace {

constexpr std::size_t kMostTroubles = 1000;
constexpr std::uint64_t kLookEvery = 4096;
constexpr double kEqualWithin = 0.001;  // of the step
constexpr double kGap = 1.5;            // typical steps
constexpr std::size_t kFirstSteps = 10000;

}  // namespace

// The steps of the rows, in memory that does not grow: the typical one is the median of the first.
class STLSteps
{
public:
    void add(double seconds)
    {
        if (m_count++ > 0)
            addStep(seconds - m_before);
        m_before = seconds;
    }
    void settle()
    {
        if (m_first.empty() || m_typical != 0.0)
            return;
        std::vector<double> sorted = m_first;
        std::nth_element(sorted.begin(), sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2),
                         sorted.end());
        m_typical = sorted[sorted.size() / 2];
        for (const double step : m_first)
            judge(step);
    }
    void tell(STLCheck& found, double resolution)
    {
        settle();
        found.leastStep = m_least;
        found.greatestStep = m_greatest;
        found.typicalStep = m_typical;
        found.gaps = m_gaps;
        found.longestGap = m_longestGap;
        found.span = m_count > 1 ? m_before : 0.0;
        const auto steps = static_cast<double>(m_count > 1 ? m_count - 1 : 1);
        const double mean = found.span / steps;
        const bool same = m_greatest - m_typical <= kEqualWithin * m_typical &&
                          m_typical - m_least <= kEqualWithin * m_typical;
        // Stamps coarser than the steps jitter by one unit; where nearly all steps are the same one, the
        // others are gaps instead.
        const bool jitter = static_cast<double>(m_usual) < 0.9 * steps && m_least >= mean - resolution &&
                            m_greatest <= mean + resolution && resolution > 0.0;
        found.equalSteps = m_count > 1 && mean > 0.0 && (same || jitter);
        if (found.equalSteps && m_least != m_greatest)
            found.typicalStep = mean;
    }

private:
    void addStep(double step)
    {
        if (m_typical == 0.0 && m_first.size() < kFirstSteps) {
            m_first.push_back(step);
            return;
        }
        settle();
        judge(step);
    }
    void judge(double step)
    {
        const bool none = m_judged++ == 0;
        m_least = none ? step : std::min(m_least, step);
        m_greatest = none ? step : std::max(m_greatest, step);
        m_usual += std::fabs(step - m_typical) <= kEqualWithin * m_typical ? 1 : 0;
        if (m_typical > 0.0 && step > kGap * m_typical) {
            ++m_gaps;
            m_longestGap = std::max(m_longestGap, step);
        }
    }

    std::uint64_t m_count = 0;
    std::uint64_t m_judged = 0;
    std::uint64_t m_usual = 0;
    std::uint64_t m_gaps = 0;
    double m_before = 0.0;
    double m_typical = 0.0;
    double m_least = 0.0;
    double m_greatest = 0.0;
    double m_longestGap = 0.0;
    std::vector<double> m_first;
};

STLObject::STLObject(std::filesystem::path file) : m_file(std::move(file)) {}

void STLObject::detect()
{
    m_format = detectFormat(m_file);
}

void STLObject::detect(char separator, char decimal)
{
    m_format = detectFormat(m_file, separator, decimal);
}

// -- Check --

JobOutcome STLObject::check(const Progress& progress)
{
    bool wrongOrder = false;
    const JobOutcome outcome = readThrough(progress, wrongOrder);
    if (outcome == JobOutcome::Cancelled)
        return outcome;
    if (wrongOrder && m_format.orderInDoubt) {
        // A date further down tells what those in the sample left open.
        m_format.order = m_format.order == DateOrder::DayMonth ? DateOrder::MonthDay : DateOrder::DayMonth;
        m_format.orderInDoubt = false;
        if (readThrough(progress, wrongOrder) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
    }
    settleResult();
    settleStart();
    return JobOutcome::Done;
}

JobOutcome STLObject::readThrough(const Progress& progress, bool& wrongOrder)
{
    m_found = STLCheck();
    STLRows rows(m_file, m_format);
    STLSteps steps;
    for (std::uint64_t looks = 1; rows.next(); ++looks) {
        if (looks % kLookEvery == 0 && !goesOn(progress, rows.position(), rows.fileBytes()))
            return JobOutcome::Cancelled;
        m_found.troubleCount += rows.troubles().size();
        for (const STLTrouble& trouble : rows.troubles())
            if (m_found.troubles.size() < kMostTroubles)
                m_found.troubles.push_back(trouble);
        if (!rows.hasRow())
            continue;
        ++m_found.rows;
        m_found.missingCells += rows.missing();
        m_found.troubledRows += rows.troubles().empty() ? 0 : 1;
        if (m_format.timeSource != STLTimeSource::Typed)
            steps.add(rows.seconds());
    }
    wrongOrder = rows.contradictsOrder();
    if (rows.provesOrder())
        m_format.orderInDoubt = false;
    m_found.skippedLines = rows.skipped();
    m_found.texts = rows.texts();
    steps.tell(m_found, rows.resolution());
    m_found.firstWall = rows.firstWall();
    m_found.firstSeconds = rows.firstSeconds();
    return JobOutcome::Done;
}

void STLObject::settleResult()
{
    STLCheck& found = m_found;
    if (found.rows == 0)
        throw STLError("No line of numbers was found in " + m_file.filename().string() + ".");
    const bool typed = m_format.timeSource == STLTimeSource::Typed;
    if (typed) {
        found.equalSteps = true;
        found.typicalStep = found.leastStep = found.greatestStep = m_format.typedStep;
        found.span = m_format.typedStep * static_cast<double>(found.rows - 1);
    }
    // A float tells a time to 2^-24 of its size.
    const bool coarse = found.span * std::ldexp(1.0, -24) > kEqualWithin * found.typicalStep;
    const bool backwards = found.leastStep < 0.0;
    found.timeResult =
        m_format.timeResult.value_or(found.equalSteps || found.rows < 2 ? STLTimeResult::Constant
                                     : coarse                           ? STLTimeResult::TimeTwoColumns
                                                                        : STLTimeResult::TimeColumn);
    if (found.timeResult == STLTimeResult::Resampled && (backwards || !(found.typicalStep > 0.0)))
        throw STLError("The times of the rows run backwards; they cannot be put at equal steps.");

    const std::uint64_t last = m_format.toRow == 0 ? found.rows : std::min(m_format.toRow, found.rows);
    const std::uint64_t first = std::max<std::uint64_t>(m_format.fromRow, 1);
    const std::uint64_t chosen = last < first ? 0 : (last - first) / std::max(m_format.everyNth, 1U) + 1;
    double step = found.typicalStep > 0.0 ? found.typicalStep * m_format.everyNth : 1.0;
    std::uint64_t samples = chosen;
    if (found.timeResult == STLTimeResult::Resampled) {
        step = m_format.resampleStep > 0.0 ? m_format.resampleStep : step;
        samples = static_cast<std::uint64_t>(std::min(found.span / step + 1e-6, 4e9)) + 1;
    }
    found.dt = static_cast<float>(step);

    const auto taken = std::count_if(m_format.columns.begin(), m_format.columns.end(),
                                     [](const STLColumn& column) { return column.take; });
    if (taken == 0)
        throw STLError("No column of numbers is chosen.");
    if (samples == 0)
        throw STLError("No row is chosen.");
    found.columns = static_cast<std::uint32_t>(taken);
    requireFits(samples, found.columns + 2);
    found.samples = static_cast<std::uint32_t>(samples);
}

// The start is told so that the first sample lies one step behind it. Before 1970 there is no start: such a
// series carries its times in a column of their own, negative ones.
void STLObject::settleStart()
{
    STLCheck& found = m_found;
    const bool elapsed = m_format.timeSource == STLTimeSource::ElapsedTime ||
                         m_format.timeSource == STLTimeSource::ElapsedSeconds;
    const bool typed = m_format.timeSource == STLTimeSource::Typed;
    const Micros wall = typed || elapsed ? m_format.typedStart : found.firstWall;
    const bool dated = (!typed && !elapsed) || m_format.typedStart != 0;
    double first = elapsed ? found.firstSeconds : 0.0;
    if (dated) {
        const Micros whole = wall - (wall % kMicrosPerSecond + kMicrosPerSecond) % kMicrosPerSecond;
        const double fraction = static_cast<double>(wall - whole) / kMicrosPerSecond;
        const auto seconds = m_format.greenwich ? whole / kMicrosPerSecond : localSeconds(whole);
        first += static_cast<double>(seconds) + fraction;
    }
    found.firstSeconds = first;

    found.resampled = found.timeResult == STLTimeResult::Resampled;
    found.timeColumns = found.timeResult == STLTimeResult::TimeColumn       ? 1
                        : found.timeResult == STLTimeResult::TimeTwoColumns ? 2
                                                                            : 0;
    double start = found.timeColumns > 0 ? first : first - static_cast<double>(found.dt);
    if (start < 0.0 && dated)
        found.timeColumns = 1;
    start = std::clamp(start, 0.0, 4294967295.0);
    found.startSeconds = static_cast<std::uint32_t>(start);
    found.startTime = found.timeColumns > 0 ? 0.0F : static_cast<float>(start - found.startSeconds);
    found.columns += found.timeColumns;
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
            byNumber[static_cast<std::size_t>(number) - 1] = decoded(text, m_format.encoding);
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
    target.description(m_format.description.empty() ? m_file.stem().string().c_str()
                                                    : m_format.description.c_str());
    target.timeUnit("Time[s]");
    target.dt(m_found.dt);
    target.startSeconds(m_found.startSeconds);
    target.startTime(m_found.startTime);
    // 0 stamps a column with the time of the import: there is no other.
    const auto stamp = static_cast<std::time_t>(std::max(m_found.firstSeconds, 0.0));
    if (m_found.timeColumns > 0)
        target.makeTimeColumns(1, m_found.timeColumns == 2 ? 2 : 0);
    for (std::uint32_t c = 1; c <= m_found.timeColumns; ++c)
        target.stampColumn(c, stamp);
    std::uint32_t column = m_found.timeColumns;
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
    writeHeader(target);
    STLRows rows(m_file, m_format);
    STLWriter writer(target, m_format, m_found);
    const std::uint64_t last = m_format.toRow == 0 ? m_found.rows : std::min(m_format.toRow, m_found.rows);
    const std::uint64_t first = std::max<std::uint64_t>(m_format.fromRow, 1);
    std::uint64_t row = 0;
    for (std::uint64_t looks = 1; rows.next(); ++looks) {
        if (looks % kLookEvery == 0 && !goesOn(progress, rows.position(), rows.fileBytes()))
            return JobOutcome::Cancelled;
        if (!rows.hasRow())
            continue;
        ++row;
        const double seconds = m_format.timeSource == STLTimeSource::Typed
                                   ? m_format.typedStep * static_cast<double>(row - 1)
                                   : rows.seconds();
        const bool chosen =
            row >= first && row <= last && (row - first) % std::max(m_format.everyNth, 1U) == 0;
        if (m_found.resampled || chosen)
            writer.add(seconds, rows.values());
    }
    if (row != m_found.rows || writer.written() != m_found.samples)
        throw STLError(m_file.filename().string() + " has changed while it was read. Import it again.");
    writer.finish();
    return JobOutcome::Done;
}

JobOutcome importSTL(STLObject& log, const std::filesystem::path& target, const Progress& progress)
{
    ScratchFile scratch(target.parent_path(), "import", ".ts");
    {
        const auto file = createTsFile(scratch.path().string(), log.found().samples, log.found().columns);
        if (log.write(*file, progress) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
    }
    scratch.putInPlace(target);
    return JobOutcome::Done;
}
