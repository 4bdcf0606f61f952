#include "calc/IntegrateWin.h"

using namespace veltrac;

namespace {

// "Filtering...finished" is wanted here, though nothing is filtered.

}  // namespace

IntegrateWin::IntegrateWin(const QString& file, unsigned column, QWidget* parent)
    : CalculusWin(kIntegral, file, column, parent)
{
}
