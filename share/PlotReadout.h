// What is read off a plot: x as text, values at a place, and the table that windows show of them.
#pragma once

#include <QPair>
#include <QString>
#include <QVector>

#include "core/Plot2D.h"

namespace veltrac {

// A value with as many digits as a 32-bit float holds; "missing" for a NaN.
QString valueText(double value);
// The same with the variable's unit, which a missing value has not.
QString valueWithUnit(const HsVariable& variable, double value);
// What lies between two values as they are written: -0.005 from 1.69 to 1.685, not -0.005000114.
QString differenceText(double from, double to);
// What the plot shows, in words: "Force [kN], 0 s to 1000 s, -1.9 to 25", a part for each axis.
QString plotDescription(const Plot2D& plot);
// x as the axis tells it: "sample 12", "12.345 s" or "2024-05-17 13:45:30.250".
QString xText(const Plot2D& plot, double x);
// A distance on the x axis ("0.8 s"; between dates also in days, "93784 s (1 d 02:03:04)"), and its inverse
// ("1.25 Hz"); samples have no inverse.
QString distanceText(const Plot2D& plot, double dx);
QString inverseText(const Plot2D& plot, double dx);
// The unit in the x axis' title, "s" where it has none.
QString xUnit(const Plot2D& plot);

// The value of a variable at the sample at or before x, as shown; NaN outside of its samples or where they
// cannot be read.
double valueAt(const Plot2D& plot, const HsVariable& variable, double x);

// Rows of name and value.
using Readout = QVector<QPair<QString, QString>>;

// x (as a sample and as a time), and each visible variable's value there.
Readout readoutAt(const Plot2D& plot, double x);
// The HTML table that cursor read-outs are shown as.
QString readoutTable(const Readout& rows);

// The statistics between two x of each visible variable, as the interval table shows them. Variables that
// are not read yet, or cannot be read, are left out.
struct IntervalRow
{
    std::shared_ptr<HsVariable> variable;
    double atA = 0.0;  // NaN where there is no cursor or no value
    double atB = 0.0;
    HsVariable::Statistics statistics;
};
QVector<IntervalRow> intervalRows(const Plot2D& plot);
// Both cursors, the interval and its statistics, tab-separated with a line of headings.
QString intervalText(const Plot2D& plot);
// The headings of intervalText() and of the table.
const QStringList& intervalHeadings();
// The fields of one row under these headings.
QStringList intervalFields(const Plot2D& plot, const IntervalRow& row);
// "A: 1.2 s   B: 2 s   Δt: 0.8 s   1/Δt: 1.25 Hz"; empty without cursors.
QString cursorText(const Plot2D& plot);

}  // namespace veltrac
