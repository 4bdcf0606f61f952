#include "converters/TsaExport.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "converters/TsaText.h"
#include "core/ColumnCopy.h"
#include "core/LocalTime.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TextNumbers.h"
#include "core/Utf8.h"
#include "core/WorkerPool.h"

using namespace veltrac;

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kWrittenBatch = std::size_t{1} << 14;

// A file that is written in blocks; every failure is thrown.
class Output
{
public:
    // Of an empty file: one that is emptied once more is flushed as it is closed, by some systems.
    explicit Output(const fs::path& path) : m_path(path), m_file(std::fopen(path.c_str(), "r+b"))
    {
        if (!m_file)
            fail();
        std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
    }

    void write(const char* text, std::size_t bytes)
    {
        if (std::fwrite(text, 1, bytes, m_file.get()) != bytes)
            fail();
    }

    void close()
    {
        if (std::fclose(m_file.release()) != 0)
            fail();
    }

private:
    struct Close
    {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };

    [[noreturn]] void fail() const
    {
        throw std::system_error(errno, std::generic_category(), m_path.string());
    }

    fs::path m_path;
    std::unique_ptr<std::FILE, Close> m_file;
};

// A header text as a line holds it, blanks at its end included: whatever would end it is a blank.
std::string lineText(const char* bytes)
{
    std::string text = utf8OfBytes(bytes);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return isTsaSeparator(c); }, ' ');
    return text;
}

std::string stampText(TSFILE& ts, std::uint32_t col)
{
    const std::time_t start = ts.columnTime(col);
    const std::optional<std::tm> local = start > 0 ? localCalendar(start) : std::nullopt;
    if (!local)
        return std::string();
    // Start times that were stored as years since 1900 are mended here.
    constexpr int kYearBase = 1900;
    const int year = local->tm_year < kYearBase ? local->tm_year + kYearBase : local->tm_year;
    char text[96];
    std::snprintf(text, sizeof text, " %04i.%02i.%02i-%02i:%02i:%02i", year, local->tm_mon + 1,
                  local->tm_mday, local->tm_hour, local->tm_min, local->tm_sec);
    return "%T" + std::to_string(col) + text + '\n';
}

// Whether a number is another one when its text is read back.
bool isRounded(float v)
{
    constexpr float kSixDigits = 1e6F;
    if (std::fabs(v) < kSixDigits && v == std::trunc(v))
        return false;
    char text[kNumberRoom];
    const char* const end = formatSixDigits(v, text);
    return std::isfinite(v) && static_cast<float>(parseNumber(text, end).value) != v;
}

// Which row of a ring file comes first in time, and which hold nothing yet.
void describeRing(TSFILE& ts, TsaExportReport& report)
{
    report.isRing = ts.ringStart() != 0;
    if (!report.isRing)
        return;
    report.oldestRow = oldestRow(ts);
    if (ts.lastSample() < ts.samples())
        report.firstUnwritten = ts.lastSample() + 1;
}

std::string headerLines(TSFILE& ts, const fs::path& target, std::uint32_t samples)
{
    char dt[kNumberRoom];
    std::string lines = "%N " + target.filename().string() + '\n';
    lines += "%S " + std::to_string(samples) + '\n';
    lines += "%C " + std::to_string(ts.columns()) + '\n';
    lines += "%D " + std::string(dt, formatSixDigits(ts.dt(), dt)) + '\n';
    lines += "%I " + lineText(ts.description()) + '\n';
    lines += "%U " + lineText(ts.timeUnit()) + '\n';
    for (std::uint32_t col = 1; col <= ts.columns(); ++col) {
        const std::string number = std::to_string(col) + ' ';
        lines += "%N" + number + lineText(ts.columnName(col)) + '\n';
        lines += "%I" + number + lineText(ts.columnDescription(col)) + '\n';
        lines += stampText(ts, col);
    }
    return lines + '\n';
}

// Rows on their way into the text; each ends with two blanks like each of its values.
class RowText
{
public:
    void read(TSFILE& ts, std::uint32_t first, std::uint32_t count)
    {
        m_count = count;
        m_values.resize(std::size_t{count} * ts.columns());
        ts.readRows(first, count, m_values.data());
    }

    // `time32`: the column of whole seconds, which stand in their cells as integers, bit for bit; 0 for none.
    void put(std::size_t columns, std::size_t time32)
    {
        m_text.resize(m_count * (columns * (kNumberRoom + 2) + 1));
        m_tooLong = 0;
        m_isRounded = false;
        char* p = m_text.data();
        const float* value = m_values.data();
        for (std::size_t row = 0; row < m_count; ++row) {
            const char* const begin = p;
            for (std::size_t col = 1; col <= columns; ++col) {
                const float v = *value++;
                m_isRounded = m_isRounded || (col != time32 && isRounded(v));
                p = col == time32 ? formatUnsigned(std::bit_cast<std::uint32_t>(v), p)
                                  : formatSixDigits(v, p);
                *p++ = ' ';
                *p++ = ' ';
            }
            m_tooLong += p - begin > static_cast<std::ptrdiff_t>(kTsaDataWidth) ? 1 : 0;
            *p++ = '\n';
        }
        m_length = static_cast<std::size_t>(p - m_text.data());
    }

    void write(Output& out, TsaExportReport& report) const
    {
        out.write(m_text.data(), m_length);
        report.rowsTooLong += m_tooLong;
        report.valuesRounded = report.valuesRounded || m_isRounded;
    }

    std::uint32_t rows() const { return m_count; }

private:
    std::uint32_t m_count = 0;
    std::vector<float> m_values;
    std::vector<char> m_text;
    std::size_t m_length = 0;
    std::uint64_t m_tooLong = 0;
    bool m_isRounded = false;
};

JobOutcome writeRows(TSFILE& ts, std::uint32_t first, std::uint32_t samples, Output& out,
                     const Progress& progress, TsaExportReport& report)
{
    const std::size_t columns = ts.columns();
    const std::size_t time32 = ts.timeColumn() != 0 ? ts.time32Column() : 0;
    const auto batch = static_cast<std::uint32_t>(
        std::max<std::size_t>(1, kWrittenBatch / std::max<std::size_t>(1, columns)));
    WorkerPool& pool = WorkerPool::shared();
    std::vector<RowText> pieces(pool.slots());
    std::uint32_t taken = 0;
    std::uint32_t done = 0;
    const WorkerPool::Stages stages{[&](std::size_t slot) {
                                        if (taken == samples)
                                            return false;
                                        const std::uint32_t count = std::min(batch, samples - taken);
                                        pieces[slot].read(ts, first + taken, count);
                                        taken += count;
                                        return true;
                                    },
                                    [&](std::size_t slot) { pieces[slot].put(columns, time32); },
                                    [&](std::size_t slot) {
                                        pieces[slot].write(out, report);
                                        done += pieces[slot].rows();
                                    }};
    return pool.run(stages, [&] { return goesOn(progress, done, samples); });
}

}  // namespace

JobOutcome veltrac::exportTsaText(TSFILE& ts, const fs::path& target, std::uint32_t first, std::uint32_t last,
                                  const Progress& progress, TsaExportReport& report)
{
    report.samples = first <= last ? last - first + 1 : 0;
    report.columns = ts.columns();
    report.startIsLost = ts.startSeconds() != 0 || ts.startTime() != 0.0F || first > 1;
    report.sampleTimeRounded = isRounded(ts.dt());
    describeRing(ts, report);

    PendingFile pending(target);
    Output out(pending.path());
    const std::string header = headerLines(ts, target, report.samples);
    out.write(header.data(), header.size());
    if (writeRows(ts, first, report.samples, out, progress, report) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    out.close();
    return pending.commit(progress);
}
