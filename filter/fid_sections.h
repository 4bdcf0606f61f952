// Second-order sections: from the roots of the analogue plane to the digital cascade.
#pragma once

#include <complex>
#include <optional>
#include <vector>

#include "filter/fid_prototype.h"

namespace veltrac {

// One section of the cascade, lowest delay first; a[0] is 1. Both have one to three coefficients.
struct FidSection
{
    std::vector<double> a;
    std::vector<double> b;
};

using FidCascade = std::vector<FidSection>;

// B(z) / A(z) at z = exp(2 pi i f), f a fraction of the sampling rate.
std::complex<long double> sectionResponse(const FidSection& section, double frequency);
double cascadeGain(const FidCascade& cascade, double frequency);

// Whether all coefficients are numbers and all poles lie inside the unit circle (with `marginal`, on it
// counts as inside).
bool isStable(const FidCascade& cascade, bool marginal = false);

// Brings a prototype to a shape and to the digital plane. The frequencies (the second only for bands) are
// fractions of the sampling rate. The gain at the reference frequency is the prototype's at 0. Returns
// nothing when the frequencies are too low or too close for coefficients in double precision.
std::optional<FidCascade> makeCascade(const FidPrototype& prototype, FidShape shape, FidMapping mapping,
                                      double f0, double f1);

}  // namespace veltrac
