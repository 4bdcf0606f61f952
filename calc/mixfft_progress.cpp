#include "calc/mixfft_progress.h"

#include <algorithm>

namespace veltrac {

namespace {

constexpr std::uint64_t kReports = 100;
constexpr std::uint64_t kMostUnreported = std::uint64_t{1} << 21;  // some hundredths of a second

}  // namespace

FftMeter::FftMeter(const FftProgress& progress, std::uint64_t total)
    : m_progress(progress),
      m_total(total),
      m_between(std::min(total / kReports, kMostUnreported)),
      m_next(m_between)
{
}

bool FftMeter::add(std::uint64_t steps)
{
    m_done += steps;
    if (m_done < m_next && m_done < m_total)
        return true;
    m_next = m_done + m_between;
    return !m_progress || m_progress(m_done, m_total);
}

}  // namespace veltrac
