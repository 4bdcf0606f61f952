#include "portal/SelectionStatistics.h"

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "share/JobProgress.h"

namespace veltrac {

namespace {

constexpr std::uint64_t kRun = 4096;  // samples a step
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
    m_runs = std::move(runs);
    m_readerOf = std::move(readerOf);
    m_values.resize(kRun);
    m_run = 0;
    m_doneOfRun = m_done = m_missing = m_total = 0;
    for (const SampleRun& run : m_runs)
        m_total += run.count();
    m_sum = 0.0;
    m_least = std::numeric_limits<double>::infinity();
    m_greatest = -m_least;
    m_unreadable = false;
    emit x_text(QString());
    if (m_total > 1)
        m_timer.start(kPauseMs);
    else
        m_timer.stop();
}

void SelectionStatistics::stop()
{
    m_timer.stop();
    m_runs.clear();
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
    try {
        while (m_run < m_runs.size() && clock.elapsed() < kSliceMs)
            readOn();
    } catch (...) {
        m_unreadable = true;
        m_run = m_runs.size();
    }
    const bool complete = m_run >= m_runs.size();
    emit x_text(text(complete));
    if (!complete)
        m_timer.start(0);
}

void SelectionStatistics::readOn()
{
    const SampleRun& run = m_runs[m_run];
    const std::uint64_t count = std::min(kRun, run.count() - m_doneOfRun);
    const std::span<float> values = std::span(m_values).first(count);
    m_readerOf(run.column)(static_cast<std::uint32_t>(run.first + m_doneOfRun), values);
    for (const float value : values) {
        const double v = value;
        if (std::isnan(v)) {
            ++m_missing;
            continue;
        }
        m_sum += v;
        m_least = std::min(m_least, v);
        m_greatest = std::max(m_greatest, v);
    }
    m_done += count;
    m_doneOfRun += count;
    if (m_doneOfRun == run.count()) {
        ++m_run;
        m_doneOfRun = 0;
    }
}

QString SelectionStatistics::text(bool complete) const
{
    QString out = QLocale(QLocale::English)
                      .toString(static_cast<qulonglong>(m_total))
                      .replace(QLatin1Char(','), QLatin1Char(' '));
    out += QStringLiteral(" values");
    if (m_unreadable)
        return out + QStringLiteral(", some unreadable");
    const std::uint64_t present = m_done - m_missing;
    if (present > 0)
        out += QStringLiteral(", mean %1, least %2, greatest %3")
                   .arg(number(m_sum / static_cast<double>(present)), number(m_least), number(m_greatest));
    if (m_missing > 0)
        out += QStringLiteral(", %1 missing").arg(m_missing);
    if (!complete)
        out += QStringLiteral(" (%1% read)").arg(100 * m_done / m_total);
    return out;
}

}  // namespace veltrac
