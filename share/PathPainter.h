// The path of an X-Y plot: a line through its points, or the cloud that very many of them are.
#pragma once

#include <cstddef>

#include "core/Plot2D.h"

class BasicDriver;

namespace veltrac {

// Lines are drawn smooth up to so many points; more would cost the frame.
inline constexpr std::size_t kMostSmoothPoints = 20'000;

// Draws the path of a group with the driver's pen into its viewport, whose window is the unit square.
// `columns`: pixel columns of the viewport; `smooth`: lines are smooth where the device can and they are not
// too many.
void drawPath(const Plot2D& plot, const Group& group, BasicDriver& driver, int columns, bool smooth);

// Where a value lies in the height of a group, from 0 to 1; NaN where a logarithmic axis has no place for it.
double placeIn(const Group& group, double y);

}  // namespace veltrac
