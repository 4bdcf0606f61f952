// Changes to the values of a ts-file as a list that is not in the file yet: a change of a whole column is one
// entry, however long the column is.
//
// A value that is shown asks the list from the newest entry backwards until one says what it is, whatever
// stood there before; the entries after that one are then applied in their order. Undo and redo move the end
// of the list, before and after saving: the list remembers which entries the file holds.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace veltrac {

// A run of samples of one column, both ends included.
struct SampleRun
{
    std::uint32_t column = 0;
    std::uint32_t first = 0;
    std::uint32_t last = 0;

    std::uint64_t count() const noexcept { return std::uint64_t{last} - first + 1; }
    bool operator==(const SampleRun&) const = default;
};

// What happens to one run of samples.
struct EditStrip
{
    enum class Kind {
        Line,            // on the line through (x0, a) and (x1, b); a where x0 equals x1
        Add,             // a more
        Multiply,        // a times as much
        ReplaceOutside,  // b to c stays, all else becomes a; missing values stay missing
        Values           // those of `values`, one a sample
    };
    SampleRun run;
    Kind kind = Kind::Line;
    double a = 0.0;
    double b = 0.0;
    double c = 0.0;
    std::uint32_t x0 = 0;
    std::uint32_t x1 = 0;
    std::vector<float> values{};

    // True where the outcome does not depend on what stood there before.
    bool isAbsolute() const noexcept { return kind == Kind::Line || kind == Kind::Values; }
    // Changes values[0 … count), the samples from `first` on.
    void apply(std::uint32_t first, std::span<float> out) const;
};

// One entry: its strips do not overlap each other.
struct Edit
{
    std::string name;  // "Set value", as the menu shows it behind "Undo"; UTF-8
    std::vector<EditStrip> strips;
};

// Makers of entries on the runs of a block. Ends are sample values, in units of the column.
EditStrip setStrip(const SampleRun& run, double value);
EditStrip rampStrip(const SampleRun& run, double atFirst, double atLast);
// The line between the values of the samples before and after the run.
EditStrip interpolateStrip(const SampleRun& run, double before, double after);
EditStrip addStrip(const SampleRun& run, double number);
EditStrip multiplyStrip(const SampleRun& run, double factor);
EditStrip replaceOutsideStrip(const SampleRun& run, double low, double high, double replacement);
EditStrip valuesStrip(std::uint32_t column, std::uint32_t first, std::vector<float> values);

// The runs sorted by column and sample; those that overlap or touch become one.
std::vector<SampleRun> joinedRuns(std::vector<SampleRun> runs);

class EditList
{
public:
    // What was undone before is dropped. An entry without strips is none.
    void add(Edit edit);

    bool canUndo() const noexcept { return m_active > 0; }
    bool canRedo() const noexcept { return m_active < m_edits.size(); }
    // The names of what would be undone and redone; empty where there is none.
    std::string undoName() const;
    std::string redoName() const;
    void undo();
    void redo();

    // True while the shown values differ from the file's.
    bool isChanged() const;
    // The runs that saving has to write, by column and sample, without overlaps.
    std::vector<SampleRun> unsavedRuns() const;
    // True for a value in one of those runs.
    bool isUnsaved(std::uint32_t column, std::uint32_t sample) const;
    // The file now holds what is shown.
    void markSaved();

    // Turns values of a column from sample `first` on, as they were before all edits, into what is shown.
    void apply(std::uint32_t column, std::uint32_t first, std::span<float> values) const;

private:
    // An entry, its strips sorted by column and sample so that one is found by bisection.
    using Entry = std::shared_ptr<const Edit>;

    // Calls visit(entry) for the entries in which file and list differ, until it returns true.
    template <typename Visit>
    bool anyDifferent(Visit visit) const;

    std::vector<Entry> m_edits;
    std::size_t m_active = 0;    // entries that are not undone
    std::vector<Entry> m_saved;  // what the file holds
};

}  // namespace veltrac
