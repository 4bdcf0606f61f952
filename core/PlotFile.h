// A ts-file as plots see it: opened for reading, the oldest row first, only rows that are really there.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "core/FileIdentity.h"
#include "core/PlotSource.h"

class TSFILE;

namespace veltrac {

class PlotFile : public PlotSource
{
public:
    // Opens the file of exactly that name. Throws as TSFILE's constructors.
    explicit PlotFile(std::string path);
    ~PlotFile() override;

    const std::string& path() const noexcept { return m_path; }
    // The file name without its directory.
    std::string name() const;

    // True where the file differs, by size or time stamp, from the one that was opened, or is gone.
    bool changedOnDisk() const;
    // Opens it again as it is now; pyramids over it have to be built again. Throws as the constructor, and
    // is then as it was.
    void reload();

    // Looks what has become of a file that another program writes. Rows that were appended come behind the
    // others, which keep their numbers; variables over it take them in with HsVariable::extendAll(). A file
    // that is another one now, or was changed otherwise, is loaded again. Throws as reload(); then, and where
    // it is gone, all is as it was.
    enum class News { None, Rows, Loaded, Gone, Cut };
    News follow();
    bool isRing() const;
    // Rows of a followed ring that are gone and may be forgotten, in whole buckets; 0 until they are many.
    std::uint32_t bucketsToForget() const;

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
    // For callers that copy the whole file byte for byte; borrowed.
    int descriptor() const noexcept;

    void readRows(std::uint32_t first, std::uint32_t count, float* out) const override;

protected:
    double timeInRow(std::uint32_t row, const float* values) const override;
    float readValue(std::uint32_t column, std::uint32_t row) const override;

private:
    // What rows count on.
    struct Shape
    {
        std::uint32_t samples = 0;  // of an ordinary file 0: it may grow
        std::uint32_t columns = 0;
        std::uint32_t startSeconds = 0;
        float startTime = 0.0F;
        float dt = 0.0F;
        bool operator==(const Shape&) const = default;
    };
    Shape shape() const;
    void hideOverwritten(std::uint32_t first, std::uint32_t count, float* rows) const;
    std::uint32_t newestSample() const;

    void look();
    std::uint64_t bytesBehind(std::uint64_t head) const;

    std::string m_path;
    std::unique_ptr<TSFILE> m_file;
    std::optional<FileStamp> m_stamp;
    FileIdentity m_identity;
    Shape m_shape;
    bool m_wasCut = false;
    std::uint32_t m_missingRows = 0;
};

}  // namespace veltrac
