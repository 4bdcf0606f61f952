// The steps between the rows of a log: whether they are equal, and where gaps are. Memory does not grow with
// the log: the typical step is the median of the first ones.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "converters/STLCheck.h"

namespace veltrac {

class STLSteps
{
public:
    // Times that are written as numbers are as exact as their digits; clocks may be read late by a tick.
    explicit STLSteps(bool timesAreNumbers) : m_timesAreNumbers(timesAreNumbers) {}

    // The next row's time, and how finely it is told (0: exactly), both in seconds.
    void add(double seconds, double resolution);
    // What the steps were. In blocks of rows that stand below each other's names, several may be of one time.
    STLStepFindings findings(bool inBlocks);

private:
    void addStep(double step);
    void settle();
    void judge(double step);
    void narrow(double sinceFirst, double resolution);
    STLStepFindings forwardFindings() const;

    bool m_timesAreNumbers;
    std::uint64_t m_count = 0;
    std::uint64_t m_judged = 0;
    std::uint64_t m_usual = 0;
    // The first two rows tell whether the newest is first. Then all below counts back in time.
    double m_direction = 1.0;
    double m_start = 0.0;
    double m_before = 0.0;
    double m_earliest = 0.0;  // since the first row
    double m_latest = 0.0;
    STLStepFindings m_steps;  // as they come
    // The steps with which a constant one explains all times as rounded ones.
    double m_slowest = -std::numeric_limits<double>::infinity();
    double m_fastest = std::numeric_limits<double>::infinity();
    std::vector<double> m_first;
};

}  // namespace veltrac
