// Vectors of 16 bytes, which every processor of the program's has, by the means of GCC and Clang: left to
// find them in a loop that mixes floats and doubles, the compiler gives up. They compute what their lanes
// would.
#pragma once

#ifdef __SSE2__
#include <emmintrin.h>
#endif

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
