// What the files of a plot are called on the screen.
#pragma once

#include <QString>

#include "core/FileArray.h"
#include "core/Variable.h"

namespace veltrac {

// The name of a variable's file; empty for values in memory.
QString fileNameOf(const Variable& variable);
QString fileNameOf(const PlotFile& file);

}  // namespace veltrac
