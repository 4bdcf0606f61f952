// Writes a ts-file as tsa text, which importTsaText() reads back (docs/tsa.md). No window.
#pragma once

#include <cstdint>
#include <filesystem>

#include "core/Progress.h"

class TSFILE;

struct TsaExportReport
{
    std::uint32_t samples = 0;
    std::uint32_t columns = 0;
    // Rows beyond the length at which a reader cuts a line: they cannot be read back whole.
    std::uint64_t rowsTooLong = 0;
    // The file begins at a time of its own, which the text has no place for.
    bool startIsLost = false;
    // Numbers that need more than the text's six digits.
    bool valuesRounded = false;
    bool sampleTimeRounded = false;
    // A ring file is written row by row, as it stands.
    bool isRing = false;
    std::uint32_t oldestRow = 1;
    std::uint32_t firstUnwritten = 0;  // the rows from here on hold no data yet; 0: all do
};

namespace veltrac {

// Writes samples first to last of `ts` to `target`, by way of a scratch file beside it: a target that is
// there is replaced when the text is whole, and untouched otherwise. first > last writes the header alone.
// Throws std::system_error (a full disk, a directory that cannot be written) and what TSFILE throws.
JobOutcome exportTsaText(TSFILE& ts, const std::filesystem::path& target, std::uint32_t first,
                         std::uint32_t last, const Progress& progress, TsaExportReport& report);

}  // namespace veltrac
