// Counts as windows write them.
#pragma once

#include <QString>

#include <cstdint>

namespace veltrac {

// 1 000 003: blanks between the thousands, whatever the language.
QString groupedNumber(std::uint64_t number);

}  // namespace veltrac
