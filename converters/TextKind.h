// Which importer a text of measurements is for, by what is in it.
#pragma once

#include <filesystem>

namespace veltrac {

enum class TextKind {
    Tsa,          // begins with header keys of the tsa format
    Table,        // a smart tool log; also whatever cannot be told
    SingleColumn  // one value a line
};

// Looks at the beginning, the middle and the end of the file. Throws std::system_error where it cannot be
// read.
TextKind textKind(const std::filesystem::path& file);

}  // namespace veltrac
