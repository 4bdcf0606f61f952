#include <algorithm>
#include <array>
#include <ctime>
#include <utility>
#include <vector>

#include "cli/FileWords.h"
#include "cli/Options.h"
#include "cli/ResultTarget.h"
#include "cli/Verbs.h"
#include "core/ColumnNames.h"
#include "core/FileTime.h"
#include "core/HeaderTexts.h"
#include "core/NumberTexts.h"
#include "core/PlotFile.h"
#include "core/Rebuild.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "formula/Calculation.h"
#include "formula/FormulaFile.h"

namespace veltrac {

namespace {

constexpr VerbWords kFormulaWords = {
    "formula", "Compute a column from a formula",
    "Computes a formula such as \"sqrt(x1^2+x2^2)\" for each sample. x1 to x8 are columns 1 to 8 of the "
    "file, unless --x2 COLUMN or --x2 FILE:COLUMN says otherwise; t is the time in seconds. A new file is "
    "a copy of the source with the result as its last column.",
    "  veltrac-cli formula --formula \"x2-x3\" --name range --new-column weather.ts\n"
    "  veltrac-cli formula --formula \"x1-x2\" --x2 filtered.ts:2 -o rest.ts ecg.ts"};

class FormulaVerb : public Verb
{
public:
    const VerbWords& words() const override { return kFormulaWords; }
    VerbTarget targetKind() const override { return m_target.kind(); }
    void addOptions(Options& options) override
    {
        options.text("--formula", m_formula, "TEXT", "The right-hand side");
        options.text("--formula-file", m_formulaFile, "FILE", "A formula file of the window");
        for (std::size_t k = 0; k < m_sources.size(); ++k) {
            m_optionNames[k] = "--x" + std::to_string(k + 1);
            options.text(m_optionNames[k].c_str(), m_sources[k], "[FILE:]COLUMN",
                         k == 0 ? "What x1 is, and so on to x8" : "Likewise");
        }
        m_places.addTo(options);
        options.text("--name", m_name, "TEXT", "Of the new column");
        options.text("--unit", m_unit, "TEXT", "Of the new column");
        m_target.addTo(options);
    }
    void check(CommonOptions& common) override
    {
        m_target.check(common);
        if (m_formula.empty() == m_formulaFile.empty())
            throw UsageError("--formula TEXT or --formula-file FILE is needed");
        if (!m_formulaFile.empty()) {
            const auto read = readFormulaFile(m_formulaFile);
            if (!read)
                throw UsageError(m_formulaFile + " holds no formula");
            m_formula = *read;
        }
        if (m_formula.size() > kFormulaBytes)
            throw UsageError("a formula has at most 255 bytes");
    }
    void perform(VerbJob& job) override
    {
        if (!m_target.inPlace().empty()) {
            computeInPlace(job);
            return;
        }
        std::uint32_t samples = 0;
        std::uint32_t column = 0;
        {
            const auto file = openTsFile(job.source.string(), true);
            requireNoRing(*file);
            samples = file->samples();
            column = file->columns() + 1;
        }
        const auto fill = [&](TSFILE& made) {
            nameResult(made, column);
            // A file that is being made keeps nothing: what went wrong is told.
            compute(job, made, column, []() -> TSFILE& { throw; });
            return JobOutcome::Done;
        };
        const std::filesystem::path& target = m_target.makesColumn() ? job.source : job.target;
        requireDone(rebuildTsFileAs(job.source, target, samples, column, job.progress, fill));
    }

private:
    void nameResult(TSFILE& made, std::uint32_t column) const
    {
        std::vector<std::string> taken;
        taken.reserve(column);
        for (std::uint32_t c = 1; c < column; ++c)
            taken.emplace_back(made.columnName(c));
        made.columnName(column, columnNameApart(m_name.empty() ? "Formula" : m_name, taken).c_str());
        made.columnDescription(column, fittingDescription(m_formula, m_unit).c_str());
    }

    void computeInPlace(VerbJob& job) const
    {
        const std::string source = job.source.string();
        std::unique_ptr<TSFILE> file = openTsFile(source, false);
        compute(job, *file, columnMeant(*file, m_target.inPlace()), [&]() -> TSFILE& {
            file.reset();
            file = openTsFile(source, false);
            return *file;
        });
        file->flush(true);
    }

    // A source of another file stays open as long as the formula is used.
    struct Bound
    {
        std::unique_ptr<TSFILE> file;
        TSFILE* used = nullptr;
        std::uint32_t column = 0;
    };
    Bound bind(TSFILE& target, std::size_t k, const std::string& own, std::uint32_t ownColumns) const
    {
        Bound bound;
        std::string column = m_sources[k];
        const std::size_t colon = column.rfind(':');
        if (colon != std::string::npos) {
            const std::string name = column.substr(0, colon);
            column.erase(0, colon + 1);
            std::error_code none;
            if (!std::filesystem::equivalent(name, own, none)) {
                try {
                    bound.file = openTsFile(name, true);
                } catch (const TS::Failure&) {
                    throw JobError("x" + std::to_string(k + 1) + ": " + name + " cannot be opened");
                }
                if (const std::string words = cutShortText(PlotFile(name)); !words.empty())
                    throw JobError("x" + std::to_string(k + 1) + ": " + name + ": " + words);
            }
        }
        bound.used = bound.file ? bound.file.get() : &target;
        if (!column.empty())
            bound.column = columnMeant(*bound.used, column);
        else if (k < (bound.file ? bound.file->columns() : ownColumns))
            bound.column = static_cast<std::uint32_t>(k + 1);
        return bound;
    }

    void compute(VerbJob& job, TSFILE& target, std::uint32_t column,
                 const std::function<TSFILE&()>& reopen) const
    {
        // A column that is being added is none of the file's.
        const std::uint32_t ownColumns = m_target.inPlace().empty() ? column - 1 : target.columns();
        const auto used = usedRows(m_formula, kMostSources, 0);
        FormulaParser parser(m_formula.c_str());
        parser.setTarget(&target);
        std::array<Bound, kMostSources> sources;
        std::vector<TimeBounds> bounds{timesOf(target)};
        std::vector<std::pair<int, TSFILE*>> others;
        for (std::size_t k = 0; k < used.size(); ++k) {
            if (!used[k])
                continue;
            sources[k] = bind(target, k, job.source.string(), ownColumns);
            if (sources[k].column == 0)
                throw JobError("x" + std::to_string(k + 1) + ": the file has only " +
                               counted(ownColumns, "column"));
            parser.SetSource(sources[k].used, static_cast<std::int32_t>(sources[k].column),
                             static_cast<int>(k + 1));
            bounds.push_back(timesOf(*sources[k].used));
            others.emplace_back(static_cast<int>(k + 1), sources[k].used);
        }
        parser.Compile();
        if (parser.ErrorCode() != 0)
            throw JobError(errorText(parser.ErrorCode(), parser.errorPosition()));
        const CalculationRange range = rangeOf(job, target, bounds);
        if (const std::string words = clockDifferences(others, target); !words.empty())
            job.notes.push_back(words);
        CalculationReport report;
        try {
            requireDone(
                calculate(parser, {target, column, range, std::time(nullptr), reopen}, job.progress, report));
        } catch (const Interrupted&) {
            throw;
        } catch (...) {
            // A file that is being made goes anyway, and what was in it.
            std::error_code none;
            if (m_target.inPlace().empty())
                std::filesystem::remove(report.old.lost, none);
            else if (!report.old.lost.empty())
                throwLostValues(report.old.lost);
            throw;
        }
        job.json["samples"] = range.count();
        job.json["errors"] = report.faultySamples;
        job.json["missing"] = report.missing;
        for (const std::string& reading : parser.readings())
            job.notes.push_back(reading);
        if (report.faultySamples > 0)
            job.notes.push_back(counted(report.faultySamples, "sample") + " with an error and the value 0");
        if (report.missing > 0)
            job.notes.push_back(counted(report.missing, "missing value"));
    }

    CalculationRange rangeOf(VerbJob& job, TSFILE& target, const std::vector<TimeBounds>& bounds) const
    {
        requireSampleTime(target);
        CalculationRange range = calculationRange(bounds, target);
        if (range.isEmpty())
            throw JobError("nothing to compute: the sources' times leave nothing of the file");
        const FileTime time(target);
        CalculationRange asked{time.firstSample(), time.lastSample()};
        if (!m_places.isWhole()) {
            const SampleRange chosen = m_places.rangeIn(target, job.notes);
            asked = {asked.first + chosen.first - 1, asked.first + chosen.last - 1};
        }
        range = {std::max(range.first, asked.first), std::min(range.last, asked.last)};
        if (range.isEmpty())
            throw JobError("nothing to compute: the sources' times leave nothing of the range");
        if (range.count() < asked.count())
            job.notes.push_back(groupedDigits(range.count()) + " of " + counted(asked.count(), "sample") +
                                " computed: the sources hold no others");
        return range;
    }

    std::string m_formula;
    std::string m_formulaFile;
    std::array<std::string, kMostSources> m_sources;
    std::array<std::string, kMostSources> m_optionNames;
    std::string m_name;
    std::string m_unit;
    PlaceOptions m_places;
    ResultTarget m_target;
};

}  // namespace

std::unique_ptr<Verb> makeFormulaVerb()
{
    return std::make_unique<FormulaVerb>();
}

}  // namespace veltrac
