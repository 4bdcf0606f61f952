#include "cli/TableExport.h"

#include <sndfile.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <memory>
#include <system_error>
#include <utility>

#include "cli/FileWords.h"
#include "cli/Verb.h"
#include "core/FileTime.h"
#include "core/HeaderTexts.h"
#include "core/NumberTexts.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsHeader.h"
#include "core/Variable.h"

namespace veltrac {

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t kTableRunValues = 1U << 16;

// Hands the rows of a request to `step`, run by run: its first row, its count, whole rows.
template <typename Step>
JobOutcome walkRows(const PlotFile& file, const SampleRange& range, const Progress& progress, Step step)
{
    const std::uint32_t columns = std::max<std::uint32_t>(1, file.columns());
    const std::uint32_t runRows = std::max<std::uint32_t>(1, kTableRunValues / columns);
    std::vector<float> rows(std::size_t{std::min(runRows, range.count())} * columns);
    for (std::uint32_t done = 0; done < range.count();) {
        const std::uint32_t count = std::min(runRows, range.count() - done);
        file.readRows(range.first + done, count, rows.data());
        step(range.first + done, count, rows.data());
        done += count;
        if (!goesOn(progress, done, range.count()))
            return JobOutcome::Cancelled;
    }
    return JobOutcome::Done;
}

// A file that is written front to back and takes its name when it is whole.
class WholeFile
{
public:
    // The scratch file is empty: emptied once more, it would be flushed as it is closed, by some systems.
    explicit WholeFile(const fs::path& target)
        : m_pending(target), m_stream(std::fopen(m_pending.path().c_str(), "r+b"))
    {
        if (!m_stream)
            fail();
    }
    void write(const void* bytes, std::size_t count)
    {
        if (std::fwrite(bytes, 1, count, m_stream.get()) != count)
            fail();
    }
    void write(const std::string& text) { write(text.data(), text.size()); }
    void commit()
    {
        if (std::fclose(m_stream.release()) != 0)
            fail();
        m_pending.commit();
    }

private:
    [[noreturn]] static void fail() { throw std::system_error(errno, std::generic_category()); }
    struct Close
    {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };

    PendingFile m_pending;
    std::unique_ptr<std::FILE, Close> m_stream;
};

// -- csv --

std::string quoted(const std::string& text, char separator)
{
    if (text.find_first_of(std::string("\"\r\n") + separator) == std::string::npos)
        return text;
    std::string out = "\"";
    for (const char c : text)
        out += c == '"' ? "\"\"" : std::string(1, c);
    return out + '"';
}

std::string headLine(const PlotFile& file, const ExportRequest& request)
{
    TSFILE& ts = file.file();
    const std::string unit = FileTime(ts).unit();
    std::string line = quoted(request.clockTime ? "Time" : "Time [" + unit + "]", request.separator);
    for (const std::uint32_t column : request.columns) {
        const std::string columnUnit(unitIn(headerUtf8(ts.columnDescription(column))));
        line += request.separator +
                quoted(columnLabel(ts, column) + (columnUnit.empty() ? "" : " [" + columnUnit + "]"),
                       request.separator);
    }
    return line + '\n';
}

char* appendNumber(char* at, double number)
{
    return std::isfinite(number) ? std::to_chars(at, at + 40, number).ptr : at;
}

char* appendNumber(char* at, float number)
{
    if (std::isnan(number))
        return at;
    return std::to_chars(at, at + 40, number).ptr;
}

// Times of rows as texts: multiples of dt, which a double has finer than the file's own floats.
class TimeCells
{
public:
    TimeCells(const PlotFile& file, const ExportRequest& request)
        : m_ts(file.file()), m_time(m_ts), m_clock(request.clockTime), m_dt(decimalOf(m_ts.dt()))
    {
    }

    char* append(char* at, std::uint32_t place) const
    {
        const std::uint32_t sample = m_time.firstSample() + place - 1;
        if (m_clock) {
            const std::string text = isoTime(m_time.moment(sample));
            return std::copy(text.begin(), text.end(), at);
        }
        if (m_ts.timeColumn() != 0)
            return appendNumber(at, m_time.elapsed(sample));
        return appendNumber(at, std::round(sample * m_dt * kGrain) / kGrain);
    }

private:
    static constexpr double kGrain = 1e9;
    // 0.01F is a little less than 0.01, which would add up over the rows.
    static double decimalOf(float dt)
    {
        char text[40];
        const auto end = std::to_chars(text, text + sizeof text, dt).ptr;
        double number = 0.0;
        std::from_chars(text, end, number);
        return number;
    }

    TSFILE& m_ts;
    FileTime m_time;
    bool m_clock;
    double m_dt;
};

}  // namespace

JobOutcome writeCsv(const PlotFile& file, const ExportRequest& request, const fs::path& target,
                    const Progress& progress, std::vector<std::string>& /*notes*/)
{
    const TimeCells times(file, request);
    WholeFile out(target);
    out.write(headLine(file, request));
    std::vector<char> line((request.columns.size() + 2) * 48);
    const JobOutcome outcome = walkRows(
        file, request.range, progress, [&](std::uint32_t first, std::uint32_t count, const float* rows) {
            for (std::uint32_t i = 0; i < count; ++i, rows += file.columns()) {
                char* at = times.append(line.data(), first + i);
                for (const std::uint32_t column : request.columns) {
                    *at++ = request.separator;
                    at = appendNumber(at, rows[column - 1]);
                }
                *at++ = '\n';
                out.write(line.data(), static_cast<std::size_t>(at - line.data()));
            }
        });
    if (outcome == JobOutcome::Done)
        out.commit();
    return outcome;
}

// -- npy --

namespace {

constexpr std::size_t kNpyAlignment = 64;

std::string npyHead(std::uint32_t rows, std::size_t columns)
{
    std::string dictionary = "{'descr': '<f4', 'fortran_order': False, 'shape': (" + std::to_string(rows) +
                             ", " + std::to_string(columns) + "), }";
    constexpr std::size_t kFixed = 10;  // magic, version, length
    const std::size_t unpadded = kFixed + dictionary.size() + 1;
    dictionary.append((kNpyAlignment - unpadded % kNpyAlignment) % kNpyAlignment, ' ');
    dictionary += '\n';
    std::string head("\x93NUMPY\x01\x00", 8);
    head += static_cast<char>(dictionary.size() % 256);
    head += static_cast<char>(dictionary.size() / 256);
    return head + dictionary;
}

// Whether the samples leave without the file's own times.
bool leavesTimes(const PlotFile& file, const ExportRequest& request)
{
    const std::uint32_t times = file.file().timeColumn();
    return times != 0 &&
           std::find(request.columns.begin(), request.columns.end(), times) == request.columns.end();
}

// What an array cannot say of itself.
std::string npyComment(const PlotFile& file, const ExportRequest& request, const fs::path& target)
{
    TSFILE& ts = file.file();
    const FileTime time(ts);
    const std::uint32_t first = time.firstSample() + request.range.first - 1;
    std::string text = target.filename().string() + ": rows are samples, columns are\n";
    for (std::size_t i = 0; i < request.columns.size(); ++i) {
        const std::string description = headerUtf8(ts.columnDescription(request.columns[i]));
        text += "  [:, " + std::to_string(i) + "]  " + columnLabel(ts, request.columns[i]) +
                (description.empty() ? "" : "  " + description) + '\n';
    }
    text += "sample time: " + numberText(ts.dt()) + " " + time.unit() +
            (leavesTimes(file, request) ? "; the file's own times (\"Time\") are not in it" : "") +
            "\nfirst row: ";
    text += time.hasCalendar() ? isoTime(time.moment(first))
                               : numberText(time.elapsed(first)) + " " + time.unit();
    if (const std::string description = headerUtf8(ts.description()); !description.empty())
        text += "\ndescription: " + description;
    return text + "\nfrom: " + file.name() + '\n';
}

float littleEndian(float v)
{
    return std::endian::native == std::endian::little ? v : swapBytes(v);
}

}  // namespace

JobOutcome writeNpy(const PlotFile& file, const ExportRequest& request, const fs::path& target,
                    const Progress& progress, std::vector<std::string>& notes)
{
    WholeFile out(target);
    out.write(npyHead(request.range.count(), request.columns.size()));
    std::vector<float> taken;
    const JobOutcome outcome =
        walkRows(file, request.range, progress, [&](std::uint32_t, std::uint32_t count, const float* rows) {
            taken.clear();
            taken.reserve(count * request.columns.size());
            for (std::uint32_t i = 0; i < count; ++i, rows += file.columns())
                for (const std::uint32_t column : request.columns)
                    taken.push_back(littleEndian(rows[column - 1]));
            out.write(taken.data(), taken.size() * sizeof(float));
        });
    if (outcome == JobOutcome::Cancelled)
        return outcome;
    // The comment first: an array without one is what a crash in between leaves least often.
    if (target.extension() == ".npy" && target.parent_path() != scratchDirectory()) {
        const fs::path beside = target.string() + ".txt";
        WholeFile comment(beside);
        comment.write(npyComment(file, request, target));
        comment.commit();
        notes.push_back("what its columns are stands in " + beside.filename().string());
    }
    out.commit();
    if (leavesTimes(file, request))
        notes.emplace_back("the file's own times (\"Time\") are not in it; --columns takes them too");
    return outcome;
}

// -- wav --

namespace {

// The library tells of no write that failed while it closes a file: what it moves passes here.
class WrittenSound
{
public:
    WrittenSound(const fs::path& file, SF_INFO& info) : m_stream(file, kBothWays)
    {
        SF_VIRTUAL_IO calls = {&length, &seek, &read, &write, &tell};
        m_sound = sf_open_virtual(&calls, SFM_WRITE, &info, this);
        if (m_sound == nullptr)
            throw JobError(sf_strerror(nullptr));
    }
    ~WrittenSound()
    {
        if (m_sound != nullptr)
            sf_close(m_sound);
    }
    WrittenSound(const WrittenSound&) = delete;
    WrittenSound& operator=(const WrittenSound&) = delete;

    SNDFILE* get() const noexcept { return m_sound; }
    // Throws std::system_error where any of the file was not written.
    void close()
    {
        errno = 0;
        sf_close(std::exchange(m_sound, nullptr));
        m_stream.close();
        if (!m_stream)
            throw std::system_error(errno != 0 ? errno : ENOSPC, std::generic_category());
    }

private:
    static constexpr auto kBothWays = std::ios::in | std::ios::out | std::ios::binary | std::ios::trunc;

    static std::fstream& streamOf(void* file) { return static_cast<WrittenSound*>(file)->m_stream; }
    static sf_count_t tell(void* file) { return streamOf(file).tellp(); }
    static sf_count_t seek(sf_count_t offset, int whence, void* file)
    {
        streamOf(file).seekp(offset, whence == SEEK_SET   ? std::ios::beg
                                     : whence == SEEK_CUR ? std::ios::cur
                                                          : std::ios::end);
        return tell(file);
    }
    static sf_count_t length(void* file)
    {
        const sf_count_t at = tell(file);
        const sf_count_t end = seek(0, SEEK_END, file);
        seek(at, SEEK_SET, file);
        return end;
    }
    static sf_count_t read(void* to, sf_count_t count, void* file)
    {
        return streamOf(file).read(static_cast<char*>(to), count).gcount();
    }
    static sf_count_t write(const void* from, sf_count_t count, void* file)
    {
        return streamOf(file).write(static_cast<const char*>(from), count) ? count : 0;
    }

    std::fstream m_stream;
    SNDFILE* m_sound = nullptr;
};

int wholeRate(TSFILE& ts, std::vector<std::string>& notes)
{
    const double seconds = static_cast<double>(ts.dt()) * FileTime(ts).unitSeconds();
    const double rate = seconds > 0.0 ? 1.0 / seconds : 0.0;
    const double whole = std::round(rate);
    constexpr double kMost = 1e9;
    if (!(whole >= 1.0) || whole > kMost)
        throw JobError("a sound has 1 to 1 000 000 000 samples a second; the sample time is " +
                       numberText(ts.dt()) + " " + FileTime(ts).unit());
    constexpr double kNoticed = 1e-5;
    if (std::fabs(rate - whole) > kNoticed * rate)
        notes.push_back("the sampling frequency " + generalNumber(rate, 7) + " Hz became " +
                        generalNumber(whole, 10) + " Hz");
    return static_cast<int>(whole);
}

double greatestMagnitude(const PlotFile& file, const ExportRequest& request, const Progress& progress)
{
    float most = 0.0F;
    requireDone(
        walkRows(file, request.range, progress, [&](std::uint32_t, std::uint32_t count, const float* rows) {
            for (std::uint32_t i = 0; i < count; ++i, rows += file.columns())
                for (const std::uint32_t column : request.columns)
                    if (std::isfinite(rows[column - 1]))
                        most = std::max(most, std::fabs(rows[column - 1]));
        }));
    return static_cast<double>(most);
}

}  // namespace

JobOutcome writeWav(const PlotFile& file, const ExportRequest& request, const fs::path& target,
                    const Progress& progress, std::vector<std::string>& notes)
{
    constexpr std::size_t kMostChannels = 1024;
    if (request.columns.size() > kMostChannels)
        throw JobError("a sound has at most 1024 channels");
    SF_INFO info = {};
    info.samplerate = wholeRate(file.file(), notes);
    if (leavesTimes(file, request))
        notes.emplace_back("taken at equal steps: the file's own times (\"Time\") are not used");
    info.channels = static_cast<int>(request.columns.size());
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    float factor = 1.0F;
    if (request.scaled)
        if (const double most = greatestMagnitude(file, request, progress); most > 0.0)
            factor = static_cast<float>(1.0 / most);
    PendingFile pending(target);
    WrittenSound sound(pending.path(), info);
    // A note of the peak would carry the time of day: the same samples make the same file.
    sf_command(sound.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    std::uint64_t missing = 0;
    std::vector<float> frames;
    const JobOutcome outcome =
        walkRows(file, request.range, progress, [&](std::uint32_t, std::uint32_t count, const float* rows) {
            frames.clear();
            frames.reserve(count * request.columns.size());
            for (std::uint32_t i = 0; i < count; ++i, rows += file.columns())
                for (const std::uint32_t column : request.columns) {
                    const float v = rows[column - 1];
                    missing += std::isfinite(v) ? 0 : 1;
                    frames.push_back(std::isfinite(v) ? v * factor : 0.0F);
                }
            if (sf_writef_float(sound.get(), frames.data(), count) != count)
                throw std::system_error(ENOSPC, std::generic_category());
        });
    if (outcome == JobOutcome::Cancelled)
        return outcome;
    sound.close();
    if (missing > 0)
        notes.push_back(counted(missing, "missing value") + " became 0: a sound has none");
    if (factor != 1.0F)
        notes.push_back("scaled by " + numberText(factor));
    pending.commit();
    return outcome;
}

}  // namespace veltrac
