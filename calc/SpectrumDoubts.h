// What Ts-FFT asks before it computes.
#pragma once

#include <QString>

#include "calc/SpectrumRequest.h"
#include "core/TSFILE.h"

class QWidget;

namespace veltrac {

// Looks for a whole range that is too long for the memory, missing values, and unequal steps of time, and
// asks about each. False where the user gives it up, or there is nothing to compute from. Else the request
// is what was agreed on: `interpolate`, `dt` and `averaged` may have changed.
// Throws the TS exceptions.
bool clearDoubts(QWidget* window, TSFILE& source, const QString& fileName, SpectrumRequest& request);

}  // namespace veltrac
