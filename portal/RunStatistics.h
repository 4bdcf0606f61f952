// Count, mean, least and greatest of runs of values, computed in small steps.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "portal/BlockOperation.h"
#include "portal/EditList.h"

namespace veltrac {

class RunStatistics
{
public:
    RunStatistics() = default;
    // The reader is called by readOn().
    RunStatistics(std::vector<SampleRun> runs, ReaderOfColumn readerOf);

    // Reads some thousand values more. Values that cannot be read end the statistics.
    void readOn();

    bool isComplete() const noexcept { return m_run >= m_runs.size(); }
    bool isUnreadable() const noexcept { return m_unreadable; }
    std::uint64_t total() const noexcept { return m_total; }
    std::uint64_t done() const noexcept { return m_done; }
    std::uint64_t missing() const noexcept { return m_missing; }
    std::uint64_t present() const noexcept { return m_done - m_missing; }
    // Of the values that are present; the mean is NaN where there is none.
    double mean() const noexcept { return m_sum / static_cast<double>(present()); }
    double least() const noexcept { return m_least; }
    double greatest() const noexcept { return m_greatest; }

private:
    void take(double value);

    std::vector<SampleRun> m_runs;
    ReaderOfColumn m_readerOf;
    std::vector<float> m_values;
    std::size_t m_run = 0;
    std::uint64_t m_doneOfRun = 0;
    std::uint64_t m_total = 0;
    std::uint64_t m_done = 0;
    std::uint64_t m_missing = 0;
    double m_sum = 0.0;
    double m_least = std::numeric_limits<double>::infinity();
    double m_greatest = -std::numeric_limits<double>::infinity();
    bool m_unreadable = false;
};

}  // namespace veltrac
