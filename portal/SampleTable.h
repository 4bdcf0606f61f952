// The list window's table with the list of its columns: what is shown, selected, sorted and copied.
//
// Rows count from 0 over all rows of the table, columns from 0.
#pragma once

#include <QWidget>

#include <cstdint>
#include <memory>
#include <vector>

#include "portal/BlockOperation.h"
#include "portal/SampleOrder.h"
#include "portal/SampleView.h"

class QCheckBox;
class QListWidget;
class QVBoxLayout;

namespace veltrac {

class SampleTable : public QWidget
{
    Q_OBJECT

public:
    // Borrows the model; `name` is the file's as it is shown.
    SampleTable(TsTableModel& model, QString name, QWidget* parent = nullptr);

    TsTableModel& model() const { return m_model; }
    SampleView& view() const { return *m_view; }
    const QString& name() const { return m_name; }
    // Stands in the window's tool bar.
    QCheckBox* sortingBox() const { return m_sorting; }
    // Puts a widget beneath the table.
    void addBelow(QWidget* widget);

    // The column that is scanned, searched and plotted.
    int column() const { return m_column; }
    void setColumn(int column) { m_column = column; }

    // Shows another file of the same path in the place of this one.
    void show(std::unique_ptr<TSFILE> file);
    // Shows the columns that are chosen in the list.
    void showChosenColumns();
    void setSorting(bool on);
    // False where the table, sorted, does not show the sample; says so.
    bool goToSample(std::uint32_t sample);
    void copy(bool withNames);

    // "Sample 5 of 100, 0.05 s"
    QString rowText(int row) const;
    // "5", or "205 (row 5)" in a ring file.
    QString sampleText(std::uint32_t row) const;
    std::vector<int> visibleColumns(int from, int to) const;
    // What is selected of the columns that hold values.
    std::vector<SampleRun> selectedRuns() const;
    ReaderOfColumn readerOfColumn() const;

signals:
    // For the window's status bar.
    void x_status(const QString& text);
    // Other columns are shown.
    void x_columns_chosen();
    // For a box: something could not be done.
    void x_failed(const QString& text);

private:
    void createView();
    void fillColumnList();
    QString columnTitle(int column) const;
    QString timeText(std::uint32_t row) const;
    bool sortBy(int column, SortOrder order);
    void sortByHead(int section);
    bool askSortRange(std::uint32_t& first, std::uint32_t& last);

    TsTableModel& m_model;
    QString m_name;
    QVBoxLayout* m_layout;
    QListWidget* m_columns;
    SampleView* m_view;
    QCheckBox* m_sorting;
    int m_column = 0;
};

// What cannot be read.
inline const char* const kCutShort = "The file cannot be read to its end: it may be cut short.";

}  // namespace veltrac
