#include "converters/TsaExport.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "converters/TsaText.h"
#include "core/ColumnCopy.h"
#include "core/SafeChange.h"
#include "core/TextNumbers.h"
#include "core/Utf8.h"

using namespace veltrac;

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kWrittenBatch = std::size_t{1} << 14;

// A file that is written in blocks; every failure is thrown.
class Output
{
public:
    explicit Output(const fs::path& path) : m_path(path), m_file(std::fopen(path.c_str(), "wb"))
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
    const std::tm* const local = start > 0 ? std::localtime(&start) : nullptr;
    if (local == nullptr)
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

// Writes rows as text; a row ends with two blanks like each of its values.
class RowText
{
public:
    RowText(TSFILE& ts, std::size_t rows)
        : m_columns(ts.columns()),
          m_time32(ts.timeColumn() != 0 ? ts.time32Column() : 0),
          m_text(rows * (m_columns * (kNumberRoom + 2) + 1))
    {
    }

    void put(const float* rows, std::size_t count, Output& out, TsaExportReport& report)
    {
        char* p = m_text.data();
        for (std::size_t row = 0; row < count; ++row) {
            const char* const begin = p;
            for (std::size_t col = 1; col <= m_columns; ++col) {
                const float v = *rows++;
                // Whole seconds stand in their cell as an integer, bit for bit.
                report.valuesRounded = report.valuesRounded || (col != m_time32 && isRounded(v));
                p = col == m_time32 ? formatUnsigned(std::bit_cast<std::uint32_t>(v), p)
                                    : formatSixDigits(v, p);
                *p++ = ' ';
                *p++ = ' ';
            }
            report.rowsTooLong += p - begin > static_cast<std::ptrdiff_t>(kTsaDataWidth) ? 1 : 0;
            *p++ = '\n';
        }
        out.write(m_text.data(), static_cast<std::size_t>(p - m_text.data()));
    }

private:
    std::size_t m_columns;
    std::size_t m_time32;  // 0: the file has none
    std::vector<char> m_text;
};

JobOutcome writeRows(TSFILE& ts, std::uint32_t first, std::uint32_t samples, Output& out,
                     const Progress& progress, TsaExportReport& report)
{
    const std::size_t columns = ts.columns();
    const auto batch = static_cast<std::uint32_t>(
        std::max<std::size_t>(1, kWrittenBatch / std::max<std::size_t>(1, columns)));
    RowText text(ts, batch);
    std::vector<float> values(batch * columns);
    for (std::uint32_t done = 0; done < samples;) {
        if (!goesOn(progress, done, samples))
            return JobOutcome::Cancelled;
        const std::uint32_t count = std::min(batch, samples - done);
        ts.readRows(first + done, count, values.data());
        text.put(values.data(), count, out, report);
        done += count;
    }
    return JobOutcome::Done;
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
    pending.commit();
    return JobOutcome::Done;
}
