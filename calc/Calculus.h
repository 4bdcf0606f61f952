// Derivative and integral of a column, over a scratch file of two columns: column 1 the source, column 2 the
// result. No window.
#pragma once

#include <cstdint>
#include <filesystem>

#include "core/Progress.h"
#include "core/TSFILE.h"

// Copies column `col` of `source` to column 1 of `work`, which has as many samples.
JobOutcome copyColumn(TSFILE& source, std::uint32_t col, TSFILE& work, const Progress& progress);

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

// Copies sample time, names, descriptions, stamps and values of both columns of `work` into columns 1 and 2
// of `target`, which has two at least; its other columns and its other samples stay. The old values stand in
// a scratch file until that is done and are put back when it fails or is cancelled.
// Throws the TS exceptions and std::system_error; `backup` tells then where the old values lie if even
// putting them back has failed.
CalculusSave saveResult(TSFILE& work, TSFILE& target, const Progress& progress,
                        std::filesystem::path& backup);
