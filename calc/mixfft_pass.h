// One pass of the mixed-radix transform, walked in tiles, for vectors of type V.
//
// Included by each machine-specific build; see mixfft_butterflies.h for why all of it is in an unnamed
// namespace and free of inline library functions.
#pragma once

#include <math.h>
#include <string.h>

#include "calc/mixfft_butterflies.h"
#include "calc/mixfft_kernels.h"

namespace {

inline constexpr double kPi = 3.141592653589793;
inline constexpr int kMaxRadix = 40;

// Where the butterflies of a pass lie, and their tables.
struct PassPlace
{
    double* re;
    double* im;
    long span;
    int radix;
    long groupSize;
    int tile;
    RadixTables* tables;
};

template <class V>
constexpr int lanesOf()
{
    return static_cast<int>(sizeof(V) / sizeof(double));
}

template <class V, int kRadix>
inline void applyButterfly(V* re, V* im, int radix, const RadixTables& tables)
{
    if constexpr (kRadix == 2) {
        butterfly2(re, im);
    } else if constexpr (kRadix == 3) {
        butterfly3(re, im);
    } else if constexpr (kRadix == 4) {
        butterfly4(re, im);
    } else if constexpr (kRadix == 5) {
        butterfly5(re, im);
    } else if constexpr (kRadix == 8) {
        butterfly8(re, im);
    } else if constexpr (kRadix == 10) {
        butterfly10(re, im);
    } else {
        butterflyOdd(radix, re, im, tables.trigRe, tables.trigIm);
    }
}

template <class V, class W>
inline void turn(V& re, V& im, const W& turnRe, const W& turnIm)
{
    const V r = re * turnRe - im * turnIm;
    im = re * turnIm + im * turnRe;
    re = r;
}

// Neighbouring butterflies of one group, the first at `base`, with twiddle `index` of the tile.
template <class V, int kRadix>
inline void butterfliesAlong(const PassPlace& place, long base, int index)
{
    const int radix = kRadix == 0 ? place.radix : kRadix;
    V re[kRadix == 0 ? kMaxRadix : kRadix];
    V im[kRadix == 0 ? kMaxRadix : kRadix];
    memcpy(re, place.re + base, sizeof(V));
    memcpy(im, place.im + base, sizeof(V));
    for (int k = 1; k < radix; ++k) {
        memcpy(re + k, place.re + base + k * place.span, sizeof(V));
        memcpy(im + k, place.im + base + k * place.span, sizeof(V));
        V turnRe;
        V turnIm;
        memcpy(&turnRe, place.tables->twiddleRe + k * place.tile + index, sizeof(V));
        memcpy(&turnIm, place.tables->twiddleIm + k * place.tile + index, sizeof(V));
        turn(re[k], im[k], turnRe, turnIm);
    }
    applyButterfly<V, kRadix>(re, im, radix, *place.tables);
    for (int k = 0; k < radix; ++k) {
        memcpy(place.re + base + k * place.span, re + k, sizeof(V));
        memcpy(place.im + base + k * place.span, im + k, sizeof(V));
    }
}

// The same butterfly of neighbouring groups: what is left where the span is no multiple of the vector.
template <class V, int kRadix, bool kTwiddled>
inline void butterfliesAcross(const PassPlace& place, long base, int index)
{
    constexpr int kLanes = lanesOf<V>();
    const int radix = kRadix == 0 ? place.radix : kRadix;
    V re[kRadix == 0 ? kMaxRadix : kRadix];
    V im[kRadix == 0 ? kMaxRadix : kRadix];
    double lanesRe[kLanes];
    double lanesIm[kLanes];
    for (int k = 0; k < radix; ++k) {
        const double* fromRe = place.re + base + k * place.span;
        const double* fromIm = place.im + base + k * place.span;
        for (int lane = 0; lane < kLanes; ++lane) {
            lanesRe[lane] = fromRe[lane * place.groupSize];
            lanesIm[lane] = fromIm[lane * place.groupSize];
        }
        memcpy(re + k, lanesRe, sizeof(V));
        memcpy(im + k, lanesIm, sizeof(V));
        if (kTwiddled && k > 0)
            turn(re[k], im[k], place.tables->twiddleRe[k * place.tile + index],
                 place.tables->twiddleIm[k * place.tile + index]);
    }
    applyButterfly<V, kRadix>(re, im, radix, *place.tables);
    for (int k = 0; k < radix; ++k) {
        double* toRe = place.re + base + k * place.span;
        double* toIm = place.im + base + k * place.span;
        memcpy(lanesRe, re + k, sizeof(V));
        memcpy(lanesIm, im + k, sizeof(V));
        for (int lane = 0; lane < kLanes; ++lane) {
            toRe[lane * place.groupSize] = lanesRe[lane];
            toIm[lane * place.groupSize] = lanesIm[lane];
        }
    }
}

// Butterflies firstIndex + 0 .. length-1 of all groups; the tile's twiddles are built.
template <class V, int kRadix, bool kTwiddled>
inline void walkTile(const PassPlace& place, long first, int length, long groupCount)
{
    constexpr int kLanes = lanesOf<V>();
    const int whole = kTwiddled ? length - length % kLanes : 0;
    for (long group = 0; group < groupCount; group += kLanes) {
        const int batch = groupCount - group < kLanes ? static_cast<int>(groupCount - group) : kLanes;
        const long base = group * place.groupSize + first;
        for (int g = 0; g < batch; ++g)
            for (int l = 0; l < whole; l += kLanes)
                butterfliesAlong<V, kRadix>(place, base + g * place.groupSize + l, l);
        for (int l = whole; l < length; ++l) {
            if (batch == kLanes) {
                butterfliesAcross<V, kRadix, kTwiddled>(place, base + l, l);
                continue;
            }
            for (int g = 0; g < batch; ++g)
                butterfliesAlong<double, kRadix>(place, base + g * place.groupSize + l, l);
        }
    }
}

// rotation[l] = (cos, -sin) of angle * l, by doubling, so that no entry is more than six products away.
inline void buildRotation(RadixTables& tables, double angle, int length)
{
    double stepRe = cos(angle);
    double stepIm = -sin(angle);
    tables.rotationRe[0] = 1.0;
    tables.rotationIm[0] = 0.0;
    for (int known = 1; known < length; known *= 2) {
        for (int l = 0; l < known; ++l) {
            tables.rotationRe[known + l] = tables.rotationRe[l] * stepRe - tables.rotationIm[l] * stepIm;
            tables.rotationIm[known + l] = tables.rotationRe[l] * stepIm + tables.rotationIm[l] * stepRe;
        }
        turn(stepRe, stepIm, double(stepRe), double(stepIm));
    }
}

// The twiddles of a tile: the first power turned on from a fresh cosine and sine (the rotation alone would
// drift over a long span), the others by repeated products.
inline void buildTwiddles(const PassPlace& place, double angle, long first, int length)
{
    RadixTables& t = *place.tables;
    const double seedRe = cos(angle * static_cast<double>(first));
    const double seedIm = -sin(angle * static_cast<double>(first));
    const int tile = place.tile;
    for (int l = 0; l < length; ++l) {
        t.twiddleRe[l] = 1.0;
        t.twiddleIm[l] = 0.0;
        t.twiddleRe[tile + l] = seedRe * t.rotationRe[l] - seedIm * t.rotationIm[l];
        t.twiddleIm[tile + l] = seedRe * t.rotationIm[l] + seedIm * t.rotationRe[l];
    }
    for (int k = 2; k < place.radix; ++k) {
        double* re = t.twiddleRe + k * tile;
        double* im = t.twiddleIm + k * tile;
        for (int l = 0; l < length; ++l) {
            re[l] = re[l - tile] * t.twiddleRe[tile + l] - im[l - tile] * t.twiddleIm[tile + l];
            im[l] = re[l - tile] * t.twiddleIm[tile + l] + im[l - tile] * t.twiddleRe[tile + l];
        }
    }
}

template <class V, int kRadix>
void passOfRadix(PassPlace place, long groupCount)
{
    place.tile = kRadix == 0 ? kTileOfOddRadix : kTileOfFixedRadix;
    const double angle = 2.0 * kPi / static_cast<double>(place.groupSize);
    const int longest = place.span < place.tile ? static_cast<int>(place.span) : place.tile;
    buildRotation(*place.tables, angle, longest);
    if (place.span == 1) {
        buildTwiddles(place, angle, 0, 1);
        walkTile<V, kRadix, false>(place, 0, 1, groupCount);
        return;
    }
    for (long first = 0; first < place.span; first += place.tile) {
        const int length =
            place.span - first < place.tile ? static_cast<int>(place.span - first) : place.tile;
        buildTwiddles(place, angle, first, length);
        walkTile<V, kRadix, true>(place, first, length, groupCount);
    }
}

template <class V>
void passOfVectors(int span, int radix, int groupCount, double* re, double* im, RadixTables& tables)
{
    const PassPlace place{re, im, span, radix, static_cast<long>(span) * radix, 0, &tables};
    switch (radix) {
        case 1:
            break;
        case 2:
            passOfRadix<V, 2>(place, groupCount);
            break;
        case 3:
            passOfRadix<V, 3>(place, groupCount);
            break;
        case 4:
            passOfRadix<V, 4>(place, groupCount);
            break;
        case 5:
            passOfRadix<V, 5>(place, groupCount);
            break;
        case 8:
            passOfRadix<V, 8>(place, groupCount);
            break;
        case 10:
            passOfRadix<V, 10>(place, groupCount);
            break;
        default:
            passOfRadix<V, 0>(place, groupCount);
            break;
    }
}

}  // namespace
