#include "converters/TsaImport.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <ctime>
#include <system_error>
#include <vector>

#include "converters/TsaText.h"
#include "core/LineReader.h"
#include "core/LocalTime.h"
#include "core/TSFILE.h"
#include "core/TextNumbers.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "core/Utf8.h"
#include "core/WorkerPool.h"

using namespace veltrac;

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kExtensionLength = 4;  // ".tsa", whatever it reads
constexpr int kPasses = 3;
constexpr std::size_t kLinesBetweenReports = 4096;
constexpr std::size_t kReadBatch = std::size_t{1} << 16;

struct Cancelled
{
};

// Walks the lines of one pass, telling the progress of all three.
class Pass
{
public:
    Pass(const fs::path& file, std::size_t width, int number, const Progress& progress)
        : m_lines(file, width), m_number(number), m_progress(progress)
    {
    }

    bool next()
    {
        if (!m_lines.next())
            return false;
        if (++m_count % kLinesBetweenReports == 0)
            report();
        return true;
    }

    void report() const
    {
        const std::uint64_t before = m_lines.fileBytes() * static_cast<unsigned>(m_number);
        if (!goesOn(m_progress, before + m_lines.position(), m_lines.fileBytes() * kPasses))
            throw Cancelled();
    }

    std::string_view text() const { return m_lines.text(); }
    bool isCut() const { return m_lines.isCut(); }
    std::uint64_t position() const { return m_lines.position(); }

private:
    LineReader m_lines;
    int m_number;
    const Progress& m_progress;
    std::size_t m_count = 0;
};

// A text of the file as header bytes, cut at whole characters. Blanks at its end belong to it.
std::string fitted(std::string_view text, std::size_t width)
{
    text = text.substr(0, text.find('\0'));
    // A line that was cut may end within a character.
    const std::string_view whole = text.substr(0, wholeCharacters(text, width));
    return isUtf8(whole) ? std::string(whole) : cutTo(utf8OfWindows1252(text), width);
}

bool holdsOnlyBlanks(std::string_view text)
{
    return text.find_first_not_of(' ') == std::string_view::npos;
}

std::uint32_t asCount(std::int64_t count)
{
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(count, 0, UINT32_MAX));
}

// -- First pass --

struct Counts
{
    std::uint32_t samples = 0;
    std::uint32_t columns = 0;
    std::uint64_t headerEnd = 0;  // where the last header line ends; rows of numbers may stand before it
};

Counts readCounts(const fs::path& tsaFile, const Progress& progress)
{
    Counts counts;
    Pass pass(tsaFile, kTsaHeaderWidth, 0, progress);
    while (pass.next()) {
        if (tsaLineKind(pass.text()) != TsaLine::Header)
            continue;
        counts.headerEnd = pass.position();
        const std::optional<TsaKey> key = parseTsaKey(pass.text());
        if (!key || key->number != 0)
            continue;
        if (key->key == 'S')
            counts.samples = asCount(tsaCount(key->value));
        else if (key->key == 'C')
            counts.columns = asCount(tsaCount(key->value));
    }
    return counts;
}

// False where the user cancels.
bool completeCounts(const std::string& tsaFile, TsaQuestions& questions, Counts& counts)
{
    if (counts.samples == 0) {
        const std::optional<int> answer = questions.askSamples(tsaFile);
        if (!answer)
            return false;
        counts.samples = asCount(*answer);
    }
    if (counts.columns == 0) {
        const std::optional<int> answer = questions.askColumns(tsaFile);
        if (!answer)
            return false;
        counts.columns = asCount(*answer);
    }
    counts.samples = std::max(counts.samples, 1U);
    counts.columns = std::max(counts.columns, 1U);
    return true;
}

// -- The new file --

std::string baseName(const fs::path& tsaFile)
{
    const std::string name = tsaFile.filename().string();
    return name.size() > kExtensionLength ? name.substr(0, name.size() - kExtensionLength) : name;
}

// The file to make: the text's own name, or the next free one where the old file stays.
fs::path chooseTarget(const std::string& base, TsaQuestions& questions, bool& oldFileKept)
{
    fs::path target = base + ".ts";
    if (!fs::exists(fs::symlink_status(target)))
        return target;
    oldFileKept = questions.isOpenForWriting(target.string()) || !questions.mayOverwrite(target.string());
    return oldFileKept ? fs::path(freeName(fs::path(), base, ".ts")) : target;
}

void setDefaults(TSFILE& ts, const Pass& pass)
{
    const std::tm local = localCalendar(std::time(nullptr)).value_or(std::tm{});
    // The year counts from 1900 here, and is stored so: readers of the stamp put the 1900 back.
    const int stamp[7] = {
        0, local.tm_sec, local.tm_min, local.tm_hour, local.tm_mday, local.tm_mon + 1, local.tm_year};
    ts.changeColumns(1, ts.columns(), [&](std::uint32_t col, ColumnRecord record) {
        record.setStamp(stamp);
        record.setName(("Col-" + std::to_string(col)).c_str());
        if (col % kLinesBetweenReports == 0)
            pass.report();
    });
    if (!(ts.dt() > 0.0F))
        ts.dt(1.0F);
}

// -- Second pass --

void applyFileKey(TSFILE& ts, const TsaKey& key)
{
    const std::string_view text = tsaText(key.value);
    if (key.key == 'U') {
        ts.timeUnit(fitted(text, kTimeUnit.width - 1).c_str());
    } else if (key.key == 'I' && !holdsOnlyBlanks(text)) {
        ts.description(fitted(text, kFileDescription.width - 1).c_str());
    } else if (key.key == 'D') {
        const auto dt = static_cast<float>(tsaNumber(key.value));
        if (dt > 0.0F && std::isfinite(dt))
            ts.dt(dt);
    }
}

void applyColumnKey(TSFILE& ts, const TsaKey& key)
{
    if (key.number > ts.columns())
        return;
    const std::string_view text = tsaText(key.value);
    if (key.key == 'N' && !holdsOnlyBlanks(text))
        ts.columnName(key.number, fitted(text, kColumnName.width).c_str());
    else if (key.key == 'I' && !holdsOnlyBlanks(text))
        ts.columnDescription(key.number, fitted(text, kColumnDescription.width).c_str());
    else if (const auto stamp = key.key == 'T' ? tsaStamp(key.value) : std::nullopt)
        ts.setColumnStamp(key.number, stamp->data());
}

void applyHeader(TSFILE& ts, Pass& pass, std::uint64_t headerEnd, TsaImportReport& report)
{
    while (pass.position() < headerEnd && pass.next()) {
        if (tsaLineKind(pass.text()) != TsaLine::Header)
            continue;
        report.linesCut += pass.isCut() ? 1 : 0;
        const std::optional<TsaKey> key = parseTsaKey(pass.text());
        if (key && key->number == 0)
            applyFileKey(ts, *key);
        else if (key)
            applyColumnKey(ts, *key);
    }
}

// -- Data --

// A cell of the whole-seconds column holds an unsigned integer, bit for bit.
float wholeSeconds(double number)
{
    constexpr double kEnd = 4294967296.0;
    const double held = number >= 0.0 && number < kEnd ? number : 0.0;
    return std::bit_cast<float>(static_cast<std::uint32_t>(held));
}

// Some lines of the text, one behind the other, and what they hold.
struct TsaLines
{
    struct Line
    {
        std::size_t end;  // in the text
        bool isCut;
    };

    std::string text;
    std::vector<Line> lines;
    std::vector<float> rows;
    TsaImportReport found;  // of these lines alone
};

class TsaRows
{
public:
    explicit TsaRows(TSFILE& ts)
        : m_columns(ts.columns()), m_time32(ts.timeColumn() != 0 ? ts.time32Column() : 0)
    {
    }

    // Of as many lines as are read at once; false at the end of the text.
    bool take(Pass& pass, TsaLines& into) const
    {
        into.text.clear();
        into.lines.clear();
        const std::size_t most = std::max<std::size_t>(1, kReadBatch / m_columns);
        while (into.lines.size() < most && into.text.size() < kReadBatch && pass.next()) {
            into.text += pass.text();
            into.lines.push_back({into.text.size(), pass.isCut()});
        }
        return !into.lines.empty();
    }

    // At most `room` rows.
    void read(TsaLines& from, std::uint32_t room) const
    {
        TsaImportReport& found = from.found = {};
        from.rows.resize(std::min<std::size_t>(from.lines.size(), room) * m_columns);
        std::size_t begin = 0;
        for (const TsaLines::Line& line : from.lines) {
            const std::string_view text = std::string_view(from.text).substr(begin, line.end - begin);
            begin = line.end;
            const TsaLine kind = tsaLineKind(text);
            if (kind == TsaLine::Tabbed)
                ++found.linesTabbed;
            if (kind != TsaLine::Data)
                continue;
            if (found.rowsRead == room) {
                ++found.linesLeftOver;
                continue;
            }
            found.linesCut += line.isCut ? 1 : 0;
            readRow(text, from.rows.data() + found.rowsRead * m_columns, found);
            ++found.rowsRead;
        }
    }

private:
    // A missing value is 0.
    void readRow(std::string_view line, float* row, TsaImportReport& found) const
    {
        std::size_t col = 0;
        const char* p = line.data();
        const char* const end = p + line.size();
        for (;;) {
            while (p != end && isTsaSeparator(*p))
                ++p;
            if (p == end)
                break;
            if (col == m_columns) {
                found.valuesLeftOver += wordsIn(p, end);
                break;
            }
            const ParsedNumber number = parseNumber(p, end, DecimalMark::Both);
            p = number.end;
            if (p == end || isTsaSeparator(*p)) [[likely]] {
                row[col++] = static_cast<float>(number.value);
            } else {
                ++found.notNumbers;
                row[col++] = static_cast<float>(number.value);
                p = std::find_if(p, end, isTsaSeparator);
            }
            if (col == m_time32)
                row[col - 1] = wholeSeconds(number.value);
        }
        found.valuesMissing += m_columns - col;
        std::fill(row + col, row + m_columns, 0.0F);
    }

    static std::uint64_t wordsIn(const char* p, const char* end)
    {
        std::uint64_t words = 0;
        while (p != end) {
            ++words;
            p = std::find_if_not(std::find_if(p, end, isTsaSeparator), end, isTsaSeparator);
        }
        return words;
    }

    std::size_t m_columns;
    std::size_t m_time32;  // 0: the file has none
};

void addTo(TsaImportReport& report, const TsaImportReport& found)
{
    report.rowsRead += found.rowsRead;
    report.linesCut += found.linesCut;
    report.linesTabbed += found.linesTabbed;
    report.notNumbers += found.notNumbers;
    report.valuesMissing += found.valuesMissing;
    report.valuesLeftOver += found.valuesLeftOver;
    report.linesLeftOver += found.linesLeftOver;
}

std::unique_ptr<TSFILE> reopen(const TsaTarget& target)
{
    try {
        return openTsFile(target.file->path().string(), false);
    } catch (...) {
        throw TS::CREATE_ERROR(target.report.tsFile);
    }
}

void warnAboutHeader(TsaQuestions& questions, const std::string& text)
{
    questions.warn("Veltrac error, ReadASCIIHeader()", text);
}

void makeFile(const fs::path& tsaFile, const Counts& counts, const Progress& progress, TsaTarget& target)
{
    Pass pass(tsaFile, kTsaHeaderWidth, 1, progress);
    const std::unique_ptr<TSFILE> ts =
        createTsFile(target.file->path().string(), counts.samples, counts.columns);
    setDefaults(*ts, pass);
    applyHeader(*ts, pass, counts.headerEnd, target.report);
    ts->flush(true);
}

}  // namespace

int ReadASCIIHeader(const fs::path& tsaFile, TsaQuestions& questions, const Progress& progress,
                    TsaTarget& target)
try {
    Counts counts;
    try {
        counts = readCounts(tsaFile, progress);
    } catch (const std::system_error&) {
        questions.warn("Veltrac error", "Could not open " + tsaFile.string() + ".\nOperation is aborted.");
        return -1;
    }
    if (!completeCounts(tsaFile.string(), questions, counts))
        return 0;

    TsaImportReport& report = target.report;
    report.samples = counts.samples;
    report.columns = counts.columns;
    if (tsFileBytes(counts.samples, counts.columns) >= kFileLimit) {
        warnAboutHeader(questions, std::to_string(counts.samples) + " samples of " +
                                       std::to_string(counts.columns) +
                                       " columns do not fit into a ts-file, which holds less than 2 GB.");
        return -1;
    }
    const fs::path path = target.wanted.empty()
                              ? chooseTarget(baseName(tsaFile), questions, report.oldFileKept)
                              : target.wanted;
    report.tsFile = path.string();
    try {
        target.file = std::make_unique<PendingFile>(path, ".veltrac-new", ".ts");
    } catch (const std::system_error&) {
        // The "%s" is part of the text.
        questions.warn("Ts-Create", "Could not delete old %s.\nOperation is aborted");
        return -1;
    }
    try {
        makeFile(tsaFile, counts, progress, target);
    } catch (...) {
        target.file.reset();
        throw;
    }
    return 1;
} catch (const Cancelled&) {
    return 0;
} catch (const TS::OPEN_ERROR& e) {
    warnAboutHeader(questions, "Caught a TS::OPEN_ERROR exception on: " + e.name);
    return -1;
} catch (...) {
    warnAboutHeader(questions, "Uspecified problem but something vent wrong in any case.\n");
    return -1;
}

JobOutcome veltrac::readTsaData(const fs::path& tsaFile, const Progress& progress, TsaTarget& target)
try {
    TsaImportReport& report = target.report;
    const std::unique_ptr<TSFILE> ts = reopen(target);
    const TsaRows rows(*ts);
    Pass pass(tsaFile, kTsaDataWidth, 2, progress);
    WorkerPool& pool = WorkerPool::shared();
    std::vector<TsaLines> pieces(pool.slots());
    const WorkerPool::Stages stages{
        [&](std::size_t slot) { return rows.take(pass, pieces[slot]); },
        [&](std::size_t slot) { rows.read(pieces[slot], UINT32_MAX); },
        [&](std::size_t slot) {
            TsaLines& piece = pieces[slot];
            // Where the file ends among these lines, the troubles of those behind it do not count.
            if (const std::uint32_t room = report.samples - report.rowsRead; piece.found.rowsRead > room)
                rows.read(piece, room);
            ts->writeRows(report.rowsRead + 1, piece.found.rowsRead, piece.rows.data());
            addTo(report, piece.found);
        }};
    pool.run(stages, [&pass] {
        pass.report();
        return true;
    });
    ts->flush(true);
    return JobOutcome::Done;
} catch (const Cancelled&) {
    return JobOutcome::Cancelled;
}

int veltrac::importTsaText(const fs::path& tsaFile, TsaQuestions& questions, const Progress& progress,
                           TsaImportReport& report)
{
    TsaTarget target;
    const int made = ReadASCIIHeader(tsaFile, questions, progress, target);
    if (made != 1)
        return made;
    if (readTsaData(tsaFile, progress, target) == JobOutcome::Cancelled)
        return 0;
    if (target.file->commit(progress) == JobOutcome::Cancelled)
        return 0;
    report = target.report;
    return 1;
}
