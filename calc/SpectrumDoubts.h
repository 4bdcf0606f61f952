// What a spectrum would have to assume about its samples, to be agreed upon before it is computed.
#pragma once

#include <span>
#include <string>

#include "calc/SpectrumRequest.h"
#include "core/Progress.h"

class TSFILE;

namespace veltrac {

struct SpectrumDoubt
{
    enum class Kind {
        None,
        Question,    // `text` is a question, `answer` the one that goes on: "Interpolate"
        Impossible,  // `text` says why
        Cancelled
    };
    Kind kind = Kind::None;
    std::string text;
    std::string answer;
};

// One look at a request. The request becomes what is agreed on where the answer is to go on: `interpolate`,
// `dt` and `averaged` may have changed. Throws the TS exceptions.
struct SpectrumCheck
{
    const char* title;  // of its progress
    SpectrumDoubt (*look)(TSFILE& source, const std::string& fileName, SpectrumRequest& request,
                          const Progress& progress);
};

// In the order in which they are made: a whole range that is too long for the memory, missing values, unequal
// steps of time.
std::span<const SpectrumCheck> spectrumChecks();

}  // namespace veltrac
