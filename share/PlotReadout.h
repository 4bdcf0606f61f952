// What is read off a plot: x as text, values at a place, and the statistics between two places. All texts are
// UTF-8.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "core/Plot2D.h"

namespace veltrac {

// A value with as many digits as a 32-bit float holds; "missing" for a NaN.
std::string valueText(double value);
// The same with the variable's unit, which a missing value has not.
std::string valueWithUnit(const HsVariable& variable, double value);
// What lies between two values as they are written: -0.005 from 1.69 to 1.685, not -0.005000114.
std::string differenceText(double from, double to);
// What the plot shows, in words: "Force [kN], 0 s to 1000 s, -1.9 to 25", a part for each axis.
std::string plotDescription(const Plot2D& plot);
// x as the axis tells it: "sample 12", "12.345 s" or "2024-05-17 13:45:30.250".
std::string xText(const Plot2D& plot, double x);
// A distance on the x axis ("0.8 s"; between dates also in days, "93784 s (1 d 02:03:04)"), and its inverse
// ("1.25 Hz"); samples have no inverse.
std::string distanceText(const Plot2D& plot, double dx);
std::string inverseText(const Plot2D& plot, double dx);
// The unit in the x axis' title; without one "s" of a time, and nothing of another quantity.
std::string xUnit(const Plot2D& plot);

// The value of a variable at the sample at or before x, as shown; NaN outside of its samples or where they
// cannot be read.
double valueAt(const Plot2D& plot, const HsVariable& variable, double x);

// Rows of name and value.
struct ReadoutRow
{
    std::string name;
    std::string value;
};
using Readout = std::vector<ReadoutRow>;

// x (as a sample and as a time), and each visible variable's value there.
Readout readoutAt(const Plot2D& plot, double x);

// The statistics between two x of each visible variable, as the interval table shows them. Variables that
// are not read yet, or cannot be read, are left out.
struct IntervalRow
{
    std::shared_ptr<HsVariable> variable;
    double atA = 0.0;  // NaN where there is no cursor or no value
    double atB = 0.0;
    HsVariable::Statistics statistics;
};
std::vector<IntervalRow> intervalRows(const Plot2D& plot);
// Both cursors, the interval and its statistics, tab-separated with a line of headings.
std::string intervalText(const Plot2D& plot);
// The headings of intervalText() and of the table.
inline constexpr std::array kIntervalHeadings = {"Variable", "Unit", "At A", "At B",      "B − A",  "Least",
                                                 "Greatest", "Mean", "RMS",  "Std. dev.", "Missing"};
// The fields of one row under these headings.
using IntervalFields = std::array<std::string, kIntervalHeadings.size()>;
IntervalFields intervalFields(const Plot2D& plot, const IntervalRow& row);
// "A: 1.2 s   B: 2 s   Δt: 0.8 s   1/Δt: 1.25 Hz"; empty without cursors.
std::string cursorText(const Plot2D& plot);

}  // namespace veltrac
