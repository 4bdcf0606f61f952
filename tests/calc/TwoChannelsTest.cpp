// Two channels against what is known of them: a filter between them, a delay, direct sums.

#include "calc/TwoChannels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <random>

#include "calc/Correlation.h"
#include "calc/Spectrogram.h"
#include "calc/Spectrum.h"
#include "calc/SpectrumPlan.h"
#include "core/FileTime.h"
#include "core/TSFILE.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

std::vector<double> whiteNoise(std::size_t count, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> noise(0.0, 2.0);
    std::vector<double> values(count);
    for (double& v : values)
        v = noise(random);
    return values;
}

void fillColumn(TSFILE& file, std::uint32_t column, const std::vector<double>& values)
{
    for (std::uint32_t s = 1; s <= file.samples(); ++s)
        file.setValue(s, column, static_cast<float>(values[s - 1]));
}

}  // namespace

TEST(TwoChannels, TransferFunctionOfAFilterLiesWithinItsBandAndNoiseLowersTheCoherence)
{
    constexpr std::uint32_t kCount = 60000;
    constexpr std::uint32_t kLater = 7;  // rows by which the second file begins earlier
    const TestDirectory directory;
    TSFILE input("in", kCount, 2, 0);
    TSFILE output("out", kCount + kLater, 3, 0);
    const std::vector<double> x = whiteNoise(kCount, 11);
    const std::vector<double> other = whiteNoise(kCount, 12);
    std::vector<double> y(kCount + kLater, 100.0);
    for (std::size_t i = 1; i < kCount; ++i)
        y[i + kLater] = 3.0 * x[i] - 1.5 * x[i - 1] + other[i];
    fillColumn(input, 2, x);
    fillColumn(output, 3, y);
    TwoChannelRequest request;
    request.input.column = 2;
    request.input.from = 101;
    request.input.to = kCount;
    request.input.averaged = true;
    request.input.segment = 300;
    request.input.dt = 0.5;
    request.column = 3;
    request.from = 101 + kLater;
    TwoChannelMeans means;
    ASSERT_EQ(averageTwoChannels(input, output, request, means, {}), JobOutcome::Done);
    // Half overlapping Hann segments are worth 0.947 of as many separate ones each (Welch: 36/38).
    EXPECT_NEAR(means.independent / means.segments, 36.0 / 38.0, 1e-3);
    int inside = 0;
    int phaseInside = 0;
    for (std::size_t k = 1; k <= 150; ++k) {
        const std::complex<double> truth =
            3.0 - 1.5 * std::polar(1.0, -std::numbers::pi * static_cast<double>(k) / 150);
        const TwoChannelBin h1 = twoChannelBin(means, k, TwoChannelResult::H1);
        const TwoChannelBin h2 = twoChannelBin(means, k, TwoChannelResult::H2);
        const TwoChannelBin common = twoChannelBin(means, k, TwoChannelResult::Coherence);
        const double expected = std::norm(truth) / (std::norm(truth) + 1.0);
        inside += h1.low <= std::abs(truth) && std::abs(truth) <= h1.high ? 1 : 0;
        phaseInside +=
            std::fabs(h1.phase - std::arg(truth) * 180.0 / std::numbers::pi) <= h1.phaseError ? 1 : 0;
        const TwoChannelBin density = twoChannelBin(means, k, TwoChannelResult::CrossDensity);
        EXPECT_NEAR(density.high / density.value, 1.0 + 1.96 / std::sqrt(common.value * means.independent),
                    1e-3);
        EXPECT_NEAR(common.value, expected, 0.06);
        EXPECT_NEAR(h2.value * common.value, h1.value, 1e-12 * h1.value);  // the coherence is their quotient
    }
    EXPECT_GE(inside, 135);
    EXPECT_LT(inside, 150);  // a band that holds everything is too wide
    EXPECT_GE(phaseInside, 135);

    // The file: a row a bin from bin 1 on, in dB, with a phase that goes on.
    request.input.decibel = true;
    request.unwrapped = true;
    TSFILE target("h1", planSpectrum(request.input).bins, twoChannelColumns(request.result), 0);
    computeTwoChannels(input, output, request, target, {});
    describeTwoChannels(input, output, request, target);
    const TwoChannelBin bin = twoChannelBin(means, 40, TwoChannelResult::H1);
    EXPECT_FLOAT_EQ(target.value(40, 1), 40.0F / 150.0F);
    EXPECT_NEAR(target.value(40, 2), 20.0 * std::log10(bin.value), 1e-4);
    EXPECT_NEAR(target.value(40, 3), 20.0 * std::log10(bin.low), 1e-4);
    EXPECT_NEAR(target.value(40, 7), bin.phase + bin.phaseError, 1e-3);
    EXPECT_NEAR(target.value(40, 8), bin.coherence, 1e-6);
    EXPECT_STREQ(target.columnName(7), "PhaseHigh");
}

TEST(TwoChannels, OneSegmentIsRefusedWithTheReason)
{
    TwoChannelRequest request;
    request.input.to = 5000;
    EXPECT_NE(twoChannelComplaint(request).find("averaged segments"), std::string::npos);
    request.input.averaged = true;
    EXPECT_NE(twoChannelComplaint(request).find("one segment only"), std::string::npos);
    request.input.segment = 2500;
    EXPECT_EQ(twoChannelComplaint(request), "");
}

TEST(TwoChannels, FilesLieSideBySideByTheClockWhereBothHaveOne)
{
    const TestDirectory directory;
    TSFILE first("a", 100, 1, 0);
    TSFILE second("b", 40, 1, 0);
    first.dt(0.5F);
    second.dt(0.5F);
    first.setStart(1'000'000'000, 0.25F);
    second.setStart(1'000'000'005, 0.0F);
    const ChannelMatch clock = matchChannels(first, 3, 60, second, false);
    EXPECT_EQ(clock.from, 11U);  // sample 10.5 of the first is the second's beginning, rounded up
    EXPECT_EQ(clock.to, 50U);
    EXPECT_EQ(clock.secondFrom, 1U);
    EXPECT_EQ(clock.words, "lined up on the clock, 0.50 of a sample apart");
    second.setStart(0, 0.0F);
    const ChannelMatch samples = matchChannels(first, 3, 60, second, false);
    EXPECT_EQ(samples.from, 3U);
    EXPECT_EQ(samples.to, 40U);
    EXPECT_EQ(samples.secondFrom, 3U);
    second.setStart(2'000'000'000, 0.0F);
    EXPECT_NE(matchChannels(first, 3, 60, second, false).refusal, "");
    second.dt(0.25F);
    EXPECT_NE(matchChannels(first, 3, 60, second, false).refusal.find("sample times differ"),
              std::string::npos);
}

TEST(Correlation, EqualsTheDirectSumOverSeveralBlocksInEachScale)
{
    constexpr std::uint32_t kCount = 70001;  // three blocks
    constexpr std::uint32_t kMost = 25;
    constexpr std::uint32_t kBehind = 3;
    const TestDirectory directory;
    TSFILE file("a", kCount, 2, 0);
    const std::vector<double> noise = whiteNoise(kCount + 10, 13);
    std::vector<double> y(kCount);
    for (std::size_t i = 0; i < kCount; ++i)
        y[i] = 40.0 + noise[i + 10 - kBehind];
    fillColumn(file, 1, std::vector<double>(noise.begin() + 10, noise.end()));
    fillColumn(file, 2, y);
    CorrelationRequest request;
    request.first.from = 5;
    request.first.to = kCount;
    request.secondColumn = 2;
    request.secondFrom = 5;
    request.mostLag = kMost;
    const std::uint32_t n = kCount - 4;
    double mean[2] = {};
    double squares[2] = {};
    for (const std::uint32_t c : {1U, 2U}) {
        for (std::uint32_t s = 5; s <= kCount; ++s)
            mean[c - 1] += file.value(s, c) / static_cast<double>(n);
        for (std::uint32_t s = 5; s <= kCount; ++s)
            squares[c - 1] += std::pow(file.value(s, c) - mean[c - 1], 2.0);
    }
    for (int scale = 0; scale < kCorrelationScales; ++scale) {
        request.scale = static_cast<CorrelationScale>(scale);
        std::vector<double> values;
        ASSERT_EQ(correlate(file, file, request, values, {}), JobOutcome::Done);
        for (int lag = -static_cast<int>(kMost); lag <= static_cast<int>(kMost); lag += 7) {
            double sum = 0.0;
            for (std::int64_t s = 5; s <= kCount; ++s)
                if (s + lag >= 5 && s + lag <= kCount)
                    sum += (file.value(static_cast<std::uint32_t>(s), 1) - mean[0]) *
                           (file.value(static_cast<std::uint32_t>(s + lag), 2) - mean[1]);
            const double divisor[] = {std::sqrt(squares[0] * squares[1]), static_cast<double>(n),
                                      static_cast<double>(n) - std::abs(lag)};
            EXPECT_NEAR(values[static_cast<std::size_t>(lag + static_cast<int>(kMost))], sum / divisor[scale],
                        1e-9)
                << scale << ' ' << lag;
        }
        const CorrelationTop top = correlationTop(values, false);
        EXPECT_NEAR(top.lag, kBehind, 1e-3);
    }
}

TEST(Correlation, DelayOfAFractionIsFoundAndThePeriodOfASeriesWithItself)
{
    constexpr std::uint32_t kCount = 20000;
    const TestDirectory directory;
    TSFILE file("a", kCount, 3, 0);
    file.dt(0.1F);
    std::vector<double> x(kCount), y(kCount), beat(kCount);
    // Many tones of all frequencies: delayed exactly.
    std::mt19937 random(3);
    std::uniform_real_distribution<double> any(0.0, 2.0 * std::numbers::pi);
    for (int tone = 1; tone < 300; ++tone) {
        const double turn = std::numbers::pi * 0.95 * tone / 300;
        const double phase = any(random);
        for (std::size_t i = 0; i < kCount; ++i) {
            x[i] += std::sin(turn * static_cast<double>(i) + phase);
            y[i] += std::sin(turn * (static_cast<double>(i) - 12.3) + phase);
        }
    }
    for (std::size_t i = 0; i < kCount; ++i)
        beat[i] = 5.0 + std::pow(std::sin(std::numbers::pi * static_cast<double>(i) / 37.5), 8.0);
    fillColumn(file, 1, x);
    fillColumn(file, 2, y);
    fillColumn(file, 3, beat);
    CorrelationRequest request;
    request.first.to = kCount;
    request.first.dt = 0.1;
    request.secondColumn = 2;
    request.mostLag = 100;
    TSFILE target("lags", 201, 2, 0);
    CorrelationTop top;
    ASSERT_EQ(computeCorrelation(file, file, request, target, top, {}), JobOutcome::Done);
    describeCorrelation(file, file, request, target);
    EXPECT_NEAR(top.lag, 12.3, 0.05);
    EXPECT_FLOAT_EQ(target.value(101 + 12, 1), 1.2F);
    EXPECT_NEAR(target.sampleTime(113), 1.2, 1e-5);
    request.first.column = 3;
    request.secondColumn = 0;
    computeCorrelation(file, file, request, target, top, {});
    EXPECT_NEAR(top.lag, 37.5, 0.05);
    EXPECT_NEAR(target.value(101, 2), 1.0, 1e-6);
}

TEST(Spectrogram, EachSampleIsTheSpectrumOfItsSegmentAtItsTime)
{
    const TestDirectory directory;
    TSFILE file("a", 5000, 2, 0);
    file.dt(0.01F);
    file.setStart(1'000'000'000, 0.5F);
    const std::vector<double> noise = whiteNoise(5000, 5);
    fillColumn(file, 2, noise);
    SpectrumRequest request;
    request.column = 2;
    request.from = 11;
    request.to = 5000;
    request.averaged = true;
    request.segment = 500;
    request.overlapPercent = 75;
    request.dt = 0.01;
    for (const SpectrumResult result : {SpectrumResult::Amplitude, SpectrumResult::RmsAmplitude,
                                        SpectrumResult::PowerDensity, SpectrumResult::AmplitudeDensity}) {
        request.result = result;
        const SpectrumPlan plan = planSpectrum(request);
        TSFILE target("s", plan.segments, plan.bins, 0);
        ASSERT_EQ(computeSpectrogram(file, request, target, {}), JobOutcome::Done);
        describeSpectrogram(file, request, target);
        EXPECT_FLOAT_EQ(target.dt(), 1.25F);
        // The third segment's middle: samples 261 to 760.
        EXPECT_NEAR(FileTime(target).moment(3) - FileTime(file).moment(510), 0.005, 1e-5);
        SpectrumRequest one = request;
        one.averaged = false;
        one.from = 261;
        one.to = 760;
        TSFILE spectrum("one", plan.bins, 3, 0);
        double mean = 0.0;
        computeSpectrum(file, one, spectrum, mean, {});
        for (const std::uint32_t bin : {1U, 77U, plan.bins})
            EXPECT_NEAR(target.value(3, bin), spectrum.value(bin, 2), 1e-5 * spectrum.value(bin, 2)) << bin;
        EXPECT_STREQ(target.columnName(77), "15.4 Hz");
    }
    // The last bin of an odd length lies below half the rate and has two parts.
    request.segment = 225;
    request.averaged = false;
    request.to = 235;
    request.result = SpectrumResult::Amplitude;
    TSFILE odd("o", 1, 112, 0), spectrum("one", 112, 3, 0);
    double mean = 0.0;
    computeSpectrum(file, request, spectrum, mean, {});
    request.averaged = true;
    ASSERT_EQ(computeSpectrogram(file, request, odd, {}), JobOutcome::Done);
    EXPECT_NEAR(odd.value(1, 112), spectrum.value(112, 2), 1e-5 * spectrum.value(112, 2));
    request.segment = 500;
    // What a file cannot hold is refused with what it can.
    request.to = 480'000'000;
    EXPECT_NE(spectrogramComplaint(request).find("Take an overlap of 50 %."), std::string::npos);
    request.overlapPercent = 50;
    EXPECT_EQ(spectrogramComplaint(request), "");
    request.segment = 4;  // many samples of few columns
    request.to = 200'000'000;
    EXPECT_EQ(spectrogramComplaint(request), "");
}
