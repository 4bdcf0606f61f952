#include "calc/SpectrumDoubts.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "calc/SpectrumPlan.h"
#include "calc/SpectrumSamples.h"
#include "calc/SpectrumTexts.h"
#include "core/HeaderTexts.h"
#include "core/NumberTexts.h"
#include "core/TSFILE.h"

namespace veltrac {

namespace {

using Kind = SpectrumDoubt::Kind;

constexpr double kEqualSteps = 0.001;  // of a step

std::uint64_t machineMemory()
{
    return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) *
           static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

SpectrumDoubt doubtMemory(TSFILE& /*source*/, const std::string& /*fileName*/, SpectrumRequest& request,
                          const Progress& /*progress*/)
{
    if (request.averaged)
        return {};
    const SpectrumPlan plan = planSpectrum(request);
    std::string doubt;
    if (plan.bytes > machineMemory() / 4)
        doubt = "Whole range needs " + memoryText(plan.bytes) + ".";
    else if (tsFileBytes(plan.bins, spectrumColumns(request)) >= kFileLimit)
        doubt = "The spectrum of the whole range is more than the 2 GB of a ts-file.";
    if (doubt.empty())
        return {};
    request.averaged = true;
    return {Kind::Question, doubt + " Use averaged segments?", "Yes"};
}

SpectrumDoubt doubtMissing(TSFILE& source, const std::string& /*fileName*/, SpectrumRequest& request,
                           const Progress& progress)
{
    std::uint64_t missing = 0;
    if (countMissing(source, request, missing, progress) == JobOutcome::Cancelled)
        return {Kind::Cancelled, {}, {}};
    if (missing == 0)
        return {};
    const std::string column = "Column " + headerUtf8(source.columnName(request.column));
    if (missing == std::uint64_t{request.to} - request.from + 1)
        return {Kind::Impossible, column + " has no values in the range.", {}};
    request.interpolate = true;
    return {Kind::Question, column + " has " + counted(missing, "missing value") + " in the range.",
            "Interpolate"};
}

SpectrumDoubt doubtSteps(TSFILE& source, const std::string& fileName, SpectrumRequest& request,
                         const Progress& progress)
{
    if (source.timeColumn() == 0)
        return {};
    StepRange steps;
    if (readSteps(source, request.from, request.to, steps, progress) == JobOutcome::Cancelled)
        return {Kind::Cancelled, {}, {}};
    if (!(steps.mean > 0.0) || !std::isfinite(steps.mean))
        return {
            Kind::Impossible, "The times of " + fileName + " do not rise; there is no spectrum of them.", {}};
    request.dt = steps.mean;
    const double spread = steps.greatest - steps.least;
    if (spread <= kEqualSteps * steps.mean + steps.grain)
        return {};
    // As many decimals as tell the steps apart.
    const int decimals = std::clamp(static_cast<int>(-std::floor(std::log10(spread))), 2, 12);
    return {Kind::Question,
            "The steps of " + fileName + " are not equal (" + fixedNumber(steps.least, decimals) + " to " +
                fixedNumber(steps.greatest, decimals) + " s). The spectrum assumes " +
                fixedNumber(steps.mean, decimals) + " s.",
            "Continue"};
}

constexpr SpectrumCheck kChecks[] = {
    {"Looking at the memory", doubtMemory},
    {"Looking for missing values", doubtMissing},
    {"Looking at the steps of time", doubtSteps},
};

}  // namespace

std::span<const SpectrumCheck> spectrumChecks()
{
    return kChecks;
}

}  // namespace veltrac
