// The single steps of mixedRadixFft(), in the order in which it takes them. Tables of passes count from 1.
#pragma once

namespace veltrac {
// No 32-bit length has more factors than this, index 0 included.
inline constexpr int kMaxPasses = 33;
}  // namespace veltrac

// Splits n >= 1 into the radices of the passes, radixOf[1 .. *passCount]; n = 1 gives the one radix 1.
// Found are 10, 8, 5, 4, 3, 2 as often as they divide, then the remaining primes from below; an 8 and a
// last 2 become two passes of radix 4. The factor found last comes first.
void factorLength(int n, int* passCount, int* radixOf);

// For pass i: span[i], the product of the radices before it, and groups[i], the number of its butterfly
// groups; groups[0] = n. Ends the process with status 1 when radixOf[1] is above kMaxPrimeFactor.
void buildPassTables(int* span, const int* radixOf, int* groups, const int* passCount, const int* n);

// Copies x to y in the order in which the digits of the index, taken in the passes' radices, are reversed.
void digitReversal(int n, int passCount, const int* radixOf, const int* groups, const double* xRe,
                   const double* xIm, double* yRe, double* yIm);

// One pass in place over groupCount groups of span * radix values each: butterflies of values `span` apart,
// value k of butterfly t turned by exp(-2 pi i k t / (span * radix)) before.
void radixPass(int span, int radix, int groupCount, double* yRe, double* yIm);
