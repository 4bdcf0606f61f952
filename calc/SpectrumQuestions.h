// Asks the user about what a spectrum would have to assume of its samples.
#pragma once

#include <QString>

#include "calc/SpectrumRequest.h"

class QWidget;
class TSFILE;

namespace veltrac {

// Makes the checks of spectrumChecks() with their progress above `window`, and notes in the request what the
// user agrees to. False where a check is given up or answered with no, where there is nothing to compute
// from, and where the file, whose name is told then, cannot be read: the user has been told.
bool askSpectrumDoubts(QWidget* window, TSFILE& file, const QString& name, SpectrumRequest& request);

}  // namespace veltrac
