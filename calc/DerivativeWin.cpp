#include "calc/DerivativeWin.h"

namespace {

// "Derivate" and the other texts stand as users know them.
constexpr CalculusKind kKind = {"Ts-Derivative",
                                ":img_Derivation",
                                "Welcome to Ts-Derivate",
                                "d(col1)/dt",
                                "Calculate dy/dt.",
                                "Save",
                                "Computing...finished",
                                "Ts-Derivative info",
                                "derivative",
                                "So are the differences beside them.",
                                true,
                                differentiate};

}  // namespace

DerivativeWin::DerivativeWin(const QString& file, unsigned column, QWidget* parent)
    : CalculusWin(kKind, file, column, parent)
{
}
