// What the ticks of all kinds of axes are chosen by: from fine steps to coarse ones until the labels fit.
#pragma once

#include "share/AxisTicks.h"

// More labels than these are no help, however wide the axis.
inline constexpr int kMostLabels = 12;

int labelCount(const AxisTicks& axis);

// True where no two labels come nearer than the room's gap; the ticks span `length` in their own unit.
bool labelsFit(const AxisTicks& axis, double length, const LabelRoom& room);

// Without all labels but the first; for axes with room for one alone.
AxisTicks oneLabel(AxisTicks axis);
