#include "calc/IntegrateWin.h"

using namespace veltrac;

namespace {

// "Filtering...finished" is wanted here, though nothing is filtered.
constexpr CalculusKind kIntegral = {"Ts-Integrate",
                                    ":img_Integration",
                                    "Welcome to Ts-Integrate",
                                    kIntegralNames.column,
                                    kIntegralNames.text,
                                    kIntegralNames.unit,
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
