// What veltrac-cli can do: each verb is a row of words, options and one job on one file.
//
// A verb knows nothing of how its jobs are spread, where results go or how failures are told: cli/FileJob.h
// hands it a source that exists, a target that may be made, and tells what it throws as "file: reason".
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/Progress.h"

namespace veltrac {

class Options;
using Json = nlohmann::ordered_json;

// What all verbs understand.
struct CommonOptions
{
    std::vector<std::string> files;
    std::string output;  // file, directory, "-", or empty
    bool force = false;
    bool quiet = false;
    bool json = false;
    bool skipDone = false;
    std::string report;      // file that keeps all of what imports tell; empty: none
    std::uint32_t jobs = 0;  // 0: as many as there are cores
};

// Wrong usage, in words for the user: exit status 2.
struct UsageError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

// What keeps a file from being worked on, in words for the user: "file: reason".
struct JobError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

// The user has stopped the program.
struct Interrupted
{
};

// Throws Interrupted where a job was cancelled, which only the user does.
void requireDone(JobOutcome outcome);

// One file (or, for a verb that joins, all of them) and what is made of it.
struct VerbJob
{
    std::filesystem::path source;                // of standard input: a copy of it
    std::vector<std::filesystem::path> sources;  // all of a verb that joins
    std::filesystem::path target{};              // what is to be made; empty where nothing is
    std::string name;                            // of the source, as the user gave it
    const CommonOptions* common = nullptr;
    Progress progress{};

    // What is told: `text` and `json` on standard output, `notes` on standard error, each a line.
    std::string text{};
    Json json = Json::object();
    std::vector<std::string> notes{};
    std::string report{};  // for the file of that name
};

// Where the results of a verb go.
enum class VerbTarget {
    Nowhere,   // it only tells
    FileEach,  // a file for each source
    InSource,  // into the source itself
    Stream,    // standard input goes into the source, which may have to be made; a stop ends it well
    OneFile    // one file of all sources
};

struct VerbWords
{
    const char* name;
    const char* summary;
    const char* description;
    const char* example;  // lines of a shell
};

class Verb
{
public:
    virtual ~Verb() = default;
    Verb() = default;
    Verb(const Verb&) = delete;
    Verb& operator=(const Verb&) = delete;

    virtual const VerbWords& words() const = 0;
    virtual void addOptions(Options& options) = 0;
    // After parsing, once for all files. Throws UsageError.
    virtual void check(CommonOptions& /*common*/) {}
    virtual VerbTarget targetKind() const { return VerbTarget::FileEach; }
    // Of targets whose name comes from that of their source, with its point.
    virtual std::string extension() const { return ".ts"; }
    // Whether there is nothing to do without a file. Of VerbTarget::OneFile alone may it be otherwise.
    virtual bool needsFiles() const { return true; }
    // Where nothing is said of a target: whether it goes into the working directory under the name of its
    // source.
    virtual bool hasDefaultTarget() const { return false; }
    // Throws JobError, Interrupted, std::system_error, the TS exceptions and other std::exceptions; then
    // nothing has changed.
    virtual void perform(VerbJob& job) = 0;
};

// All verbs, in the order of the help.
std::vector<std::unique_ptr<Verb>> allVerbs();

}  // namespace veltrac
