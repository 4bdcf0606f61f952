// Fits a table's columns to their names and to the values in view, also after the font has changed.
#pragma once

#include <QBasicTimer>
#include <QObject>

#include <set>

class QTableView;

namespace veltrac {

class ColumnFit : public QObject
{
    Q_OBJECT

public:
    // The view is the parent.
    explicit ColumnFit(QTableView* view);

    // Fits all columns anew, save those whose width the mouse has given.
    void fit();
    // Other rows have come into view: columns become wider where their numbers need it.
    void widenSoon();
    // The row numbers' column takes numbers up to this one.
    void setGreatestNumber(int number);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    void fitRowNumbers();
    void widen();

    QTableView& m_view;
    std::set<int> m_sizedByHand;  // columns
    int m_greatestNumber = 0;
    QBasicTimer m_widenTimer;
    QBasicTimer m_fitTimer;
};

}  // namespace veltrac
