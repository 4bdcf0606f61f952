#include "cli/CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <string_view>
#include <system_error>
#include <thread>

#include "cli/FileJob.h"
#include "cli/ManualPage.h"
#include "cli/Options.h"
#include "cli/ProgressLine.h"
#include "cli/StopSignals.h"
#include "cli/Verb.h"
#include "core/FailureText.h"
#include "core/SafeChange.h"

namespace veltrac {

namespace {

void writeOut(std::FILE* stream, const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stream);
}

// Throws std::system_error.
void writeWhole(const std::string& file, const std::string& text)
{
    PendingFile pending(file);
    std::ofstream out(pending.path(), std::ios::binary);
    out << text;
    out.close();
    if (!out)
        throw std::system_error(errno != 0 ? errno : EIO, std::generic_category());
    pending.commit();
}

void addCommonOptions(CLI::App& app, const Verb& verb, CommonOptions& common)
{
    const VerbTarget kind = verb.targetKind();
    app.add_option("files", common.files,
                   kind == VerbTarget::Stream ? "The file to record into"
                                              : "The files to work on; - is standard input")
        ->type_name("FILE");
    Options options(app);
    if (kind == VerbTarget::FileEach)
        options.text(
            "-o,--output", common.output, "FILE|DIR",
            "The file to make, or the directory for the results of many files; - is standard output");
    if (kind == VerbTarget::OneFile)
        options.text("-o,--output", common.output, "FILE", "The file to make; - is standard output");
    if (kind == VerbTarget::FileEach || kind == VerbTarget::OneFile) {
        options.flag("--force", common.force, "Replace a target that is there already");
        options.flag("--skip-done", common.skipDone,
                     "Pass over files whose target is there, whole and not older than the source");
    }
    if (kind != VerbTarget::Stream)
        options.count("--jobs", common.jobs, 1, "Files worked on at once (default: as many as cores)");
    options.flag("--quiet", common.quiet, "No progress line and no notes; errors are told all the same");
    options.flag("--json", common.json,
                 "Tell on standard output what was done: an object of JSON on a line for each file");
}

std::string footerOf(const VerbWords& words)
{
    return std::string("Example:\n") + words.example;
}

// Status of a whole run.
class Run
{
public:
    Run(Verb& verb, const CommonOptions& common)
        : m_verb(verb),
          m_common(common),
          m_files(planFiles(verb, common)),
          m_line(m_files.size(), common.quiet)
    {
    }

    int run()
    {
        noteStopSignals();
        const Progress progress = [this](std::uint64_t done, std::uint64_t total) {
            m_line.showShare(done, total);
            return !stopAsked();
        };
        const unsigned cores = std::max(1U, std::thread::hardware_concurrency());
        runTasks(
            m_files.size(), m_common.jobs == 0 ? cores : m_common.jobs,
            [&](std::size_t i) { return runFileJob(m_verb, m_common, m_files[i], progress); },
            [this](std::size_t i, const TaskOutcome& outcome) { take(m_files[i], outcome); },
            [this](std::size_t done) { m_line.showFiles(done); });
        m_line.clear();
        if (!m_common.report.empty())
            writeWhole(m_common.report, m_report);
        if (m_failed > 0 && m_files.size() > 1)
            std::fprintf(stderr, "%zu of %zu files failed\n", m_failed, m_files.size());
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
            std::fputs("standard output: it took no more\n", stderr);
            return kSomeFailed;
        }
        if (stopAsked() && m_verb.targetKind() != VerbTarget::Stream)
            endBySignal();
        return m_failed == 0 ? kAllDone : kSomeFailed;
    }

private:
    void take(const PlannedFile& file, const TaskOutcome& outcome)
    {
        if (outcome.state == TaskOutcome::State::Died) {
            take(file, failedFile(file.source, outcome.notes, m_common));
            return;
        }
        m_failed += outcome.state == TaskOutcome::State::Failed ? 1 : 0;
        if (!outcome.notes.empty())
            m_line.clear();
        m_report += outcome.report;
        writeOut(stdout, outcome.out);
        writeOut(stderr, outcome.notes);
    }

    Verb& m_verb;
    const CommonOptions& m_common;
    std::vector<PlannedFile> m_files;
    ProgressLine m_line;
    std::size_t m_failed = 0;
    std::string m_report;
};

int refuse(const std::string& text, const std::string& verb)
{
    std::fprintf(stderr, "veltrac-cli: %s\nTry: veltrac-cli %s--help\n", text.c_str(),
                 verb.empty() ? "" : (verb + ' ').c_str());
    return kWrongUsage;
}

}  // namespace

int runCommandLine(int count, char** words)
{
    CLI::App app("Imports, computes, plots and exports time series, on one file or on many", "veltrac-cli");
    app.set_version_flag("--version", "veltrac-cli " VELTRAC_VERSION);
    app.require_subcommand(0, 1);
    app.footer("veltrac-cli VERB --help tells the options of a verb, with an example.");
    std::string page;
    app.add_option("--write", page)->group("");  // for the build: manual page or completion

    const auto verbs = allVerbs();
    CommonOptions common;
    const std::vector<std::string_view> typed(words, words + count);
    const auto isGiven = [&](std::string_view word) {
        return std::any_of(typed.begin(), typed.end(),
                           [&](std::string_view one) { return one.starts_with(word); });
    };
    const bool needsAll = isGiven("--write");
    for (const auto& verb : verbs) {
        CLI::App* const sub = app.add_subcommand(verb->words().name, verb->words().summary);
        // A verb that nobody names needs none of its many words.
        if (!needsAll && !isGiven(verb->words().name))
            continue;
        sub->footer(footerOf(verb->words()));
        addCommonOptions(*sub, *verb, common);
        Options options(*sub);
        verb->addOptions(options);
    }
    Verb* chosen = nullptr;
    try {
        app.parse(count, words);
        for (const auto& verb : verbs)
            if (app.got_subcommand(verb->words().name))
                chosen = verb.get();
        if (!page.empty()) {
            writeOut(stdout, writtenPage(page, app, verbs));
            return kAllDone;
        }
        if (chosen == nullptr)
            throw UsageError("no verb is given");
        chosen->check(common);
        return Run(*chosen, common).run();
    } catch (const CLI::Success& success) {
        return app.exit(success);
    } catch (const CLI::ParseError& error) {
        const auto given = app.get_subcommands();
        return refuse(error.what(), given.empty() ? "" : given.front()->get_name());
    } catch (const UsageError& error) {
        return refuse(error.what(), chosen == nullptr ? "" : chosen->words().name);
    } catch (const std::exception&) {
        std::fprintf(stderr, "veltrac-cli: %s\n", reasonOfFailure().c_str());
        return kSomeFailed;
    }
}

}  // namespace veltrac
