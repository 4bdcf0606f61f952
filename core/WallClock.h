// What the clock on the wall shows, and when it does: local time by the rules of the C library.
//
// A wall clock time is counted in microseconds as if the days since 1970-01-01 had 24 hours each.
#pragma once

#include <cstdint>
#include <string>

namespace veltrac {

using Micros = std::int64_t;
inline constexpr Micros kMicrosPerSecond = 1'000'000;
inline constexpr Micros kMicrosPerDay = 86'400 * kMicrosPerSecond;

// What the local clock shows at a second of the epoch.
Micros wallAt(std::int64_t seconds);
// Seconds since the epoch at which the local clock shows that, whole seconds alone; where it is set forward
// over that time, as if it had not been yet.
std::int64_t localSeconds(Micros wall);

// The first and the last instant, in microseconds since the epoch, at which the local clock shows this: an
// hour apart where it was set back.
struct LocalInstants
{
    Micros first;
    Micros last;
};
LocalInstants localInstants(Micros wall);

// Whether the local clock was set forward over that time and so never showed it.
bool isSkipped(Micros wall);

// Its whole seconds in words: "2016-10-30 02:30:00".
std::string wallText(Micros wall);

}  // namespace veltrac
