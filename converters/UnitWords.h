#pragma once

#include <string>

namespace veltrac {

// Whether a cell or a line says a unit: "kN", "m/s2", "°C", "1/min", "kWh/m^2", "deg C". Any letters' case.
bool isUnit(const std::string& text);

}  // namespace veltrac
