#include "converters/SCLObject.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <limits>
#include <memory>

#include "converters/ColumnTexts.h"
#include "converters/LengthTexts.h"
#include "converters/STLWriter.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "core/Utf8.h"

using namespace veltrac;

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kLookEvery = 16384;
constexpr double kSameRate = 1e-6;
constexpr double kSameSample = 1e-3;  // of a step, that starts may differ

// When the file was last written, on the local wall clock.
Micros dateOf(const fs::path& file)
{
    using namespace std::chrono;
    std::error_code unknown;
    const auto written = fs::last_write_time(file, unknown);
    if (unknown)
        return 0;
    const std::time_t seconds =
        system_clock::to_time_t(time_point_cast<system_clock::duration>(file_clock::to_sys(written)));
    return wallAt(seconds);
}

std::string shortNumber(double number)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.4g", number);
    return text;
}

std::string hertz(double step)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g Hz", 1.0 / step);
    return text;
}

// "1 000"
std::string inGroups(std::uint64_t n)
{
    std::string text = std::to_string(n);
    for (std::size_t i = text.size(); i > 3;)
        text.insert(i -= 3, " ");
    return text;
}

std::string bareName(const SCLSource& source)
{
    return source.file.filename().string();
}

// Whoever names a file so knows what it holds; others were found to hold a single column.
bool isNamedSo(const SCLSource& source)
{
    return lowered(source.file.extension().string()) == ".scl";
}

}  // namespace

void SCLObject::add(const fs::path& file)
{
    SCLSource source = detectSource(file, skipLines);
    if (sources.empty()) {
        start = source.start.value_or(dateOf(file));
        step = 1.0;
        description = source.description.empty() ? source.name : source.description;
    }
    // The first file that tells a rate gives it.
    const bool told = std::any_of(sources.begin(), sources.end(),
                                  [](const SCLSource& other) { return other.step.has_value(); });
    if (source.step && !told)
        step = *source.step;
    const auto before = earliestStart();
    sources.push_back(std::move(source));
    followStart(before);
}

void SCLObject::remove(std::size_t source)
{
    const auto before = earliestStart();
    sources.erase(sources.begin() + static_cast<std::ptrdiff_t>(source));
    followStart(before);
}

// -- Columns of different starts --

std::optional<Micros> SCLObject::earliestStart() const
{
    std::optional<Micros> earliest;
    for (const SCLSource& source : sources)
        if (source.start)
            earliest = std::min(*source.start, earliest.value_or(*source.start));
    return earliest;
}

// A start that the user has typed stays.
void SCLObject::followStart(std::optional<Micros> before)
{
    if (before && start == *before)
        start = earliestStart().value_or(start);
}

// How many steps a source begins after the earliest one; one that tells no start begins with it.
double SCLObject::stepsAfterStart(std::size_t source) const
{
    const std::optional<Micros>& told = sources[source].start;
    return told ? static_cast<double>(*told - *earliestStart()) / (kMicrosPerSecond * step) : 0.0;
}

// The row, from 0, of a source's first value.
std::uint64_t SCLObject::firstSample(std::size_t source) const
{
    return static_cast<std::uint64_t>(std::llround(std::min(stepsAfterStart(source), 1e15)));
}

std::uint64_t SCLObject::sampleCount() const
{
    std::uint64_t count = 0;
    for (std::size_t i = 0; i < m_found.values.size(); ++i)
        count = std::max(count, firstSample(i) + m_found.values[i]);
    return count;
}

void SCLObject::detectAgain()
{
    for (SCLSource& source : sources) {
        SCLSource again = detectSource(source.file, skipLines);
        source.skipsFirst = again.skipsFirst;
        source.inTurn = again.inTurn;
        source.unevenTimes = again.unevenTimes;
        source.text = again.text;
        source.step = again.step;
        source.stepSlack = again.stepSlack;
        source.start = again.start;
    }
    const auto told = std::find_if(sources.begin(), sources.end(),
                                   [](const SCLSource& source) { return source.step.has_value(); });
    if (told != sources.end())
        step = *told->step;
}

// -- Check --

void SCLObject::requireOneRate() const
{
    const SCLSource* told = nullptr;
    for (const SCLSource& source : sources) {
        if (!source.step)
            continue;
        if (told != nullptr && std::fabs(*source.step - *told->step) >
                                   kSameRate * *told->step + source.stepSlack + told->stepSlack)
            throw STLError(bareName(*told) + " has " + hertz(*told->step) + ", " + bareName(source) + " " +
                           hertz(*source.step) + ". Import them separately.");
        told = told == nullptr ? &source : told;
    }
}

JobOutcome SCLObject::check(const Progress& progress)
{
    if (sources.empty())
        throw STLError("No file is chosen.");
    requireOneRate();
    if (!isRead() && readAll(progress) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    if (std::all_of(m_found.values.begin(), m_found.values.end(), [](std::uint64_t n) { return n == 0; }))
        throw STLError("No line of numbers was found in " + bareName(sources.front()) + ".");
    requireFits(sampleCount(), result().target.columns);
    return JobOutcome::Done;
}

bool SCLObject::isRead() const
{
    return m_readSkip == skipLines &&
           std::equal(sources.begin(), sources.end(), m_readStates.begin(), m_readStates.end(),
                      [](const SCLSource& source, const auto& read) {
                          return source.file == read.first && isUnchanged(source.file, read.second);
                      });
}

JobOutcome SCLObject::readAll(const Progress& progress)
{
    m_found = SCLCheck();
    m_readStates.clear();
    std::vector<std::pair<fs::path, FileState>> states;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        states.emplace_back(sources[i].file, stateOf(sources[i].file));
        SCLReader reader(sources[i], skipLines);
        std::uint64_t count = 0;
        while (reader.next()) {
            ++count;
            m_found.missing += std::isnan(reader.value()) ? 1 : 0;
            if (!reader.trouble().empty() && ++m_found.troubleCount <= kMostTroubles)
                m_found.troubles.push_back({i, reader.line(), reader.trouble()});
            if (count % kLookEvery == 0 && !goesOn(progress, i * reader.fileBytes() + reader.position(),
                                                   sources.size() * reader.fileBytes()))
                return JobOutcome::Cancelled;
        }
        m_found.values.push_back(count);
    }
    m_readStates = std::move(states);
    m_readSkip = skipLines;
    return JobOutcome::Done;
}

std::vector<std::string> SCLObject::notices() const
{
    std::vector<std::string> texts;
    const std::uint64_t samples = sampleCount();
    for (std::size_t i = 0; i < sources.size(); ++i) {
        const std::uint64_t first = firstSample(i);
        const std::uint64_t end = first + m_found.values[i];
        if (first != 0)
            texts.push_back(bareName(sources[i]) + " begins " + inGroups(first) +
                            (first == 1 ? " sample later." : " samples later."));
        const double moved = static_cast<double>(first) - stepsAfterStart(i);
        if (std::fabs(moved) > kSameSample)
            texts.push_back(
                bareName(sources[i]) + " lies a fraction of a sample beside the others: it is moved by " +
                shortNumber(std::fabs(moved) * step) + (moved > 0.0 ? " s to later." : " s to earlier."));
        if (end < samples)
            texts.push_back(bareName(sources[i]) + (first == 0 ? " has " : " ends ") +
                            inGroups(samples - end) + (samples - end == 1 ? " value " : " values ") +
                            (first == 0 ? "fewer." : "before the others."));
        if (!sources[i].start && earliestStart())
            texts.push_back(bareName(sources[i]) + " tells no start: it is taken to begin with the series.");
        if (sources[i].decimalCommas && !isNamedSo(sources[i]))
            texts.push_back("The commas in " + bareName(sources[i]) + " are taken for decimal signs.");
        if (sources[i].secondName != 0)
            texts.push_back("Line " + std::to_string(sources[i].secondName) + " of " + bareName(sources[i]) +
                            " tells another name: all values are taken for one series.");
        if (sources[i].inTurn)
            texts.push_back(bareName(sources[i]) + " has several numbers a line; they are read in turn.");
        if (sources[i].unevenTimes)
            texts.push_back("The times of " + bareName(sources[i]) +
                            " are no equal steps apart; they are left out. The STL import keeps them.");
        else if (sources[i].skipsFirst && !sources[i].inTurn)
            texts.push_back("The first number of each line of " + bareName(sources[i]) +
                            " is an index or a time.");
    }
    if (step == 1.0 && std::none_of(sources.begin(), sources.end(), [](const SCLSource& source) {
            return source.step.has_value() || isNamedSo(source);
        }))
        texts.emplace_back("No sample time was found: 1 s is assumed.");
    if (const double coarseness = result().target.coarseness; coarseness >= 0.5)
        texts.push_back("A column \"Time\" tells these times to " + lengthText(coarseness) + '.');
    return texts;
}

// -- Write --

STLCheck SCLObject::result() const
{
    STLCheck made;
    made.target.samples = static_cast<std::uint32_t>(std::min<std::uint64_t>(sampleCount(), UINT32_MAX));
    made.rows = made.target.samples;
    made.target.dt = static_cast<float>(step);
    made.steps.typical = step;
    double seconds = 0.0;
    if (start != 0) {
        const Micros second = (start % kMicrosPerSecond + kMicrosPerSecond) % kMicrosPerSecond;
        seconds = static_cast<double>(localSeconds(start - second)) +
                  static_cast<double>(second) / kMicrosPerSecond;
    }
    // Before 1970 there is no start, nor behind 2106: the times stand in a column of their own.
    const bool isTold = seconds >= 0.0 && seconds <= UINT32_MAX;
    made.target.timeColumns = isTold ? 0 : 1;
    made.firstSeconds = seconds + step;
    made.target.columns = static_cast<std::uint32_t>(sources.size()) + made.target.timeColumns;
    if (isTold) {
        made.target.startSeconds = static_cast<std::uint32_t>(seconds);
        made.target.startTime = static_cast<float>(seconds - made.target.startSeconds);
    } else {
        const double last = seconds + step * static_cast<double>(made.target.samples);
        made.target.coarseness = std::ldexp(std::max(std::fabs(made.firstSeconds), std::fabs(last)), -24);
    }
    return made;
}

std::vector<std::string> SCLObject::columnNames() const
{
    std::vector<std::string> wanted;
    for (const SCLSource& source : sources)
        wanted.push_back(source.name.empty() ? "Col-" + std::to_string(wanted.size() + 1) : source.name);
    return uniqueColumnNames(wanted);
}

void SCLObject::writeHeader(TSFILE& target) const
{
    const STLCheck made = result();
    target.description(cutTo(description, kFileDescription.width - 1).c_str());
    target.timeUnit("Time[s]");
    target.dt(made.target.dt);
    target.setStart(made.target.startSeconds, made.target.startTime);
    if (made.target.timeColumns > 0)
        target.makeTimeColumns(1, 0);
    const auto stamp = static_cast<std::time_t>(std::max(start == 0 ? 0.0 : made.firstSeconds - step, 0.0));
    const std::vector<std::string> names = columnNames();
    for (std::uint32_t col = 1; col <= target.columns(); ++col)
        target.stampColumn(col, stamp);
    for (std::size_t i = 0; i < sources.size(); ++i) {
        const auto col = static_cast<std::uint32_t>(i) + made.target.timeColumns + 1;
        const std::string& text = sources[i].description.empty() ? sources[i].name : sources[i].description;
        target.columnName(col, names[i].c_str());
        target.columnDescription(col, nameWithUnit(text, sources[i].unit).c_str());
    }
}

JobOutcome SCLObject::write(TSFILE& target, const Progress& progress)
{
    for (std::size_t i = 0; i < sources.size(); ++i)
        if (!isUnchanged(sources[i].file, m_readStates.at(i).second))
            throw STLError(bareName(sources[i]) + " has changed while it was read. Import it again.");
    writeHeader(target);
    STLFormat format;
    format.fill = fill;
    const STLCheck made = result();
    STLWriter writer(target, format, made);
    std::vector<std::unique_ptr<SCLReader>> readers;
    std::vector<std::uint64_t> firsts;
    for (const SCLSource& source : sources) {
        firsts.push_back(firstSample(readers.size()));
        readers.push_back(std::make_unique<SCLReader>(source, skipLines));
    }
    std::vector<float> row(sources.size());
    for (std::uint32_t sample = 0; sample < made.target.samples; ++sample) {
        for (std::size_t i = 0; i < readers.size(); ++i) {
            const std::uint64_t first = firsts[i];
            const bool has = sample >= first && sample - first < m_found.values[i];
            if (has && !readers[i]->next())
                throw STLError(bareName(sources[i]) + " has changed while it was read. Import it again.");
            row[i] = has ? readers[i]->value() : std::numeric_limits<float>::quiet_NaN();
        }
        writer.add(step * sample, row);
        if (sample % kLookEvery == 0 && !goesOn(progress, sample, made.target.samples))
            return JobOutcome::Cancelled;
    }
    return writer.finish(progress);
}

JobOutcome veltrac::importSCL(SCLObject& logs, const fs::path& target, const Progress& progress)
{
    PendingFile pending(target, ".veltrac-new", ".ts");
    {
        const STLCheck made = logs.result();
        const auto file = createTsFile(pending.path().string(), made.target.samples, made.target.columns);
        if (logs.write(*file, progress) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
    }
    return pending.commit(progress);
}
