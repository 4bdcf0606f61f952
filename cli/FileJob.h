// One run of a verb over its files: where each result goes, what may be replaced, what is told.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/Verb.h"
#include "cli/Workers.h"

namespace veltrac {

inline constexpr const char* kStream = "-";  // standard input, standard output

// A source and its target; empty where there is none.
struct PlannedFile
{
    std::string source;
    std::filesystem::path target{};
};

// What a command line comes to. Throws UsageError: nothing to work on, two sources with one target, a stream
// that cannot be one.
std::vector<PlannedFile> planFiles(const Verb& verb, const CommonOptions& common);

// Works on one planned file and never throws: failures are told in the outcome.
TaskOutcome runFileJob(Verb& verb, const CommonOptions& common, const PlannedFile& planned,
                       const Progress& progress);

// What is told of a file's failure: "file: reason" for people, an object for programs.
TaskOutcome failedFile(const std::string& file, const std::string& reason, const CommonOptions& common);

}  // namespace veltrac
