// Writes what the system still holds of a file to the disk, which takes as long as the disk wants.
#pragma once

#include <filesystem>
#include <functional>

#include "core/Progress.h"

namespace veltrac {

// Asked again and again while something takes its time; false gives it up.
using GoesOn = std::function<bool()>;

// Throw std::system_error. With `goesOn` the disk is waited for on a thread of its own while that is asked on
// the caller's; once it says no, no more than the next few megabytes are waited for, and the file is not
// safely on the disk.
void syncToDisk(const std::filesystem::path& file);
JobOutcome syncToDisk(const std::filesystem::path& file, const GoesOn& goesOn);
// Of an open file.
JobOutcome syncToDisk(int descriptor, const GoesOn& goesOn);

// The names in it. On a file system that cannot sync directories nothing more can be done than to try.
void syncDirectory(const std::filesystem::path& directory);

}  // namespace veltrac
