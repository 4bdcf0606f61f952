// Copies an open file byte for byte.
#pragma once

#include <filesystem>

#include "core/Progress.h"

namespace veltrac {

// Copies everything that stands in the file behind a descriptor (borrowed; where it stands does not matter)
// into the file `to`, whatever the file's own name bears by now. Throws std::system_error.
JobOutcome copyBytes(int descriptor, const std::filesystem::path& to, const Progress& progress);

// Copies everything from the beginning of the file behind a descriptor (borrowed; where it stands does not
// matter). The copy is made beside `target` and takes its place only when it is whole; after a cancel or a
// failure nothing is left. Throws std::system_error.
JobOutcome copyWholeFile(int descriptor, const std::filesystem::path& target, const Progress& progress);

}  // namespace veltrac
