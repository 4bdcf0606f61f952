#include "portal/EditedFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <map>
#include <set>
#include <system_error>
#include <utility>

#include "core/ColumnCopy.h"
#include "core/CopyFile.h"
#include "core/FailureText.h"
#include "core/FileIdentity.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"

namespace veltrac {

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kSavedRun = 1U << 15;      // samples a step
constexpr std::uint32_t kKeptTogether = 1U << 16;  // runs nearer than this are kept as one
constexpr std::uint64_t kCopyingShare = 70;        // hundredths of making a new file
constexpr std::uint64_t kRemembered = 1U << 16;    // samples of a run that are remembered one by one

// What is kept of the old values: fewer, longer ranges, since each of them is synced.
std::vector<ColumnRange> rangesToKeep(const std::vector<SampleRun>& runs)
{
    std::vector<ColumnRange> kept;
    for (const SampleRun& run : runs) {
        if (!kept.empty() && kept.back().column == run.column &&
            run.first < std::uint64_t{kept.back().first} + kept.back().count + kKeptTogether)
            kept.back().count = run.last - kept.back().first + 1;
        else
            kept.push_back({run.column, run.first, static_cast<std::uint32_t>(run.count())});
    }
    return kept;
}

void stampColumns(TSFILE& file, const std::vector<SampleRun>& runs)
{
    std::set<std::uint32_t> columns;
    for (const SampleRun& run : runs)
        columns.insert(run.column);
    for (const std::uint32_t column : columns)
        file.stampColumn(column);
}

}  // namespace

EditedFile::EditedFile(TSFILE& reader, fs::path path) : m_reader(reader), m_path(std::move(path))
{
    m_changeTime = changeTime();
}

// -- What others do to the file meanwhile --

std::int64_t EditedFile::changeTime() const
{
    struct stat found = {};
    constexpr std::int64_t kNanos = 1'000'000'000;
    return ::fstat(m_reader.descriptor(), &found) == 0
               ? std::int64_t{found.st_mtim.tv_sec} * kNanos + found.st_mtim.tv_nsec
               : 0;
}

void EditedFile::add(Edit edit)
{
    for (const EditStrip& strip : edit.strips) {
        if (strip.run.count() > kRemembered)
            continue;
        Seen seen{strip.run, std::vector<float>(strip.run.count())};
        try {
            m_reader.readColumn(seen.run.column, seen.run.first, seen.values);
            m_seen.push_back(std::move(seen));
        } catch (...) {
            continue;  // cells that cannot be read are shown so; saving them fails or does not
        }
    }
    m_edits.add(std::move(edit));
}

template <typename Visit>
void EditedFile::visitChanged(TSFILE& file, const std::vector<SampleRun>& runs, Visit visit)
{
    std::vector<float> now;
    for (const SampleRun& run : runs)
        for (const Seen& seen : m_seen) {
            const std::uint32_t first = std::max(run.first, seen.run.first);
            const std::uint32_t last = std::min(run.last, seen.run.last);
            if (seen.run.column != run.column || first > last)
                continue;
            now.resize(last - first + 1);
            file.readColumn(run.column, first, now);
            for (std::uint32_t i = 0; i < now.size(); ++i) {
                const float read = seen.values[first - seen.run.first + i];
                if (std::bit_cast<std::uint32_t>(read) != std::bit_cast<std::uint32_t>(now[i]))
                    visit(EditConflict::Cell{run.column, first + i, read, now[i]});
            }
        }
}

EditConflict EditedFile::conflictWith(TSFILE& file, const std::vector<SampleRun>& runs)
{
    EditConflict conflict;
    std::set<std::pair<std::uint32_t, std::uint32_t>> known;  // a cell may be seen under several edits
    visitChanged(file, runs, [&](const EditConflict::Cell& cell) {
        if (!known.insert({cell.column, cell.sample}).second)
            return;
        ++conflict.changed;
        if (conflict.cells.size() < EditConflict::kMostCells)
            conflict.cells.push_back(cell);
    });
    if (changeTime() != m_changeTime)
        for (const SampleRun& run : runs)
            if (run.count() > kRemembered)
                conflict.unknown += run.count();
    return conflict;
}

void EditedFile::takeTheirs(TSFILE& file, const std::vector<SampleRun>& runs)
{
    std::map<std::pair<std::uint32_t, std::uint32_t>, float> theirs;
    visitChanged(file, runs, [&](const EditConflict::Cell& cell) {
        theirs[{cell.column, cell.sample}] = cell.now;
    });
    Edit edit{"Take the file's values", {}};
    for (const auto& [cell, value] : theirs) {
        if (!edit.strips.empty() && edit.strips.back().run.column == cell.first &&
            edit.strips.back().run.last + 1 == cell.second) {
            edit.strips.back().run.last = cell.second;
            edit.strips.back().values.push_back(value);
        } else {
            edit.strips.push_back(valuesStrip(cell.first, cell.second, {value}));
        }
    }
    m_edits.add(std::move(edit));
}

// The file holds what is shown.
void EditedFile::seeAnew()
{
    for (Seen& seen : m_seen)
        m_reader.readColumn(seen.run.column, seen.run.first, seen.values);
    m_changeTime = changeTime();
}

// -- Reading and writing --

void EditedFile::before(const std::vector<std::unique_ptr<ColumnBackup>>& backups, TSFILE& file,
                        std::uint32_t column, std::uint32_t first, std::span<float> out)
{
    file.readColumn(column, first, out);
    // The oldest save knows what stood there before all edits.
    for (auto backup = backups.rbegin(); backup != backups.rend(); ++backup)
        (*backup)->recall(column, first, out);
}

void EditedFile::read(std::uint32_t column, std::uint32_t first, std::span<float> out)
{
    before(m_backups, m_reader, column, first, out);
    m_edits.apply(column, first, out);
}

ColumnReader EditedFile::columnReader(std::uint32_t column)
{
    return [this, column](std::uint32_t first, std::span<float> out) { read(column, first, out); };
}

JobOutcome EditedFile::writeRuns(TSFILE& file, const std::vector<SampleRun>& runs, const Progress& progress)
{
    std::uint64_t total = 0;
    for (const SampleRun& run : runs)
        total += run.count();
    std::uint64_t done = 0;
    std::vector<float> values(kSavedRun);
    for (const SampleRun& run : runs)
        for (std::uint64_t sample = run.first; sample <= run.last;) {
            const std::size_t count = std::min<std::uint64_t>(kSavedRun, run.last - sample + 1);
            const std::span<float> part = std::span(values).first(count);
            const auto first = static_cast<std::uint32_t>(sample);
            before(m_backups, file, run.column, first, part);
            m_edits.apply(run.column, first, part);
            file.writeColumn(run.column, first, part);
            sample += count;
            done += count;
            if (!goesOn(progress, done, total))
                return JobOutcome::Cancelled;
        }
    stampColumns(file, runs);
    return JobOutcome::Done;
}

// A file that has vanished meanwhile shows unreadable cells; that is no failure of the save.
void EditedFile::showAnew() noexcept
{
    try {
        m_reader.refresh();
    } catch (...) {
    }
}

bool EditedFile::isItself(const fs::path& path) const
{
    return identityOf(path) == identityOf(m_reader.descriptor());
}

// Refuses a file that another program has put in the place of the one that is shown.
std::unique_ptr<TSFILE> EditedFile::openForWriting() const
{
    auto file = openTsFile(m_path.string(), false);
    if (identityOf(file->descriptor()) != identityOf(m_reader.descriptor()))
        throw std::runtime_error("another program has replaced the file");
    return file;
}

JobOutcome EditedFile::save(const Progress& progress, const Ask& ask)
{
    const std::vector<SampleRun> runs = m_edits.unsavedRuns();
    const std::vector<ColumnRange> kept = rangesToKeep(runs);
    std::unique_ptr<TSFILE> file;
    OldValues old;
    try {
        file = openForWriting();
        if (const EditConflict conflict = ask ? conflictWith(*file, runs) : EditConflict();
            !conflict.isNone()) {
            const Choice choice = ask(conflict);
            if (choice == Choice::Look)
                return JobOutcome::Cancelled;
            if (choice == Choice::Theirs)
                takeTheirs(*file, runs);
        }
        const auto write = [&](TSFILE& to, const Progress& part) { return writeRuns(to, runs, part); };
        const auto reopen = [&]() -> TSFILE& {
            file.reset();
            file = openForWriting();
            return *file;
        };
        const JobOutcome outcome = changeInPlace({*file, kept, write, reopen}, progress, old);
        file.reset();
        if (outcome == JobOutcome::Done) {
            m_backups.push_back(std::move(old.backup));
            m_edits.markSaved();
        }
        showAnew();
        if (outcome == JobOutcome::Done)
            seeAnew();
        return outcome;
    } catch (...) {
        std::string text = "Nothing was saved: " + reasonOfFailure() + ".";
        if (!old.lost.empty())
            text =
                "The edits were not saved, and the old values could not be put back: " + reasonOfFailure() +
                ".\nThey lie in " + old.lost.string() +
                "; \"Restore old values…\" in the list window brings them back.";
        showAnew();
        throw SaveFailed{text};
    }
}

JobOutcome EditedFile::saveAs(const fs::path& target, const Progress& progress)
{
    try {
        PendingFile pending(target, ".veltrac-save", ".ts");
        // Not by its name: another program may have given that to another file, or removed it.
        if (copyBytes(m_reader.descriptor(), pending.path(), partOf(progress, 0, kCopyingShare)) ==
            JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
        {
            const auto copy = openTsFile(pending.path().string(), false);
            if (writeRuns(*copy, m_edits.unsavedRuns(), partOf(progress, kCopyingShare, 100)) ==
                JobOutcome::Cancelled)
                return JobOutcome::Cancelled;
            copy->flush(true);
        }
        return pending.commit(progress);
    } catch (...) {
        throw SaveFailed{"The new file was not made: " + reasonOfFailure() + "."};
    }
}

}  // namespace veltrac
