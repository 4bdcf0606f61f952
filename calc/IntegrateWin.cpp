#include "calc/IntegrateWin.h"

using namespace veltrac;

namespace {

// "Filtering...finished" is wanted here, though nothing is filtered.
constexpr CalculusKind kIntegral = {"Ts-Integrate",
                                    ":img_Integration",
                                    "Welcome to Ts-Integrate",
                                    "Int(col1)/dt",
                                    "Int(%1)",
                                    "%1·%2",
                                    "Calculate the target acc. to the present algorithm.",
                                    "SaveTS",
                                    "Filtering...finished",
                                    "Ts-Integrate info",
                                    "integral",
                                    "After the first one of the source the integral is missing.",
                                    false,
                                    integrate};

}  // namespace

IntegrateWin::IntegrateWin(const QString& file, unsigned column, QWidget* parent)
    : CalculusWin(kIntegral, file, column, parent)
{
}
