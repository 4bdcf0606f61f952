// The loops of a stage of the transform, for vectors of type V.
//
// Included by each machine-specific build; see mixfft_butterflies.h for why all of it is in an unnamed
// namespace and free of inline library functions.
#pragma once

#include "calc/mixfft_butterflies.h"
#include "calc/mixfft_kernels.h"

namespace {

using veltrac::FftKernel;
using veltrac::FftPass;
using veltrac::FftRows;
using veltrac::FftStage;
using veltrac::FftTile;
using veltrac::TurnFactors;

inline constexpr int kMaxRadix = 40;

template <class V>
inline constexpr int kLanesOf = static_cast<int>(sizeof(V) / sizeof(double));

// A vector in memory, with the alignment of its values.
template <class V>
struct InMemory
{
    V value;
} __attribute__((packed, may_alias));

template <class V>
[[gnu::always_inline]] inline V load(const double* from)
{
    return reinterpret_cast<const InMemory<V>*>(from)->value;
}

template <class V>
[[gnu::always_inline]] inline void store(double* to, const V& v)
{
    reinterpret_cast<InMemory<V>*>(to)->value = v;
}

// The values of a butterfly one by one, all at once where the compiler knows how many: they then stay in
// registers.
template <int kKnown, class Job>
[[gnu::always_inline]] inline void forValues(int count, const Job& job)
{
    if constexpr (kKnown == 0) {
        for (int k = 0; k < count; ++k)
            job(k);
    } else {
#pragma GCC unroll 16
        for (int k = 0; k < kKnown; ++k)
            job(k);
    }
}

template <class V>
inline V even(const V& a, const V& b)
{
    if constexpr (kLanesOf<V> == 2) {
        return __builtin_shufflevector(a, b, 0, 2);
    } else if constexpr (kLanesOf<V> == 4) {
        return __builtin_shufflevector(a, b, 0, 2, 4, 6);
    } else {
        return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14);
    }
}

template <class V>
inline V odd(const V& a, const V& b)
{
    if constexpr (kLanesOf<V> == 2) {
        return __builtin_shufflevector(a, b, 1, 3);
    } else if constexpr (kLanesOf<V> == 4) {
        return __builtin_shufflevector(a, b, 1, 3, 5, 7);
    } else {
        return __builtin_shufflevector(a, b, 1, 3, 5, 7, 9, 11, 13, 15);
    }
}

template <class V>
inline V reversed(const V& a)
{
    if constexpr (kLanesOf<V> == 2) {
        return __builtin_shufflevector(a, a, 1, 0);
    } else if constexpr (kLanesOf<V> == 4) {
        return __builtin_shufflevector(a, a, 3, 2, 1, 0);
    } else {
        return __builtin_shufflevector(a, a, 7, 6, 5, 4, 3, 2, 1, 0);
    }
}

template <class V, int kRadix>
inline void applyButterfly(V* re, V* im, const FftPass& pass)
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
    } else if constexpr (kRadix == 9) {
        butterfly9(re, im);
    } else if constexpr (kRadix == 10) {
        butterfly10(re, im);
    } else {
        butterflyOdd<V, kRadix>(pass.radix, re, im, pass.trig, pass.trig + pass.radix);
    }
}

enum class Input { Plain, Turned, Pairs };

// The first pass of a stage: from the input, in the order of reversed digits, into neighbouring rows.
template <class V, int kRadix, Input kInput>
void firstPass(const FftStage& stage, const FftTile& tile, const FftRows& to)
{
    const FftPass& pass = stage.passes[0];
    const int radix = kRadix == 0 ? pass.radix : kRadix;
    const int groups = stage.length / radix;
    V re[kRadix == 0 ? kMaxRadix : kRadix];
    V im[kRadix == 0 ? kMaxRadix : kRadix];
    const long stepRe = groups * tile.stepRe;
    const long stepIm = groups * tile.stepIm;
    const long stepTurn = static_cast<long>(groups) * tile.lanes;
    for (int group = 0; group < groups; ++group) {
        const long first = stage.rows[group];
        const double* const fromRe = tile.re + first * tile.stepRe;
        const double* const fromIm = tile.im + first * tile.stepIm;
        const double* const turnRe = kInput == Input::Turned ? tile.turnRe + first * tile.lanes : nullptr;
        const double* const turnIm = kInput == Input::Turned ? tile.turnIm + first * tile.lanes : nullptr;
        double* const toRe = to.re + group * radix * to.step;
        double* const toIm = to.im + group * radix * to.step;
        for (int lane = 0; lane < tile.lanes; lane += kLanesOf<V>) {
            forValues<kRadix>(radix, [&](int k) {
                if constexpr (kInput == Input::Pairs) {
                    const V a = load<V>(fromRe + k * stepRe + 2 * lane);
                    const V b = load<V>(fromRe + k * stepRe + 2 * lane + kLanesOf<V>);
                    re[k] = even(a, b);
                    im[k] = odd(a, b);
                } else {
                    re[k] = load<V>(fromRe + k * stepRe + lane);
                    im[k] = load<V>(fromIm + k * stepIm + lane);
                }
                if constexpr (kInput == Input::Turned)
                    turn(re[k], im[k], load<V>(turnRe + k * stepTurn + lane),
                         load<V>(turnIm + k * stepTurn + lane));
            });
            applyButterfly<V, kRadix>(re, im, pass);
            forValues<kRadix>(radix, [&](int k) {
                store(toRe + k * to.step + lane, re[k]);
                store(toIm + k * to.step + lane, im[k]);
            });
        }
    }
}

// The butterflies of a later pass that share their roots: all those `m` rows behind the begin of a group.
template <class V, int kRadix, bool kTurned>
[[gnu::always_inline]] inline void laterButterflies(const FftPass& pass, int groups, int m, int lanes,
                                                    const FftRows& from, const FftRows& to)
{
    const int radix = kRadix == 0 ? pass.radix : kRadix;
    const long fromStep = pass.span * from.step;
    const long toStep = pass.span * to.step;
    const double* const roots = pass.roots + 2 * m * (radix - 1);
    V re[kRadix == 0 ? kMaxRadix : kRadix];
    V im[kRadix == 0 ? kMaxRadix : kRadix];
    for (int group = 0; group < groups; ++group) {
        const double* const fromRe = from.re + group * radix * fromStep + m * from.step;
        const double* const fromIm = from.im + group * radix * fromStep + m * from.step;
        double* const toRe = to.re + group * radix * toStep + m * to.step;
        double* const toIm = to.im + group * radix * toStep + m * to.step;
        for (int lane = 0; lane < lanes; lane += kLanesOf<V>) {
            forValues<kRadix>(radix, [&](int k) {
                re[k] = load<V>(fromRe + k * fromStep + lane);
                im[k] = load<V>(fromIm + k * fromStep + lane);
                if (kTurned && k > 0)
                    turn(re[k], im[k], roots[2 * k - 2], roots[2 * k - 1]);
            });
            applyButterfly<V, kRadix>(re, im, pass);
            forValues<kRadix>(radix, [&](int k) {
                store(toRe + k * toStep + lane, re[k]);
                store(toIm + k * toStep + lane, im[k]);
            });
        }
    }
}

template <class V, int kRadix>
void laterPass(const FftStage& stage, const FftPass& pass, int lanes, const FftRows& from, const FftRows& to)
{
    const int groups = stage.length / (pass.span * pass.radix);
    laterButterflies<V, kRadix, false>(pass, groups, 0, lanes, from, to);
    for (int m = 1; m < pass.span; ++m)
        laterButterflies<V, kRadix, true>(pass, groups, m, lanes, from, to);
}

template <int kValue>
struct Radix
{
    static constexpr int value = kValue;
};

// Calls the job with the radix known to the compiler; 0 stands for the ones without a butterfly of their own.
template <class Job>
inline void withRadix(int radix, const Job& job)
{
    switch (radix) {
        case 2:
            return job(Radix<2>{});
        case 3:
            return job(Radix<3>{});
        case 4:
            return job(Radix<4>{});
        case 5:
            return job(Radix<5>{});
        case 7:
            return job(Radix<7>{});
        case 8:
            return job(Radix<8>{});
        case 9:
            return job(Radix<9>{});
        case 10:
            return job(Radix<10>{});
        case 11:
            return job(Radix<11>{});
        case 13:
            return job(Radix<13>{});
        default:
            return job(Radix<0>{});
    }
}

template <class V>
void laterPasses(const FftStage& stage, const FftTile& tile)
{
    for (int i = 1; i < stage.passCount; ++i) {
        const FftPass& pass = stage.passes[i];
        withRadix(pass.radix, [&](auto radix) {
            laterPass<V, decltype(radix)::value>(stage, pass, tile.lanes, tile.work,
                                                 i == stage.passCount - 1 ? tile.to : tile.work);
        });
    }
}

template <class V>
void transformTile(const FftStage& stage, const FftTile& tile)
{
    const FftRows& to = stage.passCount == 1 ? tile.to : tile.work;
    withRadix(stage.passes[0].radix, [&](auto radix) {
        if (tile.turnRe != nullptr)
            firstPass<V, decltype(radix)::value, Input::Turned>(stage, tile, to);
        else
            firstPass<V, decltype(radix)::value, Input::Plain>(stage, tile, to);
    });
    laterPasses<V>(stage, tile);
}

template <class V>
void transformPairsOfTile(const FftStage& stage, const FftTile& tile)
{
    const FftRows& to = stage.passCount == 1 ? tile.to : tile.work;
    withRadix(stage.passes[0].radix,
              [&](auto radix) { firstPass<V, decltype(radix)::value, Input::Pairs>(stage, tile, to); });
    laterPasses<V>(stage, tile);
}

template <class V>
void buildTurns(const TurnFactors& factors, int length, int lanes, double* turnRe, double* turnIm)
{
    for (int lane = 0; lane < lanes; lane += kLanesOf<V>) {
        V fineRe[veltrac::kTurnParts];
        V fineIm[veltrac::kTurnParts];
        for (int k = 0; k < factors.parts; ++k) {
            fineRe[k] = load<V>(factors.laneFineRe + k * lanes + lane);
            fineIm[k] = load<V>(factors.laneFineIm + k * lanes + lane);
            turn(fineRe[k], fineIm[k], factors.fineRe[k], factors.fineIm[k]);
        }
        for (int row = 0, coarse = 0; row < length; row += factors.parts, ++coarse) {
            V re = load<V>(factors.laneCoarseRe + coarse * lanes + lane);
            V im = load<V>(factors.laneCoarseIm + coarse * lanes + lane);
            turn(re, im, factors.coarseRe[coarse], factors.coarseIm[coarse]);
            const int count = length - row < factors.parts ? length - row : factors.parts;
            for (int k = 0; k < count; ++k) {
                store<V>(turnRe + (row + k) * lanes + lane, re * fineRe[k] - im * fineIm[k]);
                store<V>(turnIm + (row + k) * lanes + lane, re * fineIm[k] + im * fineRe[k]);
            }
        }
    }
}

// Squares of four by four are turned over in registers.
template <class Four>
void scatterFours(const double* rows, int length, int lanes, const std::ptrdiff_t* place, double* to)
{
    const int whole = length - length % 4;
    for (int lane = 0; lane < lanes; lane += 4) {
        double* const to0 = to + place[lane];
        double* const to1 = to + place[lane + 1];
        double* const to2 = to + place[lane + 2];
        double* const to3 = to + place[lane + 3];
        for (int k = 0; k < whole; k += 4) {
            const double* from = rows + k * lanes + lane;
            const Four a = load<Four>(from);
            const Four b = load<Four>(from + lanes);
            const Four c = load<Four>(from + 2 * lanes);
            const Four d = load<Four>(from + 3 * lanes);
            const Four lowAb = __builtin_shufflevector(a, b, 0, 4, 2, 6);
            const Four highAb = __builtin_shufflevector(a, b, 1, 5, 3, 7);
            const Four lowCd = __builtin_shufflevector(c, d, 0, 4, 2, 6);
            const Four highCd = __builtin_shufflevector(c, d, 1, 5, 3, 7);
            store<Four>(to0 + k, __builtin_shufflevector(lowAb, lowCd, 0, 1, 4, 5));
            store<Four>(to1 + k, __builtin_shufflevector(highAb, highCd, 0, 1, 4, 5));
            store<Four>(to2 + k, __builtin_shufflevector(lowAb, lowCd, 2, 3, 6, 7));
            store<Four>(to3 + k, __builtin_shufflevector(highAb, highCd, 2, 3, 6, 7));
        }
        for (int k = whole; k < length; ++k) {
            const double* from = rows + k * lanes + lane;
            to0[k] = from[0];
            to1[k] = from[1];
            to2[k] = from[2];
            to3[k] = from[3];
        }
    }
}

template <class V>
void scatterRows(const double* rows, int length, int lanes, const std::ptrdiff_t* place, double* to)
{
    if constexpr (kLanesOf<V> >= 4) {
        scatterFours<double __attribute__((vector_size(32)))>(rows, length, lanes, place, to);
    } else {
        for (int lane = 0; lane < lanes; ++lane)
            for (int k = 0; k < length; ++k)
                to[place[lane] + k] = rows[k * lanes + lane];
    }
}

// With z the transform of the pairs, h = half, w = exp(-pi i k / h), s = z[k] + conj z[h-k] and
// d = z[k] - conj z[h-k], bin k is (s - i w d) / 2 and bin h-k is the conjugate of (s + i w d) / 2.
template <class V>
inline void splitSome(int half, int k, const V& turnRe, const V& turnIm, double* re, double* im)
{
    const int mirror = half - k - kLanesOf<V> + 1;
    const V re0 = load<V>(re + k);
    const V im0 = load<V>(im + k);
    V re1 = load<V>(re + mirror);
    V im1 = load<V>(im + mirror);
    if constexpr (kLanesOf < V >> 1) {
        re1 = reversed(re1);
        im1 = reversed(im1);
    }
    V diffRe = re0 - re1;
    V diffIm = im0 + im1;
    turn(diffRe, diffIm, turnRe, turnIm);
    V mirrorRe = 0.5 * (re0 + re1 - diffIm);
    V mirrorIm = 0.5 * (im1 - im0 - diffRe);
    store<V>(re + k, 0.5 * (re0 + re1 + diffIm));
    store<V>(im + k, 0.5 * (im0 - im1 - diffRe));
    if constexpr (kLanesOf < V >> 1) {
        mirrorRe = reversed(mirrorRe);
        mirrorIm = reversed(mirrorIm);
    }
    store<V>(re + mirror, mirrorRe);
    store<V>(im + mirror, mirrorIm);
}

template <class V>
void splitRun(int half, int first, int count, const double* turnOfFirst, const double* rotationRe,
              const double* rotationIm, double* re, double* im)
{
    int k = 0;
    for (; k + kLanesOf<V> <= count; k += kLanesOf<V>) {
        V turnRe = load<V>(rotationRe + k);
        V turnIm = load<V>(rotationIm + k);
        turn(turnRe, turnIm, turnOfFirst[0], turnOfFirst[1]);
        splitSome<V>(half, first + k, turnRe, turnIm, re, im);
    }
    for (; k < count; ++k) {
        double turnRe = rotationRe[k];
        double turnIm = rotationIm[k];
        turn(turnRe, turnIm, turnOfFirst[0], turnOfFirst[1]);
        splitSome<double>(half, first + k, turnRe, turnIm, re, im);
    }
}

template <class V>
constexpr FftKernel kernelOf(const char* name)
{
    return {name, transformTile<V>, transformPairsOfTile<V>, buildTurns<V>, scatterRows<V>, splitRun<V>};
}

}  // namespace
