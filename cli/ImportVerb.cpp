#include <algorithm>
#include <array>

#include "cli/ImportOptions.h"
#include "cli/Options.h"
#include "cli/Verbs.h"
#include "converters/ImportKind.h"
#include "core/NumberTexts.h"

namespace veltrac {

namespace {

constexpr VerbWords kImportWords = {
    "import", "Make ts-files of texts and sounds",
    "Reads tsa texts, logs of many columns (STL: csv and whatever loggers write), single column logs (SCL) "
    "and sounds (WAV, FLAC and others), each told by its content, and makes a ts-file of each; single "
    "column logs with --together become columns of one. What is not understood is told on standard error; "
    "--report keeps all of it. Without -o the result goes into the working directory under the file's name.",
    "  veltrac-cli import -o ecg.ts --rate 360 --unit 1=mV ecg-mlii-360hz.txt\n"
    "  veltrac-cli import -o ts/ --order day-month --report report.txt logs/*.csv"};

enum class SourceKind { Tsa, Stl, Scl, Sound };

constexpr std::size_t kToldTroubles = 5;  // on standard error; the report has all

class ImportVerb : public Verb
{
public:
    const VerbWords& words() const override { return kImportWords; }
    bool hasDefaultTarget() const override { return !m_together; }
    VerbTarget targetKind() const override
    {
        if (m_together)
            return VerbTarget::OneFile;
        return m_checkOnly ? VerbTarget::Nowhere : VerbTarget::FileEach;
    }
    void addOptions(Options& options) override
    {
        options.choice("--as", m_as, {"tsa", "stl", "scl", "sound"},
                       "What the files are, instead of what their content tells");
        options.text("--report", m_report, "FILE", "Keeps all of what is told of the files");
        options.flag("--check", m_checkOnly, "Only read the files and tell what is not understood");
        options.flag("--together", m_together, "Single column logs become columns of one file");
        m_options.addTo(options);
    }
    void check(CommonOptions& common) override
    {
        common.report = m_report;
        m_options.check();
        if (m_together && m_checkOnly)
            throw UsageError("--check looks at each file alone, without --together");
    }
    void perform(VerbJob& job) override
    {
        const SourceKind kind = kindOf(job);
        static constexpr ImportTold (*kImports[])(const VerbJob&, const ImportOptions&) = {
            importTsaInto, importStlInto, importSclInto, importSoundInto};
        tell(job, kImports[static_cast<std::size_t>(kind)](job, m_options));
    }

private:
    SourceKind kindOf(const VerbJob& job) const
    {
        if (m_together)
            return SourceKind::Scl;
        if (m_as)
            return static_cast<SourceKind>(*m_as);
        switch (importKindOf(job.source)) {
            case ImportKind::Tsa:
                return SourceKind::Tsa;
            case ImportKind::Stl:
                return SourceKind::Stl;
            case ImportKind::Scl:
                return SourceKind::Scl;
            case ImportKind::None:
                break;
        }
        if (isSound(job.source))
            return SourceKind::Sound;
        STLObject(job.source).detect();  // it may know why
        throw JobError("nothing in it can be imported: it is no text with numbers and no sound");
    }

    static void tell(VerbJob& job, const ImportTold& told)
    {
        job.notes.push_back(told.summary);
        job.notes.insert(job.notes.end(), told.assumed.begin(), told.assumed.end());
        for (std::size_t i = 0; i < std::min(kToldTroubles, told.troubles.size()); ++i)
            job.notes.push_back(told.troubles[i]);
        if (told.troubles.size() > kToldTroubles)
            job.notes.push_back("and " + counted(told.troubleCount - kToldTroubles, "trouble") + " more");
        if (!job.common->report.empty()) {
            job.report = job.name + ": " + told.summary + '\n';
            for (const auto* const lines : {&told.assumed, &told.reading, &told.troubles})
                for (const std::string& line : *lines)
                    job.report += job.name + ": " + line + '\n';
            if (told.troubleCount > told.troubles.size() && told.troubles.size() > kToldTroubles)
                job.report += job.name + ": and " +
                              counted(told.troubleCount - told.troubles.size(), "trouble") + " more\n";
        }
        job.json["summary"] = told.summary;
        job.json["assumed"] = told.assumed;
        job.json["troubles"] = told.troubleCount;
    }

    std::optional<int> m_as;
    std::string m_report;
    bool m_checkOnly = false;
    bool m_together = false;
    ImportOptions m_options;
};

}  // namespace

std::unique_ptr<Verb> makeImportVerb()
{
    return std::make_unique<ImportVerb>();
}

}  // namespace veltrac
