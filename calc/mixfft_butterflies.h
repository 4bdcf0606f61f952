// The butterflies of the mixed-radix transform, in place on z, for one value or a vector of them at a time.
//
// Included by each machine-specific build of the passes. Everything here lives in an unnamed namespace, so
// that the linker never mixes code for one processor into the build for another; for the same reason no
// function of the standard library is used that could be emitted here.
#pragma once

namespace {

// The decimals are cut at 14 digits on purpose: results stay comparable with those of other programs that
// use the published tables. They limit the accuracy to a few 1e-15 a pass.
inline constexpr double kThirdCos = -1.5;
inline constexpr double kThirdSin = 0.86602540378444;
inline constexpr double kFifth[] = {-1.25, 0.55901699437495, -0.95105651629515, -1.5388417685876,
                                    0.36327126400268};
inline constexpr double kHalfRoot = 0.70710678118655;

template <class V>
[[gnu::always_inline]] inline void butterfly2(V* re, V* im)
{
    const V r = re[1];
    const V i = im[1];
    re[1] = re[0] - r;
    im[1] = im[0] - i;
    re[0] += r;
    im[0] += i;
}

template <class V>
[[gnu::always_inline]] inline void butterfly3(V* re, V* im)
{
    const V sumRe = re[1] + re[2];
    const V sumIm = im[1] + im[2];
    const V diffRe = kThirdSin * (re[1] - re[2]);
    const V diffIm = kThirdSin * (im[1] - im[2]);
    re[0] += sumRe;
    im[0] += sumIm;
    const V midRe = re[0] + kThirdCos * sumRe;
    const V midIm = im[0] + kThirdCos * sumIm;
    re[1] = midRe + diffIm;
    im[1] = midIm - diffRe;
    re[2] = midRe - diffIm;
    im[2] = midIm + diffRe;
}

template <class V>
[[gnu::always_inline]] inline void butterfly4(V* re, V* im)
{
    const V sumRe = re[0] + re[2];
    const V sumIm = im[0] + im[2];
    const V diffRe = re[0] - re[2];
    const V diffIm = im[0] - im[2];
    const V oddSumRe = re[1] + re[3];
    const V oddSumIm = im[1] + im[3];
    const V oddDiffRe = re[1] - re[3];
    const V oddDiffIm = im[1] - im[3];
    re[0] = sumRe + oddSumRe;
    im[0] = sumIm + oddSumIm;
    re[1] = diffRe + oddDiffIm;
    im[1] = diffIm - oddDiffRe;
    re[2] = sumRe - oddSumRe;
    im[2] = sumIm - oddSumIm;
    re[3] = diffRe - oddDiffIm;
    im[3] = diffIm + oddDiffRe;
}

template <class V>
[[gnu::always_inline]] inline void butterfly5(V* re, V* im)
{
    const V sum1Re = re[1] + re[4];
    const V sum1Im = im[1] + im[4];
    const V sum2Re = re[2] + re[3];
    const V sum2Im = im[2] + im[3];
    const V diff1Re = re[1] - re[4];
    const V diff1Im = im[1] - im[4];
    const V diff2Re = re[2] - re[3];
    const V diff2Im = im[2] - im[3];
    const V allRe = sum1Re + sum2Re;
    const V allIm = sum1Im + sum2Im;
    re[0] += allRe;
    im[0] += allIm;
    const V midRe = re[0] + kFifth[0] * allRe;
    const V midIm = im[0] + kFifth[0] * allIm;
    const V cosRe = kFifth[1] * (sum1Re - sum2Re);
    const V cosIm = kFifth[1] * (sum1Im - sum2Im);
    const V turnRe = kFifth[2] * (diff1Re - diff2Re);
    const V turnIm = kFifth[2] * (diff1Im - diff2Im);
    const V sin1Re = turnRe + kFifth[3] * diff2Re;
    const V sin1Im = turnIm + kFifth[3] * diff2Im;
    const V sin2Re = turnRe + kFifth[4] * diff1Re;
    const V sin2Im = turnIm + kFifth[4] * diff1Im;
    re[1] = midRe + cosRe - sin1Im;
    im[1] = midIm + cosIm + sin1Re;
    re[4] = midRe + cosRe + sin1Im;
    im[4] = midIm + cosIm - sin1Re;
    re[2] = midRe - cosRe - sin2Im;
    im[2] = midIm - cosIm + sin2Re;
    re[3] = midRe - cosRe + sin2Im;
    im[3] = midIm - cosIm - sin2Re;
}

template <class V>
[[gnu::always_inline]] inline void butterfly8(V* re, V* im)
{
    V evenRe[4] = {re[0], re[2], re[4], re[6]};
    V evenIm[4] = {im[0], im[2], im[4], im[6]};
    V oddRe[4] = {re[1], re[3], re[5], re[7]};
    V oddIm[4] = {im[1], im[3], im[5], im[7]};
    butterfly4(evenRe, evenIm);
    butterfly4(oddRe, oddIm);
    const V turnedRe[4] = {oddRe[0], kHalfRoot * (oddRe[1] + oddIm[1]), oddIm[2],
                           kHalfRoot * (oddIm[3] - oddRe[3])};
    const V turnedIm[4] = {oddIm[0], kHalfRoot * (oddIm[1] - oddRe[1]), -oddRe[2],
                           -kHalfRoot * (oddRe[3] + oddIm[3])};
    for (int k = 0; k < 4; ++k) {
        re[k] = evenRe[k] + turnedRe[k];
        im[k] = evenIm[k] + turnedIm[k];
        re[k + 4] = evenRe[k] - turnedRe[k];
        im[k + 4] = evenIm[k] - turnedIm[k];
    }
}

// 2 and 5 have no common factor, so the two halves combine without twiddles when the odd half starts at
// element 5 (I. J. Good, "The Interaction Algorithm and Practical Fourier Analysis", J. R. Stat. Soc. B 20
// (1958) 361-372).
template <class V>
[[gnu::always_inline]] inline void butterfly10(V* re, V* im)
{
    V evenRe[5] = {re[0], re[2], re[4], re[6], re[8]};
    V evenIm[5] = {im[0], im[2], im[4], im[6], im[8]};
    V oddRe[5] = {re[5], re[7], re[9], re[1], re[3]};
    V oddIm[5] = {im[5], im[7], im[9], im[1], im[3]};
    butterfly5(evenRe, evenIm);
    butterfly5(oddRe, oddIm);
    for (int k = 0; k < 5; ++k) {
        const int even = k % 2 == 0 ? k : k + 5;
        const int odd = k % 2 == 0 ? k + 5 : k;
        re[even] = evenRe[k] + oddRe[k];
        im[even] = evenIm[k] + oddIm[k];
        re[odd] = evenRe[k] - oddRe[k];
        im[odd] = evenIm[k] - oddIm[k];
    }
}

// A value times a factor of one number or one vector.
template <class V, class W>
[[gnu::always_inline]] inline void turn(V& re, V& im, const W& turnRe, const W& turnIm)
{
    const V r = re * turnRe - im * turnIm;
    im = re * turnIm + im * turnRe;
    re = r;
}

inline constexpr double kNinthCos[] = {1.0, 0.766044443118978035, 0.173648177666930349, 0,
                                       -0.939692620785908384};
inline constexpr double kNinthSin[] = {0.0, 0.642787609686539327, 0.984807753012208059, 0,
                                       0.342020143325668734};

// Three of 3, turned by ninths of a circle, and three of 3 across.
template <class V>
[[gnu::always_inline]] inline void butterfly9(V* re, V* im)
{
    V partRe[3][3];
    V partIm[3][3];
    for (int j = 0; j < 3; ++j) {
        for (int i = 0; i < 3; ++i) {
            partRe[j][i] = re[j + 3 * i];
            partIm[j][i] = im[j + 3 * i];
        }
        butterfly3(partRe[j], partIm[j]);
    }
    for (int k = 0; k < 3; ++k) {
        V acrossRe[3] = {partRe[0][k], partRe[1][k], partRe[2][k]};
        V acrossIm[3] = {partIm[0][k], partIm[1][k], partIm[2][k]};
        if (k > 0) {
            turn(acrossRe[1], acrossIm[1], kNinthCos[k], -kNinthSin[k]);
            turn(acrossRe[2], acrossIm[2], kNinthCos[2 * k], -kNinthSin[2 * k]);
        }
        butterfly3(acrossRe, acrossIm);
        for (int i = 0; i < 3; ++i) {
            re[k + 3 * i] = acrossRe[i];
            im[k + 3 * i] = acrossIm[i];
        }
    }
}

// Any odd radix, known to the compiler where kKnown is not 0; trigRe and trigIm hold cos and -sin of
// 2 pi i / radix.
template <class V, int kKnown>
inline void butterflyOdd(int anyRadix, V* re, V* im, const double* trigRe, const double* trigIm)
{
    constexpr int kHalfEntries = kKnown == 0 ? 20 : (kKnown + 1) / 2;
    const int radix = kKnown == 0 ? anyRadix : kKnown;
    const int half = (radix + 1) / 2;
    V sumRe[kHalfEntries];
    V sumIm[kHalfEntries];
    V diffRe[kHalfEntries];
    V diffIm[kHalfEntries];
    V allRe = re[0];
    V allIm = im[0];
    for (int j = 1; j < half; ++j) {
        sumRe[j] = re[j] + re[radix - j];
        sumIm[j] = im[j] + im[radix - j];
        diffRe[j] = re[j] - re[radix - j];
        diffIm[j] = im[j] - im[radix - j];
        allRe += sumRe[j];
        allIm += sumIm[j];
    }
    for (int j = 1; j < half; ++j) {
        V evenRe = re[0];
        V evenIm = im[0];
        V oddRe = V{};
        V oddIm = V{};
        int turn = 0;
        for (int m = 1; m < half; ++m) {
            turn += j;
            turn -= turn >= radix ? radix : 0;
            evenRe += sumRe[m] * trigRe[turn];
            evenIm += sumIm[m] * trigRe[turn];
            oddRe += diffRe[m] * trigIm[turn];
            oddIm += diffIm[m] * trigIm[turn];
        }
        re[j] = evenRe - oddIm;
        im[j] = evenIm + oddRe;
        re[radix - j] = evenRe + oddIm;
        im[radix - j] = evenIm - oddRe;
    }
    re[0] = allRe;
    im[0] = allIm;
}

}  // namespace
