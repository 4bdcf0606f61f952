// A text file as plain bytes, whatever it is packed in.
#pragma once

#include <filesystem>
#include <memory>

#include "converters/FileState.h"
#include "core/ScratchFile.h"

namespace veltrac {

// What gzip has packed, and UTF-16 with a byte order mark, is unpacked as UTF-8 into a scratch file, which
// goes with this object; any other file is its own plain text.
class PlainText
{
public:
    // Throws STLError where a packed file is damaged, std::system_error where it cannot be read or there is
    // no room for what is in it.
    explicit PlainText(std::filesystem::path file);

    // The file itself, and where its plain bytes stand.
    const std::filesystem::path& file() const { return m_file; }
    const std::filesystem::path& path() const { return m_scratch ? m_scratch->path() : m_file; }
    // False where the file has changed since it was unpacked.
    bool isCurrent() const { return !m_scratch || isUnchanged(m_file, m_state); }

private:
    std::filesystem::path m_file;
    FileState m_state;
    std::unique_ptr<ScratchFile> m_scratch;
};

}  // namespace veltrac
