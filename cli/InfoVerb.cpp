#include <algorithm>
#include <cmath>

#include "cli/ColumnStatistics.h"
#include "cli/FileWords.h"
#include "cli/Options.h"
#include "cli/Verbs.h"
#include "core/FileTime.h"
#include "core/HeaderTexts.h"
#include "core/NumberTexts.h"
#include "core/TSFILE.h"
#include "core/Variable.h"

namespace veltrac {

namespace {

constexpr VerbWords kInfoWords = {
    "info", "Tell what stands in ts-files",
    "Tells samples, columns, sample time, start, unit and description of each file, and the name, unit, "
    "description and stamp of its columns. With --stats all values are read, for the least and the greatest, "
    "mean, RMS, standard deviation and missing values of each column.",
    "  veltrac-cli info --stats ecg.ts\n"
    "  veltrac-cli info --json *.ts | python3 -m json.tool --json-lines"};

constexpr std::size_t kNameWidth = 13;

std::string padded(std::string text, std::size_t width)
{
    text.resize(std::max(text.size() + 1, width), ' ');
    return text;
}

Json numberOrNull(double number)
{
    return std::isfinite(number) ? Json(number) : Json(nullptr);
}

class InfoVerb : public Verb
{
public:
    const VerbWords& words() const override { return kInfoWords; }
    VerbTarget targetKind() const override { return VerbTarget::Nowhere; }
    void addOptions(Options& options) override
    {
        options.flag("--stats", m_stats,
                     "Least, greatest (with the sample), mean, RMS, standard deviation and missing values of "
                     "each column");
    }
    void perform(VerbJob& job) override
    {
        const PlotFile file(job.source.string());
        std::vector<ColumnStatistics> statistics;
        if (m_stats)
            requireDone(readStatistics(file, job.progress, statistics));
        describeFile(job, file);
        for (std::uint32_t c = 1; c <= file.describedColumns(); ++c)
            describeColumn(job, file, c, m_stats ? &statistics[c - 1] : nullptr);
        if (const std::string words = cutShortText(file); !words.empty())
            job.notes.push_back(words);
    }

private:
    static void addLine(VerbJob& job, const char* name, const std::string& value)
    {
        if (!value.empty())
            job.text += "  " + padded(name, kNameWidth) + value + '\n';
    }

    static void describeFile(VerbJob& job, const PlotFile& file)
    {
        TSFILE& ts = file.file();
        const FileTime time(ts);
        const auto dt = static_cast<double>(ts.dt());
        const std::string start = time.hasCalendar() ? isoTime(time.start()) : numberText(time.start());
        job.text = job.name + '\n';
        addLine(job, "samples", std::to_string(file.rows()));
        addLine(job, "columns", std::to_string(file.columns()));
        addLine(job, "sample time", numberText(ts.dt()) + " " + time.unit());
        addLine(job, "start", start);
        addLine(job, "unit", headerUtf8(ts.timeUnit()));
        addLine(job, "description", headerUtf8(ts.description()));
        if (time.isRing())
            addLine(job, "ring file", "oldest sample " + std::to_string(time.firstSample()));
        Json& json = job.json;
        json["samples"] = file.rows();
        json["columns"] = file.columns();
        json["dt"] = numberOrNull(dt);
        json["timeUnit"] = headerUtf8(ts.timeUnit());
        json["startSeconds"] = numberOrNull(time.start());
        json["start"] = time.hasCalendar() ? Json(start) : Json(nullptr);
        json["timeColumn"] = ts.timeColumn() == 0 ? Json(nullptr) : Json(ts.timeColumn());
        json["ring"] = time.isRing();
        json["description"] = headerUtf8(ts.description());
        json["missingRows"] = file.missingRows();
        json["column"] = Json::array();
    }

    static void describeColumn(VerbJob& job, const PlotFile& file, std::uint32_t c,
                               const ColumnStatistics* statistics)
    {
        TSFILE& ts = file.file();
        int stamp[7] = {};
        ts.columnStamp(c, stamp);
        const std::string name = headerUtf8(ts.columnName(c));
        const std::string description = headerUtf8(ts.columnDescription(c));
        job.text += "  " + padded(std::to_string(c), 4) + padded(name, kNameWidth) + padded(description, 30) +
                    isoStamp(stamp);
        job.text.erase(job.text.find_last_not_of(' ') + 1);
        job.text += '\n';
        Json column = {{"number", c},
                       {"name", name},
                       {"unit", std::string(unitIn(description))},
                       {"description", description},
                       {"stamp", isoStamp(stamp)}};
        if (statistics != nullptr)
            addStatistics(job.text, column, file, *statistics);
        job.json["column"].push_back(std::move(column));
    }

    static void addStatistics(std::string& text, Json& column, const PlotFile& file,
                              const ColumnStatistics& s)
    {
        const auto number = [&s](double v) { return s.count > 0 ? Json(v) : Json(nullptr); };
        column["count"] = s.count;
        column["missing"] = s.missing;
        column["least"] = number(s.least);
        column["leastSample"] = s.count > 0 ? Json(file.sampleOf(s.leastRow)) : Json(nullptr);
        column["greatest"] = number(s.greatest);
        column["greatestSample"] = s.count > 0 ? Json(file.sampleOf(s.greatestRow)) : Json(nullptr);
        column["mean"] = number(s.mean);
        column["rms"] = number(s.rms);
        column["deviation"] = number(s.deviation);
        const auto shown = [](double v) { return generalNumber(v, 7); };
        text += "      ";
        if (s.count > 0)
            text += "least " + shown(s.least) + " at " + std::to_string(file.sampleOf(s.leastRow)) +
                    ", greatest " + shown(s.greatest) + " at " +
                    std::to_string(file.sampleOf(s.greatestRow)) + ", mean " + shown(s.mean) + ", RMS " +
                    shown(s.rms) + ", deviation " + shown(s.deviation) + ", ";
        text += counted(s.missing, "missing value") + '\n';
    }

    bool m_stats = false;
};

}  // namespace

std::unique_ptr<Verb> makeInfoVerb()
{
    return std::make_unique<InfoVerb>();
}

}  // namespace veltrac
