// Bringing a filter's input and output from the work file into a file of the user's. No window.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "core/Progress.h"

class TSFILE;

namespace veltrac {

// Which columns of the work file go to which of the target; 0 leaves a column of the work file out.
struct ResultColumns
{
    std::uint32_t input = 0;
    std::uint32_t output = 0;
};

// All of these throw the TS exceptions and std::system_error. Then, and when cancelled, the user's file is
// as it was, and a new one is not there.

// Copies the work file, which must be flushed, to one that gets its name when it is whole; an older one of
// that name is replaced.
JobOutcome saveToNewFile(const TSFILE& work, const std::filesystem::path& target, const Progress& progress);

// Writes the first `count` samples into columns of a file. `backup` tells where the old values lie if even
// putting them back has failed; else it is empty.
JobOutcome saveToColumns(TSFILE& work, const std::filesystem::path& target, const ResultColumns& columns,
                         std::uint32_t count, const Progress& progress, std::filesystem::path& backup);

// Gives a file one column more, which takes the first `count` samples of the output. The file is rebuilt
// beside the old one, so whoever has it open must let it go before.
JobOutcome saveToAddedColumn(TSFILE& work, const std::filesystem::path& target, std::uint32_t count,
                             const Progress& progress);

}  // namespace veltrac
