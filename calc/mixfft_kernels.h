// What the transform shares with its machine-specific builds. Internal to the transform.
//
// A length is split into stages (J. W. Cooley, J. W. Tukey, "An algorithm for the machine calculation of
// complex Fourier series", Math. Comp. 19 (1965) 297-301; the order is that of D. H. Bailey, "FFTs in
// external or hierarchical memory", J. Supercomputing 4 (1990) 23-35): stage s does transforms of length[s]
// values that lie `span` apart, span being the product of the lengths before it. Neighbours do not depend on
// each other, so a tile takes some of them side by side, as the lanes of vectors, through a buffer in the
// cache.
#pragma once

#include <cstddef>

namespace veltrac {

// Neighbouring transforms of a tile: whole cache lines of them.
inline constexpr int kLeastLanes = 8;
inline constexpr int kMostLanes = 32;
// The longest transform of a stage; its tile, its turns and a copy of it fit a second-level cache.
inline constexpr int kMaxStageLength = 1024;
// Values of a tile, so that it fits a second-level cache.
inline constexpr int kMaxTile = 16 * kMaxStageLength;
inline constexpr int kMaxStagePasses = 12;
// Turns of a tile are products of a coarse and a fine one, each of no more than these.
inline constexpr int kTurnParts = 32;
// Neighbouring bins of the split of a real transform that share a fresh cosine and sine.
inline constexpr int kSplitRun = 64;

// One radix of a stage. Values `span` apart are joined.
struct FftPass
{
    int radix = 1;
    int span = 1;
    const double* roots = nullptr;  // for each m < span and k = 1 .. radix-1: w^(m k), real and imaginary
    const double* trig = nullptr;   // cos and -sin of 2 pi k / radix, k < radix, where the radix has no
                                    // butterfly of its own: first all the cosines
};

struct FftStage
{
    int length = 1;
    std::ptrdiff_t span = 1;
    int passCount = 0;
    FftPass passes[kMaxStagePasses];
    const int* rows = nullptr;  // of the input: the first of each butterfly of the first pass
};

// Planar rows of lanes.
struct FftRows
{
    double* re;
    double* im;
    std::ptrdiff_t step;  // from row to row
};

struct FftTile
{
    const double* re;
    const double* im;
    std::ptrdiff_t stepRe;  // from row to row
    std::ptrdiff_t stepIm;
    const double* turnRe;  // factors of the input, rows of `lanes`; null for none
    const double* turnIm;
    int lanes;
    FftRows work;  // rows of `lanes`
    FftRows to;    // may be where the input is, or the work rows
};

// The turns of a tile: row k, lane l gets coarse[k / parts][l] * fine[k % parts][l], where both are the
// product of a number of the tile and one of the lane.
struct TurnFactors
{
    int parts = 1;  // how many fine ones
    int coarseParts = 1;
    double coarseRe[kTurnParts], coarseIm[kTurnParts];
    double fineRe[kTurnParts], fineIm[kTurnParts];
    alignas(64) double laneCoarseRe[kTurnParts * kMostLanes], laneCoarseIm[kTurnParts * kMostLanes];
    alignas(64) double laneFineRe[kTurnParts * kMostLanes], laneFineIm[kTurnParts * kMostLanes];
};

// One build of the loops.
struct FftKernel
{
    const char* name;
    void (*transform)(const FftStage& stage, const FftTile& tile);
    // The same where the real and imaginary parts of the input are neighbours; no turns.
    void (*transformPairs)(const FftStage& stage, const FftTile& tile);
    void (*buildTurns)(const TurnFactors& factors, int length, int lanes, double* turnRe, double* turnIm);
    // Lane l of the rows becomes length neighbours at to + place[l].
    void (*scatter)(const double* rows, int length, int lanes, const std::ptrdiff_t* place, double* to);
    // Bins first .. first + count - 1 (count <= kSplitRun) of a real transform of 2 * half samples, and their
    // mirrors, out of the transform of its pairs. `turn` is the factor of `first`, rotation those of the
    // steps from there.
    void (*split)(int half, int first, int count, const double* turn, const double* rotationRe,
                  const double* rotationIm, double* re, double* im);
};

extern const FftKernel kFftBaseline;
#if defined(VELTRAC_FFT_X86)
// For processors with AVX2 and FMA, and with AVX-512 (F and DQ).
extern const FftKernel kFftAvx2;
extern const FftKernel kFftAvx512;
#endif

// The build of this name, if there is one and this processor has what it takes; else, and for null, the
// fastest.
const FftKernel& fftKernelNamed(const char* name);

// The build that transforms run in: at first the one that the environment's VELTRAC_FFT_KERNEL names.
const FftKernel& fftKernel();
void useFftKernel(const FftKernel& kernel);

}  // namespace veltrac
