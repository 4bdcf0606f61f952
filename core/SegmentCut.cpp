#include "core/SegmentCut.h"

#include <algorithm>

namespace veltrac {

bool cutSegment(PlotPoint& a, PlotPoint& b, double beside)
{
    const PlotPoint d{b.x - a.x, b.y - a.y};
    const double p[4] = {-d.x, d.x, -d.y, d.y};
    const double q[4] = {a.x + beside, 1.0 + beside - a.x, a.y + beside, 1.0 + beside - a.y};
    double from = 0.0;
    double to = 1.0;
    for (int edge = 0; edge < 4; ++edge) {
        if (p[edge] == 0.0) {
            if (q[edge] < 0.0)
                return false;
            continue;
        }
        const double t = q[edge] / p[edge];
        if (p[edge] < 0.0)
            from = std::max(from, t);
        else
            to = std::min(to, t);
    }
    if (from > to)
        return false;
    const PlotPoint start = a;
    if (to < 1.0)
        b = {start.x + to * d.x, start.y + to * d.y};
    if (from > 0.0)
        a = {start.x + from * d.x, start.y + from * d.y};
    return true;
}

}  // namespace veltrac
