// How the values of a variable are distributed.
#pragma once

#include <cstdint>
#include <vector>

#include "core/HsVariable.h"
#include "core/SampleRange.h"

namespace veltrac {

struct HistogramRequest
{
    SampleRange rows;        // of the variable's source
    std::uint32_t bins = 0;  // 0: as many as Freedman and Diaconis want
};

struct Histogram
{
    double from = 0.0;  // of the first bin
    double width = 0.0;
    std::vector<std::uint64_t> counts;
    std::uint64_t total = 0;
    std::uint64_t missing = 0;
    double mean = 0.0;
    double deviation = 0.0;  // of n - 1
    bool isCapped = false;   // more bins were wanted than there may be
};

inline constexpr std::uint32_t kMostHistogramBins = 1000;

// Counts the rows' shown values between the least and the greatest of them; a value at an inner edge belongs
// to the bin above it. The width of bins is 2 IQR / cbrt(n) (D. Freedman, P. Diaconis, "On the histogram as a
// density estimator: L2 theory", Z. Wahrscheinlichkeitstheorie verw. Gebiete 57 (1981)), or the next one that
// fits a whole number of them; where half of the values are equal, and IQR is 0, there are 1 + lb n bins (H.
// A. Sturges, J. Am. Stat. Assoc. 21 (1926)). Equal values stand in the middle of one bin of width 1.
//
// Two passes over the rows, one where the bins are told; quartiles come of a histogram of 65536 cells, which
// is refined around them where outliers make its cells coarse. Memory does not grow with the rows. The
// variable is built; throws the TS exceptions.
JobOutcome makeHistogram(const HsVariable& variable, const HistogramRequest& request, Histogram& histogram,
                         const Progress& progress);

// The density of the normal distribution of the same mean and deviation; 0 where there is none.
double normalDensity(const Histogram& histogram, double value);

}  // namespace veltrac
