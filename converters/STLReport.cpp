#include "converters/STLReport.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "converters/LengthTexts.h"
#include "core/NumberTexts.h"

namespace veltrac {

namespace {

// "3 April 2016"
std::string dayInWords(Micros wall)
{
    static constexpr std::array<const char*, 12> kMonths = {"January",   "February", "March",    "April",
                                                            "May",       "June",     "July",     "August",
                                                            "September", "October",  "November", "December"};
    using namespace std::chrono;
    const year_month_day day{floor<days>(sys_time<microseconds>(microseconds(wall)))};
    return std::to_string(static_cast<unsigned>(day.day())) + ' ' +
           kMonths[static_cast<unsigned>(day.month()) - 1] + ' ' +
           std::to_string(static_cast<int>(day.year()));
}

// Adds "12 cells missing" to a list, unless there are none.
void addCount(std::string& list, std::uint64_t count, const char* thing, const char* what)
{
    if (count != 0)
        list += (list.empty() ? " " : ", ") + counted(count, thing) + ' ' + what;
}

// Whether the rows lie clearly beside where their times, of another step now and then, tell.
bool areRounded(const STLFormat& format, const STLCheck& found)
{
    constexpr double kClearly = 0.1;
    const double longest = std::max(found.steps.greatest, found.steps.typical);
    return format.timeSource != STLTimeSource::Typed && found.steps.areEqual && found.steps.least > 0.0 &&
           found.lag.changes == 0 && longest - found.steps.least > kClearly * found.steps.typical;
}

const char* nameOfSeparator(char separator)
{
    switch (separator) {
        case '\t':
            return "cells between tabs";
        case ';':
            return "cells between semicolons";
        case '|':
            return "cells between bars";
        case ',':
            return "cells between commas";
        default:
            return "cells between blanks";
    }
}

std::string nameInReport(const STLFormat& format, std::size_t column)
{
    const std::string& name = format.columns[column].name;
    return name.empty() ? "column " + std::to_string(column + 1) : name;
}

// " \"t\"" for the column of times; empty where it has no name.
std::string inQuotes(const STLFormat& format)
{
    const auto column = static_cast<std::size_t>(format.timeColumn);
    return format.timeColumn < 0 || format.columns[column].name.empty()
               ? std::string()
               : " \"" + format.columns[column].name + '"';
}

// "K is 1024 in Size, Used"
std::string factoredColumns(const STLFormat& format)
{
    std::string text;
    for (const double factor : {1000.0, 1024.0}) {
        std::string list;
        for (std::size_t c = 0; c < format.columns.size(); ++c)
            if (format.columns[c].factor == factor)
                list += (list.empty() ? "" : ", ") + nameInReport(format, c);
        if (!list.empty())
            text += (text.empty() ? "K is " : "; K is ") + fixedNumber(factor, 0) + " in " + list;
    }
    return text;
}

// "3 numbers are rounded, by up to 64: …"
std::string roundingText(const STLLosses& losses)
{
    const std::string numbers = counted(losses.roundedCells, "number");
    const std::string most = std::isinf(losses.mostRounded)
                                 ? "some of them beyond what it can tell at all"
                                 : "by up to " + generalNumber(losses.mostRounded, 3);
    return numbers + " of more than seven digits rounded to 32 bits, as a ts-file keeps them: " + most + '.';
}

}  // namespace

std::string summaryText(const STLCheck& found)
{
    std::string losses;
    addCount(losses, found.losses.missingCells(), "cell", "missing");
    addCount(losses, found.losses.skippedLines, "line", "skipped");
    addCount(losses, found.losses.titleLines, "repeated line", "of names left out");
    addCount(losses, found.losses.otherLines, "line", "of other tables left out");
    return counted(found.target.samples, "row") + ", " +
           counted(found.target.columns - found.target.timeColumns, "column") + '.' + losses +
           (losses.empty() ? "" : ".");
}

std::string evidenceText(const STLFormat& format)
{
    const auto percent = [](double share) { return fixedNumber(share * 100.0, 0) + " %"; };
    const auto reasons = [&](const STLEvidence& evidence, std::uint64_t namesLine) {
        std::string words = percent(evidence.lines) + " of the lines have " +
                            counted(evidence.cells, "cell") + ", and " + percent(evidence.typed) +
                            " of these are numbers, dates or times.";
        words += namesLine == 0 ? (format.namesListed ? "" : " No line gives names.")
                                : " Line " + std::to_string(namesLine) + " gives the names.";
        if (evidence.timeColumn < 0)
            return words + " No column tells the time.";
        return words + " Column " + std::to_string(evidence.timeColumn + 1) +
               " tells the time: " + percent(evidence.times) + " of the rows looked at have one, and they " +
               (evidence.timesGoOneWay ? "go one way." : "do not go one way.");
    };
    std::string text = "Read as " +
                       std::string(!format.cells.edges.empty() ? "columns of fixed widths"
                                   : format.cells.bars         ? "cells between blanks and bars"
                                                               : nameOfSeparator(format.cells.separator)) +
                       (format.cells.decimal == ',' ? " with a decimal comma: " : " with a decimal point: ") +
                       reasons(format.evidence, format.namesLine);
    if (format.otherDecimal != 0)
        text += "\nFirst row so: " + format.evidence.firstRow + "\nAnother reading comes near, " +
                nameOfSeparator(format.otherSeparator) +
                (format.otherDecimal == ',' ? " with a decimal comma: " : " with a decimal point: ") +
                reasons(format.otherEvidence, format.otherEvidence.namesLine) +
                " First row then: " + format.otherEvidence.firstRow;
    return text;
}

std::string lossText(const STLFormat& format, const STLCheck& found)
{
    constexpr int kMostQuoted = 10;
    std::string text;
    const auto line = [&](std::uint64_t count, const char* thing, const std::string& what) {
        if (count != 0)
            text += (text.empty() ? "" : "\n") + counted(count, thing) + ' ' + what;
    };
    const auto quotes = [&](const auto& wanted) {
        std::string list;
        int quoted = 0;
        std::uint64_t before = 0;
        for (const STLTrouble& trouble : found.troubles) {
            if (!wanted(trouble.problem) || trouble.line == before || ++quoted > kMostQuoted)
                continue;
            before = trouble.line;
            list += (list.empty() ? ": line " : "; line ") + std::to_string(trouble.line) + " \"" +
                    trouble.text + '"';
        }
        return list + '.';
    };
    std::string titles;
    for (const auto& [number, title] : format.titles)
        titles += (titles.empty() ? ": line " : "; line ") + std::to_string(number) + " \"" + title + '"';
    line(format.titleCount, "line", "above the data left out as titles" + titles + '.');
    line(found.losses.emptyCells, "cell", "empty or marked as missing.");
    line(found.losses.notNumbers, "cell",
         "no number" + quotes([](STLProblem p) { return p == STLProblem::NotANumber; }));
    line(found.losses.shortRows, "row",
         "with too few cells" + quotes([](STLProblem p) { return p == STLProblem::TooFewCells; }));
    line(found.losses.longRows, "row",
         "with too many cells" + quotes([](STLProblem p) { return p == STLProblem::TooManyCells; }));
    line(found.losses.skippedLines, "line", "skipped" + quotes([](STLProblem p) {
                                                return p == STLProblem::UnreadableStamp ||
                                                       p == STLProblem::FarTime ||
                                                       p == STLProblem::NoNumber ||
                                                       p == STLProblem::LineTooLong;
                                            }));
    line(found.losses.titleLines, "repeated line", "of names left out.");
    line(found.losses.otherLines, "line",
         "of other tables left out" + quotes([](STLProblem p) { return p == STLProblem::OtherTable; }));
    std::string texts;
    std::size_t left = 0;
    for (std::size_t c = 0; c < format.columns.size(); ++c)
        if (!format.columns[c].take && !tellsTime(format, c) && ++left)
            texts += (texts.empty() ? ": " : ", ") + nameInReport(format, c);
    line(left, "column", "not taken" + texts + '.');
    return text;
}

std::string assumptionText(const STLFormat& format, const STLCheck& found)
{
    std::string text;
    const auto line = [&](bool wanted, const std::string& what) {
        if (wanted)
            text += (text.empty() ? "" : "\n") + what;
    };
    const bool dated = format.timeSource != STLTimeSource::Typed && !timesAreElapsed(format.timeSource);
    // One second is what stepText() tells of.
    line(format.timeSource == STLTimeSource::Typed && !format.stepIsTold && format.typedStep != 1.0,
         "No time was found: steps of " + lengthText(format.typedStep) + " are assumed.");
    line(!dated && format.timeSource != STLTimeSource::ElapsedTime && format.typedStart == 0,
         "No start was found: the moment of the import stands for it.");
    line(dated && !format.greenwich && !found.zoned, "No zone is named: the times are taken as local ones.");
    line(format.timeSource == STLTimeSource::ElapsedTime && format.typedStart == 0,
         "No date was found: the times count from midnight.");
    line(format.timeSource == STLTimeSource::DateParts,
         std::string("The date is put together from columns of its parts") +
             (format.partColumns[static_cast<std::size_t>(STLDatePart::Week)] >= 0
                  ? ", weeks as ISO 8601 counts them, from Monday."
                  : "."));
    line(format.timeSource == STLTimeSource::DecimalYears,
         std::string("Numbers are taken for years with ") +
             (format.monthsInDigits  ? "the month behind the point, 1 to 12."
              : format.yearsInMonths ? "decimals, as firsts of months."
                                     : "decimals."));
    line(format.timeSource == STLTimeSource::SerialDays,
         "Numbers are taken for days as spreadsheets count them.");
    line(format.timeSource == STLTimeSource::ElapsedSeconds && secondsAreAssumed(format),
         "The column of times" + inQuotes(format) + " names no unit: seconds are assumed.");
    line(format.groupsAssumed, format.cells.grouping == '.'
                                   ? "Points are taken for signs between thousands: 2.990 is 2 990."
                                   : "Commas are taken for signs between thousands: 2,990 is 2 990.");
    line(!factoredColumns(format).empty(),
         "K, M and G behind numbers are taken for factors: " + factoredColumns(format) + '.');
    line(format.namesListed, "The names of the columns are those that the lines above list by number.");
    line(format.namesInRemark && format.namesLine != 0,
         "Line " + std::to_string(format.namesLine) + ", a remark, is taken for the names of the columns.");
    line(format.orderInDoubt && format.orderBySteps,
         "The order of day and month is the one that makes equal steps.");
    line(format.timeIsHhmm, "Numbers are taken for times of the day: 930 is half past nine.");
    line(clockIsInParts(format), "Numbers beside the dates are taken for hours.");
    line(format.cells.rowNames, "The words before the first number of a row are taken for its name.");
    line(found.steps.areEqual && found.steps.least <= 0.0 && format.timeSource != STLTimeSource::Typed,
         "Several rows bear the same time: they are taken to lie between two ticks of a clock, at equal "
         "steps.");
    line(found.chosen > 1 && found.steps.least == 0.0 && found.steps.greatest == 0.0 &&
             found.steps.gaps == 0 && format.timeSource != STLTimeSource::Typed,
         "All rows bear the same time.");
    line(areRounded(format, found), "The times are taken for rounded ones: the rows lie at equal steps of " +
                                        stepLength(found.steps.typical) +
                                        ", some of them beside their times.");
    line(found.lag.ranOn,
         "Rows lie in an hour that the local clock left out: their clock is taken for one that was not set.");
    line(
        !found.lag.ranOn && !found.target.onLocalClock && found.lag.least != found.lag.most,
        "The local clock was set between these rows, which tell nothing of it: at equal steps they lie up to "
        "an hour beside it.");
    if (format.unmatchedLine != 0) {
        const std::string words = counted(format.unmatchedWords, "word");
        const std::string columns = counted(format.columns.size(), "column");
        const bool named = format.unmatchedLine == format.namesLine;
        line(true, "Line " + std::to_string(format.unmatchedLine) + " has " + words + " for " + columns +
                       (named ? ": the first ones are taken for names." : ": they are taken for no names."));
    }
    line(format.namesAreApart, "The names in line " + std::to_string(format.namesLine) +
                                   " are parted by blanks, unlike the cells below: they are taken in turn.");
    line(found.breaks.count != 0,
         "Empty lines or remarks stand between the rows, " +
             (found.breaks.count == 1 ? "once, above line "
                                      : counted(found.breaks.count, "time") + ", first above line ") +
             std::to_string(found.breaks.firstLine) + ": all rows are taken for one table.");
    line(format.otherLayoutLine != 0,
         "From line " + std::to_string(format.otherLayoutLine) +
             " on the rows are set out in another way, as another table's: all are taken for one table.");
    line(found.losses.roundedCells != 0, roundingText(found.losses));
    line(found.target.coarseness >= 0.5,
         "A column \"Time\" tells these times to " + lengthText(found.target.coarseness) + '.');
    return text;
}

std::string stepText(const STLFormat& format, const STLCheck& found)
{
    if (format.timeSource == STLTimeSource::Typed && !format.stepIsTold && format.typedStep == 1.0)
        return "No time was found; 1 s is assumed.";
    if (found.chosen < 2)
        return "One row only.";
    std::string notes;
    if (found.steps.newestFirst)
        notes += " The newest row came first: the rows are turned round.";
    if (found.lag.changes != 0)
        notes += " The local clock was set " +
                 (found.lag.changes == 1 ? "once" : counted(found.lag.changes, "time")) +
                 " meanwhile (daylight saving time): the rows' order tells their times.";
    if (found.steps.areEqual)
        return "Step " + stepLength(found.steps.typical) + ", constant." + notes;
    std::string line = stepRange(found.steps.least, found.steps.greatest);
    if (found.steps.gaps > 0)
        line += ", " + counted(found.steps.gaps, "gap") + ", longest " + lengthText(found.steps.longestGap);
    if (found.steps.least < 0.0)
        line += ", some backwards";
    return line + '.' + notes;
}

std::string resultText(const STLCheck& found)
{
    const std::string step = lengthText(static_cast<double>(found.target.dt));
    return found.target.resampled          ? "At equal steps of " + step + '.'
           : found.target.timeColumns == 2 ? "With \"Time\" and \"Time32\"."
           : found.target.timeColumns == 1 ? "With a column \"Time\"."
                                           : "With a sample time of " + step + '.';
}

std::string wallInWords(Micros wall)
{
    static constexpr std::array<const char*, 7> kDays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                         "Thursday", "Friday", "Saturday"};
    using namespace std::chrono;
    const auto day = floor<days>(sys_time<microseconds>(microseconds(wall)));
    const hh_mm_ss time(microseconds(wall) - day.time_since_epoch());
    std::array<char, 16> clock;
    std::snprintf(clock.data(), clock.size(), "%02d:%02d:%02d", static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    return std::string(kDays[weekday(day).c_encoding()]) + ", " + dayInWords(wall) + ' ' + clock.data();
}

// "Please check: 2/1/85 is read as 1 February 1985. The rows run from 1 January 1985 to 1 December 1985."
std::string orderDoubt(const STLFormat& format, const STLCheck& found)
{
    if (!format.orderInDoubt)
        return {};
    return "Please check: " + found.order.text + " is read as " + dayInWords(found.order.date) +
           ". The rows run from " + dayInWords(found.firstWall) + " to " +
           dayInWords(found.firstWall + static_cast<Micros>(found.steps.span * kMicrosPerSecond)) + '.';
}

std::string namesDoubt(const STLFormat& format)
{
    if (!format.namesInDoubt)
        return {};
    return format.namesLine != 0 ? "Please check: line " + std::to_string(format.namesLine) +
                                       ", which holds numbers, is taken for the names of the columns."
                                 : "Please check: line " + std::to_string(format.firstDataLine) +
                                       ", of rising numbers, is taken for a row, not for names.";
}

std::string importDoubt(const STLFormat& format, const STLCheck& found)
{
    if (format.yearMissing)
        return "A day and a month stand before the times, but no year: only the time of day is read.\nImport "
               "it so?";
    if (format.dateUnread)
        return "Something like a date stands before the times, but it is not understood: only the time of "
               "day is read.\nImport it so?";
    if (format.valuesRunOn)
        return "The first cell of each line counts the values before it: they run on from line to line, "
               "and would be read as a table of " +
               counted(format.columns.size() - 1, "column") + ".\nImport it so?";
    if (format.namesAsked)
        return "The names of the columns are in doubt.\n" + namesDoubt(format) + "\nImport it so?";
    if (format.orderInDoubt && !format.orderBySteps)
        return "No date tells the day from the month.\n" + orderDoubt(format, found) + "\nImport it so?";
    if (found.losses.otherLines > found.rows)
        return "The text holds several tables: " + counted(found.losses.otherLines, "line") +
               " of the others would be left out.\nImport it so?";
    const std::uint64_t troubled = found.troubledRows + found.losses.skippedLines;
    const std::uint64_t rows = found.rows + found.losses.skippedLines;
    if (troubled * 2 <= rows)
        return {};
    return "More than half of the rows have troubles: " + groupedDigits(troubled) + " of " +
           groupedDigits(rows) + ".\nImport all the same?";
}

std::string problemText(STLProblem problem)
{
    switch (problem) {
        case STLProblem::NotANumber:
            return "no number: missing";
        case STLProblem::TooFewCells:
            return "too few cells: the rest is missing";
        case STLProblem::TooManyCells:
            return "too many cells: the rest is ignored";
        case STLProblem::UnreadableStamp:
            return "no readable time: line skipped";
        case STLProblem::FarTime:
            return "136 years or more from the first row: line skipped";
        case STLProblem::NoNumber:
            return "no number in the line: skipped";
        case STLProblem::OtherTable:
            return "names of another table: left out with what stands below them";
        case STLProblem::LineTooLong:
            return "line longer than a million bytes: skipped";
    }
    return {};
}

}  // namespace veltrac
