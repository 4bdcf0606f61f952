// Dashes that a painter cuts itself, so that they grow with the width of the line.
#pragma once

#include <vector>

class BasicDriver;

namespace veltrac {

// On, off, on, … of a line style 1 to 9, in device units, for a pen of that width with round ends: these
// lengthen every dash by half the width on either side, which is taken off here. `pixel` is the width at
// which the pattern has its own size.
std::vector<float> dashLengths(int style, float pixel, float width);

// Draws x, y pairs of the device as dashes, moving and drawing in device units; the pattern begins with the
// first point. What is not finite is left out.
void drawDashes(const std::vector<float>& points, const std::vector<float>& lengths, BasicDriver& driver);

}  // namespace veltrac
