// What the passes share with their machine-specific builds. Internal to the transform.
#pragma once

// Neighbouring twiddle indices that a pass takes at a time: long enough to read whole cache lines, short
// enough that the twiddles of a tile stay in the first-level cache.
inline constexpr int kTileOfFixedRadix = 64;
inline constexpr int kTileOfOddRadix = 16;
inline constexpr int kTrigEntries = 40;
inline constexpr int kFixedRadices = 10;

// The process-wide work tables of one pass.
struct RadixTables
{
    // cos and -sin of 2 pi i / radix for the general odd butterfly.
    double trigRe[kTrigEntries];
    double trigIm[kTrigEntries];
    // Powers of the rotation by one twiddle index, 0 .. tile-1.
    alignas(64) double rotationRe[kTileOfFixedRadix];
    alignas(64) double rotationIm[kTileOfFixedRadix];
    // Twiddles of the present tile: power k of index l at k * tile + l.
    alignas(64) double twiddleRe[kTrigEntries * kTileOfOddRadix];
    alignas(64) double twiddleIm[kTrigEntries * kTileOfOddRadix];
};
static_assert(kFixedRadices * kTileOfFixedRadix <= kTrigEntries * kTileOfOddRadix);

// One build of radixPass(); `tables` has the trigonometric entries of the radix already.
using PassKernel = void (*)(int span, int radix, int groupCount, double* re, double* im, RadixTables& tables);

void radixPassBaseline(int span, int radix, int groupCount, double* re, double* im, RadixTables& tables);
#if defined(VELTRAC_FFT_X86)
// For processors with AVX2 and FMA, and with AVX-512 (F and DQ).
void radixPassAvx2(int span, int radix, int groupCount, double* re, double* im, RadixTables& tables);
void radixPassAvx512(int span, int radix, int groupCount, double* re, double* im, RadixTables& tables);
#endif
