#include "filter/FilterRun.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>
#include <span>
#include <vector>

#include "core/ColumnCopy.h"
#include "core/HeaderTexts.h"
#include "core/Rebuild.h"
#include "core/TSFILE.h"
#include "core/Utf8.h"
#include "core/Variable.h"
#include "filter/FidRunner.h"
#include "filter/MovingAverage.h"
#include "filter/ZeroPhase.h"

namespace veltrac {

namespace {

std::vector<std::string> g_reports;

struct ReportWords
{
    const char* report;  // how the library's text begins
    const char* words;
};

constexpr char kTooNarrow[] =
    "This filter cannot be made so narrow: take frequencies farther from 0, from each other and from half of "
    "the sampling frequency, or a lower order.";
constexpr ReportWords kReportWords[] = {
    {"Frequency of", kTooNarrow},
    {"auto_adjust", kTooNarrow},
    {"Resonator", kTooNarrow},
    {"Chebyshev ripple", "This ripple cannot be had: take one below 0 dB that is not as deep."},
    {"Maximum", "The order of this filter is too high."},
    {"Bad order", "This order cannot be had."},
    {"Out of memory", "There is not enough memory for this filter."},
    {"", "This filter cannot be made."},
};

std::string inWords(const std::string& report)
{
    const auto* const row =
        std::find_if(std::begin(kReportWords), std::end(kReportWords),
                     [&](const ReportWords& words) { return report.starts_with(words.report); });
    return std::string(row->words) + "\n(" + report + ")";
}

}  // namespace

FidReports::FidReports()
{
    g_reports.clear();
    fid_set_error_handler([](const char* text) {
        if (std::find(g_reports.begin(), g_reports.end(), text) == g_reports.end())
            g_reports.emplace_back(text);
    });
}

FidReports::~FidReports()
{
    fid_set_error_handler(nullptr);
}

std::string FidReports::text() const
{
    std::string all;
    for (const std::string& report : g_reports)
        all += (all.empty() ? "" : "\n") + inWords(report);
    return all;
}

FidFilterPtr designFilter(const FilterRequest& request, double samplingHz)
{
    return FidFilterPtr(fid_design(filterSpec(request).c_str(), samplingHz, -1.0, -1.0, 1, nullptr));
}

double samplingFrequency(float dt)
{
    if (!(dt > 0.0F) || !std::isfinite(dt))
        return 0.0;
    char text[40];
    const auto end =
        std::to_chars(text, text + sizeof text, 1.0 / static_cast<double>(dt), std::chars_format::general, 7)
            .ptr;
    double rounded = 0.0;
    std::from_chars(text, end, rounded);
    return rounded;
}

void describeWork(const SourceColumn& source, TSFILE& work, const std::string& filterWords)
{
    source.copyHeaderTo(work);
    copyColumnInfo(source.file(), source.column(), work, 1);
    const std::string name = source.file().columnName(source.column());
    const std::string description = source.file().columnDescription(source.column());
    work.columnName(2, (cutTo(name, 9) + "_f").c_str());
    work.columnDescription(2, fittingDescription(filterWords, unitIn(description)).c_str());
    work.stampColumn(2);
}

FilterOutcome runFilter(const SourceColumn& source, TSFILE& work, const FidFilter* filter,
                        const Progress& progress, FilterPass pass)
{
    FilterOutcome result;
    if (pass == FilterPass::ZeroPhase) {
        result.outcome = runZeroPhase(source, work, filter, result.missing, progress);
        return result;
    }
    FidRunner runner(filter);
    std::vector<double> wide;
    std::vector<float> rows;
    float last = 0.0F;
    if (pass == FilterPass::Settled) {
        last = firstFinite(source);
        runner.settle(static_cast<double>(last));
    }
    result.outcome = walkRuns(work.samples(), progress, [&](std::uint32_t first, std::span<float> run) {
        source.read(first, run);
        wide.resize(run.size());
        for (std::size_t i = 0; i < run.size(); ++i) {
            if (std::isfinite(run[i]))
                last = run[i];
            wide[i] = last;
        }
        runner.run(wide);
        rows.resize(2 * run.size());
        for (std::size_t i = 0; i < run.size(); ++i) {
            const bool missing = !std::isfinite(run[i]);
            result.missing += missing ? 1 : 0;
            rows[2 * i] = run[i];
            rows[2 * i + 1] = missing ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(wide[i]);
        }
        work.writeRows(first, static_cast<std::uint32_t>(run.size()), rows.data());
    });
    return result;
}

FilterOutcome runMovingAverage(const SourceColumn& source, TSFILE& work, std::uint32_t points,
                               const Progress& progress)
{
    const std::uint32_t samples = work.samples();
    FilterOutcome result;
    // More than all of them, whichever is in the middle, gives the same means.
    const auto most =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(points, 2 * std::uint64_t{samples} + 1));
    const std::uint32_t ahead = most / 2;
    MovingAverage average(most, most - 1 - ahead);
    std::vector<float> in(std::min(kRunSamples, samples));
    std::uint32_t read = 0;
    std::size_t place = in.size();
    const auto next = [&] {
        if (read == samples)
            return average.pushAbsent();
        if (place == in.size()) {
            place = 0;
            const auto count = std::min<std::size_t>(in.size(), samples - read);
            source.read(read + 1, std::span(in).first(count));
        }
        const float sample = in[place++];
        ++read;
        result.missing += std::isnan(sample) ? 1 : 0;
        return average.push(sample);
    };
    // The first means belong to places before the first sample.
    for (std::uint32_t i = 0; i < ahead; ++i) {
        next();
        if (i % kRunSamples == 0 && !goesOn(progress, i, std::uint64_t{ahead} + samples))
            return {JobOutcome::Cancelled, result.missing};
    }
    const Progress rest = [&](std::uint64_t done, std::uint64_t total) {
        return goesOn(progress, ahead + done, ahead + total);
    };
    std::vector<float> rows;
    result.outcome = walkRuns(samples, rest, [&](std::uint32_t first, std::span<float> run) {
        source.read(first, run);
        rows.resize(2 * run.size());
        for (std::size_t i = 0; i < run.size(); ++i) {
            rows[2 * i] = run[i];
            rows[2 * i + 1] = next();
        }
        work.writeRows(first, static_cast<std::uint32_t>(run.size()), rows.data());
    });
    return result;
}

}  // namespace veltrac
