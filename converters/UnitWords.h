// Units in the heads and names of logs.
#pragma once

#include <string>

namespace veltrac {

// Whether a cell or a line says a unit: "kN", "m/s2", "°C", "1/min", "kWh/m^2", "deg C". Any letters' case.
bool isUnit(const std::string& text);

// "[V]" and "(V)" as "V".
std::string withoutBrackets(std::string unit);

// Takes the unit of "Force [kN]" and "Force (kN)" out of the name, and the brackets of a unit off; where
// there is a unit already, it stays, unless it is a dash. "v(in)" and "log(M)" are whole names.
void splitUnit(std::string& name, std::string& unit);

}  // namespace veltrac
