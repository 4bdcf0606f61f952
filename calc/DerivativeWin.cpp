#include "calc/DerivativeWin.h"

using namespace veltrac;

namespace {

// "Derivate" and the other texts stand as users know them.
constexpr CalculusKind kKind = {"Ts-Derivative",
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
    : CalculusWin(kKind, file, column, parent)
{
}
