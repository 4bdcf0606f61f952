// Segments cut to a plot's frame.
#pragma once

namespace veltrac {

// A place in a frame, whose edges lie at 0 and 1.
struct PlotPoint
{
    double x = 0.0;
    double y = 0.0;
};

// Cuts a segment to the frame and as much of its surroundings as `beside` tells (Liang, Barsky, "A New
// Concept and Method for Line Clipping", ACM Trans. Graphics 3 (1984)); false where nothing of it is left.
bool cutSegment(PlotPoint& a, PlotPoint& b, double beside);

}  // namespace veltrac
