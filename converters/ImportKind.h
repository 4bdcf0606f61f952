// Which importer a file is for, by what stands in it.
#pragma once

#include <filesystem>

namespace veltrac {

enum class ImportKind { Tsa, Stl, Scl, None };

// Looks at the beginning, the middle and the end of a file. None where none of them would find a number: a
// ts-file, a picture, prose, a file that cannot be read.
ImportKind importKindOf(const std::filesystem::path& file) noexcept;

}  // namespace veltrac
