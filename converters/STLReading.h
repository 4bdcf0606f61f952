// How the cells of a text can be told apart, and what speaks for each way.
#pragma once

#include <vector>

#include "converters/STLSample.h"

namespace veltrac {

struct STLReading
{
    char separator;
    char decimal;
    char grouping = 0;
    std::size_t cells = 0;  // the count that scores best
    double score = 0.0;
    double lines = 0.0;                   // the shares that make it: lines with that count,
    double typed = 0.0;                   // and their cells that are no texts
    std::size_t known = 0;                // cells of all lines that are numbers, dates or times
    std::vector<std::size_t> edges = {};  // of a table of fixed widths
    bool rowNames = false;                // which may be several words
    bool bars = false;                    // between groups of cells
    bool thousands = false;               // digits are grouped, though all could be decimals
};

// A reading that scores more than this share of the best one's comes near to it.
inline constexpr double kNearReading = 0.9;
inline constexpr double kSingleCellFactor = 0.7;

// One way, as it scores.
STLReading scoredReading(const STLSample& sample, char separator, char decimal, char grouping);
// Every separator with every decimal and grouping sign, the best one first.
std::vector<STLReading> allReadings(const STLSample& sample);
// Lines of words have now this count of them, now that, and few are numbers.
bool isProse(const STLReading& reading);

}  // namespace veltrac
