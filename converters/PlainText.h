// A text file as plain bytes, whatever it is packed in.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

#include "converters/FileState.h"
#include "core/Progress.h"
#include "core/ScratchFile.h"

namespace veltrac {

// What gzip has packed, and UTF-16 with a byte order mark, is unpacked as UTF-8 into a scratch file, which
// goes with this object. So is a table in a drawn frame, whose lines become "|", "-" and "+". Any other file
// is its own plain text.
class PlainText
{
public:
    // Throws STLError where a packed file is damaged, std::system_error where it cannot be read or there is
    // no room for what is in it.
    explicit PlainText(std::filesystem::path file) : PlainText(std::move(file), {}, UINT64_MAX) {}
    // The same with progress while it unpacks; nothing where that was cancelled.
    static std::optional<PlainText> unpacked(const std::filesystem::path& file, const Progress& progress);
    // Of a packed file only about so many of its plain bytes, which tell what it is.
    static PlainText beginningOf(const std::filesystem::path& file, std::uint64_t bytes);

    // The file itself, and where its plain bytes stand.
    const std::filesystem::path& file() const { return m_file; }
    const std::filesystem::path& path() const { return m_scratch ? m_scratch->path() : m_file; }
    // False where the file has changed since it was unpacked.
    bool isCurrent() const { return !m_scratch || isUnchanged(m_file, m_state); }

private:
    PlainText(std::filesystem::path file, const Progress& progress, std::uint64_t mostBytes);

    std::filesystem::path m_file;
    JobOutcome m_outcome = JobOutcome::Done;
    FileState m_state;
    std::unique_ptr<ScratchFile> m_scratch;
};

}  // namespace veltrac
