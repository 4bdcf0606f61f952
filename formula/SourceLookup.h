// Where a column of a ts-file is read for a time: at which sample, or between which two.
#pragma once

#include <cmath>
#include <cstdint>

class TSFILE;

namespace veltrac {

// How a source variable finds its samples; taken from its file once, when the formula is compiled.
struct SourceLookup
{
    bool isOwn = false;         // the target's own file: each sample is read where it is written
    std::uint32_t first = 1;    // number of the oldest sample that the file holds
    std::uint32_t samples = 0;  // how many it holds
    double shift = 0.0;         // from t to the time since the source's start, seconds
    double rate = 0.0;          // samples per second
    double before = 0.0;        // samples from the start to the oldest one
    double lastPosition = 0.0;  // of the last sample
    double grain = 0.0;         // samples that a float of one second cannot tell apart
    double grainOfShift = 0.0;  // samples that the floats of two different starts cannot tell apart
    // Where the next evaluation will most likely look, counted from 0: one step behind the last sample met.
    std::uint32_t expected = 0;
    std::uint32_t step = 1;

    // In samples behind the oldest one. Times count as 32-bit floats here.
    double positionAt(double t) const noexcept
    {
        return (static_cast<double>(static_cast<float>(t)) + shift) * rate - before;
    }
    // How much positionAt() may miss a sample that is meant.
    double grainAt(double t) const noexcept
    {
        return std::fabs(static_cast<double>(static_cast<float>(t))) * grain + grainOfShift;
    }
};

// The lookup of a source for a target that may be null: then t counts from 0 on the scale of the source's
// start. In a ring file, full or not, samples are found by their numbers, and those that it does not hold are
// none. Throws what reading the headers throws.
SourceLookup lookupOf(TSFILE& source, TSFILE* target);

struct Place
{
    std::uint32_t index = 0;  // from the oldest sample, 0
    double fraction = 0.0;    // of the way to the next one; 0: that sample itself
    bool isNowhere = false;   // no time, or a file without samples
};

// Before the first sample it is the first and behind the last the last. The samples of a file without a
// sample time all lie at its start: up to there it is the first one.
Place placeOf(const SourceLookup& lookup, double t) noexcept;

inline double interpolated(double before, double after, double fraction) noexcept
{
    return before + (after - before) * fraction;
}

}  // namespace veltrac
