// Calendars of moments, on any thread: those of the standard library share one buffer.
#pragma once

#include <ctime>
#include <mutex>
#include <optional>

namespace veltrac {

// Nothing for a moment that no calendar holds.
inline std::optional<std::tm> localCalendar(std::time_t when)
{
    // The library guards its zone by itself, in ways that the sanitizer for threads cannot see.
    static std::mutex zone;
    const std::lock_guard guard(zone);
    std::tm calendar = {};
    ::tzset();  // the user may have moved
    return ::localtime_r(&when, &calendar) == nullptr ? std::nullopt : std::optional(calendar);
}

inline std::optional<std::tm> utcCalendar(std::time_t when)
{
    std::tm calendar = {};
    return ::gmtime_r(&when, &calendar) == nullptr ? std::nullopt : std::optional(calendar);
}

}  // namespace veltrac
