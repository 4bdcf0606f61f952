// Writes what the system still holds of a file to the disk, which takes as long as the disk wants.
#pragma once

#include <filesystem>
#include <functional>

#include "core/Progress.h"

namespace veltrac {

// Asked again and again while something takes its time; false gives it up.
using GoesOn = std::function<bool()>;

// Throw std::system_error. With `goesOn` the disk is waited for on a thread of its own while that is asked on
// the caller's; once it says no, the thread is left to end by itself, and the file is not safely on the disk.
void syncToDisk(const std::filesystem::path& file);
JobOutcome syncToDisk(const std::filesystem::path& file, const GoesOn& goesOn);
// Of an open file, which stays in use: after a cancel the next megabytes are waited for.
JobOutcome syncToDisk(int descriptor, const GoesOn& goesOn);

// The names in it. A file system that cannot sync directories is not waited for.
void syncDirectory(const std::filesystem::path& directory);

}  // namespace veltrac
