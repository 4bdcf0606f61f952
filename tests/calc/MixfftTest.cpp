#include "calc/mixfft.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <functional>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "calc/RealTransform.h"
#include "calc/mixfft_kernels.h"
#include "calc/mixfft_steps.h"

using namespace veltrac;

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

// As the documented steps have it, one by one.
Series inSingleSteps(const Series& x)
{
    int n = x.size();
    Series y(n);
    int passCount = 0;
    int radixOf[kMaxPasses];
    int span[kMaxPasses];
    int groups[kMaxPasses];
    factorLength(n, &passCount, radixOf);
    buildPassTables(span, radixOf, groups, &passCount, &n);
    digitReversal(n, passCount, radixOf, groups, x.re.data(), x.im.data(), y.re.data(), y.im.data());
    for (int i = 1; i <= passCount; ++i)
        radixPass(span[i], radixOf[i], n / (span[i] * radixOf[i]), y.re.data(), y.im.data());
    return y;
}

// The greatest distance of two outcomes as a share of the greatest value.
double distance(const Series& y, const Series& expected)
{
    double worst = 0;
    for (int k = 0; k < y.size(); ++k)
        worst = std::max(worst, std::abs(y.at(k) - expected.at(k)));
    return worst / greatest(expected);
}

constexpr double kMostError = 1e-13;

// Stages of two and three, of one radix and of many, tiles that end early, with kept factors and without.
const std::vector<int> kLongLengths = {1 << 10,    1 << 13, 1 << 15,         177147,           100000,
                                       510510,     1369,    50653,           7 * 64 * 125,     31 * 29 * 23,
                                       121 * 1920, 78125,   2 * 9 * 37 * 19, 37 * 37 * 37 * 26};

// Only one build of the loops runs by itself on a machine; the others must not be wrong elsewhere.
class MixfftBuilds : public testing::Test
{
protected:
    ~MixfftBuilds() override { useFftKernel(fftKernelNamed(nullptr)); }

    // Runs the check in every build that this processor has.
    template <typename Check>
    void inEach(Check check)
    {
        for (const char* name : {"baseline", "avx2", "avx512"}) {
            const FftKernel& kernel = fftKernelNamed(name);
            if (std::string(kernel.name) != name)
                continue;
            SCOPED_TRACE(name);
            useFftKernel(kernel);
            check();
        }
    }
};

TEST_F(MixfftBuilds, shortLengthsMatchTheDirectSum)
{
    for (int n = 1; n <= 400; ++n) {
        if (!isTransformLength(n))
            continue;
        const Series x = noise(n, static_cast<unsigned>(n));
        Series sums(n);
        for (int k = 0; k < n; ++k) {
            const std::complex<double> sum = directSum(x, k);
            sums.re[static_cast<std::size_t>(k)] = sum.real();
            sums.im[static_cast<std::size_t>(k)] = sum.imag();
        }
        inEach([&] { EXPECT_LT(distance(transformed(x), sums), kMostError) << n; });
    }
}

TEST_F(MixfftBuilds, longLengthsInTurnMatchTheSingleSteps)
{
    const Series between = noise(1000, 4);
    for (const int n : kLongLengths) {
        const Series x = noise(n, 5);
        const Series expected = inSingleSteps(x);
        inEach([&] {
            const Series before = transformed(between);
            EXPECT_LT(distance(transformed(x), expected), kMostError) << n;
            EXPECT_EQ(transformed(between).re, before.re) << "after " << n;
        });
    }
}

TEST_F(MixfftBuilds, realSeriesGiveTheBinsOfComplexOnes)
{
    for (const int n : {1,    2,    3,    4,    6,     37,    74,     126,   128,    130,       135,
                        1000, 1369, 2738, 8192, 10010, 33614, 100000, 78125, 510510, 50653 * 30}) {
        Series x = noise(n, 11);
        x.im.assign(x.im.size(), 0.0);
        const std::vector<double> before = x.re;
        const Series y = transformed(x);
        const double bound = kMostError * greatest(y);
        inEach([&] {
            Series half(static_cast<int>(realFftRoom(n)));
            ASSERT_GE(half.size(), n / 2 + 1);
            EXPECT_TRUE(realFft(n, x.re.data(), half.re.data(), half.im.data(), {}));
            EXPECT_EQ(x.re, before);
            for (int k = 0; k <= n / 2; ++k)
                ASSERT_LT(std::abs(half.at(k) - y.at(k)), bound) << n << " at " << k;
        });
    }
}

TEST(Mixfft, kernelsAreFoundByName)
{
    const FftKernel& fastest = fftKernelNamed(nullptr);
    EXPECT_EQ(&fftKernelNamed("avx1024"), &fastest);
    EXPECT_EQ(&fftKernelNamed(""), &fastest);
    EXPECT_STREQ(fftKernelNamed("baseline").name, "baseline");
    EXPECT_EQ(&fftKernelNamed(fastest.name), &fastest);
}

TEST(Mixfft, singleStepsOfLongLengthsMatchTheDirectSumAtSomeBins)
{
    for (const int n : {1 << 13, 177147, 100000, 510510, 50653}) {
        const Series x = noise(n, 5);
        const Series y = inSingleSteps(x);
        for (const int k : {0, 1, n / 3, n - 1})
            EXPECT_LT(std::abs(y.at(k) - directSum(x, k)), kMostError * greatest(y)) << n << " at " << k;
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

TEST(Mixfft, onePassTurnsAndJoinsTheValuesOfEveryGroup)
{
    for (const int radix : {2, 3, 4, 5, 7, 8, 10, 37})
        for (const int span : {1, 3, 8}) {
            constexpr int kGroups = 5;
            const Series x = noise(span * radix * kGroups, 9);
            Series y = x;
            radixPass(span, radix, kGroups, y.re.data(), y.im.data());
            const double bound = kMostError * greatest(y);
            for (int place = 0; place < x.size(); ++place) {
                const int bin = place / span % radix;
                std::complex<double> sum = 0;
                for (int k = 0; k < radix; ++k) {
                    const double turns = k * (place % span + double(span) * bin) / (span * radix);
                    sum += x.at(place + (k - bin) * span) * std::polar(1.0, -2 * std::numbers::pi * turns);
                }
                ASSERT_LT(std::abs(y.at(place) - sum), bound) << radix << " over " << span;
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
    const auto complex = [&] {
        return mixedRadixFft(n, x.re.data(), x.im.data(), y.re.data(), y.im.data(), listen);
    };
    const auto real = [&] { return realFft(n, x.re.data(), y.re.data(), y.im.data(), listen); };
    for (const std::function<bool()>& run : {std::function<bool()>(complex), std::function<bool()>(real)}) {
        last = 0;
        calls = 0;
        EXPECT_FALSE(run());
        EXPECT_EQ(calls, 5);
        last = 0;
        EXPECT_TRUE(run());
        EXPECT_EQ(last, whole);
    }
}

}  // namespace
