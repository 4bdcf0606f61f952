// A ts-file as plots see it: opened for reading, the oldest row first, only rows that are really there.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "core/PlotSource.h"
#include "core/TSFILE.h"

namespace veltrac {

class PlotFile : public PlotSource
{
public:
    // Opens the file of exactly that name. Throws as TSFILE's constructors.
    explicit PlotFile(std::string path);

    const std::string& path() const noexcept { return m_path; }
    // The file name without its directory.
    std::string name() const;

    // True where the file differs, by size or time stamp, from the one that was opened, or is gone.
    bool changedOnDisk() const;
    // Opens it again as it is now; pyramids over it have to be built again. Throws as the constructor, and
    // is then as it was.
    void reload();

    // Header texts as the file has them (bytes of whatever encoding).
    std::string columnName(std::uint32_t column) const;
    std::string columnDescription(std::uint32_t column) const;
    std::string description() const;
    std::string timeUnit() const;
    // How many columns the file has records of: fewer than columns() where the header lies.
    std::uint32_t describedColumns() const;
    // False for "Time" and "Time32": the latter holds the bits of integers.
    bool isPlottable(std::uint32_t column) const;

    // Rows that the header claims and the file is too short for.
    std::uint32_t missingRows() const noexcept { return m_missingRows; }

    TSFILE& file() const noexcept { return *m_file; }

    void readRows(std::uint32_t first, std::uint32_t count, float* out) const override;

protected:
    double timeInRow(std::uint32_t row, const float* values) const override;
    float readValue(std::uint32_t column, std::uint32_t row) const override;

private:
    struct Stamp
    {
        std::uintmax_t size = 0;
        std::filesystem::file_time_type time;
        bool operator==(const Stamp&) const = default;
    };
    static Stamp stampOf(const std::string& path);
    void look();

    std::string m_path;
    std::unique_ptr<TSFILE> m_file;
    Stamp m_stamp;
    std::uint32_t m_missingRows = 0;
};

}  // namespace veltrac
