#include "core/ColumnBackup.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>

namespace {

constexpr std::uint32_t kRun = 1U << 16;  // samples a step

[[noreturn]] void fail(const std::filesystem::path& path)
{
    throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(), path.string());
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

void ColumnBackup::restore()
{
    try {
        // The newest first, so that the oldest values win where ranges overlap.
        for (auto range = m_ranges.rbegin(); range != m_ranges.rend(); ++range)
            restoreRange(*range);
        for (auto info = m_infos.rbegin(); info != m_infos.rend(); ++info) {
            m_file.columnName(info->col, info->name.c_str());
            m_file.columnDescription(info->col, info->description.c_str());
            m_file.setColumnStamp(info->col, info->stamp);
        }
        m_file.flush(true);
    } catch (...) {
        m_scratch.keep();
        throw;
    }
}

void ColumnBackup::restoreRange(const Range& range)
{
    std::ifstream in(m_path, std::ios::binary);
    in.seekg(static_cast<std::streamoff>(range.offset));
    std::vector<float> values(std::min(kRun, range.count));
    for (std::uint32_t done = 0; done < range.count;) {
        const std::span<float> run(values.data(), std::min<std::size_t>(values.size(), range.count - done));
        const auto bytes = std::as_writable_bytes(run);
        in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        if (!in)
            fail(m_path);
        m_file.writeColumn(range.col, range.first + done, run);
        done += static_cast<std::uint32_t>(run.size());
    }
}
