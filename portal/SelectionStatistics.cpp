#include "portal/SelectionStatistics.h"

#include <QElapsedTimer>

#include <utility>

#include "share/GroupedNumber.h"
#include "share/JobProgress.h"

namespace veltrac {

namespace {

constexpr qint64 kSliceMs = 15;
constexpr int kPauseMs = 60;  // while the selection still grows

QString number(double v)
{
    return QString::number(v, 'g', 6);
}

}  // namespace

SelectionStatistics::SelectionStatistics(QObject* parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &SelectionStatistics::step);
}

void SelectionStatistics::start(std::vector<SampleRun> runs, ReaderOfColumn readerOf)
{
    m_statistics = RunStatistics(std::move(runs), std::move(readerOf));
    emit x_text(QString());
    if (m_statistics.total() > 1)
        m_timer.start(kPauseMs);
    else
        m_timer.stop();
}

void SelectionStatistics::stop()
{
    m_timer.stop();
    m_statistics = RunStatistics();
}

void SelectionStatistics::step()
{
    // A job that runs needs the file more.
    if (JobProgress::isRunning()) {
        m_timer.start(kPauseMs);
        return;
    }
    QElapsedTimer clock;
    clock.start();
    while (!m_statistics.isComplete() && clock.elapsed() < kSliceMs)
        m_statistics.readOn();
    emit x_text(text());
    if (!m_statistics.isComplete())
        m_timer.start(0);
}

QString SelectionStatistics::text() const
{
    const RunStatistics& s = m_statistics;
    QString out = groupedNumber(s.total()) + QStringLiteral(" values");
    if (s.isUnreadable())
        return out + QStringLiteral(", some unreadable");
    if (s.present() > 0)
        out += QStringLiteral(", mean %1, least %2, greatest %3")
                   .arg(number(s.mean()), number(s.least()), number(s.greatest()));
    if (s.missing() > 0)
        out += QStringLiteral(", %1 missing").arg(groupedNumber(s.missing()));
    if (!s.isComplete())
        out += QStringLiteral(" (%1% read)").arg(100 * s.done() / s.total());
    return out;
}

}  // namespace veltrac
