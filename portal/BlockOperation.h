// The operations of the edit window on blocks of cells: what they ask for, and the strips that they become.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/ColumnScan.h"
#include "core/Progress.h"
#include "portal/EditList.h"

namespace veltrac {

enum class BlockOperation {
    Set,
    SetMissing,
    Ramp,
    Interpolate,
    InterpolateMissing,
    Add,
    Multiply,
    ReplaceOutside
};

struct BlockField
{
    const char* label;  // with its mnemonic
    bool mayBeMissing;  // "nan" and an empty text are taken
};

struct BlockOperationRow
{
    BlockOperation operation;
    const char* menuText;
    const char* name;  // as undo and redo show it, and the dialog's title
    const char* shortcut;
    const char* tip;
    std::vector<BlockField> fields;
};

const std::vector<BlockOperationRow>& blockOperations();
const BlockOperationRow& rowOf(BlockOperation operation);

// Why numbers that are each good are refused together; empty where they are taken.
std::string whyRefused(BlockOperation operation, std::span<const double> numbers);

// Values of a column as they are shown.
using ReaderOfColumn = std::function<ColumnReader(std::uint32_t column)>;

// The strips of an operation on runs that do not overlap; `numbers` are its fields' in their order.
// Interpolation takes the values beside a run, or at a file's end the one of the other side; that of missing
// values looks for each gap in the run. Cancelled, `strips` stays as it is. What the reader throws passes
// through, and std::length_error where there are more gaps than memory should hold.
JobOutcome makeStrips(BlockOperation operation, const std::vector<SampleRun>& runs,
                      std::span<const double> numbers, std::uint32_t samples, const ReaderOfColumn& readerOf,
                      const Progress& progress, std::vector<EditStrip>& strips);

// What stands on the clipboard: rows of numbers, tab separated, with decimal points or commas. Empty fields
// and "nan" are missing values.
struct PastedTable
{
    std::vector<std::vector<float>> rows;
    std::string refused;  // the first text that is no number; nothing is to be pasted then
};
PastedTable parsePasted(std::string_view text);

// Pasted rows as strips, and how many values lie beyond the table or in columns that take none.
struct PastedStrips
{
    std::vector<EditStrip> strips;
    std::uint64_t beyond = 0;
    std::uint64_t refused = 0;
};
// The rows go to `samples`, one each, their fields to `columns`, which are 0 where they take none.
PastedStrips pasteStrips(const std::vector<std::vector<float>>& rows, std::span<const std::uint32_t> samples,
                         std::span<const std::uint32_t> columns);

}  // namespace veltrac
