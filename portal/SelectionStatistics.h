// Count, mean, least and greatest of the selected values, computed in small steps between the events, so
// that a selection of 500 million values does not stop the window.
#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <vector>

#include "portal/BlockOperation.h"
#include "portal/EditList.h"

namespace veltrac {

class SelectionStatistics : public QObject
{
    Q_OBJECT

public:
    explicit SelectionStatistics(QObject* parent = nullptr);

    // Begins anew with these runs. The reader is called until all is read, or the next start() or stop().
    void start(std::vector<SampleRun> runs, ReaderOfColumn readerOf);
    void stop();

signals:
    // What is known so far; empty for less than two values.
    void x_text(const QString& text);

private:
    void step();
    void readOn();
    QString text(bool complete) const;

    QTimer m_timer;
    std::vector<SampleRun> m_runs;
    ReaderOfColumn m_readerOf;
    std::vector<float> m_values;
    std::size_t m_run = 0;
    std::uint64_t m_doneOfRun = 0;
    std::uint64_t m_total = 0;
    std::uint64_t m_done = 0;
    std::uint64_t m_missing = 0;
    double m_sum = 0.0;
    double m_least = 0.0;
    double m_greatest = 0.0;
    bool m_unreadable = false;
};

}  // namespace veltrac
