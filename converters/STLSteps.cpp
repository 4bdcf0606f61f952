#include "converters/STLSteps.h"

#include <algorithm>
#include <cmath>

namespace veltrac {

namespace {

constexpr double kEqualWithin = 0.001;  // of the step
constexpr double kNearlyAll = 0.9;
constexpr std::size_t kFirstSteps = 10000;

}  // namespace

void STLSteps::add(double seconds, double resolution)
{
    if (m_count++ == 0) {
        m_start = m_before = seconds;
        return;
    }
    if (m_count == 2 && seconds < m_start)
        m_direction = -1.0;
    const double sinceFirst = m_direction * (seconds - m_start);
    m_earliest = std::min(m_earliest, sinceFirst);
    m_latest = std::max(m_latest, sinceFirst);
    narrow(sinceFirst, resolution);
    addStep(m_direction * (seconds - m_before));
    m_before = seconds;
}

// Each time allows a cone of steps from the first row on; what is left of it fits all of them. It is divided
// only where the cone gets narrower, which is seldom.
void STLSteps::narrow(double sinceFirst, double resolution)
{
    const auto steps = static_cast<double>(m_count - 1);
    const double slack = resolution * (1.0 + 1e-9);
    if (sinceFirst + slack < m_fastest * steps)
        m_fastest = (sinceFirst + slack) / steps;
    if (sinceFirst - slack > m_slowest * steps)
        m_slowest = (sinceFirst - slack) / steps;
}

void STLSteps::addStep(double step)
{
    if (m_steps.typical == 0.0 && m_first.size() < kFirstSteps) {
        m_first.push_back(step);
        return;
    }
    settle();
    judge(step);
}

void STLSteps::settle()
{
    if (m_first.empty() || m_judged != 0)
        return;
    std::vector<double> sorted = m_first;
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    m_steps.typical = *middle;
    for (const double step : m_first)
        judge(step);
}

void STLSteps::judge(double step)
{
    const bool none = m_judged++ == 0;
    m_usual += std::fabs(step - m_steps.typical) <= kEqualWithin * m_steps.typical ? 1 : 0;
    m_steps.least = none ? step : std::min(m_steps.least, step);
    if (m_steps.typical > 0.0 && step > kGapSteps * m_steps.typical) {
        ++m_steps.gaps;
        m_steps.longestGap = std::max(m_steps.longestGap, step);
    } else {
        m_steps.greatest = none ? step : std::max(m_steps.greatest, step);
    }
}

STLStepFindings STLSteps::findings(bool inBlocks)
{
    settle();
    STLStepFindings found = m_steps;
    found.newestFirst = m_direction < 0.0 && found.least >= 0.0 && m_latest > 0.0;
    if (m_direction < 0.0 && !found.newestFirst)
        return forwardFindings();
    found.earliest = m_earliest;
    found.latest = m_latest;
    found.greatest = std::max(found.greatest, found.least);
    found.span = m_count > 1 ? m_direction * (m_before - m_start) : 0.0;
    const double steps = m_count > 1 ? static_cast<double>(m_count - 1) : 1.0;
    const double mean = found.span / steps;
    const bool same = found.gaps == 0 && m_steps.greatest - found.typical <= kEqualWithin * found.typical &&
                      found.typical - found.least <= kEqualWithin * found.typical;
    // A clock coarser than the steps reads now one tick, now the next. Where nearly all steps are the same
    // one, longer ones are gaps instead.
    const bool gapsAreTicks = !m_timesAreNumbers && static_cast<double>(m_usual) < kNearlyAll * steps;
    // Rows of one time below each other's names are several things at that time, none between two ticks.
    const bool areBlocks = inBlocks && found.least <= 0.0;
    const bool rounded = !areBlocks && m_slowest <= m_fastest && (found.gaps == 0 || gapsAreTicks);
    found.areEqual = m_count > 1 && mean > 0.0 && (same || rounded);
    if (!found.areEqual)
        return found;
    found.gaps = 0;
    found.longestGap = 0.0;
    found.slowest = m_slowest;
    found.fastest = m_fastest;
    if (!same)
        found.typical = std::clamp(mean, m_slowest, m_fastest);
    else if (found.least != m_steps.greatest)
        found.typical = mean;
    return found;
}

// Of rows that only began to run back: as they come.
STLStepFindings STLSteps::forwardFindings() const
{
    STLStepFindings found;
    found.earliest = -m_latest;
    found.latest = -m_earliest;
    found.least = -std::max(m_steps.greatest, m_steps.longestGap);
    found.greatest = -m_steps.least;
    found.typical = -m_steps.typical;
    found.span = m_before - m_start;
    return found;
}

}  // namespace veltrac
