// What a plot's variables look like at so many pixel columns: polylines in the unit square of their group.
//
// The cost depends on the columns and not on the samples. Few samples in view are joined as they are; of
// many, each pixel column gets a stroke from the least to the greatest of its samples, up and down in turn,
// which covers what drawing every sample would cover.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "core/Plot2D.h"

namespace veltrac {

struct Curve
{
    const HsVariable* variable = nullptr;
    std::size_t group = 0;
    // x, y pairs: 0 to 1 from the view's left to right and from the lower to the upper limit; lines reach a
    // little beyond and are to be clipped.
    std::vector<float> points;
    std::vector<std::size_t> runEnds;  // points (not floats) before the end of each gap-free run
    std::vector<float> markers;        // x, y of samples within the square; only where they stand apart
    std::string failure;               // why nothing is drawn; empty where all is well
    bool unread = false;               // its samples could not be read, or are not read yet
};

// The curves of all visible variables, in the groups' order. `columns`: pixel columns of the plot area.
// `markerGap`: least mean distance of samples that get markers, in columns. Never throws for a file that
// cannot be read any more: its curve tells.
std::vector<Curve> curvesOf(const Plot2D& plot, int columns, int markerGap);

}  // namespace veltrac
