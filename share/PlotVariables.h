// Makes plot variables of the columns of files, with the names and units that their headers tell.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/FileArray.h"
#include "core/Plot2D.h"

namespace veltrac {

// A column (from 1) as a variable: label from its name (its number where it has none), unit from the
// brackets in its description. Throws the TS exceptions.
std::shared_ptr<HsVariable> makeVariable(const std::shared_ptr<PlotFile>& file, std::uint32_t column);

// The columns that can be plotted.
std::vector<std::uint32_t> plottableColumns(const PlotFile& file);

// Puts a variable into the first group whose variables have the same unit, or into a new one, and gives it
// the next colour. Variables without a unit share one group too.
void addByUnit(Plot2D& plot, const std::shared_ptr<HsVariable>& variable);
// Into a group of its own.
void addAlone(Plot2D& plot, const std::shared_ptr<HsVariable>& variable);
// The lowest colour index that no variable of the plot has.
int nextColorIndex(const Plot2D& plot);

// The file behind a variable; null for values in memory.
std::shared_ptr<PlotFile> plotFileOf(const Variable& variable);

struct PlottedValues
{
    std::string label;  // UTF-8
    std::string unit;
    std::vector<float> y;
};
// A plot of values in memory, read and all in view: each column is as long as x, which must not fall, and has
// an axis of its own, or all of one unit share theirs.
Plot2D plotOfValues(const std::vector<double>& x, const char* xTitle,
                    const std::vector<PlottedValues>& columns, bool byUnit = false);

// Sets origin, title and mode of the x axis as the plot's first source wants them: a clock where the source
// has one and counts in seconds, row numbers where its times run backwards.
void chooseXAxis(Plot2D& plot);
// Whether x can be told as a date and time.
bool canShowClock(const Plot2D& plot);
// A source whose times run backwards, so that only row numbers are left; null where there is none.
std::shared_ptr<HsVariable> backwardsVariable(const Plot2D& plot);

}  // namespace veltrac
