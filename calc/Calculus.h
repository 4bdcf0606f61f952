// Derivative and integral of a column, over a scratch file of two columns: column 1 the source, column 2 the
// result. No window.
#pragma once

#include <cstdint>
#include <filesystem>

#include "core/ColumnCopy.h"
#include "core/Progress.h"
#include "core/SourceColumn.h"

class TSFILE;

namespace veltrac {

// Which distance lies between two samples: the sample time of the file, or the difference of their own times
// ("Time"), where it has them.
enum class Steps { Equal, Own };

// Column 2 of `work`, whose column 1 holds the samples of `source`, becomes the forward difference
// (x(i+1) - x(i)) / step. The last sample repeats the one before it; a single sample gives 0. Own times that
// do not rise from a sample to the next leave its difference missing. Arithmetic in double, values as 32-bit
// floats. Throws the TS exceptions, as the next one.
JobOutcome differentiate(const SourceColumn& source, TSFILE& work, Steps steps, const Progress& progress);

// Column 2 becomes the integral of column 1 from its first sample on by the trapezoidal rule: 0 at sample 1.
// The sum is a double, corrected by Neumaier's method (ZAMM 54, 1974), so it stays as exact over hundreds of
// millions of samples as over ten.
JobOutcome integrate(const SourceColumn& source, TSFILE& work, Steps steps, const Progress& progress);

// Fills column 1 of `work`, which has as many samples, and gives it the source's header and the names and
// descriptions of its columns: `resultName`, and `resultText` ("d(%1)/dt") with the source's name in it. Its
// unit comes of `resultUnit` ("%1/%2") with those of source and time; a quotient gets parentheses.
JobOutcome takeSource(const SourceColumn& source, TSFILE& work, const char* resultName,
                      const char* resultText, const char* resultUnit, const Progress& progress);

// What a result is called: its column, its description with the source's name in it, its unit with those of
// source and time.
struct CalculusNames
{
    const char* column;
    const char* text;
    const char* unit;
};
inline constexpr CalculusNames kDerivativeNames = {"d(col1)/dt", "d(%1)/dt", "%1/%2"};
inline constexpr CalculusNames kIntegralNames = {"Int(col1)/dt", "Int(%1)", "%1·%2"};

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
