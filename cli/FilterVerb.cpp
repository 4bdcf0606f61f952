#include <cmath>

#include "cli/Options.h"
#include "cli/ResultTarget.h"
#include "cli/Verbs.h"
#include "core/NumberTexts.h"
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

constexpr int kButterworthLowPass = 5;

class FilterVerb : public Verb
{
public:
    const VerbWords& words() const override { return kFilterWords; }
    VerbTarget targetKind() const override { return m_target.kind(); }
    void addOptions(Options& options) override
    {
        std::vector<std::string> names;
        for (const FilterType& type : filterTypes()) {
            std::string name = type.entry;
            for (char& c : name)
                c = c == ' ' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            names.push_back(std::move(name));
        }
        options.choice("--type", m_request.type, names, "The filter (default: butterworth-lp)");
        options.count("--order", m_order, 1, "Of the filter (default: 1)");
        options.number("--freq", m_request.freq0, "HZ", "The frequency, or the lower one of a band");
        options.number("--freq2", m_request.freq1, "HZ", "The upper frequency of a band");
        options.number("--ripple", m_request.rippleDb, "DB", "Of a Chebyshev filter, below 0");
        options.count("--points", m_points, 1, "Of the moving average");
        options.flag("--zero-phase", m_zeroPhase, "Forward and back: no delay, and the gain squared");
        options.flag("--start-settled", m_settled, "Begins in the steady state of the first value");
        m_source.addTo(options);
        m_target.addTo(options);
    }
    void check(CommonOptions& common) override
    {
        m_target.check(common);
        if (m_request.isMovingAverage() && (m_zeroPhase || m_settled))
            throw UsageError("a moving average delays nothing and has no state to settle");
        m_request.pass = m_zeroPhase ? FilterPass::ZeroPhase
                         : m_settled ? FilterPass::Settled
                                     : FilterPass::FromZero;
        m_request.order = static_cast<int>(m_request.isMovingAverage() ? m_points : m_order);
        // What no sampling frequency can heal is wrong usage.
        if (const std::string complaint = filterComplaint(m_request, HUGE_VAL); !complaint.empty())
            throw UsageError(complaint);
    }
    void perform(VerbJob& job) override
    {
        const auto file = openTsFile(job.source.string(), true);
        const double rate = samplingFrequency(file->dt());
        if (const std::string complaint = filterComplaint(m_request, rate); !complaint.empty())
            throw JobError(complaint);
        const FidReports reports;
        FidFilterPtr filter;
        if (!m_request.isMovingAverage()) {
            filter = designFilter(m_request, rate);
            if (!filter)
                throw JobError(reports.text());
        }
        const std::string words = filterWords(m_request);
        const SampleRange range = m_source.places.rangeIn(*file, job.notes);
        const SourceColumn column(*file, m_source.columnIn(*file), range.first, range.last);
        FilterOutcome outcome;
        m_target.save(job, column, range.first, [&](TSFILE& work, const Progress& progress) {
            describeWork(column, work, words);
            outcome = filter ? runFilter(column, work, filter.get(), progress, m_request.pass)
                             : runMovingAverage(column, work, static_cast<std::uint32_t>(m_request.order),
                                                progress);
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
    FilterRequest m_request{kButterworthLowPass};
    std::uint32_t m_order = 1;
    std::uint32_t m_points = 1;
    bool m_zeroPhase = false;
    bool m_settled = false;
    SourceOptions m_source;
    ResultTarget m_target;
};

}  // namespace

std::unique_ptr<Verb> makeFilterVerb()
{
    return std::make_unique<FilterVerb>();
}

}  // namespace veltrac
