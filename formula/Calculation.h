// Computes a formula over a range of a target column. No window.
#pragma once

#include <array>
#include <cstdint>
#include <ctime>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "core/Progress.h"
#include "core/SafeChange.h"
#include "formula/FormulaParser.h"

class TSFILE;

namespace veltrac {

inline constexpr int kMostSources = 8;

// Which rows a formula uses: x1 to x8 where such a row exists, and the target's. Rows count from 1.
std::array<bool, kMostSources> usedRows(std::string_view formula, int rowCount, int targetRow);

// What a row allows: times from start to end, in seconds on the scale of its file's startTime().
struct TimeBounds
{
    double start = 0.0;
    double end = 0.0;
};

// The times of the samples that a file holds: sample s lies at startTime() + (s - 1) * dt. So t = 0 of a
// target is its startTime(), and files are lined up by that alone, whatever their startSeconds().
TimeBounds timesOf(TSFILE& file);

// "By the clock x2 3 600 s later; start times alone line them up" where the startSeconds() of sources differ
// from the target's; else empty. A source comes with the number of its x.
std::string clockDifferences(std::span<const std::pair<int, TSFILE*>> sources, TSFILE& target);

// The time on that scale that a text means: a number, with a unit ("12.5 s", "2 min") or without one, or a
// time of the clock, a date or a share of the file, which mean the sample that stands there in every list and
// plot. Nothing where it means nothing in the file. Throws the TS exceptions.
std::optional<double> timeMeant(std::string_view text, TSFILE& file);

// The samples that are computed.
struct CalculationRange
{
    std::uint32_t first = 1;
    std::uint32_t last = 0;

    bool isEmpty() const noexcept { return last < first; }
    std::uint32_t count() const noexcept { return isEmpty() ? 0 : last - first + 1; }
};

// Those that the target holds and whose time lies within the bounds of every row. Bounds have a tolerance of
// a millionth of dt and of what 32-bit floats for dt and start add up to. Throws the TS exceptions.
CalculationRange calculationRange(std::span<const TimeBounds> rows, TSFILE& target);

// Where the values of a formula go.
struct CalculationTarget
{
    TSFILE& file;
    std::uint32_t column = 1;
    CalculationRange range;
    std::time_t when = 0;  // the column's time stamp
    // Lets go of `file` and of all others that may hold changes, and opens it again: after a failure it may
    // be stuck with a block that cannot be written.
    std::function<TSFILE&()> reopen;
};

struct CalculationReport
{
    std::uint64_t faultySamples = 0;  // at which the evaluation reported an error
    std::uint64_t missing = 0;        // values that are NaN or infinite
    OldValues old;
};

// Writes the value of the compiled formula at (i - 1) * dt into sample i of a column, for the range, as if
// sample by sample: a formula that reads its own target reads what has been written so far. Then the column
// gets its time stamp. The old values are kept in a scratch file meanwhile and put back when the calculation
// fails or is cancelled. Throws the TS exceptions and std::system_error.
JobOutcome calculate(FormulaParser& formula, const CalculationTarget& target, const Progress& progress,
                     CalculationReport& report);

}  // namespace veltrac
