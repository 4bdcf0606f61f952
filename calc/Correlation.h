// How alike a series is to another one, or to itself, when it is shifted. No window of the program.
//
// With the trend taken off both (J. S. Bendat, A. G. Piersol, "Random Data", 4th ed. 2010, section 11.6):
//
//     r(l) = sum of x(i) y(i + l) over the samples that both have, for lags l = -most .. most
//     biased r / n; unbiased r / (n - |l|); normalised r / sqrt(sum of x^2, sum of y^2), from -1 to 1
//
// A greatest at a positive lag means that y comes later. Computed by transforms of blocks that are padded so
// that no lag wraps round, their cross products summed before a single transform back; a real series is had
// back from its conjugate bins by one real transform of (re - im) (R. N. Bracewell, "The fast Hartley
// transform", Proc. IEEE 72 (1984)). Memory goes with the greatest lag, not with the series.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "calc/SpectrumRequest.h"
#include "core/Progress.h"

class TSFILE;

namespace veltrac {

enum class CorrelationScale { Normalised, Biased, Unbiased };
inline constexpr int kCorrelationScales = 3;
const char* correlationScaleName(CorrelationScale scale);

struct CorrelationRequest
{
    SpectrumRequest first;           // column, range, trend, dt, interpolate: the rest does not count
    std::uint32_t secondColumn = 0;  // 0: the first with itself
    std::uint32_t secondFrom = 1;    // its sample beside the first's `from`
    bool interpolateSecond = false;
    CorrelationScale scale = CorrelationScale::Normalised;
    std::uint32_t mostLag = 1000;  // samples, below the number of samples in the range
};

// The request of the second one's samples.
SpectrumRequest secondRequest(const CorrelationRequest& request);

// The bytes of memory that a greatest lag takes.
std::uint64_t correlationBytes(std::uint32_t mostLag);
// The greatest lag that there may be: what a transform can hold.
inline constexpr std::uint32_t kMostCorrelationLag = 1U << 28;

// values[l + mostLag] is lag l. Throws the TS exceptions and std::bad_alloc.
JobOutcome correlate(TSFILE& first, TSFILE& second, const CorrelationRequest& request,
                     std::vector<double>& values, const Progress& progress);

// Where a correlation is greatest; of a series with itself the first top of at least nine tenths of the
// greatest beyond the first lag at which it is below 0 (at once it is greatest at 0, which says nothing).
// Between the lags it is what the band-limited series through them has there (windowed sinc), the top the
// vertex of the parabola through three such values.
struct CorrelationTop
{
    double lag = 0.0;  // samples
    double value = 0.0;
    bool isThere = false;
};
CorrelationTop correlationTop(const std::vector<double>& values, bool ofItself);

// A sample a lag, 2 * mostLag + 1 of them, of columns "Lag" in seconds and the result; the file's own times
// are the lags.
JobOutcome computeCorrelation(TSFILE& first, TSFILE& second, const CorrelationRequest& request,
                              TSFILE& target, CorrelationTop& top, const Progress& progress);
void describeCorrelation(TSFILE& first, TSFILE& second, const CorrelationRequest& request, TSFILE& target);

}  // namespace veltrac
