#include "portal/RunStatistics.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace veltrac {

namespace {

constexpr std::uint64_t kStep = 1U << 15;  // samples

}  // namespace

RunStatistics::RunStatistics(std::vector<SampleRun> runs, ReaderOfColumn readerOf)
    : m_runs(std::move(runs)), m_readerOf(std::move(readerOf)), m_values(kStep)
{
    for (const SampleRun& run : m_runs)
        m_total += run.count();
}

void RunStatistics::take(double value)
{
    if (std::isnan(value)) {
        ++m_missing;
        return;
    }
    m_sum += value;
    m_least = std::min(m_least, value);
    m_greatest = std::max(m_greatest, value);
}

void RunStatistics::readOn()
{
    if (isComplete())
        return;
    const SampleRun& run = m_runs[m_run];
    const std::uint64_t count = std::min(kStep, run.count() - m_doneOfRun);
    const std::span<float> values = std::span(m_values).first(count);
    try {
        m_readerOf(run.column)(static_cast<std::uint32_t>(run.first + m_doneOfRun), values);
    } catch (...) {
        m_unreadable = true;
        m_run = m_runs.size();
        return;
    }
    for (const float value : values)
        take(static_cast<double>(value));
    m_done += count;
    m_doneOfRun += count;
    if (m_doneOfRun == run.count()) {
        ++m_run;
        m_doneOfRun = 0;
    }
}

}  // namespace veltrac
