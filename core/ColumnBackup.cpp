#include "core/ColumnBackup.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "core/DiskSync.h"
#include "core/FileLock.h"
#include "core/TSFILE.h"

namespace veltrac {

namespace {

constexpr std::uint32_t kBackupRun = 1U << 16;  // samples a step
constexpr std::string_view kFirstLine = "Veltrac old values 1";
constexpr std::string_view kDoneLine = "done\n";

[[noreturn]] void failToKeep(const std::filesystem::path& path)
{
    throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(), path.string());
}

// The local time with its distance from UTC: "2026-11-22T03:45:10+0100".
std::string timeNow()
{
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    char text[40];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S%z", &local)};
}

// The values stand little-endian, whatever the machine.
void turnForFile(std::span<float> values)
{
    if constexpr (std::endian::native == std::endian::big)
        for (float& value : values)
            value = swapBytes(value);
}

void readKept(std::istream& in, std::uint64_t offset, std::span<float> out)
{
    in.seekg(static_cast<std::streamoff>(offset));
    const auto bytes = std::as_writable_bytes(out);
    in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!in)
        failToKeep("the old values");
    turnForFile(out);
}

void restoreRange(TSFILE& file, const KeptValues::Range& range, std::istream& in, const Progress& progress)
{
    std::vector<float> old(std::min(kBackupRun, range.count));
    std::vector<float> now(old.size());
    for (std::uint32_t done = 0; done < range.count;) {
        const std::size_t count = std::min<std::size_t>(old.size(), range.count - done);
        readKept(in, range.offset + std::uint64_t{done} * sizeof(float), std::span(old).first(count));
        file.readColumn(range.column, range.first + done, std::span(now).first(count));
        const auto differs = [&](std::size_t i) {
            return std::bit_cast<std::uint32_t>(old[i]) != std::bit_cast<std::uint32_t>(now[i]);
        };
        std::size_t from = 0;
        std::size_t to = count;
        while (from < to && !differs(from))
            ++from;
        while (to > from && !differs(to - 1))
            --to;
        file.writeColumn(range.column, range.first + done + static_cast<std::uint32_t>(from),
                         std::span(old).subspan(from, to - from));
        done += static_cast<std::uint32_t>(count);
        goesOn(progress, done, range.count);
    }
}

void restoreInfo(TSFILE& file, const KeptValues::Info& info)
{
    if (file.columnName(info.column) != info.name)
        file.columnName(info.column, info.name.c_str());
    if (file.columnDescription(info.column) != info.description)
        file.columnDescription(info.column, info.description.c_str());
    int now[7];
    file.columnStamp(info.column, now);
    if (!std::equal(std::begin(now), std::end(now), info.stamp))
        file.setColumnStamp(info.column, info.stamp);
}

// The newest first, so that the oldest values win where ranges overlap.
void restoreAll(TSFILE& file, const KeptValues& kept, std::istream& in, const Progress& progress = {})
{
    for (auto range = kept.ranges.rbegin(); range != kept.ranges.rend(); ++range)
        restoreRange(file, *range, in, progress);
    std::for_each(kept.infos.rbegin(), kept.infos.rend(),
                  [&](const KeptValues::Info& info) { restoreInfo(file, info); });
    file.flush(true);
}

bool holdsValuesOfADoneJob(const std::filesystem::path& scratch)
{
    std::ifstream in(scratch, std::ios::binary);
    in.seekg(-static_cast<std::streamoff>(kDoneLine.size()), std::ios::end);
    std::string end(kDoneLine.size(), '\0');
    in.read(end.data(), static_cast<std::streamsize>(end.size()));
    return in && end == kDoneLine;
}

// A text in one line, so that the file's lines stay lines: length, blank, bytes.
std::string counted(const std::string& text)
{
    return std::to_string(text.size()) + ' ' + text;
}

std::string takeCounted(std::istream& in)
{
    std::size_t length = 0;
    constexpr std::size_t kLongest = 4096;
    if (!(in >> length) || length > kLongest || in.get() != ' ')
        throw std::runtime_error("the old values cannot be read");
    std::string text(length, '\0');
    in.read(text.data(), static_cast<std::streamsize>(length));
    return text;
}

}  // namespace

ColumnBackup::ColumnBackup(TSFILE& file)
    : m_file(file),
      m_scratch(scratchDirectory(), "veltrac-old-values", ".bin", &holdsValuesOfADoneJob),
      m_path(m_scratch.path())
{
    const char* const name = file.fileName();
    if (name != nullptr)
        m_kept.file = std::filesystem::absolute(name);
    m_kept.when = timeNow();
    std::ofstream out(m_path, std::ios::binary);
    append(
        std::string(kFirstLine) + "\nfile " + counted(m_kept.file.string()) + "\nwhen " + m_kept.when + '\n',
        out);
    // Its name, too, has to be on the disk before the first value is overwritten.
    syncDirectory(m_path.parent_path());
}

void ColumnBackup::append(std::string_view head, std::ostream& out)
{
    out.write(head.data(), static_cast<std::streamsize>(head.size()));
    out.flush();
    if (!out)
        failToKeep(m_path);
    m_bytes += head.size();
}

JobOutcome ColumnBackup::save(std::uint32_t col, std::uint32_t first, std::uint32_t count,
                              const Progress& progress)
{
    std::ofstream out(m_path, std::ios::binary | std::ios::in | std::ios::out);
    out.seekp(static_cast<std::streamoff>(m_bytes));
    append("column " + std::to_string(col) + " first " + std::to_string(first) + " count " +
               std::to_string(count) + '\n',
           out);
    std::vector<float> values(std::min(kBackupRun, count));
    for (std::uint32_t done = 0; done < count;) {
        const std::span<float> run(values.data(), std::min<std::size_t>(values.size(), count - done));
        m_file.readColumn(col, first + done, run);
        turnForFile(run);
        const auto bytes = std::as_bytes(run);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        if (!out)
            failToKeep(m_path);
        done += static_cast<std::uint32_t>(run.size());
        if (!goesOn(progress, done, count))
            return JobOutcome::Cancelled;
    }
    out.put('\n');
    out.close();
    if (!out)
        failToKeep(m_path);
    if (syncToDisk(m_path, [&] { return goesOn(progress, count, count); }) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    m_kept.ranges.push_back({col, first, count, m_bytes});
    m_bytes += std::uint64_t{count} * sizeof(float) + 1;
    return JobOutcome::Done;
}

void ColumnBackup::saveInfo(std::uint32_t col)
{
    KeptValues::Info info{col, m_file.columnName(col), m_file.columnDescription(col), {}};
    m_file.columnStamp(col, info.stamp);
    std::ofstream out(m_path, std::ios::binary | std::ios::in | std::ios::out);
    out.seekp(static_cast<std::streamoff>(m_bytes));
    std::ostringstream line;
    line << "texts " << col;
    for (const int part : info.stamp)
        line << ' ' << part;
    line << ' ' << counted(info.name) << ' ' << counted(info.description) << '\n';
    append(line.str(), out);
    m_kept.infos.push_back(std::move(info));
}

void ColumnBackup::markDone() noexcept
{
    try {
        std::ofstream out(m_path, std::ios::binary | std::ios::app);
        out << kDoneLine;
        out.close();
        m_isDone = !out.fail();
    } catch (...) {
        m_isDone = false;  // without the mark the file merely stays longer
    }
}

// A kill while values come back leaves some of them here alone.
void ColumnBackup::unmark()
{
    if (!m_isDone)
        return;
    std::filesystem::resize_file(m_path, std::filesystem::file_size(m_path) - kDoneLine.size());
    syncToDisk(m_path);
    m_isDone = false;
}

void ColumnBackup::restore(TSFILE& file, const Progress& progress)
{
    try {
        unmark();
        std::ifstream in(m_path, std::ios::binary);
        restoreAll(file, m_kept, in, progress);
        // Before the values go that a power cut would ask for.
        syncToDisk(file.descriptor(), {});
    } catch (...) {
        m_scratch.keep();
        throw;
    }
}

void ColumnBackup::recall(std::uint32_t col, std::uint32_t first, std::span<float> out) const
{
    std::ifstream in;
    for (auto range = m_kept.ranges.rbegin(); range != m_kept.ranges.rend(); ++range) {
        const std::uint64_t from = std::max(first, range->first);
        const std::uint64_t to =
            std::min<std::uint64_t>(first + out.size(), std::uint64_t{range->first} + range->count);
        if (range->column != col || from >= to)
            continue;
        if (!in.is_open())
            in.open(m_path, std::ios::binary);
        readKept(in, range->offset + (from - range->first) * sizeof(float),
                 out.subspan(from - first, to - from));
    }
}

KeptValues readOldValues(const std::filesystem::path& scratch)
{
    std::ifstream in(scratch, std::ios::binary);
    if (!in)
        failToKeep(scratch);
    KeptValues kept;
    std::string word;
    if (!std::getline(in, word) || word != kFirstLine || !(in >> word) || word != "file")
        throw std::runtime_error("it holds no old values");
    kept.file = takeCounted(in);
    in >> word >> kept.when;
    while (in >> word) {
        if (word == "texts") {
            KeptValues::Info info;
            in >> info.column;
            for (int& part : info.stamp)
                in >> part;
            info.name = takeCounted(in);
            info.description = takeCounted(in);
            kept.infos.push_back(std::move(info));
        } else if (word == "column") {
            KeptValues::Range range;
            in >> range.column >> word >> range.first >> word >> range.count;
            range.offset = in ? static_cast<std::uint64_t>(in.tellg()) + 1 : 0;
            const std::uint64_t end = range.offset + std::uint64_t{range.count} * sizeof(float);
            if (!in || end > std::filesystem::file_size(scratch))
                break;  // it was still being written
            kept.ranges.push_back(range);
            in.seekg(static_cast<std::streamoff>(end));
        } else if (word != "done") {
            throw std::runtime_error("it holds no old values");
        }
    }
    // Only what ends is whole: values that could not be read are not taken for none.
    if (in.bad())
        failToKeep(scratch);
    return kept;
}

void restoreOldValues(const std::filesystem::path& scratch, TSFILE& file, const Progress& progress)
{
    const KeptValues kept = readOldValues(scratch);
    const FileLock lock(file.descriptor());
    // Samples of a ring file count on when it has come round.
    const bool ring = file.ringStart() != 0;
    for (const KeptValues::Range& range : kept.ranges)
        if (range.column > file.columns() ||
            (!ring && std::uint64_t{range.first} + range.count - 1 > file.samples()))
            throw std::out_of_range("the file has fewer samples or columns than the old values need");
    std::ifstream in(scratch, std::ios::binary);
    restoreAll(file, kept, in, progress);
    // Whoever has them back may remove them.
    syncToDisk(file.descriptor(), {});
    lock.requireNamed();
}

}  // namespace veltrac
