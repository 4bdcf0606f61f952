// Filters of closed form: biquads, resonators, proportional-integral.
#pragma once

#include <optional>

#include "filter/fid_sections.h"

namespace veltrac {

// The frequency is a fraction of the sampling rate. They report and return nothing when the order, Q or
// another value cannot be.
std::optional<FidCascade> makeBiquads(const FidSpec& spec, double frequency, bool halfPower,
                                      const char* text);
std::optional<FidCascade> makeResonator(const FidSpec& spec, double frequency, const char* text);
FidCascade makeProportionalIntegral(FidMapping mapping, double frequency);

}  // namespace veltrac
