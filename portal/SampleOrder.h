// Which sample stands in which row of a table: sorted on the values of a column, or a stretch of a table too
// long to be shown at once.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "core/ColumnScan.h"

namespace veltrac {

enum class SortOrder { Ascending, Descending };

// The samples first to last, by their values; equal ones keep their order, missing ones stand last either
// way. Takes 12 bytes a sample. What the reader throws passes through.
JobOutcome sortSamples(const ColumnReader& read, std::uint32_t first, std::uint32_t last, SortOrder order,
                       const Progress& progress, std::vector<std::uint32_t>& samples);

// Samples in an order of their own. Rows count from 0, samples from 1.
class SampleOrder
{
public:
    // Row r shows samples[r]; no sample twice.
    explicit SampleOrder(std::vector<std::uint32_t> samples);

    int rows() const noexcept { return static_cast<int>(m_samples.size()); }
    std::uint32_t sample(int row) const { return m_samples[static_cast<std::size_t>(row)]; }
    // Nothing where the sample is not shown.
    std::optional<int> row(std::uint32_t sample) const;

private:
    std::vector<std::uint32_t> m_samples;
    std::uint32_t m_least = 0;
    std::vector<int> m_rows;  // of sample m_least + i; -1 where it is not shown
};

// The stretch of a table's rows that is shown at a time. Rows count from 0.
class RowStretch
{
public:
    // A table view keeps 8 bytes for each row, and breaks at some 100 million of them.
    static constexpr int kRows = 1000000;

    explicit RowStretch(int total) noexcept : m_total(total) {}

    int base() const noexcept { return m_base; }
    int rows() const noexcept { return m_total - m_base < kRows ? m_total - m_base : kRows; }
    bool shows(int row) const noexcept { return row >= m_base && row - m_base < rows(); }
    // The base nearest to `base` with which the stretch ends no later than the table.
    int clamped(int base) const noexcept;
    void moveTo(int base) noexcept { m_base = clamped(base); }

private:
    int m_total;
    int m_base = 0;
};

}  // namespace veltrac
