// Derivative and integral of a column, over a scratch file of two columns: column 1 the source, column 2 the
// result. No window.
#pragma once

#include <cstdint>
#include <filesystem>

#include "core/ColumnCopy.h"
#include "core/Progress.h"
#include "core/TSFILE.h"

namespace veltrac {

// Column 2 becomes the forward difference of column 1, (x(i+1) - x(i)) / dt, dt in seconds. The last sample
// repeats the one before it; a single sample gives 0. Arithmetic in double, values as 32-bit floats.
JobOutcome differentiate(TSFILE& work, double dt, const Progress& progress);

// Column 2 becomes the integral of column 1 from its first sample on by the trapezoidal rule: 0 at sample 1.
// The sum is a double, corrected by Neumaier's method (ZAMM 54, 1974), so it stays as exact over hundreds of
// millions of samples as over ten.
JobOutcome integrate(TSFILE& work, double dt, const Progress& progress);

// What became of a save.
struct CalculusSave
{
    JobOutcome outcome = JobOutcome::Done;
    std::uint32_t copied = 0;  // samples: as many as both files have
};

// Copies both columns of `work` into columns 1 and 2 of `target`, which has two at least, and its sample
// time; other columns and samples stay. Fails, and is cancelled, as overwriteColumns().
CalculusSave saveResult(TSFILE& work, ColumnTarget& target, const Progress& progress,
                        std::filesystem::path& backup);

}  // namespace veltrac
