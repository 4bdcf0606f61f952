#include "cli/FileJob.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <map>
#include <memory>
#include <system_error>

#include "cli/StopSignals.h"
#include "core/FailureText.h"
#include "core/ScratchFile.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsHeader.h"
#include "core/TsNames.h"
#include "core/Utf8.h"

namespace veltrac {

namespace fs = std::filesystem;

void requireDone(JobOutcome outcome)
{
    if (outcome == JobOutcome::Cancelled)
        throw Interrupted{};
}

namespace {

bool isSame(const fs::path& a, const fs::path& b)
{
    std::error_code none;
    return fs::equivalent(a, b, none);
}

bool meansDirectory(const CommonOptions& common)
{
    std::error_code none;
    return common.output.ends_with('/') || fs::is_directory(common.output, none) || common.files.size() > 1;
}

// "-" has no name of its own.
std::string stemOf(const std::string& source)
{
    return source == kStream ? "stdin" : fs::path(source).stem().string();
}

fs::path targetOf(const Verb& verb, const CommonOptions& common, const std::string& source)
{
    const bool single = verb.targetKind() == VerbTarget::OneFile;
    if (common.output.empty()) {
        if (!verb.hasDefaultTarget())
            throw UsageError("-o FILE or -o DIR is needed: where the result goes");
        return source == kStream ? fs::path(kStream) : fs::path(stemOf(source) + verb.extension());
    }
    if (common.output == kStream || single || !meansDirectory(common))
        return common.output;
    return fs::path(common.output) / (stemOf(source) + verb.extension());
}

}  // namespace

std::vector<PlannedFile> planFiles(const Verb& verb, const CommonOptions& common)
{
    if (common.files.empty() && verb.needsFiles())
        throw UsageError("no files are named");
    const VerbTarget kind = verb.targetKind();
    const bool makes = kind == VerbTarget::FileEach || kind == VerbTarget::OneFile;
    if (!makes && !common.output.empty())
        throw UsageError("-o has nothing to say here: no file is made");
    if (makes && common.output == kStream && common.json)
        throw UsageError("-o - and --json both want standard output");
    if (kind == VerbTarget::FileEach && common.output == kStream && common.files.size() > 1)
        throw UsageError("-o - takes the result of one file");
    if (kind == VerbTarget::OneFile) {
        const std::string source = common.files.empty() ? std::string() : common.files.front();
        return {{source, targetOf(verb, common, source)}};
    }
    std::vector<PlannedFile> planned;
    std::map<fs::path, std::string> taken;
    for (const std::string& source : common.files) {
        if (kind == VerbTarget::InSource && source == kStream)
            throw UsageError("standard input cannot be changed in place");
        PlannedFile file{source};
        if (makes)
            file.target = targetOf(verb, common, source);
        if (kind == VerbTarget::FileEach && file.target != kStream) {
            const auto [before, isNew] = taken.emplace(file.target.lexically_normal(), source);
            if (!isNew)
                throw UsageError(before->second + " and " + source + " would both become " +
                                 file.target.string());
        }
        planned.push_back(std::move(file));
    }
    return planned;
}

namespace {

// Throws JobError where a source cannot be read at all, in better words than those of its first use.
void requireReadable(const std::string& source)
{
    const int descriptor = open(source.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        throw JobError(errno == ENOENT || errno == ENOTDIR ? "there is no such file"
                       : errno == EACCES                   ? "it may not be read"
                                                           : std::generic_category().message(errno));
    close(descriptor);
    if (fs::is_directory(source))
        throw JobError("it is a directory");
}

// Whether a target is there, not older than its source, and whole. All targets take their names when they
// are whole; of a ts-file the length is looked at too.
bool isDone(const fs::path& target, const std::vector<fs::path>& sources)
{
    std::error_code missing;
    const auto made = fs::last_write_time(target, missing);
    if (missing || !fs::is_regular_file(target))
        return false;
    for (const fs::path& source : sources)
        if (fs::last_write_time(source, missing) > made || missing)
            return false;
    if (target.extension() != ".ts")
        return true;
    try {
        const auto file = openTsFile(target.string(), true);
        return fs::file_size(target) >= tsFileBytes(file->samples(), file->columns());
    } catch (const TS::Failure&) {
        return false;
    }
}

void requireFree(const VerbJob& job)
{
    std::error_code none;
    for (const fs::path& source : job.sources)
        if (isSame(source, job.target))
            throw JobError("it would replace itself: choose another target");
    if (!job.common->force && fs::symlink_status(job.target, none).type() != fs::file_type::not_found)
        throw JobError(job.target.string() + " is there already (--force replaces it)");
}

// Copies between a descriptor and a file. Throws std::system_error.
void copyStream(std::FILE* from, std::FILE* to)
{
    char bytes[1U << 16];
    while (const std::size_t count = std::fread(bytes, 1, sizeof bytes, from)) {
        if (stopAsked())
            throw Interrupted{};
        if (std::fwrite(bytes, 1, count, to) != count)
            throw std::system_error(errno, std::generic_category());
    }
    if (std::ferror(from) != 0 || std::fflush(to) != 0)
        throw std::system_error(errno, std::generic_category());
}

struct CloseFile
{
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, CloseFile>;

OpenFile openPlain(const fs::path& file, const char* mode)
{
    OpenFile opened(std::fopen(file.c_str(), mode));
    if (!opened)
        throw std::system_error(errno, std::generic_category());
    return opened;
}

// Standard input as a file, since every format is read in more than one pass.
std::unique_ptr<ScratchFile> heldInput()
{
    auto held = std::make_unique<ScratchFile>(scratchDirectory(), "veltrac-stdin", ".tmp");
    copyStream(stdin, openPlain(held->path(), "wb").get());
    return held;
}

void makeDirectoryOf(const fs::path& target)
{
    if (target.has_parent_path())
        fs::create_directories(target.parent_path());
}

// Throws what the verb throws.
TaskOutcome::State performInto(Verb& verb, VerbJob& job)
{
    if (job.target == kStream) {
        // Made whole first: nothing half-made goes down the pipe.
        const ScratchFile made(scratchDirectory(), "veltrac-stdout", verb.extension());
        job.target = made.path();
        verb.perform(job);
        copyStream(openPlain(made.path(), "rb").get(), stdout);
        job.target = kStream;
        return TaskOutcome::State::Done;
    }
    if (!job.target.empty()) {
        if (job.common->skipDone && isDone(job.target, job.sources))
            return TaskOutcome::State::Skipped;
        requireFree(job);
        makeDirectoryOf(job.target);
    }
    verb.perform(job);
    return TaskOutcome::State::Done;
}

std::string told(const VerbJob& job)
{
    if (!job.common->json)
        return job.text;
    Json all = Json::object();
    if (!job.name.empty())
        all["file"] = utf8OfBytes(job.name);
    if (!job.target.empty())
        all["target"] = utf8OfBytes(job.target.string());
    all.update(job.json);
    if (!job.notes.empty())
        all["notes"] = job.notes;
    return all.dump() + '\n';
}

}  // namespace

TaskOutcome failedFile(const std::string& file, const std::string& reason, const CommonOptions& common)
{
    TaskOutcome outcome{TaskOutcome::State::Failed, {}, file + ": " + reason + '\n'};
    if (common.json)
        outcome.out = Json({{"file", utf8OfBytes(file)}, {"error", utf8OfBytes(reason)}}).dump() + '\n';
    return outcome;
}

TaskOutcome runFileJob(Verb& verb, const CommonOptions& common, const PlannedFile& planned,
                       const Progress& progress)
{
    std::string named = planned.source;
    try {
        std::unique_ptr<ScratchFile> held;
        VerbJob job{planned.source, {}, planned.target, planned.source, &common, progress};
        const bool takesAll = verb.targetKind() == VerbTarget::OneFile;
        for (const std::string& source : takesAll ? common.files : std::vector{planned.source}) {
            named = source;
            if (source == kStream) {
                held = heldInput();
                job.sources.push_back(held->path());
                continue;
            }
            if (verb.targetKind() != VerbTarget::Stream)
                requireReadable(source);
            job.sources.emplace_back(source);
        }
        if (!job.sources.empty())
            job.source = job.sources.front();
        if (takesAll)
            named = planned.target.string();
        TaskOutcome outcome{performInto(verb, job)};
        if (outcome.state == TaskOutcome::State::Skipped)
            job.json["skipped"] = true;
        outcome.out = told(job);
        outcome.report = job.report;
        // What is said of several files together stands beside the file that they come into.
        const std::string& subject =
            planned.source.empty() || job.sources.size() > 1 ? named : planned.source;
        if (!common.quiet)
            for (const std::string& note : job.notes)
                outcome.notes.append(subject).append(": ").append(note) += '\n';
        return outcome;
    } catch (const Interrupted&) {
        return {TaskOutcome::State::Interrupted, {}, {}};
    } catch (const JobError& error) {
        return failedFile(named, error.what(), common);
    } catch (...) {
        return failedFile(named, reasonOfFailure(), common);
    }
}

}  // namespace veltrac
