#include "converters/LengthTexts.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/NumberTexts.h"

namespace veltrac {

namespace {

struct LengthUnit
{
    double from;
    double seconds;
    const char* name;
};

const LengthUnit& unitOf(double seconds)
{
    static constexpr std::array<LengthUnit, 5> kUnits = {
        {{86400, 86400, " d"}, {7200, 3600, " h"}, {600, 60, " min"}, {0.1, 1, " s"}, {0, 1e-3, " ms"}}};
    const double size = std::fabs(seconds);
    return *std::find_if(kUnits.begin(), kUnits.end() - 1, [size](const LengthUnit& unit) {
        return size == 0.0 ? unit.seconds == 1 : size >= unit.from;
    });
}

}  // namespace

std::string lengthText(double seconds)
{
    const LengthUnit& unit = unitOf(seconds);
    return generalNumber(seconds / unit.seconds, 4) + unit.name;
}

std::string stepLength(double seconds)
{
    const LengthUnit& unit = unitOf(seconds);
    const double length = seconds / unit.seconds;
    const int places = length < 10 ? 3 : length < 100 ? 2 : length < 1000 ? 1 : 0;
    return fixedNumber(length, places) + unit.name;
}

std::string stepRange(double least, double greatest)
{
    const LengthUnit& unit = unitOf(greatest);
    if (&unitOf(least) != &unit)
        return lengthText(least) + " to " + lengthText(greatest);
    const std::string from = generalNumber(least / unit.seconds, 4);
    const std::string to = generalNumber(greatest / unit.seconds, 4);
    return from == to ? stepLength(greatest) : from + " to " + to + unit.name;
}

std::string sizeText(std::uint64_t bytes)
{
    const auto size = static_cast<double>(bytes);
    if (bytes < 1000)
        return counted(bytes, "byte");
    if (size < 1e6)
        return fixedNumber(size / 1e3, 1) + " kB";
    return size < 1e9 ? fixedNumber(size / 1e6, 1) + " MB" : fixedNumber(size / 1e9, 2) + " GB";
}

}  // namespace veltrac
