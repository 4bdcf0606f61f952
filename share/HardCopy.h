// The menu entry "Hard copy (EPS)…" of all windows that draw.
#pragma once

#include <QString>

#include <functional>

#include "share/PsParameters.h"

class BasicDriver;
class QWidget;

namespace veltrac {

// Asks for a file name ("*.eps", `suggestion` first; an older file is asked about) and writes what `draw`
// draws, between BeginPage() and EndPage(). A failure is told in a box. Returns the file's name, empty where
// the user cancelled or it failed.
QString hardCopy(QWidget* window, const QString& suggestion, const PsParameters& parameters,
                 const std::function<void(BasicDriver&)>& draw);

// As above without a question, as SVG where the name ends so; returns the failure's text, empty when the file
// is whole.
QString writeHardCopy(const QString& fileName, const PsParameters& parameters,
                      const std::function<void(BasicDriver&)>& draw);

}  // namespace veltrac
