#include "calc/SpectrumPlan.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "calc/mixfft.h"

namespace {

constexpr std::uint64_t kMostLength = std::numeric_limits<int>::max();
constexpr std::uint64_t kMostDropped = 1000;  // one in so many
// A ts-file stays below 2 GiB; a bin takes up to three floats, and the header some blocks.
constexpr std::uint64_t kMostBins = ((1ULL << 31) - 4096) / 12;

// Calls see(n) for all n up to `limit` of the factors 2, 3 and 5.
template <typename See>
void forSmooth(std::uint64_t limit, See see)
{
    for (std::uint64_t five = 1; five <= limit; five *= 5)
        for (std::uint64_t three = five; three <= limit; three *= 3)
            for (std::uint64_t two = three; two <= limit; two *= 2)
                see(two);
}

std::uint32_t hopOf(std::uint32_t length, int overlap)
{
    if (overlap == 67)
        return std::max(1U, (length + 1) / 3);
    return std::max(1U, static_cast<std::uint32_t>(std::uint64_t{length} *
                                                   static_cast<unsigned>(100 - overlap) / 100));
}

}  // namespace

int shortenedLength(std::uint32_t m)
{
    const std::uint64_t most = std::min<std::uint64_t>(m, kMostLength);
    std::uint64_t best = 1;
    forSmooth(most, [&](std::uint64_t n) { best = std::max(best, n); });
    if (best < most - most / kMostDropped) {
        best = most;
        while (!isTransformLength(static_cast<int>(best)))
            --best;
    }
    return static_cast<int>(best);
}

int paddedLength(std::uint32_t m)
{
    std::uint64_t best = kMostLength + 1;
    forSmooth(kMostLength, [&](std::uint64_t n) {
        if (n >= m)
            best = std::min(best, n);
    });
    return best > kMostLength ? 0 : static_cast<int>(best);
}

SpectrumPlan planSpectrum(const SpectrumRequest& request, double dt)
{
    SpectrumPlan plan;
    plan.dt = dt;
    plan.range = request.last < request.first ? 0 : request.last - request.first + 1;
    const bool segments = request.method == SpectrumMethod::Segments;
    const std::uint32_t m = segments ? request.segmentLength : plan.range;
    if (plan.range < 2 || m < 2)
        plan.problem = PlanProblem::TooFewSamples;
    else if (!(dt > 0.0) || !std::isfinite(dt))
        plan.problem = PlanProblem::NoSampleTime;
    else if (m > plan.range)
        plan.problem = PlanProblem::SegmentTooLong;
    if (plan.problem != PlanProblem::None)
        return plan;

    const bool pad = request.lengthRule == LengthRule::Pad;
    plan.length = pad ? paddedLength(m) : shortenedLength(m);
    plan.weighted = pad ? m : static_cast<std::uint32_t>(plan.length);
    plan.hop = segments ? hopOf(plan.weighted, request.overlap) : plan.weighted;
    plan.segments = segments ? 1 + (plan.range - plan.weighted) / plan.hop : 1;
    plan.used = plan.weighted + (plan.segments - 1) * plan.hop;
    if (plan.length == 0 || plan.bins() > kMostBins)
        plan.problem = PlanProblem::TooLong;
    return plan;
}
