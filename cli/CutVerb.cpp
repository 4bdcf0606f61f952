#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <span>

#include "cli/FileWords.h"
#include "cli/Options.h"
#include "cli/Verbs.h"
#include "core/ColumnCopy.h"
#include "core/Interval.h"
#include "core/NumberTexts.h"
#include "core/PlotFile.h"
#include "core/Rebuild.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"

namespace veltrac {

namespace {

constexpr VerbWords kCutWords = {
    "cut", "Take an interval, some columns, every n-th sample",
    "Makes a ts-file of a part of another one. Each sample keeps its time. Before --every takes one of n "
    "samples, a low-pass takes what the fewer samples could not show (a window of 16 n samples, without "
    "delay); --raw leaves it out. Columns of times are always kept.",
    "  veltrac-cli cut --from \"60 s\" --to \"120 s\" -o minute.ts ecg.ts\n"
    "  veltrac-cli cut --columns temp_max --every 7 -o weekly.ts weather.ts"};

// The low-pass before fewer samples: an ideal one at 0.4 of the new sampling frequency under a Blackman
// window (A. V. Oppenheim, R. W. Schafer, "Discrete-Time Signal Processing", chapter 7), over 8 n samples on
// both sides. Missing values, and what lies beyond the ends, have no weight.
class Decimator
{
public:
    explicit Decimator(std::uint32_t n) : m_reach(8 * n), m_weights(2 * std::size_t{m_reach} + 1)
    {
        const double cutOff = 0.4 / n;
        for (std::size_t i = 0; i < m_weights.size(); ++i) {
            const double t = static_cast<double>(i) - m_reach;
            const double x = 2.0 * std::numbers::pi * cutOff * t;
            const double angle = std::numbers::pi * t / (m_reach + 1.0);
            m_weights[i] = (t == 0.0 ? 1.0 : std::sin(x) / x) *
                           (0.42 + 0.5 * std::cos(angle) + 0.08 * std::cos(2.0 * angle));
        }
    }

    std::uint32_t reach() const noexcept { return m_reach; }

    // The value at `place` of a run of samples.
    float at(std::span<const float> run, std::size_t place) const
    {
        if (!std::isfinite(run[place]))
            return run[place];
        const std::size_t first = place < m_reach ? 0 : place - m_reach;
        const std::size_t last = std::min(run.size() - 1, place + m_reach);
        double sum = 0.0;
        double weight = 0.0;
        for (std::size_t i = first; i <= last; ++i) {
            const double w = m_weights[i + m_reach - place];
            if (!std::isfinite(run[i]))
                continue;
            sum += w * static_cast<double>(run[i]);
            weight += w;
        }
        return static_cast<float>(sum / weight);
    }

private:
    std::uint32_t m_reach;
    std::vector<double> m_weights;
};

class CutVerb : public Verb
{
public:
    const VerbWords& words() const override { return kCutWords; }
    void addOptions(Options& options) override
    {
        m_places.addTo(options);
        options.texts("--columns", m_columns, "COLUMN,...", "By name, number or range, 3-8 (default: all)");
        options.count("--every", m_every, 1, "Takes every n-th sample");
        options.flag("--raw", m_raw, "Without the low-pass before");
    }
    void check(CommonOptions& /*common*/) override
    {
        constexpr std::uint32_t kMostApart = 1'000'000;
        if (m_every > kMostApart)
            throw UsageError("--every takes up to 1 000 000");
    }
    void perform(VerbJob& job) override
    {
        const PlotFile file(job.source.string());
        if (const std::string words = cutShortText(file); !words.empty())
            throw JobError(words);
        const SampleRange range = m_places.rangeIn(file.file(), job.notes);
        if (m_columns.empty() && m_every == 1) {
            requireDone(saveInterval(file, range.first, range.last, job.target, job.progress));
            job.json["samples"] = range.count();
            return;
        }
        const std::vector<std::uint32_t> columns = columnsOf(file);
        const std::uint32_t samples = (range.count() - 1) / m_every + 1;
        PendingFile pending(job.target, ".veltrac-new", ".ts");
        {
            const auto made =
                createTsFile(pending.path().string(), samples, static_cast<std::uint32_t>(columns.size()));
            describe(file, range, columns, *made);
            for (std::size_t i = 0; i < columns.size(); ++i)
                copyColumn(job, file, range, columns[i], *made, static_cast<std::uint32_t>(i + 1),
                           partOf(job.progress, 100 * i / columns.size(), 100 * (i + 1) / columns.size()));
            made->flush(true);
        }
        pending.commit();
        job.json["samples"] = samples;
    }

private:
    // Times first, or nobody would know when a sample was.
    std::vector<std::uint32_t> columnsOf(const PlotFile& file) const
    {
        std::vector<std::uint32_t> columns;
        for (const std::uint32_t time : {file.file().timeColumn(), file.file().time32Column()})
            if (time != 0 && !m_columns.empty())
                columns.push_back(time);
        for (const std::uint32_t column : columnsMeant(file.file(), m_columns))
            if (std::find(columns.begin(), columns.end(), column) == columns.end())
                columns.push_back(column);
        for (std::uint32_t c = 1; c <= file.columns() && m_columns.empty(); ++c)
            columns.push_back(c);
        return columns;
    }

    void describe(const PlotFile& file, const SampleRange& range, const std::vector<std::uint32_t>& columns,
                  TSFILE& made) const
    {
        TSFILE& source = file.file();
        for (std::size_t i = 0; i < columns.size(); ++i)
            copyColumnInfo(source, columns[i], made, static_cast<std::uint32_t>(i + 1));
        made.copyHeader(source);
        // The first sample lies one step of the new sample time behind the start.
        copyStartBehind(source, static_cast<double>(file.sampleOf(range.first)) - m_every, made);
        made.dt(source.dt() * static_cast<float>(m_every));
    }

    void copyColumn(const VerbJob& /*job*/, const PlotFile& file, const SampleRange& range,
                    std::uint32_t from, TSFILE& made, std::uint32_t to, const Progress& progress) const
    {
        const bool filtered = m_every > 1 && !m_raw && file.isPlottable(from);
        const Decimator low(m_every);
        const std::uint32_t reach = filtered ? low.reach() : 0;
        const std::uint32_t runSamples = std::max<std::uint32_t>(1, kRunSamples / m_every);
        std::vector<float> in;
        requireDone(walkRuns(made.samples(), progress, [&](std::uint32_t first, std::span<float> run) {
            // In pieces: n samples of the source stand behind each of the run's.
            for (std::size_t done = 0; done < run.size(); done += runSamples) {
                const std::span<float> piece =
                    run.subspan(done, std::min<std::size_t>(runSamples, run.size() - done));
                const std::uint64_t at = range.first + (first - 1 + done) * std::uint64_t{m_every};
                const std::uint64_t begin = at > reach ? std::max<std::uint64_t>(1, at - reach) : 1;
                const std::uint64_t end = std::min<std::uint64_t>(
                    file.rows(), at + (piece.size() - 1) * std::uint64_t{m_every} + reach);
                in.resize(end - begin + 1);
                readColumn(file, from, static_cast<std::uint32_t>(begin), in);
                for (std::size_t i = 0; i < piece.size(); ++i) {
                    const std::size_t place = at - begin + i * std::size_t{m_every};
                    piece[i] = filtered ? low.at(in, place) : in[place];
                }
            }
            made.writeColumn(to, first, run);
        }));
    }

    // Values of one column, the oldest row being the first.
    static void readColumn(const PlotFile& file, std::uint32_t column, std::uint32_t first,
                           std::span<float> out)
    {
        if (!file.isRing()) {
            file.file().readColumn(column, first, out);
            return;
        }
        for (float& value : out)
            value = file.value(column, first++);
    }

    PlaceOptions m_places;
    std::vector<std::string> m_columns;
    std::uint32_t m_every = 1;
    bool m_raw = false;
};

}  // namespace

std::unique_ptr<Verb> makeCutVerb()
{
    return std::make_unique<CutVerb>();
}

}  // namespace veltrac
