#include "formula/SourceLookup.h"

#include <limits>

#include "core/FileTime.h"
#include "core/TSFILE.h"

namespace veltrac {

SourceLookup lookupOf(TSFILE& source, TSFILE* target)
{
    constexpr double kGrain = std::numeric_limits<float>::epsilon();
    const FileTime held(source);
    const double origin = target == nullptr ? 0.0 : static_cast<double>(target->startTime());
    const double start = source.startTime();
    SourceLookup lookup;
    lookup.isOwn = target == &source;
    lookup.first = held.firstSample();
    lookup.samples = held.rows();
    lookup.shift = origin - start;
    lookup.rate = 1.0 / static_cast<double>(source.dt());
    lookup.before = static_cast<double>(held.firstSample()) - 1.0;
    lookup.lastPosition = static_cast<double>(lookup.samples) - 1.0;
    lookup.grain = kGrain * lookup.rate;
    if (origin != 0.0 && origin != start)
        lookup.grainOfShift = (std::fabs(origin) + std::fabs(start)) * lookup.grain;
    return lookup;
}

Place placeOf(const SourceLookup& lookup, double t) noexcept
{
    const double position = lookup.positionAt(t);
    if (std::isnan(t) || lookup.samples == 0)
        return {0, 0.0, true};
    if (!(position > 0.0 && position < lookup.lastPosition))
        return {position > 0.0 ? lookup.samples - 1 : 0, 0.0, false};
    const auto index = static_cast<std::uint32_t>(static_cast<std::int64_t>(position));
    const std::uint32_t nearest = index + (position - index > 0.5 ? 1 : 0);
    // A float tells t to half of its last place: a sample within that is meant itself.
    if (std::fabs(position - nearest) <= lookup.grainAt(t))
        return {nearest, 0.0, false};
    return {index, position - index, false};
}

}  // namespace veltrac
