// Numbers in sentences.
#pragma once

#include <cstdint>
#include <string>

namespace veltrac {

// 1 000 003: blanks between the thousands, whatever the language.
std::string groupedDigits(std::uint64_t number);
// Up to so many significant digits, no zeros behind them: "0.001", "1.5e-07".
std::string generalNumber(double number, int digits);
// All of so many significant digits: "3.000", "12.40", "0.001230".
std::string significantNumber(double number, int digits);
// So many decimals.
std::string fixedNumber(double number, int decimals);
// "1 missing value", "12 missing values".
std::string counted(std::uint64_t count, const std::string& singular);

}  // namespace veltrac
