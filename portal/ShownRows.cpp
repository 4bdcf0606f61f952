#include "portal/ShownRows.h"

namespace veltrac {

QAbstractItemModel* ShownRows::showAll()
{
    drop();
    if (m_model.rowCount() <= RowStretch::kRows)
        return &m_model;
    m_window = std::make_unique<RowWindow>(&m_model);
    return m_window.get();
}

QAbstractItemModel* ShownRows::showSorted(std::vector<std::uint32_t> samples)
{
    drop();
    m_sorted = std::make_unique<SortedRows>(&m_model, std::move(samples));
    return m_sorted.get();
}

void ShownRows::drop()
{
    m_window.reset();
    m_sorted.reset();
}

int ShownRows::total() const
{
    return m_sorted ? m_sorted->rowCount() : m_model.rowCount();
}

std::uint32_t ShownRows::sampleOf(int row) const
{
    const int source = m_sorted ? m_sorted->mapToSource(m_sorted->index(row, 0)).row() : row;
    return static_cast<std::uint32_t>(source) + 1;
}

std::vector<SampleRun> ShownRows::samplesOf(int first, int last) const
{
    if (!m_sorted)
        return {{0, static_cast<std::uint32_t>(first) + 1, static_cast<std::uint32_t>(last) + 1}};
    std::vector<SampleRun> runs;
    runs.reserve(static_cast<std::size_t>(last - first) + 1);
    for (int row = first; row <= last; ++row)
        runs.push_back({0, sampleOf(row), sampleOf(row)});
    return joinedRuns(std::move(runs));
}

int ShownRows::rowOf(std::uint32_t sample) const
{
    const auto row = static_cast<int>(sample) - 1;
    return m_sorted ? m_sorted->mapFromSource(m_model.index(row, 0)).row() : row;
}

}  // namespace veltrac
