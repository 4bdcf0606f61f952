#include "share/ColorMap.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace veltrac {

namespace {

constexpr double kDark = 0.14;
constexpr double kLight = 0.96;
constexpr double kFirstHue = 280.0;  // degrees, on to kLastHue through red
constexpr double kLastHue = 465.0;
constexpr double kMostChroma = 0.2;

struct Linear
{
    double r, g, b;
    bool isShown() const
    {
        const auto [least, greatest] = std::minmax({r, g, b});
        return least >= 0.0 && greatest <= 1.0;
    }
};

// Linear light of a colour of OKLab in polar form.
Linear lightOf(double lightness, double chroma, double hueDegrees)
{
    const double hue = hueDegrees * std::numbers::pi / 180.0;
    const double a = chroma * std::cos(hue);
    const double b = chroma * std::sin(hue);
    const double l = std::pow(lightness + 0.3963377774 * a + 0.2158037573 * b, 3.0);
    const double m = std::pow(lightness - 0.1055613458 * a - 0.0638541728 * b, 3.0);
    const double s = std::pow(lightness - 0.0894841775 * a - 1.2914855480 * b, 3.0);
    return {4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s,
            -1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s,
            -0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s};
}

// The curve of sRGB (IEC 61966-2-1).
std::uint8_t encoded(double light)
{
    const double value = light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1.0 / 2.4) - 0.055;
    return static_cast<std::uint8_t>(std::lround(255.0 * std::clamp(value, 0.0, 1.0)));
}

std::array<MapColor, 256> makeMap()
{
    std::array<MapColor, 256> map;
    for (std::size_t i = 0; i < map.size(); ++i) {
        const double part = static_cast<double>(i) / (map.size() - 1);
        const double lightness = kDark + (kLight - kDark) * part;
        const double hue = kFirstHue + (kLastHue - kFirstHue) * part;
        double chroma = kMostChroma;
        while (chroma > 0.0 && !lightOf(lightness, chroma, hue).isShown())
            chroma -= 0.001;
        const Linear light = lightOf(lightness, std::max(chroma, 0.0), hue);
        map[i] = {encoded(light.r), encoded(light.g), encoded(light.b)};
    }
    return map;
}

}  // namespace

const std::array<MapColor, 256>& colorMap()
{
    static const std::array<MapColor, 256> map = makeMap();
    return map;
}

MapColor mappedColor(double value, double low, double high)
{
    const double part = high > low ? (value - low) / (high - low) : 0.0;
    // Written so that a NaN has the first colour.
    const double place = part > 0.0 ? std::min(part, 1.0) * 255.0 : 0.0;
    return colorMap()[static_cast<std::size_t>(std::lround(place))];
}

}  // namespace veltrac
