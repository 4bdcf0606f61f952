// Gives a ts-file other counts of samples and columns.
//
// The layout of a ts-file depends on both counts, so the file is written anew beside the old one and takes
// its name in one step when it is complete and synced; until then the old file is untouched.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>

#include "core/Progress.h"

class TSFILE;

namespace veltrac {

// Rebuilds `file` with the new counts: every value, name, description and positive stamp that fits stays in
// its place, bit for bit, and the file keeps its byte order; new samples are 0, new columns are named
// Column-nn and stamped now. The header's texts, sample time and start are kept. The scratch file is tmp.ts
// beside the file, or the next free name.
//
// Throws the TS exceptions and std::system_error (a write-protected file too); then, and when it is
// cancelled, the old file stands as it was and the scratch file is gone. Ring files are refused with
// TS::READONLY_VIOLATION and the file's name: their rows are no plain samples. A file that ends before the
// values that its header claims is refused with TS::IO_ERROR before anything is made, unless the new counts
// leave those values out. Whoever has the file open must let it go before; while another program writes it,
// and where one has replaced it meanwhile, that is refused (core/FileLock.h).
//
// `fill`, where there is one, gets the new file when all old values are in it, and may write more: what it
// throws or cancels counts for the whole.
JobOutcome rebuildTsFile(const std::filesystem::path& file, std::uint32_t newSamples,
                         std::uint32_t newColumns, const Progress& progress,
                         const std::function<JobOutcome(TSFILE& made)>& fill = {});

// The same into another file, which is made or replaced; `file` stays as it is.
JobOutcome rebuildTsFileAs(const std::filesystem::path& file, const std::filesystem::path& target,
                           std::uint32_t newSamples, std::uint32_t newColumns, const Progress& progress,
                           const std::function<JobOutcome(TSFILE& made)>& fill = {});

// Copies name and description of a column, and its stamp where its time is positive; else stamps it now.
void copyColumnInfo(TSFILE& from, std::uint32_t fromCol, TSFILE& to, std::uint32_t toCol);

}  // namespace veltrac
