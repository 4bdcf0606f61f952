// Runs one job of the libraries without windows on the files of the working directory.

#include <array>
#include <stdexcept>

#include "calc/Calculus.h"
#include "converters/SCLObject.h"
#include "converters/STLObject.h"
#include "converters/TsaExport.h"
#include "converters/TsaImport.h"
#include "core/ColumnBackup.h"
#include "core/ColumnCopy.h"
#include "core/CopyFile.h"
#include "core/Interval.h"
#include "core/Rebuild.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "filter/SaveResults.h"
#include "formula/Calculation.h"
#include "portal/EditedFile.h"
#include "tests/faults/Driver.h"

using namespace veltrac;

namespace {

constexpr std::uint32_t kSamples = 20'000;  // of a.ts, which has three columns; work.ts has two of as many

// Two runs of two columns change, neither from the first row on.
void editTwoColumns(EditedFile& edited)
{
    edited.edits().add({"add", {addStrip({2, 100, 18'000}, 1.5)}});
    edited.edits().add({"set", {setStrip({3, 700, 900}, -7.0)}});
}

std::string saveEdits(bool undoes)
{
    const auto reader = openTsFile("a.ts", true);
    EditedFile edited(*reader, "a.ts");
    editTwoColumns(edited);
    try {
        edited.save({});
        if (undoes) {
            edited.edits().undo();
            edited.save({});
        }
        return {};
    } catch (const SaveFailed& failure) {
        return failure.text;
    }
}

std::string saveEditsAs()
{
    const auto reader = openTsFile("a.ts", true);
    EditedFile edited(*reader, "a.ts");
    editTwoColumns(edited);
    try {
        edited.saveAs("x.ts", {});
        return {};
    } catch (const SaveFailed& failure) {
        return failure.text;
    }
}

// What the window says of a failed calculation, with the place of values that could not be put back.
std::string calculateColumn(bool undoes)
{
    auto file = openTsFile("a.ts", false);
    FormulaParser formula("x1*3+t");
    formula.SetSource(file.get(), 1, 1);
    formula.setTarget(file.get());
    if (formula.Compile() != 0 || formula.ErrorCode() != 0)
        return "no formula";
    CalculationReport report;
    const auto reopen = [&]() -> TSFILE& {
        file.reset();
        file = openTsFile("a.ts", false);
        return *file;
    };
    try {
        calculate(formula, {*file, 2, {100, 19'000}, 1'000'000'000, reopen}, {}, report);
        if (undoes)
            report.old.backup->restore(*file);
        return {};
    } catch (...) {
        const std::string kept =
            undoes && report.old.backup ? report.old.backup->path().string() : report.old.lost.string();
        return reasonOfFailure() + ' ' + kept;
    }
}

// A save into columns of a file, told with where the old values lie.
std::string saveColumns(const std::function<void(TSFILE& work, std::filesystem::path& kept)>& save)
{
    std::filesystem::path kept;
    try {
        const auto work = openTsFile("work.ts", true);
        save(*work, kept);
        return {};
    } catch (...) {
        return reasonOfFailure() + ' ' + kept.string();
    }
}

class Answers : public TsaQuestions
{
public:
    std::optional<int> askSamples(const std::string& /*tsaFile*/) override { return kSamples; }
    std::optional<int> askColumns(const std::string& /*tsaFile*/) override { return 3; }
    bool mayOverwrite(const std::string& /*file*/) override { return true; }
    bool isOpenForWriting(const std::string& /*file*/) override { return false; }
    void warn(const std::string& title, const std::string& text) override { told = title + ": " + text; }

    std::string told;
};

std::string importTsa()
{
    Answers answers;
    TsaImportReport report;
    const int outcome = importTsaText("t.tsa", answers, {}, report);
    if (outcome == 1 && !report.isLossless())
        return "values were lost";
    return outcome == 1 ? std::string() : "not imported: " + answers.told;
}

void exportTsa()
{
    TsaExportReport report;
    exportTsaText(*openTsFile("a.ts", true), "x.tsa", 1, kSamples, {}, report);
}

const FaultJobs kJobsWithoutWindows = {
    {"edit", [] { return saveEdits(false); }},
    {"edit-undo", [] { return saveEdits(true); }},
    {"save-as", saveEditsAs},
    {"formula", [] { return calculateColumn(false); }},
    {"formula-undo", [] { return calculateColumn(true); }},
    {"grow", [] { return rebuildTsFile("a.ts", kSamples + 500, 9, {}), std::string(); }},
    {"shrink", [] { return rebuildTsFile("a.ts", kSamples / 2, 2, {}), std::string(); }},
    {"copy", [] { return copyWholeFile(openTsFile("a.ts", true)->descriptor(), "x.ts", {}), std::string(); }},
    {"interval", [] { return saveInterval(PlotFile("a.ts"), 11, 2500, "x.ts", {}), std::string(); }},
    {"tsa-import", importTsa},
    {"tsa-export", [] { return exportTsa(), std::string(); }},
    {"stl-import",
     [] {
         STLObject log("l.stl");
         log.detect();
         log.check({});
         return importSTL(log, "x.ts", {}), std::string();
     }},
    {"scl-import",
     [] {
         SCLObject logs;
         logs.add("l.scl");
         logs.check({});
         return importSCL(logs, "x.ts", {}), std::string();
     }},
    {"filter-new", [] { return saveToNewFile(*openTsFile("work.ts", true), "x.ts", {}), std::string(); }},
    {"filter-columns",
     [] {
         return saveColumns([](TSFILE& work, std::filesystem::path& kept) {
             saveToColumns(work, "a.ts", {2, 3}, kSamples, {}, kept);
         });
     }},
    {"filter-added",
     [] { return saveToAddedColumn(*openTsFile("work.ts", true), "a.ts", kSamples, {}), std::string(); }},
    {"calculus-save",
     [] {
         return saveColumns([](TSFILE& work, std::filesystem::path& kept) {
             ColumnTarget target{openTsFile("a.ts", false), "a.ts"};
             saveResult(work, target, {}, kept);
         });
     }},
    {"restore",
     [] {
         restoreOldValues("scratch/veltrac-old-values_3.bin", *openTsFile("b.ts", false), {});
         return std::string();
     }},
};

}  // namespace

int main(int count, char** words)
{
    return runFaultJob(kJobsWithoutWindows, count > 1 ? words[1] : "");
}
