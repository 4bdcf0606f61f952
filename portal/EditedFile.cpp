#include "portal/EditedFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <set>
#include <system_error>
#include <utility>

#include "core/CopyFile.h"
#include "core/FailureText.h"
#include "core/ScratchFile.h"
#include "core/TsNames.h"

namespace veltrac {

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kRun = 1U << 15;           // samples a step
constexpr std::uint32_t kKeptTogether = 1U << 16;  // runs nearer than this are kept as one

// What is kept of the old values: fewer, longer runs, since each of them is synced.
std::vector<SampleRun> runsToKeep(const std::vector<SampleRun>& runs)
{
    std::vector<SampleRun> kept;
    for (const SampleRun& run : runs) {
        if (!kept.empty() && kept.back().column == run.column &&
            run.first < std::uint64_t{kept.back().last} + kKeptTogether)
            kept.back().last = run.last;
        else
            kept.push_back(run);
    }
    return kept;
}

std::uint64_t samplesIn(const std::vector<SampleRun>& runs)
{
    std::uint64_t sum = 0;
    for (const SampleRun& run : runs)
        sum += run.count();
    return sum;
}

struct stat statOf(int descriptor)
{
    struct stat found = {};
    if (::fstat(descriptor, &found) != 0)
        throw std::system_error(errno, std::generic_category());
    return found;
}

bool isSameFile(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

std::uint64_t bytesBehind(int descriptor)
{
    return static_cast<std::uint64_t>(statOf(descriptor).st_size);
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

// One save: what is written, and how far it is.
struct EditedFile::Job
{
    std::vector<SampleRun> runs;
    const Progress& progress;
    std::uint64_t done = 0;
    std::uint64_t total = 0;

    bool step(std::uint64_t samples)
    {
        done += samples;
        return goesOn(progress, done, total);
    }
    // For a part of the job that counts for itself.
    Progress part(std::uint64_t weight)
    {
        return [this, weight](std::uint64_t d, std::uint64_t t) {
            return goesOn(progress, done + (t == 0 ? 0 : d * weight / t), total);
        };
    }
};

EditedFile::EditedFile(TSFILE& reader, fs::path path) : m_reader(reader), m_path(std::move(path)) {}

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

bool EditedFile::writeRuns(TSFILE& file, Job& job)
{
    std::vector<float> values(kRun);
    for (const SampleRun& run : job.runs)
        for (std::uint64_t sample = run.first; sample <= run.last;) {
            const std::size_t count = std::min<std::uint64_t>(kRun, run.last - sample + 1);
            const std::span<float> part = std::span(values).first(count);
            const auto first = static_cast<std::uint32_t>(sample);
            before(m_backups, file, run.column, first, part);
            m_edits.apply(run.column, first, part);
            file.writeColumn(run.column, first, part);
            sample += count;
            if (!job.step(count))
                return false;
        }
    return true;
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
    struct stat there = {};
    return ::stat(path.c_str(), &there) == 0 && isSameFile(there, statOf(m_reader.descriptor()));
}

// Refuses a file that another program has put in the place of the one that is shown.
std::unique_ptr<TSFILE> EditedFile::openForWriting() const
{
    auto file = openTsFile(m_path.string(), false);
    if (!isSameFile(statOf(file->descriptor()), statOf(m_reader.descriptor())))
        throw std::runtime_error("another program has replaced the file");
    return file;
}

JobOutcome EditedFile::save(const Progress& progress)
{
    Job job{m_edits.unsavedRuns(), progress};
    const std::vector<SampleRun> kept = runsToKeep(job.runs);
    job.total = samplesIn(kept) + samplesIn(job.runs);

    std::unique_ptr<TSFILE> file;
    std::unique_ptr<ColumnBackup> backup;
    bool begun = false;  // the file may differ from what it was
    try {
        file = openForWriting();
        backup = std::make_unique<ColumnBackup>(*file);
        for (const SampleRun& run : kept) {
            const auto count = static_cast<std::uint32_t>(run.count());
            if (backup->save(run.column, run.first, count, job.part(count)) == JobOutcome::Cancelled)
                return JobOutcome::Cancelled;
            if (run == kept.front() || run.column != (&run - 1)->column)
                backup->saveInfo(run.column);
            job.done += count;
        }
        begun = true;
        if (!writeRuns(*file, job)) {
            backup->restore();
            showAnew();
            return JobOutcome::Cancelled;
        }
        stampColumns(*file, job.runs);
        file->flush(true);
        file.reset();
        syncToDisk(m_path);
    } catch (...) {
        std::string text = "Nothing was saved: " + reasonOfFailure() + ".";
        // The object may be stuck with a block that cannot be written.
        file.reset();
        if (begun)
            try {
                backup->restore(*openForWriting());
            } catch (...) {
                text += "\nThe old values could not be put back either (" + reasonOfFailure() +
                        "). They lie in " + backup->path().string() + ".";
            }
        showAnew();
        throw SaveFailed{text};
    }
    m_backups.push_back(std::move(backup));
    m_edits.markSaved();
    showAnew();
    return JobOutcome::Done;
}

JobOutcome EditedFile::saveAs(const fs::path& target, const Progress& progress)
{
    try {
        Job job{m_edits.unsavedRuns(), progress};
        const std::uint64_t copied = bytesBehind(m_reader.descriptor()) / sizeof(float);
        job.total = copied + samplesIn(job.runs);
        const fs::path directory = target.parent_path();
        ScratchFile scratch(directory.empty() ? fs::path(".") : directory, ".veltrac-save", ".ts");
        // Not by its name: another program may have given that to another file, or removed it.
        if (copyBytes(m_reader.descriptor(), scratch.path(), job.part(copied)) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
        job.done += copied;
        const auto copy = openTsFile(scratch.path().string(), false);
        if (!writeRuns(*copy, job))
            return JobOutcome::Cancelled;
        stampColumns(*copy, job.runs);
        copy->flush(true);
        scratch.putInPlace(target);
        return JobOutcome::Done;
    } catch (...) {
        throw SaveFailed{"The new file was not made: " + reasonOfFailure() + "."};
    }
}

}  // namespace veltrac
