#include "core/WallClock.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>

namespace veltrac {

namespace {

Micros fractionOf(Micros wall)
{
    return (wall % kMicrosPerSecond + kMicrosPerSecond) % kMicrosPerSecond;
}

}  // namespace

Micros wallAt(std::int64_t seconds)
{
    const std::time_t time = seconds;
    std::tm local = {};
    const bool known = localtime_r(&time, &local) != nullptr;
    return (seconds + (known ? local.tm_gmtoff : 0)) * kMicrosPerSecond;
}

std::int64_t localSeconds(Micros wall)
{
    using namespace std::chrono;
    const sys_time<microseconds> point{microseconds{wall}};
    const auto days = floor<std::chrono::days>(point);
    const year_month_day date{days};
    const hh_mm_ss time{floor<seconds>(point - days)};
    std::tm local = {};
    local.tm_year = static_cast<int>(date.year()) - 1900;
    local.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    local.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    local.tm_hour = static_cast<int>(time.hours().count());
    local.tm_min = static_cast<int>(time.minutes().count());
    local.tm_sec = static_cast<int>(time.seconds().count());
    local.tm_isdst = -1;
    return std::mktime(&local);
}

LocalInstants localInstants(Micros wall)
{
    const Micros fraction = fractionOf(wall);
    const std::int64_t seconds = localSeconds(wall - fraction);
    LocalInstants instants{seconds * kMicrosPerSecond + fraction, seconds * kMicrosPerSecond + fraction};
    constexpr std::int64_t kHour = 3600;
    if (wallAt(seconds - kHour) == wall - fraction)
        instants.first -= kHour * kMicrosPerSecond;
    if (wallAt(seconds + kHour) == wall - fraction)
        instants.last += kHour * kMicrosPerSecond;
    return instants;
}

bool isSkipped(Micros wall)
{
    const Micros fraction = fractionOf(wall);
    return wallAt(localSeconds(wall - fraction)) != wall - fraction;
}

std::string wallText(Micros wall)
{
    using namespace std::chrono;
    const sys_time<microseconds> point{microseconds{wall}};
    const auto day = floor<days>(point);
    const year_month_day date{day};
    const hh_mm_ss time{floor<seconds>(point - day)};
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text.data();
}

}  // namespace veltrac
