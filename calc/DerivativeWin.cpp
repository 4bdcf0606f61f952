#include "calc/DerivativeWin.h"

using namespace veltrac;

namespace {

// "Derivate" is wanted so in the greeting.
constexpr CalculusKind kDerivative = {"Ts-Derivative",
                                      ":img_Derivation",
                                      "Welcome to Ts-Derivate",
                                      kDerivativeNames.column,
                                      kDerivativeNames.text,
                                      kDerivativeNames.unit,
                                      "Calculate dy/dt.",
                                      "Save",
                                      "Computing...finished",
                                      "Ts-Derivative info",
                                      "derivative",
                                      "",
                                      true,
                                      differentiate};

}  // namespace

DerivativeWin::DerivativeWin(const QString& file, unsigned column, QWidget* parent)
    : CalculusWin(kDerivative, file, column, parent)
{
}
