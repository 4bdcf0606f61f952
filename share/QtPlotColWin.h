// The column plot window: one column of one ts-file, with a step to the next one.
#pragma once

#include "share/PlotWindow.h"

class QComboBox;

class QtPlotColWin : public veltrac::PlotWindow
{
    Q_OBJECT

public:
    // Columns count from 1; another number shows the first that can be plotted.
    QtPlotColWin(const QString& file, unsigned column, QWidget* parent = nullptr);

    unsigned column() const;

public slots:
    void sl_nextColumn();
    void sl_previousColumn();
    // Copies the ts-file, byte for byte.
    void sl_saveAs();

private:
    void createActions();
    void showColumn(int index);
    void step(int by);
    bool copyTo(const QString& target);

    std::shared_ptr<veltrac::PlotFile> m_file;
    QComboBox* m_columns;
};
