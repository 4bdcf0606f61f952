#include "calc/mixfft.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>
#include <random>
#include <vector>

#include "calc/mixfft_kernels.h"
#include "calc/mixfft_steps.h"

namespace {

struct Series
{
    explicit Series(int n) : re(static_cast<std::size_t>(n)), im(static_cast<std::size_t>(n)) {}

    int size() const { return static_cast<int>(re.size()); }
    std::complex<double> at(int k) const
    {
        return {re[static_cast<std::size_t>(k)], im[static_cast<std::size_t>(k)]};
    }

    std::vector<double> re;
    std::vector<double> im;
};

Series noise(int n, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    Series x(n);
    for (double& value : x.re)
        value = normal(random);
    for (double& value : x.im)
        value = normal(random);
    return x;
}

Series transformed(const Series& x)
{
    Series y(x.size());
    mixedRadixFft(x.size(), x.re.data(), x.im.data(), y.re.data(), y.im.data());
    return y;
}

std::complex<double> directSum(const Series& x, int k)
{
    using Complex = std::complex<long double>;
    static std::vector<Complex> roots;
    const int n = x.size();
    if (static_cast<int>(roots.size()) != n) {
        roots.clear();
        for (int j = 0; j < n; ++j)
            roots.push_back(std::polar(1.0L, -2 * std::numbers::pi_v<long double> * j / n));
    }
    Complex sum = 0;
    for (int j = 0; j < n; ++j)
        sum += Complex(x.at(j)) * roots[static_cast<std::size_t>(static_cast<long long>(j) * k % n)];
    return std::complex<double>(sum);
}

double greatest(const Series& y)
{
    double most = 0;
    for (int k = 0; k < y.size(); ++k)
        most = std::max(most, std::abs(y.at(k)));
    return most;
}

// Every vector width, tile end and left-over of the passes occurs in these: runs of one radix, large
// primes in front, lengths beyond one block of the passes and beyond one tile of the permutation.
const std::vector<int> kLongLengths = {1 << 13,      1 << 15,      1 << 18,         177147,
                                       100000,       510510,       37 * 37 * 37,    78125,
                                       7 * 64 * 125, 31 * 29 * 23, 2 * 9 * 37 * 19, 1920 * 121};

TEST(Mixfft, everyShortLengthMatchesTheDirectSum)
{
    for (int n = 1; n <= 400; ++n) {
        if (!isTransformLength(n))
            continue;
        const Series x = noise(n, static_cast<unsigned>(n));
        const Series y = transformed(x);
        const double bound = 1e-12 * greatest(y);
        for (int k = 0; k < n; ++k)
            EXPECT_LT(std::abs(y.at(k) - directSum(x, k)), bound) << n << " at " << k;
    }
}

TEST(Mixfft, longLengthsMatchTheDirectSumAtSomeBins)
{
    for (const int n : kLongLengths) {
        const Series x = noise(n, 5);
        const Series y = transformed(x);
        for (const int k : {0, 1, n / 3, n - 1})
            EXPECT_LT(std::abs(y.at(k) - directSum(x, k)), 1e-12 * greatest(y)) << n << " at " << k;
    }
}

TEST(Mixfft, energyIsKeptAndRealSeriesGiveConjugateHalves)
{
    for (const int n : kLongLengths) {
        Series x = noise(n, 7);
        x.im.assign(x.im.size(), 0.0);
        const Series y = transformed(x);
        double energy = 0;
        double spectrum = 0;
        const double bound = 1e-12 * greatest(y);
        for (int k = 0; k < n; ++k) {
            energy += std::norm(x.at(k));
            spectrum += std::norm(y.at(k));
            ASSERT_LT(std::abs(y.at(k) - std::conj(y.at((n - k) % n))), bound) << n << " at " << k;
        }
        EXPECT_NEAR(spectrum / (energy * n), 1.0, 1e-12) << n;
    }
}

TEST(Mixfft, sumsAddAndShiftsTurnThePhase)
{
    for (const int n : kLongLengths) {
        const Series a = noise(n, 1);
        const Series b = noise(n, 2);
        const int shift = n / 7 + 1;
        Series sum(n);
        for (int j = 0; j < n; ++j) {
            const auto value = 2.5 * a.at(j) + b.at((j + shift) % n);
            sum.re[static_cast<std::size_t>(j)] = value.real();
            sum.im[static_cast<std::size_t>(j)] = value.imag();
        }
        const Series ya = transformed(a);
        const Series yb = transformed(b);
        const Series y = transformed(sum);
        const double bound = 1e-12 * greatest(y);
        for (int k = 0; k < n; k += 1 + n / 3000) {
            const double turns = static_cast<double>(static_cast<long long>(shift) * k % n) / n;
            const auto expected = 2.5 * ya.at(k) + yb.at(k) * std::polar(1.0, 2 * std::numbers::pi * turns);
            ASSERT_LT(std::abs(y.at(k) - expected), bound) << n << " at " << k;
        }
    }
}

TEST(Mixfft, constantGivesOnlyItsSumAndLeavesTheInputAlone)
{
    Series x(1000);
    x.re.assign(1000, 3.0);
    const Series y = transformed(x);
    EXPECT_NEAR(y.re[0], 3000.0, 1e-9);
    for (int k = 1; k < 1000; ++k)
        EXPECT_LT(std::abs(y.at(k)), 1e-9) << k;
    EXPECT_EQ(x.re, std::vector<double>(1000, 3.0));
}

TEST(Mixfft, passesRunInReverseOrderOfDiscovery)
{
    const struct
    {
        int n;
        std::vector<int> radices;
    } rows[] = {{1, {1}},
                {2, {2}},
                {16, {4, 4}},
                {100, {10, 10}},
                {74, {37, 2}},
                {128, {4, 4, 8}},
                {64, {8, 8}},
                {20, {2, 10}},
                {160, {4, 4, 10}},
                {7 * 7 * 6, {7, 7, 2, 3}},
                {82, {41, 2}},
                {16 * 37, {37, 4, 4}},
                {2147483647, {2147483647}}};
    for (const auto& row : rows) {
        int passCount = 0;
        int radixOf[kMaxPasses] = {};
        factorLength(row.n, &passCount, radixOf);
        EXPECT_EQ(std::vector<int>(radixOf + 1, radixOf + 1 + passCount), row.radices) << row.n;
    }
}

// Only one of the builds runs on a machine; the others must not be wrong elsewhere.
TEST(Mixfft, everyBuildOfThePassesGivesTheSame)
{
    std::vector<PassKernel> kernels = {radixPassBaseline};
#if defined(VELTRAC_FFT_X86)
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"))
        kernels.push_back(radixPassAvx2);
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq"))
        kernels.push_back(radixPassAvx512);
#endif
    static RadixTables tables;
    for (const int radix : {2, 3, 4, 5, 7, 8, 10, 37}) {
        for (int i = 0; i < radix; ++i) {
            tables.trigRe[i] = std::cos(2 * std::numbers::pi * i / radix);
            tables.trigIm[i] = -std::sin(2 * std::numbers::pi * i / radix);
        }
        for (const int span : {1, 3, 8, 13, 70, 200})
            for (const int groups : {1, 5, 16, 19}) {
                const Series before = noise(span * radix * groups, 9);
                Series expected = before;
                radixPass(span, radix, groups, expected.re.data(), expected.im.data());
                const double bound = 1e-12 * greatest(expected);
                for (const PassKernel kernel : kernels) {
                    Series y = before;
                    kernel(span, radix, groups, y.re.data(), y.im.data(), tables);
                    for (int k = 0; k < y.size(); ++k)
                        ASSERT_LT(std::abs(y.at(k) - expected.at(k)), bound)
                            << "radix " << radix << ", span " << span << ", groups " << groups;
                }
            }
    }
}

TEST(MixfftDeathTest, largePrimeFactorPrintsTwoLinesAndEndsTheProcess)
{
    // The text goes to standard output; a death test reads standard error.
    const auto run = [](int n) {
        dup2(2, 1);
        transformed(Series(n));
    };
    EXPECT_EXIT(run(82), testing::ExitedWithCode(1),
                "^\nPrime factor of FFT length too large :     41"
                "\nPlease modify the value of maxPrimeFactor in mixfft.c$");
    EXPECT_EXIT(run(1763), testing::ExitedWithCode(1), "large :     43");
}

TEST(Mixfft, lengthsBelowOneDoNothing)
{
    double y = 4.0;
    mixedRadixFft(0, nullptr, nullptr, &y, &y);
    mixedRadixFft(-8, nullptr, nullptr, &y, &y);
    EXPECT_EQ(y, 4.0);
    EXPECT_FALSE(isTransformLength(0));
    EXPECT_FALSE(isTransformLength(2147483647));
}

TEST(Mixfft, progressReachesTheEndAndCanStop)
{
    const int n = 1 << 18;
    const Series x = noise(n, 3);
    Series y(n);
    std::uint64_t last = 0;
    std::uint64_t whole = 0;
    int calls = 0;
    const auto listen = [&](std::uint64_t done, std::uint64_t total) {
        EXPECT_GT(done, last);
        last = done;
        whole = total;
        return ++calls != 5;
    };
    EXPECT_FALSE(mixedRadixFft(n, x.re.data(), x.im.data(), y.re.data(), y.im.data(), listen));
    EXPECT_EQ(calls, 5);
    last = 0;
    EXPECT_TRUE(mixedRadixFft(n, x.re.data(), x.im.data(), y.re.data(), y.im.data(), listen));
    EXPECT_EQ(last, whole);
}

}  // namespace
