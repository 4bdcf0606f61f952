#include <algorithm>
#include <cmath>

#include "cli/FileWords.h"
#include "cli/Options.h"
#include "cli/TableExport.h"
#include "cli/Verbs.h"
#include "converters/TsaExport.h"
#include "core/NumberTexts.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"

namespace veltrac {

namespace {

constexpr VerbWords kExportWords = {
    "export", "Write ts-files as text, arrays or sound",
    "Writes each file as tsa text, which import reads back, or as --csv, --npy or --wav. Without -o the "
    "result goes into the working directory under the file's name. An array has a text beside it that says "
    "what its columns are (x.npy.txt).",
    "  veltrac-cli export --csv -o ecg.csv ecg.ts\n"
    "  veltrac-cli export --npy -o arrays/ *.ts\n"
    "  veltrac-cli export --csv --from \"10 s\" --to \"20 s\" -o - ecg.ts | head"};

struct ExportFormat
{
    const char* flag;
    const char* extension;
    const char* help;
    JobOutcome (*write)(const PlotFile&, const ExportRequest&, const std::filesystem::path&, const Progress&,
                        std::vector<std::string>&);
};
constexpr ExportFormat kFormats[] = {
    {"--csv", ".csv", "Cells between commas under a head line, with a column of times", writeCsv},
    {"--npy", ".npy", "Array of 32-bit floats for numpy.load", writeNpy},
    {"--wav", ".wav", "Sound of 32-bit floats, a channel for each column", writeWav},
};

class ExportVerb : public Verb
{
public:
    const VerbWords& words() const override { return kExportWords; }
    bool hasDefaultTarget() const override { return true; }
    std::string extension() const override
    {
        const ExportFormat* const format = chosen();
        return format == nullptr ? ".tsa" : format->extension;
    }
    void addOptions(Options& options) override
    {
        for (std::size_t i = 0; i < std::size(kFormats); ++i)
            options.flag(kFormats[i].flag, m_chosen[i], kFormats[i].help);
        options.texts("--columns", m_columns, "COLUMN,...",
                      "Columns, by name, number or range, 3-8 (default: all)");
        m_places.addTo(options);
        options.text("--separator", m_separator, "SIGN", "Between the cells of --csv (default: a comma)");
        options.flag("--clock", m_request.clockTime,
                     "Times of --csv as dates, where the file has a calendar");
        options.flag("--scale", m_request.scaled, "The greatest magnitude of --wav becomes 1");
    }
    void check(CommonOptions& common) override
    {
        if (m_separator == "tab" || m_separator == "\\t")
            m_separator = "\t";
        if (m_separator.size() != 1)
            throw UsageError("--separator is one sign, or \"tab\"");
        if (std::count(std::begin(m_chosen), std::end(m_chosen), true) > 1)
            throw UsageError("one format at a time");
        m_request.separator = m_separator.front();
        m_namedExtension = std::filesystem::path(common.output).extension().string();
        if (chosen() == nullptr && !m_columns.empty())
            throw UsageError("tsa text takes all columns; cut takes some of them");
    }
    void perform(VerbJob& job) override
    {
        if (chosen() == nullptr)
            writeText(job);
        else
            writeTable(job);
    }

private:
    const ExportFormat* chosen() const
    {
        const auto* const at = std::find(std::begin(m_chosen), std::end(m_chosen), true);
        return at == std::end(m_chosen) ? nullptr : &kFormats[at - std::begin(m_chosen)];
    }

    void writeText(VerbJob& job) const
    {
        const auto ts = openTsFile(job.source.string(), true);
        // The text has rows as they stand, in a ring file too.
        SampleRange rows{1, ts->samples()};
        if (!m_places.isWhole())
            rows = m_places.rangeIn(*ts, job.notes);
        TsaExportReport report;
        requireDone(exportTsaText(*ts, job.target, rows.first, rows.last, job.progress, report));
        job.json["samples"] = report.samples;
        job.json["columns"] = report.columns;
        for (const ExportFormat& format : kFormats)
            if (m_namedExtension == format.extension)
                job.notes.push_back(std::string("tsa text in spite of its name; ") + format.flag +
                                    " writes what the name says");
        if (report.valuesRounded)
            job.notes.emplace_back("values were rounded to six digits");
        if (report.sampleTimeRounded)
            job.notes.emplace_back("the sample time was rounded to six digits");
        if (report.rowsTooLong != 0)
            job.notes.push_back(counted(report.rowsTooLong, "row") +
                                " longer than 2048 characters: what is beyond is not read back");
        if (report.startIsLost)
            job.notes.emplace_back("a tsa text has no place for the file's start time");
        if (report.isRing)
            job.notes.push_back("a ring file, written as its rows stand: it begins at row " +
                                groupedDigits(report.oldestRow));
    }

    void writeTable(VerbJob& job) const
    {
        const PlotFile file(job.source.string());
        ExportRequest request = m_request;
        request.columns = columnsMeant(file.file(), m_columns);
        if (request.columns.empty())
            for (std::uint32_t c = 1; c <= file.columns(); ++c)
                if (file.isPlottable(c))
                    request.columns.push_back(c);
        if (const std::string words = cutShortText(file); !words.empty())
            throw JobError(words);
        request.range = m_places.rangeIn(file.file(), job.notes);
        requireDone(chosen()->write(file, request, job.target, job.progress, job.notes));
        job.json["samples"] = request.range.count();
        job.json["columns"] = request.columns.size();
    }

    bool m_chosen[std::size(kFormats)] = {};
    std::vector<std::string> m_columns;
    std::string m_separator = ",";
    std::string m_namedExtension;  // of the file that -o names
    ExportRequest m_request;
    PlaceOptions m_places;
};

}  // namespace

std::unique_ptr<Verb> makeExportVerb()
{
    return std::make_unique<ExportVerb>();
}

}  // namespace veltrac
