#include "calc/TwoChannels.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numbers>

#include "calc/SegmentTransform.h"
#include "calc/SpectrumPlan.h"
#include "calc/SpectrumSamples.h"
#include "calc/SpectrumTexts.h"
#include "calc/WindowShape.h"
#include "core/ColumnCopy.h"
#include "core/FileTime.h"
#include "core/HeaderTexts.h"
#include "core/NumberTexts.h"
#include "core/TSFILE.h"
#include "core/Utf8.h"
#include "core/Variable.h"

namespace veltrac {

namespace {

constexpr double kWithin95 = 1.959964;  // standard deviations
constexpr double kInDegrees = 180.0 / std::numbers::pi;
constexpr double kEqualRates = 1e-6;

struct TwoChannelRow
{
    const char* name;    // in the box
    const char* column;  // in the file
    double decibels;     // of a factor of ten
};
constexpr TwoChannelRow kTwoChannelRows[] = {
    {"Cross power density", "CPSD", 10.0},
    {"Transfer function H1", "H1", 20.0},
    {"Transfer function H2", "H2", 20.0},
    {"Coherence", "Coherence", 0.0},
};
static_assert(std::size(kTwoChannelRows) == kTwoChannelResults);

const TwoChannelRow& twoChannelRow(TwoChannelResult result)
{
    return kTwoChannelRows[static_cast<std::size_t>(result)];
}

bool hasDecibels(const TwoChannelRequest& request)
{
    return request.input.decibel && twoChannelRow(request.result).decibels > 0.0;
}

float levelOf(const TwoChannelRequest& request, double value)
{
    if (!hasDecibels(request))
        return static_cast<float>(value);
    return value > 0.0 ? static_cast<float>(twoChannelRow(request.result).decibels * std::log10(value))
                       : std::numeric_limits<float>::quiet_NaN();
}

// The turn nearest to the phase before: a phase that is lost does not count.
double unwrapped(double phase, double& before)
{
    if (std::isfinite(phase))
        before = phase + 360.0 * std::round((before - phase) / 360.0);
    return std::isfinite(phase) ? before : phase;
}

// As a factor of another unit.
std::string bracketed(std::string_view unit)
{
    return unit.find('/') == std::string_view::npos ? std::string(unit) : "(" + std::string(unit) + ")";
}

std::string twoChannelUnit(const TwoChannelRequest& request, std::string_view in, std::string_view out)
{
    if (request.result == TwoChannelResult::Coherence)
        return "";
    std::string unit;
    if (request.result == TwoChannelResult::CrossDensity)
        unit = in.empty() || out.empty() ? "" : bracketed(in) + "·" + bracketed(out) + "/Hz";
    else if (in != out && !in.empty() && !out.empty())
        unit = bracketed(out) + "/" + bracketed(in);
    if (!hasDecibels(request))
        return unit;
    return unit.empty() ? "dB" : "dB re 1 " + unit;
}

}  // namespace

const char* twoChannelResultName(TwoChannelResult result)
{
    return twoChannelRow(result).name;
}

SpectrumRequest outputRequest(const TwoChannelRequest& request)
{
    SpectrumRequest output = request.input;
    output.column = request.column;
    output.from = request.from;
    output.to = request.from + (request.input.to - request.input.from);
    output.interpolate = request.interpolateOutput;
    return output;
}

std::string twoChannelComplaint(const TwoChannelRequest& request)
{
    const SpectrumPlan plan = planSpectrum(request.input);
    if (!request.input.averaged)
        return "Two channels are compared over averaged segments: over a single one, every coherence is 1.";
    if (plan.segments == 1)
        return "The range holds one segment only, whose coherence is always 1. Take shorter segments or a "
               "longer range.";
    return plan.segments == 0 ? "The range is shorter than one segment." : "";
}

JobOutcome averageTwoChannels(TSFILE& input, TSFILE& output, const TwoChannelRequest& request,
                              TwoChannelMeans& means, const Progress& progress)
{
    const std::uint32_t segments = planSpectrum(request.input).segments;
    SegmentTransform x(input, request.input);
    SegmentTransform y(output, outputRequest(request));
    const std::size_t bins = x.bins() + std::size_t{1};
    for (std::vector<double>* const sum : {&means.xx, &means.yy, &means.re, &means.im})
        sum->assign(bins, 0.0);
    for (std::uint32_t s = 0; s < segments; ++s) {
        x.load(s);
        y.load(s);
        const double* const xr = x.re().data();
        const double* const xi = x.im().data();
        const double* const yr = y.re().data();
        const double* const yi = y.im().data();
        for (std::size_t k = 0; k < bins; ++k) {
            means.xx[k] += xr[k] * xr[k] + xi[k] * xi[k];
            means.yy[k] += yr[k] * yr[k] + yi[k] * yi[k];
            means.re[k] += xr[k] * yr[k] + xi[k] * yi[k];
            means.im[k] += xr[k] * yi[k] - xi[k] * yr[k];
        }
        if (!goesOn(progress, s + 1, segments))
            return JobOutcome::Cancelled;
    }
    const double scale = request.input.dt / (x.weightSquares() * segments);
    const bool even = planSpectrum(request.input).length % 2 == 0;
    for (std::size_t k = 0; k < bins; ++k) {
        const double c = k == 0 || (even && k + 1 == bins) ? scale : 2.0 * scale;
        for (std::vector<double>* const sum : {&means.xx, &means.yy, &means.re, &means.im})
            (*sum)[k] *= c;
    }
    means.segments = segments;
    means.independent = x.independent(segments);
    return JobOutcome::Done;
}

TwoChannelBin twoChannelBin(const TwoChannelMeans& means, std::size_t bin, TwoChannelResult result)
{
    constexpr double kLost = std::numeric_limits<double>::quiet_NaN();
    const double xx = means.xx[bin];
    const double yy = means.yy[bin];
    const double cross = std::hypot(means.re[bin], means.im[bin]);
    TwoChannelBin answer;
    answer.coherence = xx > 0.0 && yy > 0.0 ? std::min(1.0, cross / xx * (cross / yy)) : kLost;
    answer.phase = cross > 0.0 ? std::atan2(means.im[bin], means.re[bin]) * kInDegrees : kLost;
    const double scatter = std::sqrt(answer.coherence * means.independent);
    const double unexplained = 1.0 - answer.coherence;
    double error = std::sqrt(unexplained / 2.0) / scatter;
    answer.phaseError = std::min(180.0, kWithin95 * error * kInDegrees);
    switch (result) {
        case TwoChannelResult::CrossDensity:
            answer.value = cross;
            error = 1.0 / scatter;
            break;
        case TwoChannelResult::H1:
            answer.value = xx > 0.0 ? cross / xx : kLost;
            break;
        case TwoChannelResult::H2:
            answer.value = cross > 0.0 ? yy / cross : kLost;
            break;
        case TwoChannelResult::Coherence:
            answer.value = answer.coherence;
            error = std::numbers::sqrt2 * unexplained / scatter;
            break;
    }
    answer.low = answer.value * std::max(0.0, 1.0 - kWithin95 * error);
    answer.high = answer.value * (1.0 + kWithin95 * error);
    if (result == TwoChannelResult::Coherence)
        answer.high = std::min(1.0, answer.high);
    return answer;
}

std::uint32_t twoChannelColumns(TwoChannelResult result)
{
    return result == TwoChannelResult::Coherence ? 4 : 8;
}

JobOutcome computeTwoChannels(TSFILE& input, TSFILE& output, const TwoChannelRequest& request, TSFILE& target,
                              const Progress& progress)
{
    TwoChannelMeans means;
    if (averageTwoChannels(input, output, request, means, partOf(progress, 0, 98)) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    const double step = planSpectrum(request.input).resolution;
    const std::uint32_t columns = twoChannelColumns(request.result);
    double before = 0.0;
    std::vector<float> row;
    std::vector<float> rows;
    rows.reserve(std::size_t{target.samples()} * columns);
    for (std::uint32_t k = 1; k <= target.samples(); ++k) {
        TwoChannelBin bin = twoChannelBin(means, k, request.result);
        if (request.unwrapped)
            bin.phase = unwrapped(bin.phase, before);
        row = {static_cast<float>(k * step),
               levelOf(request, bin.value),
               levelOf(request, bin.low),
               levelOf(request, bin.high),
               static_cast<float>(bin.phase),
               static_cast<float>(bin.phase - bin.phaseError),
               static_cast<float>(bin.phase + bin.phaseError),
               static_cast<float>(bin.coherence)};
        rows.insert(rows.end(), row.begin(), row.begin() + columns);
    }
    target.writeRows(1, target.samples(), rows.data());
    return goesOn(progress, 100, 100) ? JobOutcome::Done : JobOutcome::Cancelled;
}

void describeTwoChannels(TSFILE& input, TSFILE& output, const TwoChannelRequest& request, TSFILE& target)
{
    const TwoChannelRow& row = twoChannelRow(request.result);
    const std::string in = headerUtf8(input.columnName(request.input.column));
    const std::string out = headerUtf8(output.columnName(request.column));
    const std::string inUnit(unitIn(headerUtf8(input.columnDescription(request.input.column))));
    const std::string outUnit(unitIn(headerUtf8(output.columnDescription(request.column))));
    const std::string unit = twoChannelUnit(request, inUnit, outUnit);
    const std::string pair = out + " over " + in;
    const SpectrumPlan plan = planSpectrum(request.input);
    target.dt(static_cast<float>(plan.resolution));
    target.timeUnit("Frequency[Hz]");
    target.description(cutTo(std::string(row.column) + " " + pair + " " +
                                 spectrumWindowName(request.input.window) +
                                 " n=" + std::to_string(plan.length) + " x " + std::to_string(plan.segments),
                             kFileDescription.width - 1)
                           .c_str());
    const struct
    {
        const char* name;
        std::string description;
        std::string unit;
    } columns[] = {{"Freq", "Frequency", "Hz"},
                   {row.column, std::string(row.column) + " " + pair, unit},
                   {"Low", "95 % of such averages lie above", unit},
                   {"High", "95 % of such averages lie below", unit},
                   {"Phase", "Phase of " + pair, "deg"},
                   {"PhaseLow", "95 % of such phases lie above", "deg"},
                   {"PhaseHigh", "95 % of such phases lie below", "deg"},
                   {"Coherence", "Coherence of " + in + " and " + out, ""}};
    for (std::uint32_t c = 1; c <= target.columns(); ++c) {
        target.columnName(c, columns[c - 1].name);
        target.columnDescription(c,
                                 fittingDescription(columns[c - 1].description, columns[c - 1].unit).c_str());
        target.stampColumn(c);
    }
}

ChannelMatch matchChannels(TSFILE& first, std::uint32_t from, std::uint32_t to, TSFILE& second,
                           bool isSameFile)
{
    ChannelMatch match{from, to, from, {}, {}};
    if (isSameFile)
        return match;
    const FileTime here(first);
    const FileTime there(second);
    const double dt = static_cast<double>(first.dt()) * here.unitSeconds();
    const double secondDt = static_cast<double>(second.dt()) * there.unitSeconds();
    if (!(std::fabs(secondDt - dt) <= kEqualRates * dt)) {
        match.refusal = "The sample times differ: " + generalNumber(dt, 6) + " s here, " +
                        generalNumber(secondDt, 6) + " s in the second file.";
        return match;
    }
    std::int64_t ahead = 0;  // samples of the second before the first's first
    match.words = "lined up on the first samples, as no clock tells more";
    if (here.hasCalendar() && there.hasCalendar()) {
        const double steps = (here.moment(here.firstSample()) - there.moment(there.firstSample())) / dt;
        ahead = std::llround(std::clamp(steps, -1e15, 1e15));
        match.words = "lined up on the clock";
        if (const double rest = std::fabs(steps - static_cast<double>(ahead)); rest > 0.01)
            match.words += ", " + fixedNumber(rest, 2) + " of a sample apart";
    }
    const std::int64_t begin = std::max<std::int64_t>(from, 1 - ahead);
    const std::int64_t end = std::min<std::int64_t>(to, std::int64_t{there.rows()} - ahead);
    if (end < begin + 1) {
        match.refusal = "The second file holds no samples of that time: the two are " + match.words + ".";
        return match;
    }
    match.from = static_cast<std::uint32_t>(begin);
    match.to = static_cast<std::uint32_t>(end);
    match.secondFrom = static_cast<std::uint32_t>(begin + ahead);
    return match;
}

}  // namespace veltrac
