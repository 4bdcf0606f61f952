// Single column logs on their way to a ts-file: each file becomes a column.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "converters/FileState.h"
#include "converters/SCLSource.h"
#include "converters/STLCheck.h"
#include "core/Progress.h"

class TSFILE;

namespace veltrac {

struct SCLTrouble
{
    std::size_t source;  // from 0
    std::uint64_t line;
    std::string text;
};

struct SCLCheck
{
    std::vector<std::uint64_t> values;  // of each source
    std::uint64_t missing = 0;          // among them
    std::uint64_t troubleCount = 0;
    std::vector<SCLTrouble> troubles;  // the first thousand
};

}  // namespace veltrac

class SCLObject
{
public:
    // -- What is imported; public because every member may be changed freely before the check --
    std::vector<veltrac::SCLSource> sources;
    std::uint64_t skipLines = 0;
    veltrac::Micros start = 0;  // wall clock, local time; 0 for none
    double step = 1.0;          // seconds
    veltrac::STLFill fill = veltrac::STLFill::NaN;
    std::string description;

    // Adds a file. The first one gives the start, its head's or else the file's date, until another one tells
    // an earlier start; the first one that tells a rate gives the step, else it is one second. Throws as
    // detectSource().
    void add(const std::filesystem::path& file);
    // Leaves a file out; where it told the start, the earliest one that is left gives it.
    void remove(std::size_t source);
    // Looks at all files again, after another number of lines to skip.
    void detectAgain();

    // Reads the files, unless isRead(). Throws STLError (no files, rates that differ, 2 GB or more),
    // std::system_error.
    veltrac::JobOutcome check(const veltrac::Progress& progress);
    // Whether the last pass saw these very files as they are now.
    bool isRead() const;
    const veltrac::SCLCheck& found() const { return m_found; }
    // Notices for the user: "b.scl has 1 000 values fewer.", columns that begin later, several numbers a
    // line. Needs a check.
    std::vector<std::string> notices() const;

    // The file that is to be made, after a check: counts, start and sample time.
    veltrac::STLCheck result() const;
    // Names that the columns get: at most 11 bytes, each one once.
    std::vector<std::string> columnNames() const;
    // Writes header and values into a file of result().samples and result().columns. Throws STLError where
    // a source has changed meanwhile, the TS exceptions, std::system_error.
    veltrac::JobOutcome write(TSFILE& target, const veltrac::Progress& progress);

private:
    void requireOneRate() const;
    std::optional<veltrac::Micros> earliestStart() const;
    double stepsAfterStart(std::size_t source) const;
    std::uint64_t firstSample(std::size_t source) const;
    std::uint64_t sampleCount() const;
    void followStart(std::optional<veltrac::Micros> before);
    veltrac::JobOutcome readAll(const veltrac::Progress& progress);
    void writeHeader(TSFILE& target) const;

    veltrac::SCLCheck m_found;
    std::vector<std::pair<std::filesystem::path, veltrac::FileState>> m_readStates;
    std::uint64_t m_readSkip = 0;
};

namespace veltrac {

// As importSTL().
JobOutcome importSCL(SCLObject& logs, const std::filesystem::path& target, const Progress& progress);

}  // namespace veltrac
