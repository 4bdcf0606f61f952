// Roots of one. Internal to the transform, and not for its machine-specific builds.
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>

namespace veltrac {

// exp(-2 pi i turns / whole), for turns of at least 0.
struct FftRoot
{
    FftRoot(std::int64_t turns, std::int64_t whole)
    {
        turns %= whole;
        if (2 * turns > whole)
            turns -= whole;  // the cosine and sine of a small angle are the more exact ones
        const double angle = 2.0 * std::numbers::pi * static_cast<double>(turns) / static_cast<double>(whole);
        re = std::cos(angle);
        im = -std::sin(angle);
    }

    double re;
    double im;
};

}  // namespace veltrac
