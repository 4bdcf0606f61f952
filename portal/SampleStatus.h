// The list window's two lines at the bottom: where the user is, and what is selected.
#pragma once

#include <QWidget>

#include "portal/SampleTable.h"

class QLabel;

namespace veltrac {

class SelectionStatistics;

class SampleStatus : public QWidget
{
    Q_OBJECT

public:
    // Follows the table, which is borrowed.
    explicit SampleStatus(SampleTable& table, QWidget* parent = nullptr);

    // The current cell may show something else now, and so may the selected ones.
    void followChanges();
    // Reads nothing more until the next update.
    void stop();

private:
    void showPosition();
    void restartStatistics();

    SampleTable& m_table;
    QLabel* m_position;
    QLabel* m_selected;
    SelectionStatistics* m_statistics;
};

}  // namespace veltrac
