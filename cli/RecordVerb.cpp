#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <optional>
#include <system_error>

#include "cli/Options.h"
#include "cli/StopSignals.h"
#include "cli/Verbs.h"
#include "converters/ColumnTexts.h"
#include "converters/Recording.h"
#include "core/ColumnNames.h"
#include "core/FileTime.h"
#include "core/NumberTexts.h"
#include "core/RingWriter.h"
#include "core/TsHeader.h"
#include "core/Utf8.h"
#include "core/Variable.h"

namespace veltrac {

namespace {

constexpr VerbWords kRecordWords = {
    "record", "Keep what comes on standard input in a ring file, while it is measured",
    "Reads rows of numbers from standard input until it ends, or until Ctrl+C or SIGTERM, and writes "
    "them into a ring file: the newest samples take the places of the oldest ones when it is full. A "
    "file that is there already goes on where it ended. Rows are on the disk after the time of --flush "
    "at the latest, and at every moment the file is a whole one that plots, lists and the other verbs "
    "read. Lines before the first row are passed over, cells that are no numbers become missing values, "
    "and the report counts both. Without --time a row is one sample time behind the one before it; a "
    "recording that goes on gets missing rows for the time in which nothing was recorded.",
    "  vmstat -n 1 | veltrac-cli record cpu.ts --columns \"user[%]=13,system[%]=14,idle[%]=15\"\n"
    "  ./measure --binary | veltrac-cli record force.ts --f32 --columns force[N],temp[°C] --dt 0.001"};

constexpr std::uint32_t kUsualSamples = 1'000'000;
constexpr std::size_t kReadBytes = std::size_t{1} << 18;
constexpr int kLookForStopMs = 100;
constexpr std::uint64_t kManyHeadLines = 20;

class RecordVerb : public Verb
{
public:
    const VerbWords& words() const override { return kRecordWords; }
    VerbTarget targetKind() const override { return VerbTarget::Stream; }
    void addOptions(Options& options) override
    {
        options.texts(
            "--columns", m_columns, "COLUMN,...",
            "Names of the columns, with a unit in brackets and, of lines with more cells, the number "
            "of the cell: force[N],temp[K]=4");
        options.count("--samples", m_samples, 1, "Rows that the file has room for (default: 1 000 000)");
        options.number("--dt", m_step, "SECONDS", "From sample to sample (default: 1)");
        options.flag(
            "--time", m_time,
            "A row begins with its time, in seconds or as 2016-10-30T02:30:00.5; it is kept in a column "
            "Time");
        options.flag(
            "--time32", m_time32,
            "The same, with the whole seconds in a column Time32: for times of microseconds, and for "
            "long recordings");
        options.flag(
            "--f32", m_frames,
            "The input is binary: a 32-bit float for each column of a row, with --time a 64-bit float "
            "of seconds before them, in this machine's byte order");
        options.number("--flush", m_flush, "SECONDS",
                       "The longest time until a row is on the disk "
                       "(default: 0.2)");
        options.text("--separator", m_separator, "SIGN",
                     "Between the cells of a line: a sign, tab or blank (default: as the first row has it)");
        options.text("--decimal", m_decimal, "SIGN", "The decimal sign, a point or a comma");
        options.choice("--grouping", m_grouping, {"none", "point", "comma", "blank", "apostrophe"},
                       "What stands between thousands");
        options.texts("--missing-markers", m_missing, "WORD,...", "Cells with one of these are missing");
        options.text("--description", m_description, "TEXT", "Of a new file, at most 59 bytes");
        options.flag("--no-gap", m_noGap, "No missing rows for the time before a recording goes on");
        options.flag("--unfold", m_unfold,
                     "Makes an ordinary file of it at the end, the oldest sample first");
    }
    void check(CommonOptions& common) override
    {
        if (common.files.size() != 1)
            throw UsageError("one file is recorded into");
        if (common.files.front() == "-")
            throw UsageError("rows come from standard input and go into a file: name it");
        if (m_step && !isSampleTime(*m_step))
            throw UsageError("--dt must be above 0");
        if (!(m_flush >= 0.0 && m_flush <= kLongestFlush))
            throw UsageError("--flush is a time of up to an hour");
        if (m_frames && !(m_separator.empty() && m_decimal.empty() && m_missing.empty() && !m_grouping))
            throw UsageError("--f32 takes no options for text");
        if (m_description.size() >= kFileDescription.width)
            throw UsageError("--description is longer than the 59 bytes of its field");
        m_plan.time = m_time32 ? RecordTime::Time32 : m_time ? RecordTime::Time : RecordTime::Steps;
        m_plan.givesTime = m_time32 || m_time;
        m_plan.givesStep = m_step.has_value();
        m_plan.frames = m_frames;
        m_plan.flushSeconds = m_flush;
        m_plan.fillsGap = !m_noGap;
        m_plan.shape.samples = m_samples.value_or(0);
        m_plan.shape.dt = static_cast<float>(m_step.value_or(1.0));
        m_plan.shape.description = m_description;
        takeSigns();
        takeColumns();
    }
    void perform(VerbJob& job) override
    {
        m_plan.file = job.source;
        std::error_code none;
        if (!std::filesystem::exists(m_plan.file, none)) {
            if (m_plan.shape.columns.empty())
                throw JobError("--columns is needed to make it");
            if (m_plan.shape.samples == 0)
                m_plan.shape.samples = kUsualSamples;
            requireRoom();
        }
        try {
            Recording recording(m_plan);
            const bool whole = readAll(recording, job.source.string());
            recording.finish(whole);
            tell(recording.report(), job);
        } catch (const RingRefusal& refusal) {
            throw JobError(refusal.what());
        }
        if (m_unfold)
            unfold(job);
    }

private:
    static constexpr double kLongestFlush = 3600.0;

    void takeSigns()
    {
        TextRows::Layout& text = m_plan.text;
        veltrac::takeSigns(m_separator, m_decimal);
        text.knowsSeparator = !m_separator.empty();
        if (text.knowsSeparator)
            text.signs.separator = m_separator.front();
        text.knowsDecimal = !m_decimal.empty();
        if (text.knowsDecimal)
            text.signs.decimal = m_decimal.front();
        static constexpr std::array<char, 5> kGroupings = {0, '.', ',', ' ', '\''};
        if (m_grouping)
            text.signs.grouping = kGroupings[static_cast<std::size_t>(*m_grouping)];
        text.signs.missing.insert(text.signs.missing.end(), m_missing.begin(), m_missing.end());
    }

    // "force[N]=4": name, unit, cell.
    void takeColumns()
    {
        std::vector<std::string> names;
        std::vector<std::string> units;
        bool anyCell = false;
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            std::string name = m_columns[i];
            std::size_t cell = i;
            if (const std::size_t equals = name.rfind('='); equals != std::string::npos) {
                cell = cellOf(name.substr(equals + 1));
                name.erase(equals);
                anyCell = true;
            }
            const std::string unit(unitIn(name));
            if (!unit.empty())
                name.erase(name.rfind('['));
            name.erase(name.find_last_not_of(' ') + 1);
            if (name.empty())
                throw UsageError("--columns: \"" + m_columns[i] + "\" has no name");
            names.push_back(name);
            units.push_back(unit);
            m_plan.text.cells.push_back(cell);
        }
        if (anyCell && m_frames)
            throw UsageError("--columns: the values of a frame stand in the order of the columns");
        const std::vector<std::string> unique = uniqueColumnNames(names);
        for (std::size_t i = 0; i < names.size(); ++i)
            m_plan.shape.columns.push_back({unique[i], nameWithUnit(names[i], units[i])});
    }

    static std::size_t cellOf(const std::string& text)
    {
        constexpr std::size_t kMostCells = 100'000;
        std::size_t cell = 0;
        for (const char c : text)
            cell = c >= '0' && c <= '9' && cell <= kMostCells ? cell * 10 + static_cast<std::size_t>(c - '0')
                                                              : kMostCells + 1;
        if (cell == 0 || cell > kMostCells)
            throw UsageError("--columns: \"" + text + "\" is no number of a cell");
        return cell - 1;
    }

    void requireRoom() const
    {
        const auto columns =
            static_cast<std::uint32_t>(m_plan.shape.columns.size() + static_cast<std::size_t>(m_plan.time));
        if (tsFileBytes(m_plan.shape.samples, columns) < kFileLimit)
            return;
        const std::uint64_t most = (kFileLimit - tsFileBytes(0, columns)) / sizeof(float) / columns - 1;
        throw JobError("a ts-file holds less than 2 GiB: --samples " + std::to_string(most) +
                       " is the most for these columns");
    }

    // Until the input ends, which is true, or the user stops it.
    bool readAll(Recording& recording, const std::string& file) const
    {
#ifdef F_SETPIPE_SZ
        // More room in a pipe lets its writer run on while rows are put on the disk.
        (void)::fcntl(STDIN_FILENO, F_SETPIPE_SZ, 1 << 20);
#endif
        std::vector<char> bytes(kReadBytes);
        bool isWarned = false;
        for (;;) {
            if (stopAsked())
                return false;
            pollfd input = {STDIN_FILENO, POLLIN, 0};
            const int ready = ::poll(&input, 1, kLookForStopMs);
            if (ready == 0 || (ready < 0 && errno == EINTR))
                continue;
            const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
            if (count == 0)
                return true;
            if (count < 0 && errno != EINTR && errno != EAGAIN)
                throw std::system_error(errno, std::generic_category(), "standard input");
            if (count > 0)
                recording.feed({bytes.data(), static_cast<std::size_t>(count)});
            // Somebody should look before hours of it are passed over.
            if (!isWarned && recording.counts().rows == 0 && recording.counts().headLines >= kManyHeadLines) {
                std::fprintf(stderr, "%s: none of the first %s lines is a row of values%s\n", file.c_str(),
                             groupedDigits(recording.counts().headLines).c_str(),
                             m_plan.givesTime ? " behind a time" : "");
                isWarned = true;
            }
        }
    }

    static void tell(const RecordReport& report, VerbJob& job)
    {
        const RowCounts& counts = report.counts;
        const auto note = [&](std::uint64_t count, const std::string& one, const std::string& tail) {
            if (count > 0)
                job.notes.push_back(counted(count, one) + tail);
        };
        if (counts.rows == 0)
            job.notes.emplace_back("no rows came");
        else
            job.notes.push_back(counted(counts.rows, "row") + " recorded, samples " +
                                groupedDigits(report.firstSample) + " to " +
                                groupedDigits(report.lastSample));
        note(report.gapRows, "missing row", " for the time before");
        note(counts.headLines, "line", " before the first row passed over");
        note(counts.faulty, "row", " with something that could not be read");
        note(counts.missing, "missing value", "");
        note(report.timeFaults, "row", " without a usable time: the time of the row before");
        note(report.timesBackwards, "time", " before that of the row before: plots will count samples");
        if (counts.endsWithin)
            job.notes.emplace_back("the input ended within a row, which was left out");
        job.notes.insert(job.notes.end(), report.notes.begin(), report.notes.end());
        job.json["rows"] = counts.rows;
        job.json["faulty"] = counts.faulty;
        job.json["missing"] = counts.missing;
        job.json["gap"] = report.gapRows;
        job.json["lastSample"] = report.lastSample;
    }

    void unfold(VerbJob& job) const
    {
        if (unfoldRing(m_plan.file, m_plan.file, {}) == JobOutcome::Done)
            job.notes.emplace_back("it is an ordinary file now");
    }

    std::vector<std::string> m_columns;
    std::optional<std::uint32_t> m_samples;
    std::optional<double> m_step;
    bool m_time = false;
    bool m_time32 = false;
    bool m_frames = false;
    double m_flush = 0.2;
    std::string m_separator;
    std::string m_decimal;
    std::optional<int> m_grouping;
    std::vector<std::string> m_missing;
    std::string m_description;
    bool m_noGap = false;
    bool m_unfold = false;
    RecordPlan m_plan;
};

}  // namespace

std::unique_ptr<Verb> makeRecordVerb()
{
    return std::make_unique<RecordVerb>();
}

}  // namespace veltrac
