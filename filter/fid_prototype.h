// Analogue low-pass prototypes with their corner at 1 rad/s.
#pragma once

#include <complex>
#include <optional>
#include <vector>

#include "filter/fid_spec.h"

namespace veltrac {

// A pole or zero of the analogue plane. A pair stands for itself and its conjugate.
struct FidRoot
{
    std::complex<double> s{};
    bool pair = false;
    bool infinite = false;
};

// All-pole low-pass: its poles and its gain at 0 (1, or the ripple for a Chebyshev of even order).
struct FidPrototype
{
    std::vector<FidRoot> poles;
    double gain = 1.0;
};

inline constexpr int kMaxBesselOrder = 10;
inline constexpr int kMaxOrder = 64;

// The prototype of a Bessel, Butterworth, Chebyshev or cross spec-string. Bessel, Butterworth and the cross
// have half power at 1 rad/s, a Chebyshev its ripple edge, or half power as well with `halfPower`.
// Reports and returns nothing when the order is too high or the ripple or percentage cannot be.
std::optional<FidPrototype> makeFidPrototype(const FidSpec& spec, bool halfPower);

}  // namespace veltrac
