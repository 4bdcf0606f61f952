// The scaling of spectra by mathematics: tones, noise, averages, trends, lengths, peaks.

#include "calc/Spectrum.h"
#include "calc/SpectrumPlan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "calc/SpectrumPeaks.h"
#include "calc/SpectrumSamples.h"
#include "calc/WindowShape.h"
#include "calc/mixfft.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

constexpr double kPi = std::numbers::pi;
constexpr std::uint32_t kSamples = 3600;
constexpr double kDt = 0.01;

template <typename Signal>
void fill(TSFILE& file, Signal signal)
{
    file.dt(static_cast<float>(kDt));
    for (std::uint32_t s = 1; s <= file.samples(); ++s)
        file.setValue(s, 1, static_cast<float>(signal(s - 1)));
}

SpectrumRequest requestFor(TSFILE& file)
{
    SpectrumRequest request;
    request.to = file.samples();
    request.dt = kDt;
    return request;
}

std::unique_ptr<TSFILE> spectrumOf(TSFILE& file, const SpectrumRequest& request, double* mean = nullptr)
{
    const SpectrumPlan plan = planSpectrum(request);
    auto target = std::make_unique<TSFILE>("spectrum", plan.bins, spectrumColumns(request), 0);
    target->dt(static_cast<float>(plan.resolution));
    double ignored = 0.0;
    EXPECT_EQ(computeSpectrum(file, request, *target, mean == nullptr ? ignored : *mean, {}),
              JobOutcome::Done);
    return target;
}

}  // namespace

TEST(Spectrum, SineOfAmplitudeThreeReadsThreeWithEveryWindow)
{
    const TestDirectory directory;
    TSFILE file("a", kSamples, 1, 0);
    fill(file, [](double i) { return 5.0 + 3.0 * std::cos(2.0 * kPi * 90.0 * i / kSamples + 0.5); });
    for (int w = 0; w < kSpectrumWindows; ++w) {
        SpectrumRequest request = requestFor(file);
        request.window = static_cast<SpectrumWindow>(w);
        SCOPED_TRACE(spectrumWindowName(request.window));
        double mean = 0.0;
        const auto amplitude = spectrumOf(file, request, &mean);
        EXPECT_NEAR(mean, 5.0, 1e-6);
        EXPECT_FLOAT_EQ(amplitude->value(90, 1), 2.5F);  // Hz
        EXPECT_NEAR(amplitude->value(90, 2), 3.0, 2e-6);
        EXPECT_NEAR(amplitude->value(90, 3), 0.5 * 180.0 / kPi, 1e-4);
        request.result = SpectrumResult::RmsAmplitude;
        request.decibel = true;
        EXPECT_NEAR(spectrumOf(file, request)->value(90, 2), 20.0 * std::log10(3.0 / std::sqrt(2.0)), 1e-5);
        request.result = SpectrumResult::RealImaginary;
        EXPECT_NEAR(spectrumOf(file, request)->value(90, 3), 3.0 * std::sin(0.5), 2e-6);
    }
}

TEST(Spectrum, PeakOfAToneIsRightAnywhereInABinWithEveryWindowInDecibelOrNot)
{
    const TestDirectory directory;
    TSFILE file("a", kSamples, 1, 0);
    constexpr double kAmplitude = 3.0;
    for (const double bin : {20.0, 90.1, 90.25, 90.5, 1700.9}) {
        fill(file,
             [&](double i) { return 7.0 + kAmplitude * std::sin(2.0 * kPi * bin * i / kSamples + 0.7); });
        for (int choice = 0; choice < 4 * kSpectrumWindows; ++choice) {
            SpectrumRequest request = requestFor(file);
            request.window = static_cast<SpectrumWindow>(choice / 4);
            request.decibel = choice % 2 == 1;
            request.pad = choice % 4 > 1;
            request.to = request.pad ? 3590 : request.decibel ? 3375 : kSamples;  // also an odd number
            SCOPED_TRACE(std::string(spectrumWindowName(request.window)) + " at " + std::to_string(bin) +
                         (request.decibel ? " dB" : "") + (request.pad ? " padded" : ""));
            const auto spectrum = spectrumOf(file, request);
            const SpectrumPeak peak = findPeaks(*spectrum, request, 1).at(0);
            const double value = request.decibel ? std::pow(10.0, peak.value / 20.0) : peak.value;
            EXPECT_NEAR(value, kAmplitude, 0.001 * kAmplitude);
            EXPECT_NEAR(peak.frequency, bin / (kSamples * kDt), 0.01 / (kSamples * kDt));
        }
    }
    // Averages know no phase, and a density is the square of an amplitude.
    SpectrumRequest request = requestFor(file);
    request.averaged = true;
    request.segment = 900;
    const auto averaged = spectrumOf(file, request);
    EXPECT_NEAR(findPeaks(*averaged, request, 1).at(0).value, kAmplitude, 0.001 * kAmplitude);
}

TEST(Spectrum, SumOfTheDensityIsTheVarianceAlsoAveragedPaddedAndAtNyquist)
{
    const TestDirectory directory;
    constexpr std::uint32_t kLong = 100'000;  // its spectrum has more rows than are written at once
    TSFILE file("a", kLong, 1, 0);
    std::mt19937 random(7);
    std::normal_distribution<double> noise(1.0, 2.0);
    double variance = 0.0;
    fill(file, [&](double) {
        const double x = noise(random);
        variance += (x - 1.0) * (x - 1.0) / kLong;
        return x;
    });
    for (const bool averaged : {false, true})
        for (const bool pad : {false, true}) {
            SpectrumRequest request = requestFor(file);
            request.result = SpectrumResult::PowerDensity;
            request.averaged = averaged;
            request.segment = 1000;
            request.pad = pad;
            request.window = averaged ? SpectrumWindow::Hann : SpectrumWindow::Rectangular;
            const auto spectrum = spectrumOf(file, request);
            double sum = 0.0;
            for (std::uint32_t k = 1; k <= spectrum->samples(); ++k)
                sum += spectrum->value(k, 2) * planSpectrum(request).resolution;
            // Parseval's theorem holds to rounding for the rectangle; the window of segments weighs the
            // noise.
            EXPECT_NEAR(sum, variance, averaged ? 0.03 * variance : 2e-3 * variance);
        }
    fill(file, [](double i) { return std::fmod(i, 2.0) * 4.0 - 2.0; });  // amplitude 2 at half the rate
    const auto square = spectrumOf(file, requestFor(file));
    EXPECT_NEAR(square->value(kLong / 2, 2), 2.0, 1e-6);
    for (const std::uint32_t row : {1U, 32'769U, 40'000U, kLong / 2})
        EXPECT_FLOAT_EQ(square->value(row, 1), static_cast<float>(row / (kLong * kDt))) << row;
}

TEST(Spectrum, AverageIsTheMeanPowerOfItsSegments)
{
    const TestDirectory directory;
    TSFILE file("a", 1000, 1, 0);
    fill(file, [](double i) { return std::sin(i * i * 1e-3) + 0.01 * i; });
    SpectrumRequest request = requestFor(file);
    request.averaged = true;
    request.segment = 250;
    request.overlapPercent = 67;
    const SpectrumPlan plan = planSpectrum(request);
    EXPECT_EQ(plan.segments, (1000U - 250U) / 82U + 1U);
    std::vector<double> power(plan.bins, 0.0);
    for (std::uint32_t s = 0; s < plan.segments; ++s) {
        SpectrumRequest single = request;
        single.averaged = false;
        single.from = 1 + 82 * s;
        single.to = single.from + 249;
        const auto one = spectrumOf(file, single);
        for (std::uint32_t k = 1; k <= plan.bins; ++k)
            power[k - 1] += std::pow(one->value(k, 2), 2.0) / plan.segments;
    }
    const auto averaged = spectrumOf(file, request);
    for (std::uint32_t k = 1; k <= plan.bins; ++k)
        ASSERT_NEAR(averaged->value(k, 2), std::sqrt(power[k - 1]), 1e-6 * (1.0 + std::sqrt(power[k - 1])))
            << k;
}

TEST(Spectrum, StraightLineIsRemovedToRounding)
{
    const TestDirectory directory;
    TSFILE file("a", 1000, 1, 0);
    fill(file, [](double i) { return 1024.0 + 0.5 * i; });
    SpectrumRequest request = requestFor(file);
    request.trend = SpectrumTrend::Line;
    const auto spectrum = spectrumOf(file, request);
    for (std::uint32_t k = 1; k <= spectrum->samples(); ++k)
        ASSERT_LT(spectrum->value(k, 2), 1e-9) << k;
}

TEST(Spectrum, MissingSamplesAreCountedAndBridged)
{
    const TestDirectory directory;
    TSFILE file("a", kSamples, 1, 0);
    fill(file, [](double i) { return 2.0 * std::sin(2.0 * kPi * 10.0 * i / kSamples); });
    for (const std::uint32_t s : {1U, 2U, 500U, 501U, kSamples})
        file.setValue(s, 1, s == 500 ? INFINITY : NAN);
    SpectrumRequest request = requestFor(file);
    std::uint64_t missing = 0;
    countMissing(file, request, missing, {});
    EXPECT_EQ(missing, 5U);
    request.interpolate = true;
    EXPECT_NEAR(spectrumOf(file, request)->value(10, 2), 2.0, 1e-3);
}

TEST(Spectrum, MissingSamplesAtSegmentBordersTakeTheLineToTheNeighbourBeyond)
{
    const TestDirectory directory;
    TSFILE file("a", 2000, 1, 0);
    fill(file, [](double i) {
        const bool isMissing = (i > 240 && i < 260) || (i > 499 && i < 1300) || (i > 1490 && i < 1500);
        return isMissing ? NAN : 0.25 * i;
    });
    SpectrumRequest request = requestFor(file);
    request.interpolate = true;
    request.trend = SpectrumTrend::Line;
    request.from = 250;  // in a gap whose beginning lies before the range
    for (const bool averaged : {true, false}) {
        request.averaged = averaged;
        request.segment = 250;
        request.overlapPercent = averaged ? 67 : 0;
        const auto spectrum = spectrumOf(file, request);
        for (std::uint32_t k = 1; k <= spectrum->samples(); ++k)
            ASSERT_LT(spectrum->value(k, 2), 1e-9) << k;
    }
}

TEST(Spectrum, RingFileIsReadFromItsOldestSampleOn)
{
    const TestDirectory directory;
    TSFILE file("a", kSamples, 1, 0);
    file.dt(static_cast<float>(kDt));
    file.setRingMode(true);
    for (std::uint32_t s = 1; s <= kSamples + 1234; ++s) {
        const auto v = static_cast<float>(std::cos(2.0 * kPi * 90.5 * (s - 1235.0) / kSamples));
        file.writeRow(s, &v, false);
    }
    SpectrumRequest request = requestFor(file);
    request.window = SpectrumWindow::Rectangular;
    EXPECT_NEAR(spectrumOf(file, request)->value(90, 2), 2.0 / kPi, 2e-3);
}

TEST(Spectrum, WeightsOfWindowsDoNotDriftOverALongRange)
{
    constexpr std::uint32_t kLong = 1000000;
    for (int w = 0; w < kSpectrumWindows; ++w) {
        const auto window = static_cast<SpectrumWindow>(w);
        SCOPED_TRACE(spectrumWindowName(window));
        WindowShape shape(window, kLong);
        std::vector<double> weights(kLong);
        shape.fill(0, weights);
        for (std::uint32_t i = 1; i < kLong; ++i)
            ASSERT_NEAR(weights[i], weights[kLong - i], 1e-14) << i;
        if (window == SpectrumWindow::Hann) {
            EXPECT_NEAR(shape.sum() / kLong, 1.0 / 2.0, 1e-12);
            EXPECT_NEAR(shape.squares() / kLong, 3.0 / 8.0, 1e-12);
        }
    }
}

TEST(Spectrum, LengthsAreTheGreatestAndTheLeastThatTheTransformTakes)
{
    const auto is235 = [](std::uint32_t n) {
        for (const std::uint32_t p : {2U, 3U, 5U})
            while (n % p == 0)
                n /= p;
        return n == 1;
    };
    for (std::uint32_t m = 2; m < 3000; ++m) {
        const std::uint32_t shorter = shortenedLength(m);
        ASSERT_TRUE(shorter <= m && isTransformLength(static_cast<int>(shorter))) << m;
        for (std::uint32_t n = shorter + 1; n <= m; ++n)
            ASSERT_FALSE(is235(shorter) ? is235(n) : isTransformLength(static_cast<int>(n))) << m;
        const std::uint32_t longer = paddedLength(m);
        ASSERT_TRUE(longer >= m && is235(longer)) << m;
    }
    EXPECT_GT(shortenedLength(1000003), 998000U);
    // No transform has more samples than a signed 32-bit number tells.
    for (const std::uint32_t m : {2147483647U, 4294967295U}) {
        EXPECT_TRUE(isTransformLength(static_cast<int>(shortenedLength(m)))) << m;
        EXPECT_TRUE(isTransformLength(static_cast<int>(paddedLength(m)))) << m;
    }
    SpectrumRequest one;
    EXPECT_EQ(planSpectrum(one).bins, 0U);  // fewer than two samples
    one.to = 1'000'000;
    EXPECT_EQ(planSpectrum(one).bytes, 16'000'016U);
    one.to = 3375;
    EXPECT_EQ(planSpectrum(one).bytes, 24U * 3375);
}

TEST(Spectrum, PeaksAndHarmonicsStandWhereTheTonesAre)
{
    const TestDirectory directory;
    TSFILE file("a", kSamples, 1, 0);
    constexpr double kBase = 71.4;  // bins
    fill(file, [](double i) {
        const double phase = 2.0 * kPi * kBase * i / kSamples;
        return 3.0 * std::sin(phase) + 1.0 * std::sin(2.0 * phase) + 0.5 * std::sin(5.0 * phase);
    });
    const SpectrumRequest request = requestFor(file);
    const auto spectrum = spectrumOf(file, request);
    const double resolution = 1.0 / (kSamples * kDt);
    const auto peaks = findPeaks(*spectrum, request, 3);
    ASSERT_EQ(peaks.size(), 3U);
    const double multiples[] = {1.0, 2.0, 5.0};
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(peaks[i].frequency, multiples[i] * kBase * resolution, 0.1 * resolution);
    const auto harmonics = findHarmonics(*spectrum, request, peaks[0].frequency, 40);
    ASSERT_GE(harmonics.size(), 20U);
    EXPECT_NEAR(harmonics[4].value, 0.5, 0.001);
    const auto low = findHarmonics(*spectrum, request, 2.0 * resolution, 40);
    for (std::size_t i = 1; i < low.size(); ++i)
        EXPECT_GT(low[i].bin, low[i - 1].bin);
}

TEST(Spectrum, DistortionIsThatOfTheHarmonicsInAmplitudesLevelsAndPowers)
{
    const TestDirectory directory;
    TSFILE file("a", kSamples, 1, 0);
    fill(file, [](double i) {
        const double turn = 2.0 * kPi * 90.0 * i / kSamples;
        return 5.0 + 2.0 * std::sin(turn) + 0.3 * std::sin(2.0 * turn) + 0.4 * std::sin(5.0 * turn + 1.0);
    });
    SpectrumRequest request = requestFor(file);
    for (const SpectrumResult result :
         {SpectrumResult::Amplitude, SpectrumResult::PowerDensity, SpectrumResult::RealImaginary})
        for (const bool decibel : {false, true}) {
            request.result = result;
            request.decibel = decibel && result != SpectrumResult::RealImaginary;
            const auto spectrum = spectrumOf(file, request);
            const auto harmonics = findHarmonics(*spectrum, request, 2.5, 40);
            EXPECT_NEAR(harmonicDistortion(harmonics, request), 0.25, 1e-3);
        }
    EXPECT_TRUE(std::isnan(harmonicDistortion({{2.5, 2.0, 90}}, request)));
}
