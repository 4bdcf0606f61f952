// A ts-file whose values are being edited: the file as it is read, the list of edits, and what the saved
// edits have overwritten.
//
// The reader's values are those before all edits: where a save has overwritten some, they come from the
// scratch files that the saves have left, so undo works after saving.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/ColumnBackup.h"
#include "core/ColumnScan.h"
#include "core/Progress.h"
#include "core/TSFILE.h"
#include "portal/EditList.h"

namespace veltrac {

class EditedFile
{
public:
    // `reader` shows the file of that path, is opened for reading and is borrowed.
    EditedFile(TSFILE& reader, std::filesystem::path path);

    EditList& edits() noexcept { return m_edits; }
    const EditList& edits() const noexcept { return m_edits; }

    // The values as they are shown. Throws the TS exceptions.
    void read(std::uint32_t column, std::uint32_t first, std::span<float> out);
    ColumnReader columnReader(std::uint32_t column);

    // Writes what is shown into the file and stamps the changed columns with the present time. The old
    // values stand synced in a scratch file before the first new one is written; a save that fails or is
    // cancelled puts them back. Throws SaveFailed.
    JobOutcome save(const Progress& progress);

    // Writes a copy of the file, with what is shown, as `target`, in one step when it is whole. The file
    // itself and the list stay as they are. A file that has lost its name meanwhile is rescued so. Throws
    // SaveFailed.
    JobOutcome saveAs(const std::filesystem::path& target, const Progress& progress);

    // Whether the path leads to the very file that is shown: false for its own path once another program has
    // removed or replaced it. Throws std::system_error.
    bool isItself(const std::filesystem::path& path) const;

private:
    void before(const std::vector<std::unique_ptr<ColumnBackup>>& backups, TSFILE& file, std::uint32_t column,
                std::uint32_t first, std::span<float> out);
    // Writes the runs into `file`, and stamps their columns.
    JobOutcome writeRuns(TSFILE& file, const std::vector<SampleRun>& runs, const Progress& progress);
    std::unique_ptr<TSFILE> openForWriting() const;
    // The reader forgets what it has kept of the file.
    void showAnew() noexcept;

    TSFILE& m_reader;
    std::filesystem::path m_path;
    EditList m_edits;
    std::vector<std::unique_ptr<ColumnBackup>> m_backups;  // oldest first
};

// A file could not be saved. The text says why, for the user; the file is as it was unless the text says
// where its old values lie.
struct SaveFailed
{
    std::string text;
};

}  // namespace veltrac
