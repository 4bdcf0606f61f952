// Computes the statistics of the selected values between the events, so that a selection of 500 million
// values does not stop the window.
#pragma once

#include <QTimer>

#include "portal/RunStatistics.h"

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
    QString text() const;

    QTimer m_timer;
    RunStatistics m_statistics;
};

}  // namespace veltrac
