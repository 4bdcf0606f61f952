// Vectors of 16 bytes, which every processor of the program's has, by the means of GCC and Clang: left to
// find them in a loop that mixes floats and doubles, the compiler gives up. They compute what their lanes
// would.
#pragma once

#include <cstdint>
#include <cstring>

namespace veltrac {

using FourFloats = float __attribute__((vector_size(16)));
using FourWords = std::uint32_t __attribute__((vector_size(16)));
using TwoDoubles = double __attribute__((vector_size(16)));

template <typename Vector, typename Value>
Vector vectorAt(const Value* values)
{
    Vector v;
    std::memcpy(&v, values, sizeof v);
    return v;
}

}  // namespace veltrac
