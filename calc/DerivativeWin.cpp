#include "calc/DerivativeWin.h"

using namespace veltrac;

namespace {

// "Derivate" is wanted so in the greeting.

}  // namespace

DerivativeWin::DerivativeWin(const QString& file, unsigned column, QWidget* parent)
    : CalculusWin(kDerivative, file, column, parent)
{
}
