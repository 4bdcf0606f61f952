// Vectors of 16 bytes, which every processor of the program's has, by the means of GCC and Clang: left to
// find them in a loop that mixes floats and doubles, the compiler gives up. They compute what their lanes
// would.
#pragma once

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <array>
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

// Lane k of vector i becomes lane i of vector k.
inline std::array<FourFloats, 4> transposed(const FourFloats (&v)[4])
{
    const FourFloats low01 = __builtin_shufflevector(v[0], v[1], 0, 4, 1, 5);
    const FourFloats low23 = __builtin_shufflevector(v[2], v[3], 0, 4, 1, 5);
    const FourFloats high01 = __builtin_shufflevector(v[0], v[1], 2, 6, 3, 7);
    const FourFloats high23 = __builtin_shufflevector(v[2], v[3], 2, 6, 3, 7);
    return {__builtin_shufflevector(low01, low23, 0, 1, 4, 5),
            __builtin_shufflevector(low01, low23, 2, 3, 6, 7),
            __builtin_shufflevector(high01, high23, 0, 1, 4, 5),
            __builtin_shufflevector(high01, high23, 2, 3, 6, 7)};
}

#ifdef __SSE2__
// Values 0 and 1, 2 and 3 of four in double precision. The portable form below comes out value by value.
inline TwoDoubles lowDoubles(FourFloats v)
{
    return _mm_cvtps_pd(v);
}
inline TwoDoubles highDoubles(FourFloats v)
{
    return _mm_cvtps_pd(_mm_movehl_ps(v, v));
}
#else
inline TwoDoubles lowDoubles(FourFloats v)
{
    return TwoDoubles{static_cast<double>(v[0]), static_cast<double>(v[1])};
}
inline TwoDoubles highDoubles(FourFloats v)
{
    return TwoDoubles{static_cast<double>(v[2]), static_cast<double>(v[3])};
}
#endif

}  // namespace veltrac
