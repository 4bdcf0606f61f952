#include "calc/Spectrogram.h"

#include <cmath>
#include <vector>

#include "calc/SegmentTransform.h"
#include "calc/SpectrumPlan.h"
#include "calc/SpectrumScale.h"
#include "calc/SpectrumTexts.h"
#include "calc/WindowShape.h"
#include "core/CellImage.h"
#include "core/ColumnCopy.h"
#include "core/FileTime.h"
#include "core/HeaderTexts.h"
#include "core/NumberTexts.h"
#include "core/TSFILE.h"
#include "core/Utf8.h"
#include "core/Variable.h"

namespace veltrac {

namespace {

constexpr int kLessOverlap[] = {67, 50, 0};
constexpr std::size_t kBytesAtOnce = 1U << 20;

bool fits(const SpectrumRequest& request)
{
    const SpectrumPlan plan = planSpectrum(request);
    return std::uint64_t{plan.segments} * plan.bins <= kMostCells &&
           tsFileBytes(plan.segments, plan.bins) < kFileLimit;
}

// Every cell has a colour, one without any power, too.
float cellOf(double value)
{
    return std::isnan(value) ? kNoLevel : static_cast<float>(value);
}

}  // namespace

std::string spectrogramComplaint(const SpectrumRequest& request)
{
    const SpectrumPlan plan = planSpectrum(request);
    if (request.result == SpectrumResult::RealImaginary)
        return "A spectrogram shows how strong a frequency is; real and imaginary parts are those of the "
               "whole range.";
    if (hasBands(request.result))
        return "Bands are those of the whole range or of averaged segments.";
    if (plan.segments == 0)
        return "The range is shorter than one segment.";
    if (fits(request))
        return "";
    const std::string tooLarge = "The spectrogram would have " + groupedDigits(plan.segments) +
                                 " samples of " + groupedDigits(plan.bins) +
                                 " columns, more than a ts-file holds. ";
    SpectrumRequest other = request;
    for (const int percent : kLessOverlap) {
        other.overlapPercent = percent;
        if (percent < request.overlapPercent && fits(other))
            return tooLarge + "Take an overlap of " + std::to_string(percent) + " %.";
    }
    return tooLarge + "Take a shorter range.";
}

JobOutcome computeSpectrogram(TSFILE& source, const SpectrumRequest& request, TSFILE& target,
                              const Progress& progress)
{
    const SpectrumPlan plan = planSpectrum(request);
    SegmentTransform transform(source, request);
    const SpectrumScale scale(request, transform.weightSum(), transform.weightSquares());
    const bool endsAtNyquist = plan.length % 2 == 0;
    const auto atOnce =
        static_cast<std::uint32_t>(std::max<std::size_t>(1, kBytesAtOnce / (sizeof(float) * plan.bins)));
    std::vector<float> rows(std::size_t{atOnce} * plan.bins);
    std::uint32_t held = 0;
    for (std::uint32_t s = 0; s < plan.segments; ++s) {
        transform.load(s);
        const double* const re = transform.re().data();
        const double* const im = transform.im().data();
        float* const row = &rows[std::size_t{held} * plan.bins];
        for (std::uint32_t k = 1; k < plan.bins; ++k)
            row[k - 1] = cellOf(scale(re[k] * re[k] + im[k] * im[k], false));
        row[plan.bins - 1] =
            cellOf(scale(re[plan.bins] * re[plan.bins] + im[plan.bins] * im[plan.bins], endsAtNyquist));
        if (++held < atOnce && s + 1 < plan.segments)
            continue;
        target.writeRows(s + 2 - held, held, rows.data());
        held = 0;
        if (!goesOn(progress, s + 1, plan.segments))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

void describeSpectrogram(TSFILE& source, const SpectrumRequest& request, TSFILE& target)
{
    const SpectrumPlan plan = planSpectrum(request);
    const std::uint32_t hop = segmentHop(plan.used, request.overlapPercent);
    // The target's sample 1 lies one hop behind its start, and in the middle of the first segment.
    const FileTime time(source);
    const std::uint32_t first = time.firstSample() + request.from - 1;
    const double middle = (plan.used - 1.0) / 2.0;
    target.copyHeader(source);
    target.dt(static_cast<float>(hop * request.dt));
    if (source.timeColumn() == 0)
        copyStartBehind(source, first + middle - hop, target);
    else
        copyStartAt(source, time.elapsed(first) + (middle - hop) * request.dt, target);
    const std::string name = headerUtf8(source.columnName(request.column));
    target.description(cutTo("Spectrogram " + name + " " + spectrumWindowName(request.window) +
                                 " n=" + std::to_string(plan.length) + " hop=" + std::to_string(hop),
                             kFileDescription.width - 1)
                           .c_str());
    const std::string unit = spectrumUnit(source, request);
    for (std::uint32_t k = 1; k <= plan.bins; ++k) {
        const std::string frequency = generalNumber(k * plan.resolution, 6);
        target.columnName(k, cutTo(frequency + " Hz", 11).c_str());
        target.columnDescription(
            k, fittingDescription(
                   std::string(spectrumResultName(request.result)) + " at " + frequency + " Hz", unit)
                   .c_str());
    }
}

}  // namespace veltrac
