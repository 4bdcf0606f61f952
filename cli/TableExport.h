// A ts-file as a table of text, as an array file, or as sound.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/PlotFile.h"
#include "core/Progress.h"
#include "core/SampleRange.h"

namespace veltrac {

// What of a file is written.
struct ExportRequest
{
    std::vector<std::uint32_t> columns;
    SampleRange range;
    char separator = ',';    // of csv
    bool clockTime = false;  // of csv: ISO 8601 instead of seconds since the start
    bool scaled = false;     // of sound: the greatest magnitude becomes 1
};

// All of these write beside `target`, which takes its name when it is whole. They throw the TS exceptions,
// std::system_error and JobError. `notes` gets what is to be told.

// A head line, a column of times, and the columns; numbers as short as they can be and still read back as the
// same; missing values are empty cells.
JobOutcome writeCsv(const PlotFile& file, const ExportRequest& request, const std::filesystem::path& target,
                    const Progress& progress, std::vector<std::string>& notes);
// Rows of 32-bit floats, little endian, in numpy's format version 1.0.
JobOutcome writeNpy(const PlotFile& file, const ExportRequest& request, const std::filesystem::path& target,
                    const Progress& progress, std::vector<std::string>& notes);
// A channel for each column, 32-bit floats.
JobOutcome writeWav(const PlotFile& file, const ExportRequest& request, const std::filesystem::path& target,
                    const Progress& progress, std::vector<std::string>& notes);

}  // namespace veltrac
