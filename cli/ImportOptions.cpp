#include "cli/ImportOptions.h"

#include <iterator>

#include "cli/Options.h"
#include "converters/TimeStamps.h"
#include "core/FileTime.h"

namespace veltrac {

namespace {

struct TimeSourceWord
{
    const char* word;
    STLTimeSource source;
};

constexpr TimeSourceWord kTimeSources[] = {{"step", STLTimeSource::Typed},
                                           {"stamp", STLTimeSource::Stamp},
                                           {"date-and-time", STLTimeSource::DateAndTime},
                                           {"date-parts", STLTimeSource::DateParts},
                                           {"decimal-years", STLTimeSource::DecimalYears},
                                           {"serial-days", STLTimeSource::SerialDays},
                                           {"elapsed-time", STLTimeSource::ElapsedTime},
                                           {"elapsed-seconds", STLTimeSource::ElapsedSeconds},
                                           {"unix-seconds", STLTimeSource::UnixSeconds},
                                           {"unix-milliseconds", STLTimeSource::UnixMilliseconds},
                                           {"unix-microseconds", STLTimeSource::UnixMicroseconds},
                                           {"unix-nanoseconds", STLTimeSource::UnixNanoseconds}};

}  // namespace

STLTimeSource TimeChoices::source() const
{
    return kTimeSources[*from].source;
}

void ImportOptions::addTo(Options& options)
{
    options.choice("--encoding", text.encoding, {"utf-8", "windows-1252"},
                   "How letters beyond ASCII are written");
    options.text("--separator", text.separator, "SIGN", "Between the cells of a line: a sign, tab or blank");
    options.text("--decimal", text.decimal, "SIGN", "The decimal sign, a point or a comma");
    options.choice("--grouping", text.grouping, {"none", "point", "comma", "blank", "apostrophe"},
                   "What stands between thousands");
    options.count("--first-data-line", text.firstDataLine, 1, "The line in which the data begin");
    options.count("--names-line", text.namesLine, 0, "The line with the names of the columns; 0: none");
    options.count("--units-line", text.unitsLine, 0, "The line with their units; 0: none");
    options.texts("--remarks", text.remarks, "SIGN,...",
                  "Lines that begin with one of these are passed over");
    options.texts("--missing-markers", text.missingMarkers, "WORD,...",
                  "Cells with one of these are missing");
    options.count("--skip-lines", text.skipLines, 0, "First lines of a single column log to pass over");
    std::vector<std::string> sources;
    sources.reserve(std::size(kTimeSources));
    for (const TimeSourceWord& row : kTimeSources)
        sources.emplace_back(row.word);
    options.choice("--time-from", time.from, sources, "Where the time of a row comes from");
    options.text("--date-column", time.dateColumn, "COLUMN", "The column of dates");
    options.text("--time-column", time.timeColumn, "COLUMN", "The column of stamps, times or seconds");
    options.choice("--order", time.order, {"day-month", "month-day"}, "How 3/4/2016 is meant");
    options.choice("--zone", time.zone, {"local", "utc"}, "The zone of stamps that name none");
    options.text("--start", time.start, "TIME",
                 "When the series begins (2016-10-30T02:30:00); the first sample lies one step later");
    options.number("--step", time.step, "SECONDS", "From sample to sample");
    options.number("--rate", time.rate, "HZ", "Samples a second, instead of --step");
    options.choice(
        "--becomes", time.becomes, {"constant", "time", "time32", "equal-steps"},
        "How the ts-file tells the time: a sample time, a column \"Time\", the same with \"Time32\", "
        "or values interpolated at equal steps");
    options.number("--equal-step", time.equalStep, "SECONDS", "The step of --becomes equal-steps");
    options.text("--description", result.description, "TEXT", "The description of the ts-file");
    options.texts("--columns", result.columns, "COLUMN,...",
                  "Columns to take, by name, number or range, 3-8");
    options.wholeTexts("--name", result.names, "COLUMN=NAME",
                       "Another name for a column; may be given several times");
    options.wholeTexts("--unit", result.units, "COLUMN=UNIT",
                       "The unit of a column; may be given several times");
    options.count("--rows-from", result.fromRow, 1, "The first data row to take");
    options.count("--rows-to", result.toRow, 0, "The last data row to take; 0 takes all");
    options.count("--every", result.everyNth, 1, "Takes every n-th row");
    options.choice("--missing-become", result.missingBecome, {"nan", "zero", "previous", "interpolated"},
                   "What stands in the ts-file for a missing value");
    options.count("--tsa-samples", tsaSamples, 0, "The samples of a tsa text whose header does not say");
    options.count("--tsa-columns", tsaColumns, 0, "The columns of a tsa text whose header does not say");
    options.flag("--accept", accept,
                 "Import also where the window would ask: doubtful dates or names, more than half "
                 "of the rows in trouble");
}

void ImportOptions::check()
{
    takeSigns(text.separator, text.decimal);
    if (time.step && time.rate)
        throw UsageError("--step and --rate say the same: one of them");
    if (time.rate) {
        if (!(*time.rate > 0.0))
            throw UsageError("--rate must be above 0");
        time.step = 1.0 / *time.rate;
    }
    if ((time.step && !isSampleTime(*time.step)) || (time.equalStep && !isSampleTime(*time.equalStep)))
        throw UsageError("a step must be above 0");
    if (!time.start.empty() && !readStamp(time.start))
        throw UsageError("--start: \"" + time.start + "\" is no time; 2016-10-30T02:30:00 is one");
    for (const auto* const list : {&result.names, &result.units})
        for (const std::string& pair : *list)
            if (pair.find('=') == std::string::npos)
                throw UsageError("\"" + pair + "\": COLUMN=TEXT is meant");
}

}  // namespace veltrac
