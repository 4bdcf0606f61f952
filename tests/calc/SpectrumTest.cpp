// The scaling of spectra by mathematics: tones, noise, averages, trends, lengths, peaks.

#include "calc/Spectrum.h"
#include "calc/SpectrumPlan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <random>

#include "calc/BandPower.h"
#include "calc/OctaveBands.h"
#include "calc/PeakSearch.h"
#include "calc/SpectrumDoubts.h"
#include "calc/SpectrumPeaks.h"
#include "calc/SpectrumSamples.h"
#include "calc/SpectrumTexts.h"
#include "calc/WindowShape.h"
#include "calc/mixfft.h"
#include "core/TSFILE.h"
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
            const SpectrumPeak peak = findPeaks(*spectrum, request, {1}).at(0);
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
    EXPECT_NEAR(findPeaks(*averaged, request, {1}).at(0).value, kAmplitude, 0.001 * kAmplitude);
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
    fill(file, [](double i) { return 2.0 * std::sin(0.8 * kPi * i) + std::sin(0.2 * kPi * i); });
    const auto peaks = findPeaks(*spectrumOf(file, requestFor(file)), requestFor(file), {2});
    ASSERT_EQ(peaks.size(), 2U);
    EXPECT_NEAR(peaks[0].frequency * kDt, 0.4, 1e-6);
    EXPECT_NEAR(peaks[1].frequency * kDt, 0.1, 1e-6);
}

TEST(Spectrum, UnitsOfSeveralWordsStandInParentheses)
{
    const TestDirectory directory;
    TSFILE file("a", 10, 1, 0);
    SpectrumRequest request = requestFor(file);
    request.result = SpectrumResult::PowerDensity;
    for (const auto& [unit, density] :
         {std::pair("V", "V²/Hz"), {"m/s", "(m/s)²/Hz"}, {"N·m", "(N·m)²/Hz"}}) {
        file.columnDescription(1, (std::string("x [") + unit + "]").c_str());
        EXPECT_EQ(spectrumUnit(file, request), density);
    }
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

TEST(Spectrum, StepsAreCalledUnequalOnlyWhereMoreThanTheRoundingOfTheirTimesTellsThemApart)
{
    const TestDirectory directory;
    TSFILE file("a", 1000, 1, 1);
    for (std::uint32_t s = 1; s <= 1000; ++s)
        file.setValue(s, 1, 5000.0F + static_cast<float>(s * kDt));  // floats 1/2048 apart
    const auto doubt = [&file] {
        SpectrumRequest request = requestFor(file);
        request.column = 2;
        for (const SpectrumCheck& check : spectrumChecks())
            if (const SpectrumDoubt found = check.look(file, "a.ts", request, {});
                found.kind != SpectrumDoubt::Kind::None)
                return found.text;
        return std::to_string(request.dt);
    };
    EXPECT_EQ(doubt(), "0.010000");
    file.setValue(1000, 1, 5010.03125F);
    EXPECT_EQ(doubt(), "The steps of a.ts are not equal (0.01 to 0.04 s). The spectrum assumes 0.01 s.");
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
    const auto peaks = findPeaks(*spectrum, request, {3});
    ASSERT_EQ(peaks.size(), 3U);
    const double multiples[] = {1.0, 2.0, 5.0};
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(peaks[i].frequency, multiples[i] * kBase * resolution, 0.1 * resolution);
    const auto harmonics = findHarmonics(*spectrum, request, peaks[0].frequency, 40);
    ASSERT_GE(harmonics.size(), 20U);
    EXPECT_NEAR(harmonics[4].value, 0.5, 0.001);
    // On the flank of a tone, the bin as it stands.
    EXPECT_NEAR(lineAt(*spectrum, request, 74.2 * resolution).frequency, 74.0 * resolution, 1e-12);
    const auto low = findHarmonics(*spectrum, request, 2.0 * resolution, 40);
    for (std::size_t i = 1; i < low.size(); ++i)
        EXPECT_GT(low[i].bin, low[i - 1].bin);
}

TEST(Spectrum, ProminenceIsTheHeightAboveTheWayToHigherGround)
{
    struct Case
    {
        std::vector<float> heights;
        std::vector<std::pair<std::uint32_t, float>> peaks;  // place and prominence
    };
    const Case cases[] = {
        {{0, 3, 1, 4, 2, 6, 5, 5.5F, 1, 2, 0}, {{2, 2}, {4, 2}, {6, 6}, {8, 0.5F}, {10, 1}}},
        {{1, 5, 2, 5, 0, 5, 1}, {{2, 4}, {4, 4}, {6, 4}}},  // none of equal ones bounds another
        {{0, 2, 2, 1, 1, 0}, {{3, 2}}},                     // a flat top, and a step that is no top
        {{4, 1, 3, 2, 7}, {{1, 3}, {3, 1}, {5, 6}}},        // at the ends
        {{2, 2, 2}, {}},
        {{-INFINITY, -3, -INFINITY, -INFINITY}, {{2, INFINITY}}},
    };
    for (const Case& one : cases) {
        std::map<std::uint32_t, float> found;
        PeakSearch search([&](const CurvePeak& peak) {
            EXPECT_EQ(peak.height, one.heights[peak.place - 1]);
            found[peak.place] = peak.prominence;
        });
        for (const float height : one.heights)
            search.add(height);
        search.finish();
        EXPECT_EQ(found, (std::map<std::uint32_t, float>(one.peaks.begin(), one.peaks.end())));
    }
    // As scipy.signal.peak_prominences has it of a curve that is as good as random.
    std::uint64_t count = 0;
    double sum = 0.0;
    double weighed = 0.0;
    PeakSearch search([&](const CurvePeak& peak) {
        ++count;
        sum += static_cast<double>(peak.prominence);
        weighed += static_cast<double>(peak.prominence) * peak.place;
    });
    for (std::uint64_t i = 1; i <= 5000; ++i)
        search.add(i == 1 || i == 5000 ? 0.0F : static_cast<float>((i * i * 7919 + i * 104729) % 10007));
    search.finish();
    EXPECT_EQ(count, 1837U);
    EXPECT_EQ(sum, 8341904.0);
    EXPECT_EQ(weighed, 20735458535.0);
}

TEST(Spectrum, PeaksAreChosenByProminenceAndDistanceWhateverTheirNumber)
{
    // Teeth of falling height, 3 bins apart, more of them than are held at once; some of the first stand out.
    const TestDirectory directory;
    SpectrumRequest request;
    request.to = 120000;
    request.dt = 1.0 / 120000;  // a bin is 1 Hz
    request.averaged = true;
    request.segment = 120000;
    TSFILE spectrum("teeth", 60000, 2, 0);
    for (std::uint32_t k = 1; k <= 60000; ++k)
        spectrum.setValue(
            k, 2, k % 3 != 0 ? 0.0F : static_cast<float>(1e-5 * (60000 - k) + (k % 300 == 0 && k <= 3000)));
    const auto bins = [&](const PeakChoice& choice) {
        std::vector<std::uint32_t> out;
        for (const SpectrumPeak& peak : findPeaks(spectrum, request, choice))
            out.push_back(peak.bin);
        return out;
    };
    EXPECT_EQ(bins({3}), (std::vector<std::uint32_t>{300, 600, 900}));
    EXPECT_EQ(bins({3, 0.0, 1000.0}), (std::vector<std::uint32_t>{300, 1500, 2700}));
    EXPECT_EQ(bins({1000, 1.0}).size(), 10U);
    // Far more candidates than are held lie near the first: later ones are found all the same.
    EXPECT_EQ(bins({10, 0.0, 20000.0}), (std::vector<std::uint32_t>{300, 20301, 40302}));
}

TEST(Spectrum, PhaseOfAPeakIsThatOfTheToneBetweenTheBins)
{
    const TestDirectory directory;
    TSFILE file("a", kSamples, 1, 0);
    fill(file, [](double i) { return 3.0 * std::cos(2.0 * kPi * 90.3 * i / kSamples + 0.5); });
    SpectrumRequest request = requestFor(file);
    const auto spectrum = spectrumOf(file, request);
    EXPECT_NEAR(findPeaks(*spectrum, request, {1}).at(0).phase, 0.5 * 180.0 / kPi, 0.1);
    // A line is found from beside it, and where there is none the bin is told as it is.
    EXPECT_NEAR(lineAt(*spectrum, request, 89.0 / 36.0).frequency, 90.3 / 36.0, 1e-4);
    EXPECT_EQ(lineAt(*spectrum, request, 94.0 / 36.0).bin, 94U);
    request.averaged = true;
    request.segment = 900;
    EXPECT_TRUE(std::isnan(findPeaks(*spectrumOf(file, request), request, {1}).at(0).phase));
}

TEST(Spectrum, PowerBetweenTwoFrequenciesIsThatOfTheTonesThere)
{
    const TestDirectory directory;
    TSFILE file("a", 3 * 8192, 1, 0);
    fill(file, [](double i) {
        return 3.0 * std::sin(2.0 * kPi * 0.125 * i) + 1.0 * std::sin(2.0 * kPi * 0.4375 * i);
    });
    for (const SpectrumResult result : {SpectrumResult::PowerDensity, SpectrumResult::AmplitudeDensity})
        for (const bool decibel : {false, true}) {
            SpectrumRequest request = requestFor(file);
            request.result = result;
            request.decibel = decibel;
            const auto spectrum = spectrumOf(file, request);
            BandPower sums;
            ASSERT_EQ(sums.build(*spectrum, request, {}), JobOutcome::Done);
            const BandPower::Sum one = sums.between(*spectrum, 12.6, 12.4);
            EXPECT_NEAR(one.power, 4.5, 1e-5);
            EXPECT_EQ(one.bins, 49U);
            EXPECT_NEAR(sums.between(*spectrum, 12.45, 50.0).power, 5.0, 1e-5);  // over whole runs of bins
            EXPECT_NEAR(sums.between(*spectrum, 12.55, 40.0).power, 0.0, 1e-5);
            EXPECT_EQ(sums.between(*spectrum, 60.0, 70.0).bins, 0U);
        }
}

TEST(Spectrum, BandsHaveTheEdgesOfTheStandardAndTheirPartOfThePower)
{
    const auto thirds = octaveBands(3, 1.0, 20000.0);
    EXPECT_EQ(thirds.front().nominal, 16.0);  // 3.67 Hz wide; that of 12.5 Hz has 2.9 bins
    EXPECT_EQ(thirds.back().nominal, 16000.0);
    const auto at1000 = std::find_if(thirds.begin(), thirds.end(),
                                     [](const OctaveBand& band) { return band.nominal == 1000.0; });
    ASSERT_NE(at1000, thirds.end());
    EXPECT_NEAR(at1000->from, 891.2509, 1e-4);
    EXPECT_NEAR(at1000->to, 1122.0185, 1e-4);
    const auto octaves = octaveBands(1, 1.0, 1412.5376);
    EXPECT_EQ(octaves.front().nominal, 8.0);
    EXPECT_NEAR(octaves.front().middle, 7.943282, 1e-6);
    EXPECT_EQ(octaves.back().nominal, 1000.0);
    EXPECT_NEAR(octaves.back().from, 707.9458, 1e-4);

    const TestDirectory directory;
    TSFILE file("a", 40000, 1, 0);
    std::mt19937 random(5);
    std::normal_distribution<double> noise(0.0, 1.0);
    // 100 Hz; a tone of power 2 in the band of 10 Hz over noise of density 2 / 100 Hz.
    fill(file, [&](double i) { return noise(random) + 2.0 * std::sin(2.0 * kPi * 0.1013 * i); });
    for (const bool averaged : {false, true}) {
        SpectrumRequest request = requestFor(file);
        request.result = SpectrumResult::ThirdOctaveBands;
        request.averaged = averaged;
        const auto bands = octaveBands(request);
        TSFILE target("bands", spectrumRows(request), spectrumColumns(request), 0);
        double mean = 0.0;
        ASSERT_EQ(computeSpectrum(file, request, target, mean, {}), JobOutcome::Done);
        ASSERT_EQ(bands.back().nominal, 40.0);
        for (std::uint32_t b = 1; b <= bands.size(); ++b) {
            const double width = bands[b - 1].to - bands[b - 1].from;
            const bool hasTone = bands[b - 1].nominal == 10.0;
            const double power = 0.02 * width + (hasTone ? 2.0 : 0.0);
            EXPECT_EQ(target.value(b, 1), static_cast<float>(bands[b - 1].middle));
            // The deviation of a band's noise is 1 by the root of width times duration.
            EXPECT_NEAR(std::pow(target.value(b, 2), 2.0), power,
                        4.5 * 0.02 * width / std::sqrt(width * 400.0) * (averaged ? 1.2 : 1.5) +
                            (hasTone ? 0.1 : 1e-3));
            EXPECT_NEAR(target.value(b, 4) / target.value(b, 3), std::pow(10.0, 0.1), 1e-6);
        }
        if (averaged)
            continue;
        request.decibel = true;
        TSFILE levels("levels", spectrumRows(request), spectrumColumns(request), 0);
        computeSpectrum(file, request, levels, mean, {});
        EXPECT_NEAR(levels.value(9, 2), 20.0 * std::log10(target.value(9, 2)), 1e-4);
        describeSpectrum(file, request, levels);
        EXPECT_EQ(levels.dt(), 1.0F);
        EXPECT_EQ(levels.timeMode(), 1) << "the bands' own frequencies";
        EXPECT_STREQ(levels.columnName(2), "Level");
    }
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
