// A part of a ts-file as a ts-file of its own.
#pragma once

#include <cstdint>
#include <filesystem>

#include "core/PlotFile.h"
#include "core/Progress.h"

namespace veltrac {

// Writes rows first to last (from 1, oldest first, as PlotFile counts) of a file, all columns with their
// names, descriptions and stamps. Each row keeps its time: the start moves where dt tells the time.
//
// The file is made beside `target` and takes its place, and that of an older file, only when it is whole;
// after a cancel or a failure nothing is left. Throws the TS exceptions and std::system_error.
JobOutcome saveInterval(const PlotFile& from, std::uint32_t first, std::uint32_t last,
                        const std::filesystem::path& target, const Progress& progress);

}  // namespace veltrac
