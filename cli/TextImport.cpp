// Tsa texts and text logs under the options of the command line.

#include <algorithm>
#include <charconv>
#include <exception>
#include <iterator>

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
    addLoss(told, report.linesTabbed, "data line", "that begin with a tab, passed over");
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

int columnOf(const STLFormat& format, const std::string& text)
{
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc() && stop == end && number >= 1 && number <= format.columns.size())
        return static_cast<int>(number) - 1;
    std::string list;
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        if (format.columns[c].name == text)
            return static_cast<int>(c);
        list += (c > 0 ? ", " : "") + std::to_string(c + 1) + " " + format.columns[c].name;
    }
    throw JobError("there is no column \"" + text + "\"; there are " + list);
}

// "COLUMN=TEXT"
std::pair<STLColumn*, std::string> columnAndText(STLFormat& format, const std::string& text)
{
    const std::size_t at = text.find('=');
    return {&format.columns[static_cast<std::size_t>(columnOf(format, text.substr(0, at)))],
            text.substr(at + 1)};
}

void detectFormat(STLObject& log, const ImportOptions& options)
{
    log.detect();
    if (options.separator.empty() && options.decimal.empty())
        return;
    const STLCells found = log.format().cells;
    const char separator = options.separator.empty() ? found.separator : options.separator.front();
    const char decimal = options.decimal.empty() ? found.decimal : options.decimal.front();
    log.detect(separator, separator == decimal ? '.' : decimal);
}

void takeTextOptions(STLObject& log, const ImportOptions& options)
{
    static constexpr char kGroupings[] = {0, '.', ',', ' ', '\''};
    STLFormat& format = log.format();
    if (options.encoding)
        format.encoding = static_cast<STLEncoding>(*options.encoding);
    if (options.grouping)
        format.cells.grouping = kGroupings[*options.grouping];
    if (options.firstDataLine)
        format.firstDataLine = *options.firstDataLine;
    if (options.namesLine)
        format.namesLine = *options.namesLine;
    if (options.unitsLine)
        format.unitsLine = *options.unitsLine;
    if (options.encoding || options.grouping || options.firstDataLine || options.namesLine ||
        options.unitsLine)
        takeNames(log.text(), format);
    if (options.namesLine)
        format.namesInDoubt = false;
    if (!options.remarks.empty())
        format.remarks = options.remarks;
    if (!options.missingMarkers.empty())
        format.cells.missing = options.missingMarkers;
}

void takeTimeOptions(STLFormat& format, const ImportOptions& options)
{
    if (options.timeFrom)
        format.timeSource = static_cast<STLTimeSource>(*options.timeFrom);
    if (!options.timeColumn.empty())
        format.timeColumn = columnOf(format, options.timeColumn);
    if (!options.dateColumn.empty())
        format.dateColumn = columnOf(format, options.dateColumn);
    if (format.timeSource == STLTimeSource::Typed)
        format.timeColumn = -1;
    else if (format.timeColumn < 0)
        throw JobError("--time-column is needed: the column with the times");
    if (format.timeSource != STLTimeSource::DateAndTime)
        format.dateColumn = -1;
    else if (format.dateColumn < 0)
        throw JobError("--date-column is needed: the column with the dates");
    if (options.order) {
        format.order = static_cast<DateOrder>(*options.order);
        format.orderInDoubt = false;
    }
    if (options.zone)
        format.greenwich = *options.zone == 1;
    if (!options.start.empty()) {
        const auto stamp = readStamp(options.start);
        const auto wall =
            format.greenwich ? wallClock(*stamp, format.order) : localWallClock(*stamp, format.order);
        format.typedStart = wall.value_or(0);
    }
    if (options.step) {
        format.typedStep = *options.step;
        format.stepIsTold = true;
    }
    if (options.becomes)
        format.timeResult = static_cast<STLTimeResult>(*options.becomes);
    format.resampleStep = options.equalStep.value_or(0.0);
}

void takeColumnOptions(STLFormat& format, const ImportOptions& options)
{
    if (!options.columns.empty()) {
        for (STLColumn& column : format.columns)
            column.take = false;
        for (const std::string& text : options.columns)
            format.columns[static_cast<std::size_t>(columnOf(format, text))].take = true;
    }
    for (std::size_t c = 0; c < format.columns.size(); ++c) {
        STLColumn& column = format.columns[c];
        const int index = static_cast<int>(c);
        column.take = column.take && index != format.timeColumn && index != format.dateColumn;
        column.numberTexts = column.take && column.kind == STLKind::Text;
    }
    for (const std::string& text : options.units) {
        const auto [column, unit] = columnAndText(format, text);
        column->unit = unit;
    }
    for (const std::string& text : options.names) {
        const auto [column, name] = columnAndText(format, text);
        column->label = name;
    }
    if (!options.description.empty())
        format.description = options.description;
    format.fromRow = options.fromRow;
    format.toRow = options.toRow;
    format.everyNth = options.everyNth;
    if (options.missingBecome)
        format.fill = static_cast<STLFill>(*options.missingBecome);
}

// A question without its last line, which asks.
std::string withoutQuestion(std::string text)
{
    if (const std::size_t at = text.rfind('\n'); at != std::string::npos)
        text.erase(at);
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

}  // namespace

ImportTold importStlInto(const VerbJob& job, const ImportOptions& options)
{
    STLObject log(job.source);
    detectFormat(log, options);
    takeTextOptions(log, options);
    takeTimeOptions(log.format(), options);
    takeColumnOptions(log.format(), options);
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
    logs.skipLines = options.skipLines;
    for (const std::filesystem::path& file : job.sources)
        logs.add(file);
    if (options.step)
        logs.step = *options.step;
    if (!options.start.empty())
        logs.start = localWallClock(*readStamp(options.start), DateOrder::DayMonth).value_or(0);
    if (options.missingBecome)
        logs.fill = static_cast<STLFill>(*options.missingBecome);
    if (!options.description.empty())
        logs.description = options.description;
    for (const std::string& text : options.names)
        sourceOf(logs, text.substr(0, text.find('='))).name = text.substr(text.find('=') + 1);
    for (const std::string& text : options.units)
        sourceOf(logs, text.substr(0, text.find('='))).unit = text.substr(text.find('=') + 1);
    requireDone(logs.check(job.progress));
    const STLCheck result = logs.result();
    if (!job.target.empty())
        requireDone(importSCL(logs, job.target, job.progress));
    ImportTold told{counted(result.samples, "sample") + ", " + counted(result.columns, "column") +
                    ", sample time " + generalNumber(static_cast<double>(result.dt), 7) + " s."};
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
