#include "core/TimeUnits.h"

#include <algorithm>
#include <array>

namespace veltrac {

double secondsOfUnit(std::string_view word) noexcept
{
    struct Unit
    {
        double seconds;
        std::array<std::string_view, 9> words;
    };
    static constexpr std::array<Unit, 7> kUnits = {
        {{1e-9, {"ns", "nanosecond", "nanoseconds", "nanosec"}},
         {1e-6, {"us", "\xC2\xB5s", "\xCE\xBCs", "\xB5s", "microsecond", "microseconds", "micros", "usec"}},
         {1e-3, {"ms", "msec", "millisecond", "milliseconds", "millis", "millisekunden", "msek"}},
         {1, {"s", "sec", "secs", "second", "seconds", "sek", "sekunden"}},
         {60, {"min", "mins", "minute", "minutes", "minuten"}},
         {3600, {"h", "hr", "hrs", "hour", "hours", "std", "stunde", "stunden"}},
         {86400, {"d", "day", "days", "tag", "tage"}}}};
    if (word.empty())
        return 0.0;
    for (const Unit& unit : kUnits)
        if (std::find(unit.words.begin(), unit.words.end(), word) != unit.words.end())
            return unit.seconds;
    return 0.0;
}

}  // namespace veltrac
