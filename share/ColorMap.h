// The colours of values in a picture: from dark to light in even steps, told apart by colour-blind eyes and
// in grey.
#pragma once

#include <array>
#include <cstdint>

namespace veltrac {

struct MapColor
{
    std::uint8_t r = 0, g = 0, b = 0;
};

// 256 colours along a path of B. Ottosson's OKLab ("A perceptual color space for image processing", 2020)
// whose lightness rises evenly from dark blue over red to light yellow, as strong in colour as the screen
// allows.
const std::array<MapColor, 256>& colorMap();
// Of a value between low and high; those outside have the end colours.
MapColor mappedColor(double value, double low, double high);

}  // namespace veltrac
