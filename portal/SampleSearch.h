// Looks through the list window's columns: extremes and average, values that meet a condition, places by
// number, time or share.
#pragma once

#include <QObject>

#include "core/ColumnScan.h"
#include "portal/SampleTable.h"

namespace veltrac {

class FindBar;

class SampleSearch : public QObject
{
    Q_OBJECT

public:
    // Puts its find bar beneath the table. Borrows the table, which is the parent.
    explicit SampleSearch(SampleTable* table);

    // The outcome of the last scan.
    const ColumnExtremes& lastScan() const { return m_scan; }

    // Scan the selected column, go to what they find, and tell it by x_found().
    void findMaximum();
    void findMinimum();
    void findAverage();

public slots:
    void sl_find();
    void sl_findNext();
    void sl_findPrevious();
    void sl_goTo();
    void sl_pageUp();
    void sl_pageDown();

signals:
    // For a box.
    void x_found(const QString& text);
    void x_failed(const QString& text);
    // For the window's status bar.
    void x_status(const QString& text);

private:
    bool scan();
    // Goes to an extreme's row, counted in the rows that were scanned.
    void showExtreme(const QString& heading, double value, std::uint32_t scanned);
    void showScan(const QString& text);
    void find(Direction direction);

    SampleTable& m_table;
    FindBar* m_findBar;
    ColumnExtremes m_scan;
    QString m_lastGoTo;
};

}  // namespace veltrac
