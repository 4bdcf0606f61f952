// The ticks of an axis, and whether their labels have room.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace veltrac {

struct Tick
{
    double position;    // in the axis' own unit; log10 of the value on a logarithmic axis
    std::string label;  // UTF-8; empty on ticks that bear none
    bool isMajor;
};

struct AxisTicks
{
    std::vector<Tick> ticks;  // rising
    int exponent = 0;         // label × 10^exponent is the value
    // What stands once beside the axis: the common power of ten ("×10⁶"), empty where it is 1.
    std::string powerText;
    // What stands once at the left edge: the full date and time of the part that the labels leave out.
    std::string edgeText;
};

// How much room labels have along the axis, all in one unit of length.
struct LabelRoom
{
    double length = 1.0;                                 // of the axis
    std::function<double(const std::string&)> extent{};  // of a label along the axis
    double gap = 0.0;                                    // least distance between two labels
    double closest = gap;                                // the same where there are only two
};

// More labels than these are no help, however wide the axis.
inline constexpr int kMostLabels = 12;

int labelCount(const AxisTicks& axis);

// True where no two labels come nearer than the room's gap; the ticks span `length` in their own unit.
bool labelsFit(const AxisTicks& axis, double length, const LabelRoom& room);

// Without the labels between the first and the last.
AxisTicks outerLabels(AxisTicks axis);

// Without all labels but the first; for axes with room for one alone.
AxisTicks oneLabel(AxisTicks axis);

}  // namespace veltrac
