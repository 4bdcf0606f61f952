// Statistics of all columns of a file in one pass over its rows.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/PlotFile.h"
#include "core/Progress.h"

namespace veltrac {

// Of the finite values; without any, `count` is 0 and the rest says nothing. Rows count from 1, the oldest
// first; of equal extremes the first.
struct ColumnStatistics
{
    double least = 0.0;
    std::uint32_t leastRow = 0;
    double greatest = 0.0;
    std::uint32_t greatestRow = 0;
    double mean = 0.0;
    double rms = 0.0;
    double deviation = 0.0;  // standard deviation, of n - 1; 0 for a single value
    std::uint32_t count = 0;
    std::uint32_t missing = 0;
};

// Sums of squares are those about the mean of a run, put together after T. F. Chan, G. H. Golub, R. J.
// LeVeque, "Updating formulae and a pairwise algorithm for computing sample variances" (1979), so that a
// large mean takes no digits. Throws the TS exceptions.
JobOutcome readStatistics(const PlotFile& file, const Progress& progress, std::vector<ColumnStatistics>& out);

}  // namespace veltrac
