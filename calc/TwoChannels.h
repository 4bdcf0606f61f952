// What one channel has to do with another: cross power density, transfer function, coherence, averaged over
// segments. No window of the program.
//
// With X and Y the transforms of a segment of the input x and the output y, and < > the mean over the
// segments (J. S. Bendat, A. G. Piersol, "Random Data", 4th ed. 2010, chapters 6 and 9):
//
//     Gxx = c <|X|^2> / (fs S2), Gyy likewise, Gxy = c <conj(X) Y> / (fs S2): densities as those of one
//     channel
//
//     H1 = Gxy / Gxx, right where the output is noisy
//
//     H2 = Gyy / conj(Gxy), right where the input is
//
//     coherence = |Gxy|^2 / (Gxx Gyy), from 0 (nothing in common) to 1 (one is the other through a filter)
//
// Random errors (standard deviations over the value, their table 9.6) for n independent averages, g2 the
// coherence: |Gxy| 1 / sqrt(g2 n); |H| sqrt(1 - g2) / sqrt(2 g2 n); g2 sqrt(2) (1 - g2) / sqrt(g2 n); a phase
// has sqrt(1 - g2) / sqrt(2 g2 n) radians. Overlapping segments count as the fewer independent ones that
// scatter alike. A positive phase is an output ahead of the input.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "calc/SpectrumRequest.h"
#include "core/Progress.h"

class TSFILE;

namespace veltrac {

enum class TwoChannelResult { CrossDensity, H1, H2, Coherence };
inline constexpr int kTwoChannelResults = 4;
// As the box of results names it.
const char* twoChannelResultName(TwoChannelResult result);

struct TwoChannelRequest
{
    SpectrumRequest input;           // averaged; its own `result` does not count
    std::uint32_t column = 1;        // of the output
    std::uint32_t from = 1;          // the sample of the output beside the input's first
    bool interpolateOutput = false;  // missing values
    TwoChannelResult result = TwoChannelResult::H1;
    bool unwrapped = false;  // the phase goes on beyond half a turn
};

// The request of the output's samples: as the input's, but for column and range.
SpectrumRequest outputRequest(const TwoChannelRequest& request);

// Why a request has no answer; empty where it has one. A coherence of one segment is 1 whatever the channels
// are, and so are all random errors 0.
std::string twoChannelComplaint(const TwoChannelRequest& request);

// Mean densities of bins 0 to bins.
struct TwoChannelMeans
{
    std::vector<double> xx, yy, re, im;
    std::uint32_t segments = 0;
    double independent = 0.0;  // averages that scatter alike
};

// Throws the TS exceptions and std::bad_alloc.
JobOutcome averageTwoChannels(TSFILE& input, TSFILE& output, const TwoChannelRequest& request,
                              TwoChannelMeans& means, const Progress& progress);

// A bin of the result. `low` and `high` hold 95 % of what other series of the kind would give, phases in
// degrees from -180 to 180.
struct TwoChannelBin
{
    double value = 0.0;
    double low = 0.0;
    double high = 0.0;
    double phase = 0.0;
    double phaseError = 0.0;  // to both sides of the phase
    double coherence = 0.0;
};
TwoChannelBin twoChannelBin(const TwoChannelMeans& means, std::size_t bin, TwoChannelResult result);

// Columns of the target: "Freq", the result, its "Low" and "High", and but for the coherence "Phase",
// "PhaseLow", "PhaseHigh" and "Coherence".
std::uint32_t twoChannelColumns(TwoChannelResult result);
// Computes and writes the target, a sample a bin from bin 1 on, as computeSpectrum().
JobOutcome computeTwoChannels(TSFILE& input, TSFILE& output, const TwoChannelRequest& request, TSFILE& target,
                              const Progress& progress);
void describeTwoChannels(TSFILE& input, TSFILE& output, const TwoChannelRequest& request, TSFILE& target);

// Where two files lie side by side: the part of the first's range whose moments the second has too.
struct ChannelMatch
{
    std::uint32_t from = 1;  // of the first, both included
    std::uint32_t to = 0;
    std::uint32_t secondFrom = 1;
    std::string words;    // how: "lined up on the clock, …"
    std::string refusal;  // why not; empty where they do
};
ChannelMatch matchChannels(TSFILE& first, std::uint32_t from, std::uint32_t to, TSFILE& second,
                           bool isSameFile);

}  // namespace veltrac
