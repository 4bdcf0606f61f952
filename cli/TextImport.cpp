// Tsa texts and text logs under the options of the command line.

#include <algorithm>
#include <charconv>
#include <exception>
#include <iterator>
#include <sstream>

#include "cli/FileWords.h"
#include "cli/ImportOptions.h"
#include "converters/SCLObject.h"
#include "converters/STLReport.h"
#include "converters/TimeStamps.h"
#include "converters/TsaImport.h"
#include "core/FailureText.h"
#include "core/NumberTexts.h"
#include "core/TsHeader.h"
#include "core/Utf8.h"

namespace veltrac {

namespace {

// -- tsa --

// Nobody can be asked: what a header lacks comes from the options.
class NoQuestions : public TsaQuestions
{
public:
    explicit NoQuestions(const ImportOptions& options) : m_options(options) {}

    std::optional<int> askSamples(const std::string& /*tsaFile*/) override
    {
        return given(m_options.tsaSamples,
                     "the header does not say how many samples there are (--tsa-samples)");
    }
    std::optional<int> askColumns(const std::string& /*tsaFile*/) override
    {
        return given(m_options.tsaColumns,
                     "the header does not say how many columns there are (--tsa-columns)");
    }
    bool mayOverwrite(const std::string& /*file*/) override { return true; }
    bool isOpenForWriting(const std::string& /*file*/) override { return false; }
    void warn(const std::string& /*title*/, const std::string& text) override
    {
        // What was caught tells more than the window's words for it.
        m_failure = std::current_exception() ? reasonOfFailure() : text;
        std::replace(m_failure.begin(), m_failure.end(), '\n', ' ');
    }

    // Why nothing was made.
    const std::string& failure() const noexcept { return m_failure; }

private:
    std::optional<int> given(const std::optional<std::uint32_t>& count, const char* lack)
    {
        if (count)
            return static_cast<int>(*count);
        m_failure = lack;
        return std::nullopt;
    }

    const ImportOptions& m_options;
    std::string m_failure;
};

void addLoss(ImportTold& told, std::uint64_t count, const char* thing, const char* what)
{
    if (count == 0)
        return;
    told.troubles.push_back(counted(count, thing) + ' ' + what);
    told.troubleCount += count;
}

}  // namespace

ImportTold importTsaInto(const VerbJob& job, const ImportOptions& options)
{
    NoQuestions questions(options);
    TsaTarget target;
    // Only looked at: made in the scratch directory, and gone with the target.
    target.wanted = job.target.empty() ? scratchDirectory() / "veltrac-check.ts" : job.target;
    const int made = ReadASCIIHeader(job.source, questions, job.progress, target);
    if (made == 0 && questions.failure().empty())
        throw Interrupted{};
    if (made != 1)
        throw JobError(questions.failure().empty() ? "it could not be imported" : questions.failure());
    requireDone(readTsaData(job.source, job.progress, target));
    const TsaImportReport& report = target.report;
    ImportTold told{counted(report.rowsRead, "sample") + ", " + counted(report.columns, "column") + '.'};
    addLoss(told, report.samples - report.rowsRead, "sample", "without a line in the text: zeros");
    addLoss(told, report.linesCut, "line", "cut: too long (header 256, data 2048 characters)");
    addLoss(told, report.linesTabbed, "data line", "beginning with a tab, passed over");
    addLoss(told, report.notNumbers, "word", "no number, or with text behind the number");
    addLoss(told, report.valuesMissing, "value", "missing in their lines: 0");
    addLoss(told, report.valuesLeftOver, "value", "more than the columns, left over");
    addLoss(told, report.linesLeftOver, "data line", "more than the samples, left over");
    if (!job.target.empty())
        target.file->commit();
    return told;
}

// -- Smart tool logs --

namespace {

// -1 where there is none.
int columnFound(const STLFormat& format, const std::string& text)
{
    const auto count = static_cast<std::uint32_t>(format.columns.size());
    if (const std::uint32_t number = columnNumber(text, count); number != 0)
        return static_cast<int>(number) - 1;
    const auto found = std::find_if(format.columns.begin(), format.columns.end(),
                                    [&text](const STLColumn& column) { return column.name == text; });
    return found == format.columns.end() ? -1 : static_cast<int>(found - format.columns.begin());
}

int columnOf(const STLFormat& format, const std::string& text)
{
    if (const int column = columnFound(format, text); column >= 0)
        return column;
    std::string list;
    for (std::size_t c = 0; c < format.columns.size(); ++c)
        list += (c > 0 ? ", " : "") + std::to_string(c + 1) + " " + format.columns[c].name;
    throw JobError("there is no column \"" + text + "\"; there are " + list);
}

// "COLUMN=TEXT"
std::pair<STLColumn*, std::string> columnAndText(STLFormat& format, const std::string& text)
{
    const std::size_t at = text.find('=');
    return {&format.columns[static_cast<std::size_t>(columnOf(format, text.substr(0, at)))],
            text.substr(at + 1)};
}

void detectFormat(STLObject& log, const TextChoices& text)
{
    static constexpr char kGroupings[] = {0, '.', ',', ' ', '\''};
    log.detect();
    if (text.separator.empty() && text.decimal.empty() && !text.grouping)
        return;
    const STLCells found = log.format().cells;
    const char separator = text.separator.empty() ? found.separator : text.separator.front();
    const char decimal = text.decimal.empty() ? found.decimal : text.decimal.front();
    const char own = decimal == found.decimal ? found.grouping : '\0';
    log.detect(separator, separator == decimal ? '.' : decimal,
               text.grouping ? kGroupings[*text.grouping] : own);
}

void takeTextOptions(STLObject& log, const TextChoices& text)
{
    STLFormat& format = log.format();
    if (text.encoding)
        format.encoding = static_cast<STLEncoding>(*text.encoding);
    if (text.firstDataLine)
        format.firstDataLine = *text.firstDataLine;
    if (text.namesLine)
        format.namesLine = *text.namesLine;
    if (text.unitsLine)
        format.unitsLine = *text.unitsLine;
    if (text.encoding || text.firstDataLine || text.namesLine || text.unitsLine)
        takeNames(log.text(), format);
    if (text.namesLine)
        format.namesInDoubt = false;
    if (!text.remarks.empty())
        format.remarks = text.remarks;
    if (!text.missingMarkers.empty())
        format.cells.missing = text.missingMarkers;
}

void takeTimeOptions(STLFormat& format, const TimeChoices& time)
{
    if (time.from)
        format.timeSource = time.source();
    if (!time.timeColumn.empty())
        format.timeColumn = columnOf(format, time.timeColumn);
    if (!time.dateColumn.empty())
        format.dateColumn = columnOf(format, time.dateColumn);
    if (format.timeSource == STLTimeSource::Typed)
        format.timeColumn = -1;
    else if (format.timeColumn < 0)
        throw JobError("--time-column is needed: the column with the times");
    if (format.timeSource == STLTimeSource::DateParts &&
        format.partColumns[static_cast<std::size_t>(STLDatePart::Year)] < 0)
        throw JobError("no columns of the year, the month and the day were found in it");
    if (format.timeSource != STLTimeSource::DateAndTime)
        format.dateColumn = -1;
    else if (format.dateColumn < 0)
        throw JobError("--date-column is needed: the column with the dates");
    if (time.order) {
        format.order = static_cast<DateOrder>(*time.order);
        format.orderInDoubt = false;
    }
    if (time.zone)
        format.greenwich = *time.zone == 1;
    if (!time.start.empty()) {
        const auto stamp = readStamp(time.start);
        const auto wall =
            format.greenwich ? wallClock(*stamp, format.order) : localWallClock(*stamp, format.order);
        format.typedStart = wall.value_or(0);
    }
    if (time.step) {
        format.typedStep = *time.step;
        format.stepIsTold = true;
    }
    if (time.becomes)
        format.timeResult = static_cast<STLTimeResult>(*time.becomes);
    format.resampleStep = time.equalStep.value_or(0.0);
}

void takeColumnOptions(STLFormat& format, const ResultChoices& result)
{
    if (!result.columns.empty()) {
        for (STLColumn& column : format.columns)
            column.take = false;
        for (const std::string& told : result.columns) {
            const auto count = static_cast<std::uint32_t>(format.columns.size());
            const std::vector<std::uint32_t> range = columnRange(told, count);
            if (!range.empty() && columnFound(format, told) < 0)
                for (const std::uint32_t number : range)
                    format.columns[number - 1].take = true;
            else
                format.columns[static_cast<std::size_t>(columnOf(format, told))].take = true;
        }
    }
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        STLColumn& column = format.columns[c];
        const int index = static_cast<int>(c);
        column.take = column.take && index != format.timeColumn && index != format.dateColumn;
        column.numberTexts = column.take && column.kind == STLKind::Text;
    }
    for (const std::string& told : result.units) {
        const auto [column, unit] = columnAndText(format, told);
        column->unit = unit;
    }
    for (const std::string& told : result.names) {
        const auto [column, name] = columnAndText(format, told);
        column->label = name;
    }
    if (!result.description.empty())
        format.description = result.description;
    format.fromRow = result.fromRow;
    format.toRow = result.toRow;
    format.everyNth = result.everyNth;
    if (result.missingBecome)
        format.fill = static_cast<STLFill>(*result.missingBecome);
}

// A question without its last line, which asks.
std::string withoutQuestion(std::string text)
{
    if (const std::size_t at = text.rfind('\n'); at != std::string::npos)
        text.erase(at);
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(utf8OfBytes(line));
    return lines;
}

}  // namespace

ImportTold importStlInto(const VerbJob& job, const ImportOptions& options)
{
    STLObject log(job.source);
    requireDone(log.unpack(job.progress));
    detectFormat(log, options.text);
    takeTextOptions(log, options.text);
    takeTimeOptions(log.format(), options.time);
    takeColumnOptions(log.format(), options.result);
    requireDone(log.check(job.progress));
    const STLCheck& found = log.found();
    if (const std::string doubt = importDoubt(log.format(), found); !doubt.empty() && !options.accept)
        throw JobError(withoutQuestion(doubt) + " (--accept imports it all the same" +
                       (log.format().orderInDoubt ? ", --order settles it)" : ")"));
    if (!job.target.empty())
        requireDone(importSTL(log, job.target, job.progress));
    ImportTold told{summaryText(found) + ' ' + stepText(log.format(), found) + ' ' + resultText(found)};
    for (const std::string& doubt : {orderDoubt(log.format(), found), namesDoubt(log.format())})
        if (!doubt.empty())
            told.summary += ' ' + doubt;
    told.assumed = linesOf(assumptionText(log.format(), found));
    told.reading = linesOf(evidenceText(log.format()));
    for (const std::string& loss : linesOf(lossText(log.format(), found)))
        told.reading.push_back(loss);
    for (const STLTrouble& trouble : found.troubles)
        told.troubles.push_back("line " + std::to_string(trouble.line) +
                                (trouble.column < 0 ? "" : ", column " + std::to_string(trouble.column + 1)) +
                                ": " + problemText(trouble.problem) +
                                (trouble.text.empty() ? "" : ": " + utf8OfBytes(trouble.text)));
    told.troubleCount = found.troubleCount;
    return told;
}

// -- Single column logs --

namespace {

SCLSource& sourceOf(SCLObject& logs, const std::string& text)
{
    for (std::size_t i = 0; i < logs.sources.size(); ++i)
        if (logs.sources[i].name == text || std::to_string(i + 1) == text)
            return logs.sources[i];
    throw JobError("there is no column \"" + text + "\"");
}

}  // namespace

ImportTold importSclInto(const VerbJob& job, const ImportOptions& options)
{
    SCLObject logs;
    logs.skipLines = options.text.skipLines;
    for (const std::filesystem::path& file : job.sources)
        logs.add(file);
    if (options.time.step)
        logs.step = *options.time.step;
    if (!options.time.start.empty())
        logs.start = localWallClock(*readStamp(options.time.start), DateOrder::DayMonth).value_or(0);
    if (options.result.missingBecome)
        logs.fill = static_cast<STLFill>(*options.result.missingBecome);
    if (!options.result.description.empty())
        logs.description = options.result.description;
    for (const std::string& text : options.result.names)
        sourceOf(logs, text.substr(0, text.find('='))).name = text.substr(text.find('=') + 1);
    for (const std::string& text : options.result.units)
        sourceOf(logs, text.substr(0, text.find('='))).unit = text.substr(text.find('=') + 1);
    requireDone(logs.check(job.progress));
    const STLCheck result = logs.result();
    if (!job.target.empty())
        requireDone(importSCL(logs, job.target, job.progress));
    ImportTold told{counted(result.target.samples, "sample") + ", " +
                    counted(result.target.columns, "column") + ", sample time " +
                    generalNumber(static_cast<double>(result.target.dt), 7) + " s."};
    for (const std::string& notice : logs.notices())
        told.summary += ' ' + notice;
    for (const SCLTrouble& trouble : logs.found().troubles)
        told.troubles.push_back(logs.sources[trouble.source].file.filename().string() + ", line " +
                                std::to_string(trouble.line) +
                                ": no number: missing: " + utf8OfBytes(trouble.text));
    told.troubleCount = logs.found().troubleCount;
    return told;
}

}  // namespace veltrac
