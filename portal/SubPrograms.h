// The windows that the main window can start, one a sub-program.
#pragma once

#include <QString>

#include "portal/TsApplication.h"
#include "share/SubWindow.h"

namespace veltrac {

// Makes the window, not yet shown, on a file (empty where it takes none) and a column (from 1; 0 for none).
// It deletes itself when it is closed.
SubWindow* makeSubProgram(SubProgram kind, const QString& file, unsigned column);

}  // namespace veltrac
