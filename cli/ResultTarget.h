// Where the result of a computing verb goes: a new file, a new column of the source, or one of its columns.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "cli/FileWords.h"
#include "cli/Verb.h"
#include "core/SourceColumn.h"

class TSFILE;

namespace veltrac {

class Options;

class ResultTarget
{
public:
    void addTo(Options& options);
    void check(const CommonOptions& common) const;
    VerbTarget kind() const { return isInSource() ? VerbTarget::InSource : VerbTarget::FileEach; }
    bool isInSource() const { return m_newColumn || !m_inPlace.empty(); }
    bool makesColumn() const noexcept { return m_newColumn; }
    // The column to be overwritten, as the user called it.
    const std::string& inPlace() const noexcept { return m_inPlace; }

    // Computes with `fill` into a work file of two columns (input, result) and as many samples as the column
    // has, and brings the result to where it belongs. Throws as Verb::perform().
    void save(VerbJob& job, const SourceColumn& column, std::uint32_t first,
              const std::function<JobOutcome(TSFILE& work, const Progress& progress)>& fill) const;

private:
    void saveInSource(VerbJob& job, TSFILE& work, std::uint32_t first) const;

    bool m_newColumn = false;
    std::string m_inPlace;
};

// The column and the range that a computing verb takes.
struct SourceOptions
{
    std::string column;  // empty: the first that is no time
    PlaceOptions places;

    void addTo(Options& options);
    std::uint32_t columnIn(TSFILE& file) const;
};

// Throws JobError where a file has no sample time, which steps and frequencies come of.
void requireSampleTime(TSFILE& file);
// Throws JobError for a ring file, whose columns cannot grow in number.
void requireNoRing(TSFILE& file);
// Throws JobError with `backup` named, where old values could not be put back.
[[noreturn]] void throwLostValues(const std::filesystem::path& backup);

}  // namespace veltrac
