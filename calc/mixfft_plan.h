// How a length is transformed: its stages and the tables that depend on nothing else. Internal to the
// transform.
#pragma once

#include <cstddef>
#include <cstdint>

#include "calc/mixfft_kernels.h"

namespace veltrac {

// Lengths below are taken in the plain single steps.
inline constexpr int kShortestStaged = 64;
inline constexpr int kMaxStages = 8;
// The turns of lengths up to this are kept, those of longer ones made tile by tile.
inline constexpr int kKeptTurns = 16384;

// The stages of a length from kShortestStaged on without a prime factor above kMaxPrimeFactor. There is one,
// process-wide, made anew when the length or the build changes; it allocates nothing.
class FftPlan
{
public:
    static FftPlan& of(int n);

    int length() const { return m_length; }
    const FftKernel& kernel() const { return *m_kernel; }
    int lanes() const { return m_lanes; }
    int stageCount() const { return m_stageCount; }
    const FftStage& stage(int i) const { return m_stages[i]; }

    // The factors of the input of stage i > 0 for lanes `first` to first + lanes() - 1: rows of lanes().
    // Borrowed until the next call.
    struct Turns
    {
        const double* re;
        const double* im;
    };
    Turns turns(int i, std::ptrdiff_t first);

private:
    // Trigonometric entries of all odd radices of a stage, whose product is at most kMaxStageLength.
    static constexpr int kTrigOfStage = 128;
    struct Tables
    {
        int rows[kMaxStageLength];
        double roots[2 * kMaxStageLength + kTrigOfStage];
        TurnFactors factors;
    };

    void make(int n);
    void makeStage(int i, std::ptrdiff_t span, int length);
    void makeLaneFactors(int i);
    void keepTurns();
    void buildTurns(int i, std::ptrdiff_t first, double* re, double* im);

    int m_length = 0;
    const FftKernel* m_kernel = nullptr;
    int m_lanes = kLeastLanes;
    int m_stageCount = 0;
    bool m_keepsTurns = false;
    FftStage m_stages[kMaxStages];
    Tables m_tables[kMaxStages];
    alignas(64) double m_keptRe[kKeptTurns + kMaxTile];
    alignas(64) double m_keptIm[kKeptTurns + kMaxTile];
    alignas(64) double m_turnRe[kMaxTile];
    alignas(64) double m_turnIm[kMaxTile];
};

}  // namespace veltrac
