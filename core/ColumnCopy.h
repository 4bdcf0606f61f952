// Walking through columns a run at a time, and bringing results into columns of a file of the user's.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "core/Progress.h"

class TSFILE;

namespace veltrac {

// Samples of a run: many blocks, few enough that a cancel is heard soon.
inline constexpr std::uint32_t kRunSamples = 1U << 15;

// The row of a file's oldest sample: 1, but in a ring file that has come round. Runs from there on read a
// ring file in the order of time.
std::uint32_t oldestRow(TSFILE& file);

// The start of a copy whose times count from so long behind the file's own start, in the file's unit of time.
// Where there is a clock, whole seconds go to it, which is exact: in the 32-bit float of the rest a day of
// milliseconds would lose samples. Without one the start counts as the steps do.
void copyStartAt(TSFILE& from, double elapsed, TSFILE& to);
// The same so many steps of dt behind. Times of the file's own, which the copy keeps, count on from its
// start.
void copyStartBehind(TSFILE& from, double steps, TSFILE& to);

// Takes over the header for rows that are copied from the oldest one on: of a ring file that has come round
// the start moves with it.
void copyHeaderFromOldest(TSFILE& from, TSFILE& to);

// What is done with a run: `first` is its first sample (from 1), `values` room for its samples.
using RunStep = std::function<void(std::uint32_t first, std::span<float> values)>;

// Calls `step` for runs that cover samples 1 to `samples`, with progress after each.
JobOutcome walkRuns(std::uint32_t samples, const Progress& progress, const RunStep& step);

// The progress of a part of a longer job: from hundredth `from` to hundredth `to` of the whole.
Progress partOf(const Progress& whole, std::uint64_t from, std::uint64_t to);

// Copies the first `count` values of a column.
JobOutcome copyColumnValues(TSFILE& from, std::uint32_t fromCol, TSFILE& to, std::uint32_t toCol,
                            std::uint32_t count, const Progress& progress);

// A file of the user's, open for writing.
struct ColumnTarget
{
    std::unique_ptr<TSFILE> file;
    std::string name;  // exactly, for openTsFile()
};

// Overwrites columns of `target` with name, description, stamp and the first `count` values of columns of
// `from`: column i + 1 goes to column to[i], and nowhere where that is 0. Then `finish` is called, if there
// is one, for what else belongs to the same step. Other columns and samples stay.
// Fails, and is cancelled, as changeInPlace(); the target is closed then, and `lost` tells where the old
// values lie if they could not be put back, else it is empty.
JobOutcome overwriteColumns(TSFILE& from, ColumnTarget& target, std::span<const std::uint32_t> to,
                            std::uint32_t count, const Progress& progress, std::filesystem::path& lost,
                            const std::function<void(TSFILE& target)>& finish = {});

}  // namespace veltrac
