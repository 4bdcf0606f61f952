#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "cli/FileWords.h"
#include "cli/Options.h"
#include "cli/Verbs.h"
#include "converters/ColumnTexts.h"
#include "core/ColumnCopy.h"
#include "core/ColumnNames.h"
#include "core/FileTime.h"
#include "core/PlotFile.h"
#include "core/Rebuild.h"
#include "core/SafeChange.h"
#include "core/SourceColumn.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"

namespace veltrac {

namespace {

constexpr VerbWords kJoinWords = {
    "join", "Bring columns of several files into one",
    "Makes one ts-file of columns of several files of equal sample time, lined up on their clocks, or with "
    "--align first on their first samples. Where a file has no sample the value is missing.",
    "  veltrac-cli join -o all.ts left.ts right.ts\n"
    "  veltrac-cli join --align first --columns 1 -o runs.ts run1.ts run2.ts run3.ts"};

constexpr double kSameStep = 1e-6;
constexpr double kOnGrid = 0.01;  // of a step

class JoinVerb : public Verb
{
public:
    const VerbWords& words() const override { return kJoinWords; }
    VerbTarget targetKind() const override { return VerbTarget::OneFile; }
    void addOptions(Options& options) override
    {
        options.choice("--align", m_align, {"clock", "first"}, "What is lined up (default: clock)");
        options.texts("--columns", m_columns, "COLUMN,...",
                      "Of each file, by name, number or range, 3-8 (default: all)");
        options.text("--description", m_description, "TEXT", "Of the new file (default: that of the first)");
    }
    void perform(VerbJob& job) override
    {
        std::vector<Part> parts;
        for (const std::filesystem::path& source : job.sources)
            parts.push_back(openPart(source));
        lineUp(job, parts);
        std::uint64_t samples = 0;
        std::uint32_t columns = 0;
        for (const Part& part : parts) {
            samples = std::max(samples, part.offset + FileTime(*part.file).rows());
            columns += static_cast<std::uint32_t>(part.columns.size());
        }
        requireFits(samples, columns);
        PendingFile pending(job.target, ".veltrac-new", ".ts");
        {
            const auto made =
                createTsFile(pending.path().string(), static_cast<std::uint32_t>(samples), columns);
            fill(job, parts, *made);
            made->flush(true);
        }
        pending.commit();
        job.json["samples"] = samples;
        job.json["columns"] = columns;
    }

private:
    struct Part
    {
        std::string name{};
        std::unique_ptr<TSFILE> file{};
        std::vector<std::uint32_t> columns{};
        std::uint64_t offset = 0;  // samples before its first one
    };

    Part openPart(const std::filesystem::path& source) const
    {
        Part part{source.string(), openTsFile(source.string(), true)};
        const auto refuse = [&](const std::string& why) { throw JobError(part.name + ": " + why); };
        if (const std::string words = cutShortText(PlotFile(source.string())); !words.empty())
            refuse(words);
        if (!(part.file->dt() > 0.0F) || !std::isfinite(part.file->dt()))
            refuse("its sample time is not above 0");
        if (part.file->timeColumn() != 0)
            refuse("it has times of its own (\"Time\"); files of equal steps are joined");
        if (FileTime(*part.file).rows() == 0)
            refuse("it has no samples");
        try {
            part.columns = columnsMeant(*part.file, m_columns);
        } catch (const JobError& error) {
            refuse(error.what());
        }
        for (std::uint32_t c = 1; c <= part.file->columns() && m_columns.empty(); ++c)
            part.columns.push_back(c);
        return part;
    }

    void lineUp(VerbJob& job, std::vector<Part>& parts) const
    {
        TSFILE& first = *parts.front().file;
        const double step = stepOf(first);
        double earliest = HUGE_VAL;
        for (const Part& part : parts) {
            if (std::fabs(stepOf(*part.file) - step) > kSameStep * step)
                throw JobError(part.name + ": its sample time is " + stepText(*part.file) + ", that of " +
                               parts.front().name + " " + stepText(first));
            earliest = std::min(earliest, beginOf(part));
        }
        for (Part& part : parts) {
            if (m_align != 0)
                continue;
            const double behind = (beginOf(part) - earliest) / step;
            if (behind > UINT32_MAX)
                throw JobError(part.name +
                               ": it begins too long behind the others (--align first lines up the "
                               "first samples)");
            part.offset = static_cast<std::uint64_t>(std::llround(behind));
            if (std::fabs(behind - std::round(behind)) > kOnGrid)
                job.notes.push_back(part.name + " lies " +
                                    numberText(std::round(1000.0 * (behind - std::round(behind))) / 1000.0) +
                                    " samples off the others: taken at the nearest");
        }
    }

    // From sample to sample, in seconds.
    static double stepOf(TSFILE& file)
    {
        return static_cast<double>(file.dt()) * FileTime(file).unitSeconds();
    }
    static std::string stepText(TSFILE& file) { return numberText(file.dt()) + ' ' + FileTime(file).unit(); }

    static double beginOf(const Part& part)
    {
        const FileTime time(*part.file);
        return time.moment(time.firstSample());
    }

    void fill(const VerbJob& job, const std::vector<Part>& parts, TSFILE& made) const
    {
        const auto leader = std::min_element(
            parts.begin(), parts.end(), [](const Part& a, const Part& b) { return a.offset < b.offset; });
        copyHeaderFromOldest(*leader->file, made);
        made.description(m_description.empty() ? std::string(parts.front().file->description()).c_str()
                                               : m_description.c_str());
        std::vector<std::string> taken;
        std::uint32_t column = 0;
        for (const Part& part : parts) {
            for (const std::uint32_t from : part.columns) {
                ++column;
                copyColumnInfo(*part.file, from, made, column);
                taken.push_back(columnNameApart(part.file->columnName(from), taken));
                made.columnName(column, taken.back().c_str());
                copyLinedUp(job, part, from, made, column);
            }
        }
    }

    static void copyLinedUp(const VerbJob& job, const Part& part, std::uint32_t from, TSFILE& made,
                            std::uint32_t to)
    {
        const SourceColumn source(*part.file, from);
        const Progress progress = partOf(job.progress, 100 * std::uint64_t{to - 1} / made.columns(),
                                         100 * std::uint64_t{to} / made.columns());
        requireDone(walkRuns(made.samples(), progress, [&](std::uint32_t first, std::span<float> run) {
            std::fill(run.begin(), run.end(), std::numeric_limits<float>::quiet_NaN());
            const std::uint64_t begin = std::max<std::uint64_t>(first, part.offset + 1);
            const std::uint64_t end =
                std::min<std::uint64_t>(first + run.size(), part.offset + source.samples() + 1);
            if (begin < end)
                source.read(static_cast<std::uint32_t>(begin - part.offset),
                            run.subspan(begin - first, end - begin));
            made.writeColumn(to, first, run);
        }));
    }

    int m_align = 0;
    std::vector<std::string> m_columns;
    std::string m_description;
};

}  // namespace

std::unique_ptr<Verb> makeJoinVerb()
{
    return std::make_unique<JoinVerb>();
}

}  // namespace veltrac
