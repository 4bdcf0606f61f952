// A ts-file whose values are being edited: the file as it is read, the list of edits, and what the saved
// edits have overwritten.
//
// The reader's values are those before all edits: where a save has overwritten some, they come from the
// scratch files that the saves have left, so undo works after saving.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/ColumnBackup.h"
#include "core/ColumnScan.h"
#include "core/Progress.h"
#include "portal/EditList.h"

class TSFILE;

namespace veltrac {

// What another program has done to the file since its values were read, as far as this file's edits meet it.
struct EditConflict
{
    struct Cell
    {
        std::uint32_t column = 0;
        std::uint32_t sample = 0;
        float read = 0.0F;  // what was shown
        float now = 0.0F;   // what stands in the file
    };
    static constexpr std::size_t kMostCells = 5;

    std::uint64_t changed = 0;  // values under edits that differ from those that were read
    std::vector<Cell> cells{};  // the first of them
    // Values that were edited in runs too long to remember each; the file has changed, perhaps in them.
    std::uint64_t unknown = 0;

    bool isNone() const noexcept { return changed + unknown == 0; }
};

class EditedFile
{
public:
    // Who wins where another program has changed what is about to be saved: the edits (Mine); the file, whose
    // values become an edit that can be undone (Theirs); nobody yet, nothing is written (Look).
    enum class Choice { Mine, Theirs, Look };
    using Ask = std::function<Choice(const EditConflict& conflict)>;

    // `reader` shows the file of that path, is opened for reading and is borrowed.
    EditedFile(TSFILE& reader, std::filesystem::path path);

    const std::filesystem::path& path() const noexcept { return m_path; }
    EditList& edits() noexcept { return m_edits; }
    // Adds an entry to the list and remembers what it is about to overwrite, as it was read.
    void add(Edit edit);
    const EditList& edits() const noexcept { return m_edits; }

    // The values as they are shown. Throws the TS exceptions.
    void read(std::uint32_t column, std::uint32_t first, std::span<float> out);
    ColumnReader columnReader(std::uint32_t column);

    // Writes what is shown into the file and stamps the changed columns with the present time. The old
    // values stand synced in a scratch file before the first new one is written; a save that fails or is
    // cancelled puts them back. Where another program has changed values under the edits since they were
    // read, `ask` decides first; without it the edits win. Look gives Cancelled. Throws SaveFailed.
    JobOutcome save(const Progress& progress, const Ask& ask = {});

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
    // Values of the file as they were read when they came under an edit.
    struct Seen
    {
        SampleRun run;
        std::vector<float> values;
    };
    // Calls visit(EditConflict::Cell) for each value under the runs that another program has changed since it
    // was seen.
    template <typename Visit>
    void visitChanged(TSFILE& file, const std::vector<SampleRun>& runs, Visit visit);
    EditConflict conflictWith(TSFILE& file, const std::vector<SampleRun>& runs);
    void takeTheirs(TSFILE& file, const std::vector<SampleRun>& runs);
    void seeAnew();
    std::int64_t changeTime() const;
    // The reader forgets what it has kept of the file.
    void showAnew() noexcept;

    TSFILE& m_reader;
    std::filesystem::path m_path;
    EditList m_edits;
    std::vector<std::unique_ptr<ColumnBackup>> m_backups;  // oldest first
    std::vector<Seen> m_seen;
    std::int64_t m_changeTime = 0;  // of the file when it was last known to hold what is shown
};

// A file could not be saved. The text says why, for the user; the file is as it was unless the text says
// where its old values lie.
struct SaveFailed
{
    std::string text;
};

}  // namespace veltrac
