// What keys and menus of a plot do: one table for both.
#pragma once

#include <span>

#include "share/PlotOutput.h"

class QKeyEvent;

namespace veltrac {

struct PlotCommand
{
    enum class Part { View, Cursors, Output };

    const char* text;  // UTF-8
    void (PlotOutput::*run)();
    Part part;
    // Key and modifiers as QKeySequence has them, 0 for none. Menus show the first one.
    int key;
    int otherKey;
    bool separatorAfter;
};

std::span<const PlotCommand> plotCommands();
// The command of a key; null where it has none.
const PlotCommand* plotCommandOf(const QKeyEvent& event);

}  // namespace veltrac
