// Every choice of the import windows, and what becomes of a text under them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "cli/Verb.h"
#include "converters/STLObject.h"

namespace veltrac {

class Options;

// How a text is read.
struct TextChoices
{
    std::optional<int> encoding{};
    std::string separator{};
    std::string decimal{};
    std::optional<int> grouping{};
    std::optional<std::uint32_t> firstDataLine{};
    std::optional<std::uint32_t> namesLine{};
    std::optional<std::uint32_t> unitsLine{};
    std::vector<std::string> remarks{};
    std::vector<std::string> missingMarkers{};
    std::uint32_t skipLines = 0;
};

// Where its rows' times come from, and what they become.
struct TimeChoices
{
    std::optional<int> from{};  // source() where there is one
    std::string dateColumn{};
    std::string timeColumn{};
    std::optional<int> order{};
    std::optional<int> zone{};
    std::string start{};
    std::optional<double> step{};
    std::optional<double> rate{};
    std::optional<int> becomes{};
    std::optional<double> equalStep{};

    STLTimeSource source() const;
};

// What comes along of it.
struct ResultChoices
{
    std::string description{};
    std::vector<std::string> columns{};
    std::vector<std::string> names{};  // OLD=NEW
    std::vector<std::string> units{};  // COLUMN=UNIT
    std::uint32_t fromRow = 1;
    std::uint32_t toRow = 0;
    std::uint32_t everyNth = 1;
    std::optional<int> missingBecome{};
};

// Without a choice, what detection finds.
struct ImportOptions
{
    TextChoices text;
    TimeChoices time;
    ResultChoices result;
    // What a header of tsa text lacks.
    std::optional<std::uint32_t> tsaSamples{};
    std::optional<std::uint32_t> tsaColumns{};
    bool accept = false;  // what the window would ask about

    void addTo(Options& options);
    // Throws UsageError.
    void check();
};

// What an import tells: what it has done in a few lines, and all troubles for the report.
struct ImportTold
{
    std::string summary{};
    std::vector<std::string> assumed{};  // what the text does not say
    std::vector<std::string> reading{};  // how it was read and what was left out, for the report alone
    std::vector<std::string> troubles{};
    std::uint64_t troubleCount = 0;
};

// Each makes job.target, or only looks where that is empty. They throw as Verb::perform().
ImportTold importTsaInto(const VerbJob& job, const ImportOptions& options);
ImportTold importStlInto(const VerbJob& job, const ImportOptions& options);
// All of job.sources as columns of one file.
ImportTold importSclInto(const VerbJob& job, const ImportOptions& options);
ImportTold importSoundInto(const VerbJob& job, const ImportOptions& options);
// Whether a file is a sound that can be read.
bool isSound(const std::filesystem::path& file);

}  // namespace veltrac
