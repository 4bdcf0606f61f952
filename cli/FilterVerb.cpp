#include "cli/FileWords.h"
#include "cli/FilterOptions.h"
#include "cli/Options.h"
#include "cli/ResultTarget.h"
#include "cli/Verbs.h"
#include "core/NumberTexts.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "filter/FilterRun.h"

namespace veltrac {

namespace {

constexpr VerbWords kFilterWords = {
    "filter", "Filter a column",
    "Sends a column through a filter, or takes its moving average; the types are those of the filter "
    "window. A new file has two columns, the input and the output.",
    "  veltrac-cli filter --type butterworth-bp --order 2 --freq 5 --freq2 25 -o beats.ts ecg.ts\n"
    "  veltrac-cli filter --type moving-average --points 7 --column temp_max --new-column weather.ts"};

class FilterVerb : public Verb
{
public:
    const VerbWords& words() const override { return kFilterWords; }
    VerbTarget targetKind() const override { return m_target.kind(); }
    void addOptions(Options& options) override
    {
        m_filter.addTo(options);
        m_source.addTo(options);
        m_target.addTo(options);
    }
    void check(CommonOptions& common) override
    {
        m_target.check(common);
        m_filter.check();
    }
    void perform(VerbJob& job) override
    {
        const auto file = openTsFile(job.source.string(), true);
        const FilterRequest& request = m_filter.request;
        const FidReports reports;
        const FidFilterPtr filter = m_filter.designed(samplingFrequency(file->dt()), reports);
        const std::string words = filterWords(request);
        const SampleRange range = m_source.places.rangeIn(*file, job.notes);
        noteFrequencyUnit(*file, job.notes);
        const SourceColumn column(*file, m_source.columnIn(*file), range.first, range.last);
        FilterOutcome outcome;
        m_target.save(job, column, range.first, [&](TSFILE& work, const Progress& progress) {
            describeWork(column, work, words);
            outcome =
                filter ? runFilter(column, work, filter.get(), progress, request.pass)
                       : runMovingAverage(column, work, static_cast<std::uint32_t>(request.order), progress);
            return outcome.outcome;
        });
        job.json["filter"] = words;
        job.json["missing"] = outcome.missing;
        if (outcome.missing > 0)
            job.notes.push_back(counted(outcome.missing, "missing value"));
        if (file->timeMode() != 0)
            job.notes.emplace_back("taken at equal steps: the file's own times (\"Time\") are not used");
        if (const std::string text = reports.text(); !text.empty())
            job.notes.push_back(text);
    }

private:
    FilterOptions m_filter;
    SourceOptions m_source;
    ResultTarget m_target;
};

}  // namespace

std::unique_ptr<Verb> makeFilterVerb()
{
    return std::make_unique<FilterVerb>();
}

}  // namespace veltrac
