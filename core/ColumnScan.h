// What is looked for in one column, sample by sample: its extremes and average, and values that meet a
// condition.
//
// Both walk a column in runs through a reader, so that they see values that are not in the file yet too.
// Samples count from 1. What the reader throws passes through.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "core/Progress.h"

class TSFILE;

namespace veltrac {

// Gives the values of a column from sample `first` on.
using ColumnReader = std::function<void(std::uint32_t first, std::span<float> out)>;

// Reads a column of a file, which is borrowed.
ColumnReader columnReader(TSFILE& file, std::uint32_t col);

struct ColumnExtremes
{
    // A column whose values all lie beyond a bound keeps the bound, at sample 0.
    double minimum = 1e36;
    std::uint32_t minimumSample = 0;
    double maximum = -1e36;
    std::uint32_t maximumSample = 0;
    double average = 0.0;         // of all values; NaN where one is missing or there is no sample
    double averagePresent = 0.0;  // without the missing values; NaN where none is left
    std::uint32_t missing = 0;    // values that are NaN
};

// Scans samples 1 to `samples`. The first sample of equal extremes wins; a missing value is no extreme.
// `out` is only changed by a scan that was done.
JobOutcome scanColumn(const ColumnReader& reader, std::uint32_t samples, const Progress& progress,
                      ColumnExtremes& out);

enum class Looking { Equal, Above, Below, Missing, JumpAbove };

struct SearchCondition
{
    Looking looking = Looking::Equal;
    double number = 0.0;     // Missing takes none; a jump is the distance between neighbours
    double tolerance = 0.0;  // Equal: as far from the number as this. 0: equal as floats
};

enum class Direction { Forward, Backward };

// The next sample after `from` (or before it) that meets the condition, in `found`; 0 where there is none
// on the way to the column's end. `from` may be 0 and samples + 1. A jump is found at its second sample.
JobOutcome searchColumn(const ColumnReader& read, std::uint32_t samples, const SearchCondition& condition,
                        std::uint32_t from, Direction direction, const Progress& progress,
                        std::uint32_t& found);

}  // namespace veltrac
