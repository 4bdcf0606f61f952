#include "share/PlotFileNames.h"

#include "share/PlotVariables.h"

namespace veltrac {

QString fileNameOf(const Variable& variable)
{
    const auto file = plotFileOf(variable);
    return file ? fileNameOf(*file) : QString();
}

QString fileNameOf(const PlotFile& file)
{
    return QString::fromLocal8Bit(file.name().c_str());
}

}  // namespace veltrac
