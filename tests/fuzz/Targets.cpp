// Hostile bytes for everything that reads bytes of strangers. Any outcome is right but a crash, an endless
// loop, memory that has nothing to do with the input, and an exception of no kind that a window or a verb
// tells.
//
// The first line of an input names its target, so that one corpus and one program serve all; tools/fuzz runs
// one after the other.

#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "cli/CommandLine.h"
#include "cli/ImportOptions.h"
#include "converters/Recording.h"
#include "converters/SCLObject.h"
#include "converters/STLFormat.h"
#include "converters/STLObject.h"
#include "converters/TsaExport.h"
#include "converters/TsaImport.h"
#include "core/ColumnBackup.h"
#include "core/ColumnScan.h"
#include "core/ErrorReport.h"
#include "core/FileTime.h"
#include "core/Interval.h"
#include "core/Rebuild.h"
#include "core/RingFile.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "filter/fid.h"
#include "formula/FormulaParser.h"
#include "share/PostscriptDriver.h"
#include "share/SvgDriver.h"

namespace fs = std::filesystem;
using namespace veltrac;

namespace {

constexpr std::uint32_t kMostSamples = 100'000;  // of what is made: an input may ask for a file of 2 GB

// A directory in TMPDIR, else in memory: the working directory of all targets.
const fs::path& fuzzDirectory()
{
    static const fs::path directory = [] {
        const fs::path memory = "/dev/shm";
        const bool isFree = std::getenv("TMPDIR") == nullptr && fs::is_directory(memory);
        std::string pattern =
            ((isFree ? memory : fs::temp_directory_path()) / "veltrac-fuzz-XXXXXX").string();
        fs::path made = ::mkdtemp(pattern.data());
        fs::current_path(made);
        ::setenv("TMPDIR", made.c_str(), 1);
        ::dup2(::open("/dev/null", O_RDONLY), 0);  // a verb may read standard input
        std::atexit([] {
            std::error_code ignored;
            fs::remove_all(fuzzDirectory(), ignored);
        });
        return made;
    }();
    return directory;
}

void writeInput(const char* name, std::string_view bytes)
{
    const int file = ::open(name, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (::write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("no room for the input");
    ::close(file);
}

void readTsFile(std::string_view bytes)
{
    writeInput("in.ts", bytes);
    const auto file = openTsFile("in.ts", true);
    for (std::uint32_t column = 1; column <= std::min(file->columns(), 20U); ++column) {
        file->columnName(column);
        file->columnDescription(column);
        file->columnTime(column);
    }
    const FileTime time(*file);
    time.elapsed(1);
    file->findSample(3.0);
    if (file->samples() > kMostSamples || file->columns() > 2000)
        return;
    ColumnExtremes extremes;
    scanColumn(columnReader(*file, 1), file->samples(), {}, extremes);
    TsaExportReport report;
    exportTsaText(*file, "out.tsa", 1, std::min(file->samples(), 100U), {}, report);
    const PlotFile plot("in.ts");
    if (plot.rows() > 2)
        saveInterval(plot, 2, plot.rows(), "out.ts", {});
    rebuildTsFile("in.ts", file->samples() / 2 + 7, file->columns() % 30 + 1, {});
}

class NoAnswers : public TsaQuestions
{
public:
    std::optional<int> askSamples(const std::string& /*tsaFile*/) override { return 50; }
    std::optional<int> askColumns(const std::string& /*tsaFile*/) override { return 3; }
    bool mayOverwrite(const std::string& /*file*/) override { return true; }
    bool isOpenForWriting(const std::string& /*file*/) override { return false; }
    void warn(const std::string& /*title*/, const std::string& /*text*/) override {}
};

// Counts that a text may claim are those of a file of 2 GB: such an import is cancelled.
bool isShort(std::uint64_t /*done*/, std::uint64_t of)
{
    return of < 50'000'000;
}

void importTsa(std::string_view bytes)
{
    writeInput("in.tsa", bytes);
    NoAnswers answers;
    TsaImportReport report;
    importTsaText("in.tsa", answers, isShort, report);
}

void importStl(std::string_view bytes)
{
    writeInput("in.stl", bytes);
    STLObject log("in.stl");
    log.detect();
    log.check({});
    if (log.found().target.samples <= kMostSamples)
        importSTL(log, "out.ts", {});
}

void importScl(std::string_view bytes)
{
    writeInput("in.scl", bytes);
    SCLObject logs;
    logs.add("in.scl");
    logs.check({});
    if (logs.result().target.samples <= kMostSamples)
        importSCL(logs, "out.ts", {});
}

void importSound(std::string_view bytes)
{
    writeInput("in.wav", bytes);
    if (!isSound("in.wav"))
        return;
    VerbJob job;
    job.source = "in.wav";
    job.target = "out.ts";
    importSoundInto(job, {});
}

void runFormula(std::string_view bytes)
{
    static const auto source = [] {
        auto file = createTsFile("source.ts", 100, 2);
        for (std::uint32_t s = 1; s <= 100; ++s)
            file->setValue(s, 2, static_cast<float>(s * 3 % 17));
        return file;
    }();
    const std::string formula(bytes.substr(0, bytes.find('\0')));
    FormulaParser parser(formula.c_str());
    parser.SetSource(source.get(), 2, 1);
    if (parser.Compile() != 0 || parser.ErrorCode() != 0)
        return;
    std::int32_t sample = 1;
    for (const double t : {0.0, 1.5, -3.0, 1e300, std::nan("")})
        parser.Evaluate(sample++, t);
}

void designFilter(std::string_view bytes)
{
    const std::string spec(bytes.substr(0, std::min<std::size_t>(bytes.find('\0'), 300)));
    FidFilter* const filter = fid_design(spec.c_str(), 1000.0, 40.0, 90.0, bytes.size() % 2, nullptr);
    if (filter == nullptr)
        return;
    FidFunc* step = nullptr;
    void* const run = fid_run_new(filter, &step);
    fid_response(filter, 0.1);
    if (run != nullptr) {
        void* const buffer = fid_run_newbuf(run);
        for (int i = 0; i < 50; ++i)
            step(buffer, i % 7);
        fid_run_freebuf(buffer);
        fid_run_free(run);
    }
    std::free(filter);
}

// Words of veltrac-cli, one a line, in a directory with a log and a dated ts-file of two columns. What makes
// or asks for much is left to the other targets.
void runVerb(std::string_view bytes)
{
    std::vector<std::string> words = {"veltrac-cli"};
    for (std::size_t at = 0; at < bytes.size() && words.size() < 40;) {
        const std::size_t end = std::min(bytes.find('\n', at), bytes.size());
        words.emplace_back(bytes.substr(at, end - at));
        words.back().erase(std::min(words.back().find('\0'), words.back().size()));
        at = end + 1;
        // Only files of the directory: an input may name any of this machine.
        if (words.back().find('/') != std::string::npos)
            return;
    }
    static const std::string tsFile = [] {
        {
            const auto file = createTsFile("x.ts", 600, 2);
            file->dt(0.01F);
            file->setStart(1'477'785'600, 0.0F);
            for (std::uint32_t s = 1; s <= 600; ++s)
                for (std::uint32_t column = 1; column <= 2; ++column)
                    file->setValue(s, column, static_cast<float>(s * 5 % 13 * column));
        }
        std::ifstream made("x.ts", std::ios::binary);
        return std::string(std::istreambuf_iterator(made), {});
    }();
    fs::create_directory("verb");
    fs::current_path("verb");
    writeInput("x.ts", tsFile);
    writeInput("a.stl", "time;force [N]\n0;1\n1;2\n2;4\n");
    std::vector<char*> arguments;
    arguments.reserve(words.size());
    for (std::string& word : words)
        arguments.push_back(word.data());
    runCommandLine(static_cast<int>(arguments.size()), arguments.data());
    // What was made would keep the next one from being made.
    fs::current_path("..");
    fs::remove_all("verb");
}

// What comes into a recorder: a sign of how, one of the pieces' length, and where the file is there already
// its first blocks.
void recordRows(std::string_view bytes)
{
    if (bytes.size() < 2)
        return;
    const auto how = static_cast<unsigned char>(bytes[0]);
    const std::size_t piece = 1U + 7U * static_cast<unsigned char>(bytes[1]);
    bytes.remove_prefix(2);
    RecordPlan plan;
    plan.file = "ring.ts";
    plan.shape.samples = 50;
    plan.shape.columns = {{"a", "a [V]"}, {"b", ""}};
    plan.shape.dt = 0.5F;
    plan.frames = how % 2 != 0;
    plan.time = static_cast<RecordTime>(how / 2 % 3);
    plan.givesTime = how / 2 % 4 != 3;
    plan.text.cells = {how / 8U % 4, 0};
    plan.fillsGap = how % 64 < 32;
    std::error_code none;
    fs::remove(plan.file, none);
    if (how >= 128) {
        constexpr std::size_t kHead = 1536;  // a header, a block of columns, a block of rows
        writeInput("ring.ts", bytes.substr(0, kHead));
        bytes.remove_prefix(std::min(kHead, bytes.size()));
    }
    Recording recording(plan);
    for (std::size_t at = 0; at < bytes.size(); at += piece)
        recording.feed(bytes.substr(at, piece));
    recording.finish(how % 128 < 64);
    unfoldRing(plan.file, "out.ts", {});
}

// Draws without the pending file around it: what that does has no part in what a text can do.
void drawText(std::string_view bytes)
{
    const std::string text(bytes);
    PsParameters parameters = {};
    const auto draw = [&](auto&& driver) {
        driver.BeginPage(0);
        driver.DrawStamp(1, text.c_str());
        driver.Text(text.c_str(), static_cast<int>(text.size()), 30.0F, 0);
        driver.Label(text.c_str(), static_cast<int>(text.size()) / 2);
        driver.EndPage();
        driver.finish();
    };
    draw(PostscriptDriver("out.eps", &parameters));
    draw(SvgDriver("out.svg", parameters));
}

void bringBack(std::string_view bytes)
{
    writeInput("old.bin", bytes);
    const auto file = createTsFile("target.ts", 100, 3);
    restoreOldValues("old.bin", *file, {});
}

const std::map<std::string_view, std::function<void(std::string_view)>> kTargets = {
    {"ts", readTsFile},        {"tsa", importTsa},       {"stl", importStl},     {"scl", importScl},
    {"formula", runFormula},   {"filter", designFilter}, {"cli", runVerb},       {"text", drawText},
    {"old-values", bringBack}, {"record", recordRows},   {"sound", importSound},
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzzDirectory();
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t end = input.find('\n');
    const auto target = end == std::string_view::npos ? kTargets.end() : kTargets.find(input.substr(0, end));
    if (target == kTargets.end())
        return -1;  // not worth keeping
    try {
        target->second(input.substr(end + 1));
    } catch (const TS::Failure&) {
    } catch (const STLError&) {
    } catch (const std::system_error&) {
    } catch (const std::runtime_error&) {
    } catch (const std::out_of_range&) {
    } catch (const std::bad_alloc&) {
        std::abort();  // counts are held against the file before memory is taken for them
    }
    return 0;
}
