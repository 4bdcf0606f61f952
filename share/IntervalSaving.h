// Saving the part of a plotted file that is between the cursors, else in view.
#pragma once

#include <QString>

class PlotCanvas;
class QWidget;

namespace veltrac {

struct IntervalOutcome
{
    QString status;  // for the status bar; empty where the user cancelled, or a box has told
    bool isSaved = false;
};

// Both ask for the file where several are shown, and for the name. A ts-file holds the samples in the order
// of time.
IntervalOutcome saveIntervalAsTs(QWidget* window, PlotCanvas& canvas);
IntervalOutcome saveIntervalAsTsa(QWidget* window, PlotCanvas& canvas);

}  // namespace veltrac
