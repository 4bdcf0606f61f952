#include "calc/SpectrumPlan.h"

#include <algorithm>
#include <limits>

#include "calc/RealTransform.h"
#include "calc/mixfft.h"

namespace veltrac {

namespace {

constexpr double kDropsLittle = 0.999;  // of the samples stay
constexpr std::uint32_t kLongestTransform = std::numeric_limits<int>::max();

// The greatest (or least) product of 2, 3 and 5 that is not above (not below) m; both by going through the
// few hundred products there are.
std::uint32_t nearest235(std::uint32_t m, bool below)
{
    constexpr std::uint64_t kLimit = UINT32_MAX;
    std::uint64_t best = below ? 1 : kLimit;
    for (std::uint64_t fives = 1; fives <= kLimit; fives *= 5)
        for (std::uint64_t threes = fives; threes <= kLimit; threes *= 3)
            for (std::uint64_t n = threes; n <= kLimit; n *= 2) {
                if (below && n <= m)
                    best = std::max(best, n);
                if (!below && n >= m)
                    best = std::min(best, n);
            }
    return static_cast<std::uint32_t>(best);
}

}  // namespace

std::uint32_t shortenedLength(std::uint32_t m)
{
    m = std::min(m, kLongestTransform);
    const std::uint32_t fast = nearest235(m, true);
    if (fast >= kDropsLittle * m)
        return fast;
    std::uint32_t any = m;
    while (any > 1 && !isTransformLength(static_cast<int>(any)))
        --any;
    return any;
}

std::uint32_t paddedLength(std::uint32_t m)
{
    const std::uint32_t fast = nearest235(std::max(m, 1U), false);
    // There is nothing to pad to beyond the longest transform.
    return fast > kLongestTransform ? shortenedLength(m) : fast;
}

std::uint32_t segmentHop(std::uint32_t used, int overlapPercent)
{
    const std::uint64_t stay = std::uint64_t{used} * static_cast<unsigned>(100 - overlapPercent);
    return std::max<std::uint32_t>(1, static_cast<std::uint32_t>(stay / 100));
}

SpectrumPlan planSpectrum(const SpectrumRequest& request)
{
    SpectrumPlan plan;
    const std::uint32_t range = request.to < request.from ? 0 : request.to - request.from + 1;
    if (range < 2 || !(request.dt > 0.0))
        return plan;
    const std::uint32_t wanted = request.averaged ? request.segment : range;
    plan.length = request.pad ? paddedLength(wanted) : shortenedLength(wanted);
    plan.used = std::min(wanted, plan.length);
    plan.bins = plan.length / 2;
    if (request.averaged)
        plan.segments =
            range < plan.used ? 0 : (range - plan.used) / segmentHop(plan.used, request.overlapPercent) + 1;
    plan.resolution = 1.0 / (plan.length * request.dt);
    plan.highest = plan.bins * plan.resolution;
    plan.bytes =
        (plan.length + 2 * std::uint64_t{realFftRoom(static_cast<int>(plan.length))}) * sizeof(double);
    if (request.averaged)
        plan.bytes += (std::uint64_t{plan.used} + plan.bins) * sizeof(double);  // weights and sums of power
    return plan;
}

std::uint32_t spectrumColumns(const SpectrumRequest& request)
{
    return request.averaged ? 2 : 3;
}

}  // namespace veltrac
