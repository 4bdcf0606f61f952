// derivative and integral.

#include "calc/Calculus.h"
#include "cli/Options.h"
#include "cli/ResultTarget.h"
#include "cli/Verbs.h"
#include "core/ColumnCopy.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"

namespace veltrac {

namespace {

struct CalculusVerbKind
{
    VerbWords words;
    const CalculusNames& names;
    JobOutcome (*compute)(const SourceColumn&, TSFILE&, Steps, const Progress&);
};

const CalculusVerbKind kDerivativeKind = {{"derivative", "Differentiate a column",
                                           "Forward differences of a column over the sample time, or over "
                                           "the file's own times with --own-times. A new "
                                           "file has two columns, the source and the result.",
                                           "  veltrac-cli derivative --column MLII -o slope.ts ecg.ts"},
                                          kDerivativeNames,
                                          differentiate};

const CalculusVerbKind kIntegralKind = {
    {"integral", "Integrate a column",
     "The integral of a column from its first sample on, by the trapezoidal rule. A new file has two "
     "columns, the source and the result. Behind a missing value the integral is missing.",
     "  veltrac-cli integral --column wind --new-column weather.ts"},
    kIntegralNames,
    integrate};

class CalculusVerb : public Verb
{
public:
    explicit CalculusVerb(const CalculusVerbKind& kind) : m_kind(kind) {}

    const VerbWords& words() const override { return m_kind.words; }
    VerbTarget targetKind() const override { return m_target.kind(); }
    void addOptions(Options& options) override
    {
        m_source.addTo(options);
        options.flag("--own-times", m_ownTimes, "Steps are those of the file's column \"Time\"");
        m_target.addTo(options);
    }
    void check(CommonOptions& common) override { m_target.check(common); }
    void perform(VerbJob& job) override
    {
        const auto file = openTsFile(job.source.string(), true);
        requireSampleTime(*file);
        if (m_ownTimes && file->timeColumn() == 0)
            throw JobError("it has no column \"Time\"");
        const SampleRange range = m_source.places.rangeIn(*file, job.notes);
        const SourceColumn column(*file, m_source.columnIn(*file), range.first, range.last);
        if (!m_ownTimes && file->timeColumn() != 0)
            job.notes.emplace_back("taken at equal steps: the file's own times (\"Time\") are not used");
        m_target.save(job, column, range.first, [&](TSFILE& work, const Progress& progress) {
            const CalculusNames& names = m_kind.names;
            if (takeSource(column, work, names.column, names.text, names.unit, partOf(progress, 0, 50)) ==
                    JobOutcome::Cancelled ||
                m_kind.compute(column, work, m_ownTimes ? Steps::Own : Steps::Equal,
                               partOf(progress, 50, 100)) == JobOutcome::Cancelled)
                return JobOutcome::Cancelled;
            work.stampColumn(2);
            return JobOutcome::Done;
        });
    }

private:
    const CalculusVerbKind& m_kind;
    SourceOptions m_source;
    ResultTarget m_target;
    bool m_ownTimes = false;
};

}  // namespace

std::unique_ptr<Verb> makeDerivativeVerb()
{
    return std::make_unique<CalculusVerb>(kDerivativeKind);
}

std::unique_ptr<Verb> makeIntegralVerb()
{
    return std::make_unique<CalculusVerb>(kIntegralKind);
}

}  // namespace veltrac
