// Which rows of a ts-file's table a view stands before: all of them, by way of a RowWindow where they are too
// many for it, or some in another order.
//
// Rows here count from 0 over all rows of the table, the view's own from offset().
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "portal/RowWindow.h"
#include "portal/SortedRows.h"
#include "portal/TsTableModel.h"

namespace veltrac {

class ShownRows
{
public:
    // The model is borrowed.
    explicit ShownRows(TsTableModel& model) : m_model(model) {}

    // What the view is to show then; it stands until the next of these calls, or drop().
    QAbstractItemModel* showAll();
    QAbstractItemModel* showSorted(std::vector<std::uint32_t> samples);
    void drop();

    bool isSorted() const { return m_sorted != nullptr; }
    int total() const;
    std::uint32_t sampleOf(int row) const;
    // The samples in these rows, as few runs as it takes; their column is 0.
    std::vector<SampleRun> samplesOf(int first, int last) const;
    // -1 where the sample is not shown.
    int rowOf(std::uint32_t sample) const;

    // Null where the view stands before the whole table.
    RowWindow* window() const { return m_window.get(); }
    int offset() const { return m_window ? m_window->base() : 0; }

private:
    TsTableModel& m_model;
    std::unique_ptr<RowWindow> m_window;
    std::unique_ptr<SortedRows> m_sorted;
};

}  // namespace veltrac
