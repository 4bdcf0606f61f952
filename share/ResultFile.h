// The scratch ts-file that a calculation fills, removed with the object.
#pragma once

#include <QTemporaryFile>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "core/ScratchFile.h"

class TSFILE;

namespace veltrac {

class ResultFile
{
public:
    // `stem`.ts in the working directory, or the next free name. Throws std::system_error and the TS
    // exceptions.
    ResultFile(const std::string& stem, std::uint32_t samples, std::uint32_t columns);
    // In the scratch directory, under the name of a temporary file; made by TsApplication::CreateTs(), which
    // reports its failures. Null where there is none.
    static std::unique_ptr<ResultFile> temporary(std::uint32_t samples, std::uint32_t columns);
    ~ResultFile();
    ResultFile(const ResultFile&) = delete;
    ResultFile& operator=(const ResultFile&) = delete;

    const std::filesystem::path& path() const noexcept { return m_path; }
    // Open for writing until finish(), which flushes and closes it and throws the TS exceptions.
    TSFILE& file() noexcept { return *m_file; }
    void finish();

    // A newer, finished file comes under this one's name, whose contents go; false where the two lie in
    // different directories, or the names do not matter. Throws std::system_error, both files untouched.
    bool takeContentsOf(ResultFile& newer);

private:
    ResultFile() = default;

    std::unique_ptr<TSFILE> m_file;
    std::filesystem::path m_path;
    std::optional<ScratchFile> m_scratch;
    // Holds the name of a temporary file, so that no other window takes it.
    std::unique_ptr<QTemporaryFile> m_reservation;
};

}  // namespace veltrac
