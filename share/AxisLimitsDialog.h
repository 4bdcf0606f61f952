// Asks for the limits of a plot's axis.
#pragma once

#include <QString>

class QWidget;

namespace veltrac {

struct AxisLimits
{
    double from = 0.0;
    double to = 1.0;
    bool automatic = false;
    bool logarithmic = false;  // both must be above 0 then
};

// Shows the limits and changes them; false where the user cancelled. Text that is no number, and limits that
// are equal, keep "Ok" off. With `offersAutomatic` there is a box for limits that fit the data.
bool askAxisLimits(QWidget* parent, const QString& title, bool offersAutomatic, AxisLimits& limits);

// The same for an axis of dates, whose limits are seconds since 1970-01-01 00:00 UTC: they are typed as local
// dates with times, to the millisecond; a limit that is left alone stays as fine as it was.
bool askClockLimits(QWidget* parent, const QString& title, AxisLimits& limits);

}  // namespace veltrac
