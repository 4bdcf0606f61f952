#include "core/ColumnBackup.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <fstream>
#include <system_error>

namespace veltrac {

namespace {

constexpr std::uint32_t kRun = 1U << 16;  // samples a step

[[noreturn]] void fail(const std::filesystem::path& path)
{
    throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(), path.string());
}

void readKept(std::istream& in, std::uint64_t offset, std::span<float> out)
{
    in.seekg(static_cast<std::streamoff>(offset));
    const auto bytes = std::as_writable_bytes(out);
    in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!in)
        fail("the old values");
}

}  // namespace

ColumnBackup::ColumnBackup(TSFILE& file)
    : m_file(file), m_scratch(scratchDirectory(), "veltrac-old-values", ".bin"), m_path(m_scratch.path())
{
}

JobOutcome ColumnBackup::save(std::uint32_t col, std::uint32_t first, std::uint32_t count,
                              const Progress& progress)
{
    std::ofstream out(m_path, std::ios::binary | std::ios::in | std::ios::out);
    out.seekp(static_cast<std::streamoff>(m_bytes));
    std::vector<float> values(std::min(kRun, count));
    for (std::uint32_t done = 0; done < count;) {
        const std::span<float> run(values.data(), std::min<std::size_t>(values.size(), count - done));
        m_file.readColumn(col, first + done, run);
        const auto bytes = std::as_bytes(run);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        if (!out)
            fail(m_path);
        done += static_cast<std::uint32_t>(run.size());
        if (!goesOn(progress, done, count))
            return JobOutcome::Cancelled;
    }
    out.close();
    if (!out)
        fail(m_path);
    syncToDisk(m_path);
    m_ranges.push_back({col, first, count, m_bytes});
    m_bytes += std::uint64_t{count} * sizeof(float);
    return JobOutcome::Done;
}

void ColumnBackup::saveInfo(std::uint32_t col)
{
    Info info{col, m_file.columnName(col), m_file.columnDescription(col), {}};
    m_file.columnStamp(col, info.stamp);
    m_infos.push_back(std::move(info));
}

void ColumnBackup::restore(TSFILE& file)
{
    try {
        std::ifstream in(m_path, std::ios::binary);
        // The newest first, so that the oldest values win where ranges overlap.
        for (auto range = m_ranges.rbegin(); range != m_ranges.rend(); ++range)
            restoreRange(file, *range, in);
        std::for_each(m_infos.rbegin(), m_infos.rend(), [&](const Info& info) { restoreInfo(file, info); });
        file.flush(true);
    } catch (...) {
        m_scratch.keep();
        throw;
    }
}

void ColumnBackup::restoreRange(TSFILE& file, const Range& range, std::istream& in)
{
    std::vector<float> old(std::min(kRun, range.count));
    std::vector<float> now(old.size());
    for (std::uint32_t done = 0; done < range.count;) {
        const std::size_t count = std::min<std::size_t>(old.size(), range.count - done);
        readKept(in, range.offset + std::uint64_t{done} * sizeof(float), std::span(old).first(count));
        file.readColumn(range.col, range.first + done, std::span(now).first(count));
        const auto differs = [&](std::size_t i) {
            return std::bit_cast<std::uint32_t>(old[i]) != std::bit_cast<std::uint32_t>(now[i]);
        };
        std::size_t from = 0;
        std::size_t to = count;
        while (from < to && !differs(from))
            ++from;
        while (to > from && !differs(to - 1))
            --to;
        file.writeColumn(range.col, range.first + done + static_cast<std::uint32_t>(from),
                         std::span(old).subspan(from, to - from));
        done += static_cast<std::uint32_t>(count);
    }
}

void ColumnBackup::restoreInfo(TSFILE& file, const Info& info)
{
    if (file.columnName(info.col) != info.name)
        file.columnName(info.col, info.name.c_str());
    if (file.columnDescription(info.col) != info.description)
        file.columnDescription(info.col, info.description.c_str());
    int now[7];
    file.columnStamp(info.col, now);
    if (!std::equal(std::begin(now), std::end(now), info.stamp))
        file.setColumnStamp(info.col, info.stamp);
}

void ColumnBackup::recall(std::uint32_t col, std::uint32_t first, std::span<float> out) const
{
    std::ifstream in;
    for (auto range = m_ranges.rbegin(); range != m_ranges.rend(); ++range) {
        const std::uint64_t from = std::max(first, range->first);
        const std::uint64_t to =
            std::min<std::uint64_t>(first + out.size(), std::uint64_t{range->first} + range->count);
        if (range->col != col || from >= to)
            continue;
        if (!in.is_open())
            in.open(m_path, std::ios::binary);
        readKept(in, range->offset + (from - range->first) * sizeof(float),
                 out.subspan(from - first, to - from));
    }
}

}  // namespace veltrac
