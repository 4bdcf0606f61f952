// Reads a tsa text, a header of %-keyed lines above rows of numbers (docs/tsa.md), and makes the ts-file of
// its base name in the working directory. No window: what the user decides is asked through TsaQuestions.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "core/Progress.h"
#include "core/SafeChange.h"

// What an import or export asks and tells. File names are bytes as the system has them.
class TsaQuestions
{
public:
    virtual ~TsaQuestions() = default;

    // The counts that a header lacks; nothing where the user cancels.
    virtual std::optional<int> askSamples(const std::string& tsaFile) = 0;
    virtual std::optional<int> askColumns(const std::string& tsaFile) = 0;
    // True where the user gives the old file up.
    virtual bool mayOverwrite(const std::string& file) = 0;
    // True where a window has the file open for writing, so that it must stay.
    virtual bool isOpenForWriting(const std::string& file) = 0;
    virtual void warn(const std::string& title, const std::string& text) = 0;
};

// What became of the text. Nothing was lost where every number below tsFile's is 0.
struct TsaImportReport
{
    std::string tsFile;         // the file that was made
    std::uint32_t samples = 0;  // its counts
    std::uint32_t columns = 0;
    std::uint32_t rowsRead = 0;  // fewer than samples: the rest holds zeros
    bool oldFileKept = false;    // the user said "&No", or it is open for writing
    std::uint64_t linesCut = 0;
    std::uint64_t linesTabbed = 0;  // passed over because they begin with a tab
    std::uint64_t notNumbers = 0;   // words that were no numbers, or had text behind the number
    std::uint64_t valuesMissing = 0;
    std::uint64_t valuesLeftOver = 0;
    std::uint64_t linesLeftOver = 0;  // data lines beyond the samples

    bool isLossless() const
    {
        return rowsRead == samples &&
               linesCut + linesTabbed + notNumbers + valuesMissing + valuesLeftOver + linesLeftOver == 0;
    }
};

// What ReadASCIIHeader() has made, for the data to be filled in.
struct TsaTarget
{
    std::filesystem::path
        wanted{};  // the file to make, which may be replaced; empty: of the text's base name
    std::unique_ptr<veltrac::PendingFile> file;
    TsaImportReport report;
};

// The two passes over the header: makes the ts-file with the header that the text describes.
// Returns -1 when the text cannot be opened, 0 when the user cancels, 1 when the ts-file was made, and -1
// (after a message) when an old file must not be replaced or the new one could not be made. The file is a
// pending one until its data are in it.
int ReadASCIIHeader(const std::filesystem::path& tsaFile, TsaQuestions& questions,
                    const veltrac::Progress& progress, TsaTarget& target);

namespace veltrac {

// The pass over the data. Throws TS::CREATE_ERROR with the file's name where it cannot be opened again,
// else what TSFILE and the line reader throw.
JobOutcome readTsaData(const std::filesystem::path& tsaFile, const Progress& progress, TsaTarget& target);

// All passes. The outcome is ReadASCIIHeader()'s; whatever fails or is cancelled leaves no new file, and an
// old one as it was. Throws as readTsaData().
int importTsaText(const std::filesystem::path& tsaFile, TsaQuestions& questions, const Progress& progress,
                  TsaImportReport& report);

}  // namespace veltrac
