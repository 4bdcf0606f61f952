#include "share/Ticks.h"

#include <algorithm>
#include <cmath>

namespace veltrac {

int labelCount(const AxisTicks& axis)
{
    return static_cast<int>(std::count_if(axis.ticks.begin(), axis.ticks.end(),
                                          [](const Tick& tick) { return !tick.label.empty(); }));
}

bool labelsFit(const AxisTicks& axis, double length, const LabelRoom& room)
{
    const Tick* before = nullptr;
    double extentBefore = 0.0;
    for (const Tick& tick : axis.ticks) {
        if (tick.label.empty())
            continue;
        const double extent = room.extent ? room.extent(tick.label) : 0.0;
        if (before != nullptr) {
            const double distance = std::fabs(tick.position - before->position) * room.length / length;
            if (distance < (extent + extentBefore) / 2.0 + room.gap)
                return false;
        }
        before = &tick;
        extentBefore = extent;
    }
    return true;
}

AxisTicks outerLabels(AxisTicks axis)
{
    const int count = labelCount(axis);
    int number = 0;
    for (Tick& tick : axis.ticks)
        if (!tick.label.empty() && ++number > 1 && number < count)
            tick.label.clear();
    return axis;
}

AxisTicks oneLabel(AxisTicks axis)
{
    bool found = false;
    for (Tick& tick : axis.ticks) {
        if (found)
            tick.label.clear();
        found = found || !tick.label.empty();
    }
    return axis;
}

}  // namespace veltrac
