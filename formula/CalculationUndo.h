// Takes back a calculation whose old values are still kept.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

#include "core/ColumnBackup.h"

namespace veltrac {

class CalculationUndo
{
public:
    // Of a calculation that is done, its file written to the end.
    CalculationUndo(std::filesystem::path file, std::unique_ptr<ColumnBackup> old);

    const std::filesystem::path& file() const noexcept { return m_file; }
    // Where the old values lie.
    const std::filesystem::path& oldValues() const noexcept { return m_old->path(); }

    // Whether somebody has written to the file, replaced or removed it since the calculation or noteState().
    bool wasChangedSince() const;
    void noteState();

    // Puts the old values, and the column's time stamp, back through an open object of the file. Throws the
    // TS exceptions and std::system_error; the old values stay where they lie then.
    void undo(TSFILE& file, const Progress& progress) { m_old->restore(file, progress); }

private:
    struct State
    {
        bool isThere = false;
        std::uint64_t device = 0;
        std::uint64_t node = 0;
        std::int64_t bytes = 0;
        std::int64_t seconds = 0;
        std::int64_t nanoseconds = 0;

        bool operator==(const State&) const = default;
    };
    static State stateOf(const std::filesystem::path& file);

    std::filesystem::path m_file;
    std::unique_ptr<ColumnBackup> m_old;
    State m_state;
};

}  // namespace veltrac
