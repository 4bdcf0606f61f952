// Filtering a work file, saving from it, and the requests that fields make.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <random>

#include "calc/TwoChannels.h"
#include "core/ScratchFile.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "filter/FilterCharacteristic.h"
#include "filter/FilterNumbers.h"
#include "filter/FilterResponse.h"
#include "filter/FilterRoots.h"
#include "filter/FilterRun.h"
#include "filter/SaveResults.h"
#include "tests/FileSizeLimit.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

constexpr std::uint32_t kSamples = 70001;  // more than two runs

float wave(std::uint32_t s)
{
    return static_cast<float>(std::sin(s * 0.37) * 100.0 + (s % 11));
}

std::unique_ptr<TSFILE> makeFile(const char* name, std::uint32_t samples, std::uint32_t columns)
{
    auto file = std::make_unique<TSFILE>(name, samples, columns, 0);
    for (std::uint32_t s = 1; s <= samples; ++s)
        file->setValue(s, 1, wave(s));
    return file;
}

bool stopsPastHalf(std::uint64_t done, std::uint64_t total)
{
    return 10 * done <= 6 * total;
}

TEST(FilterRequest, everyTypeMakesASpecThatDesigns)
{
    for (int type = 1; type < static_cast<int>(filterTypes().size()); ++type) {
        const FilterRequest request{type, 0.5, 40.0, 3, -0.1};
        EXPECT_EQ(filterComplaint(request, 360.0), "");
        EXPECT_TRUE(designFilter(request, 360.0)) << filterSpec(request);
    }
    EXPECT_EQ(filterSpec({11, 0.5, 40.0, 3, -0.1}), "BpCh3/-0.1/0.5-40");
    EXPECT_EQ(filterSpec({13, 12.25, 0, 0, 0}), "LpBl/12.25");
}

// White noise through each filter, and some noise of the sensor's own at its end.
TEST(FilterRequest, measuredTransferFunctionLiesOnTheCharacteristicWithinItsErrorBand)
{
    constexpr std::uint32_t kCount = 200'000;
    constexpr double kRate = 1000.0;
    constexpr double kLeastGain = 0.05;  // below, the sensor's noise is most of it
    const TestDirectory directory;
    std::mt19937 random(3);
    std::normal_distribution<double> noise(0.0, 1.0);
    {
        TSFILE source("source", kCount, 3, 0);
        source.dt(static_cast<float>(1.0 / kRate));
        for (std::uint32_t s = 1; s <= kCount; ++s)
            source.setValue(s, 2, static_cast<float>(noise(random)));
    }
    TSFILE source("source", true);
    for (const FilterRequest& asked :
         {FilterRequest{5, 60.0, 0.0, 4, 0.0}, FilterRequest{7, 40.0, 120.0, 3, 0.0}}) {
        SCOPED_TRACE(filterSpec(asked));
        const FidFilterPtr filter = designFilter(asked, kRate);
        ASSERT_TRUE(filter);
        TSFILE work("work", kCount, 2, 0);
        ASSERT_EQ(runFilter(SourceColumn(source, 2), work, filter.get(), {}).outcome, JobOutcome::Done);
        for (std::uint32_t s = 1; s <= kCount; ++s)
            work.setValue(s, 2, work.value(s, 2) + 0.2F * static_cast<float>(noise(random)));
        TwoChannelRequest request;
        request.input.from = 1001;  // the filter has settled
        request.input.to = kCount;
        request.input.averaged = true;
        request.input.segment = 2000;
        request.input.dt = 1.0 / kRate;
        request.column = 2;
        request.from = 1001;
        TwoChannelMeans means;
        ASSERT_EQ(averageTwoChannels(work, work, request, means, {}), JobOutcome::Done);
        int compared = 0;
        int gains = 0;
        int phases = 0;
        for (std::size_t k = 1; k < 1000; ++k) {
            double turns = 0.0;
            const double gain = fid_response_pha(filter.get(), static_cast<double>(k) / 2000.0, &turns);
            if (gain < kLeastGain)
                continue;
            const TwoChannelBin bin = twoChannelBin(means, k, TwoChannelResult::H1);
            ++compared;
            gains += bin.low <= gain && gain <= bin.high ? 1 : 0;
            phases += std::fabs(std::remainder(bin.phase - 360.0 * turns, 360.0)) <= bin.phaseError ? 1 : 0;
        }
        EXPECT_GT(compared, 150);
        EXPECT_GE(gains, 0.92 * compared);  // of 95 %
        EXPECT_GE(phases, 0.92 * compared);
    }
}

TEST(FilterRequest, complaintsComeInTheirOrder)
{
    const char* const half = " must be below half of the sampling frequency, 50 Hz";
    const std::pair<FilterRequest, std::string> rows[] = {
        {{7, 0.0, 0.0, 0, 1.0}, "Freq0 must be >0"},
        {{7, 60.0, 0.0, 0, 1.0}, "Freq1 must be >0"},
        {{7, 60.0, 70.0, 0, 1.0}, "The filter order must be >=1"},
        {{3, 60.0, 70.0, 11, 1.0}, "Maximum Bessel filter order is 10"},
        {{11, 60.0, 70.0, 65, 1.0}, "Maximum Butterworth/Chebychev filter order is 64"},
        {{11, 60.0, 70.0, 64, 1.0}, std::string("Freq0") + half},
        {{11, 20.0, 50.0, 64, 1.0}, std::string("Freq1") + half},
        {{11, 20.0, 20.0, 64, 1.0}, "Freq1 must be above Freq0"},
        {{11, 20.0, 21.0, 64, 0.0}, "The ripple must be <0 dB"},
        {{14, 20.0, 0.0, 0, 0.0}, ""},
        {{0, 0.0, 0.0, 0, 0.0}, "The number of points must be >=1"},
    };
    for (const auto& [request, text] : rows)
        EXPECT_EQ(filterComplaint(request, 100.0), text);
    EXPECT_EQ(samplingFrequency(static_cast<float>(1.0 / 360)), 360.0);
    EXPECT_EQ(samplingFrequency(0.0F), 0.0);
}

TEST(FilterRequest, reportsReachUsersInTheProgramsWords)
{
    const FidReports reports;
    EXPECT_FALSE(designFilter({5, 1e-9, 0.0, 64, 0.0}, 1000.0));
    EXPECT_TRUE(reports.text().starts_with("This filter cannot be made so narrow: "));
    EXPECT_NE(reports.text().find("\n(Frequency of 1e-09Hz out of range"), std::string::npos);
}

TEST(MovingAverageRun, equalsTheDirectMeanAtBothEndsAndAcrossRuns)
{
    const TestDirectory directory;
    const auto work = makeFile("w", kSamples, 2);
    work->setValue(40000, 1, std::nanf(""));
    work->setValue(50000, 1, 1e30F);  // a running sum would not recover from it
    for (const std::uint32_t points : {1U, 2U, 7U, 1000U, kSamples, 4000000000U}) {
        const FilterOutcome outcome = runMovingAverage(SourceColumn(*work, 1), *work, points, {});
        EXPECT_EQ(outcome.missing, 1U);
        const std::int64_t ahead = std::min<std::int64_t>(points / 2, kSamples);
        const std::int64_t behind = std::min<std::int64_t>(points - 1 - points / 2, kSamples);
        for (const std::int64_t s : {1L, 2L, 500L, 32768L, 32769L, 40000L, 49998L, 50005L, 70000L, 70001L}) {
            double sum = 0.0;
            int count = 0;
            for (auto i = std::max<std::int64_t>(1, s - behind);
                 i <= std::min<std::int64_t>(kSamples, s + ahead); ++i) {
                const float x = work->value(static_cast<std::uint32_t>(i), 1);
                sum += std::isnan(x) ? 0.0 : static_cast<double>(x);
                count += std::isnan(x) ? 0 : 1;
            }
            const float mean = work->value(static_cast<std::uint32_t>(s), 2);
            if (count == 0) {
                EXPECT_TRUE(std::isnan(mean));
            } else {
                EXPECT_NEAR(mean, sum / count, std::abs(sum / count) * 1e-6 + 1e-5) << points << " at " << s;
            }
        }
    }
}

TEST(FilterRun, aRingFileIsReadFromItsOldestSampleOn)
{
    const TestDirectory directory;
    const auto work = makeFile("w", kSamples, 2);
    TSFILE ring("r", kSamples, 1, 0);
    ring.setRingMode(true);
    for (std::uint32_t s = 1; s <= kSamples + 1234; ++s) {
        const float v = wave(s - 1234);
        ring.writeRow(s, &v, false);
    }
    TSFILE fromRing("o", kSamples, 2, 0);
    const FidFilterPtr filter = designFilter({5, 10.0, 0.0, 4, 0.0}, 1000.0);
    const auto expectEqual = [&] {
        for (const std::uint32_t s : {1U, 1234U, 32768U, 32769U, kSamples})
            for (const std::uint32_t c : {1U, 2U})
                EXPECT_EQ(fromRing.value(s, c), work->value(s, c)) << s << " " << c;
    };
    runFilter(SourceColumn(*work, 1), *work, filter.get(), {});
    runFilter(SourceColumn(ring, 1), fromRing, filter.get(), {});
    expectEqual();
    runMovingAverage(SourceColumn(*work, 1), *work, 1001, {});
    runMovingAverage(SourceColumn(ring, 1), fromRing, 1001, {});
    expectEqual();
}

TEST(FilterRun, missingSamplesStayMissingAndPoisonNothing)
{
    const TestDirectory directory;
    const auto work = makeFile("w", kSamples, 2);
    work->setValue(100, 1, std::nanf(""));
    work->setValue(200, 1, INFINITY);
    const FidFilterPtr filter = designFilter({5, 10.0, 0.0, 4, 0.0}, 1000.0);
    const FilterOutcome outcome = runFilter(SourceColumn(*work, 1), *work, filter.get(), {});
    EXPECT_EQ(outcome.missing, 2U);
    EXPECT_TRUE(std::isnan(work->value(100, 2)) && std::isnan(work->value(200, 2)));
    EXPECT_NEAR(work->value(kSamples, 2), 5.0, 0.5);  // the mean of 0 to 10
    EXPECT_EQ(runFilter(SourceColumn(*work, 1), *work, filter.get(), stopsPastHalf).outcome,
              JobOutcome::Cancelled);
}

TEST(FilterCharacteristic, marksHalfPowerOnItsCurve)
{
    const FidFilterPtr filter = designFilter({7, 0.5, 40.0, 2, 0.0}, 360.0);
    const FilterCharacteristic c = characteristicOf(filter.get(), 360.0);
    ASSERT_EQ(c.halfPower.size(), 2U);
    EXPECT_NEAR(c.halfPower[0], 0.5, 1e-6);
    EXPECT_NEAR(c.halfPower[1], 40.0, 1e-6);
    EXPECT_GT(c.frequencies.size(), 4000U);
    EXPECT_TRUE(std::is_sorted(c.frequencies.begin(), c.frequencies.end()));
    for (std::size_t i = 0; i < c.marks.size(); ++i)
        EXPECT_TRUE(std::isnan(c.marks[i]) || c.marks[i] == 0.0F ||
                    std::abs(c.marks[i] - 0.70710678F) < 1e-6F);
}

TEST(SaveResults, newFileHasBothColumnsAndTheHeader)
{
    const TestDirectory directory;
    const auto source = makeFile("source", 500, 3);
    source->dt(0.25F);
    source->startSeconds(1000);
    source->columnName(1, "Force");
    source->columnDescription(1, "At the hook of the crane, before it was [kN]");
    const auto work = std::make_unique<TSFILE>("temp", 500, 2, 0);
    describeWork(SourceColumn(*source, 1), *work, "LpBu4/1");
    runMovingAverage(SourceColumn(*source, 1), *work, 3, {});
    work->flush(true);
    ASSERT_EQ(saveToNewFile(*work, "data.v2.ts", {}), JobOutcome::Done);
    const auto saved = openTsFile("data.v2.ts", true);
    EXPECT_EQ(saved->dt(), 0.25F);
    EXPECT_EQ(saved->startSeconds(), 1000U);
    EXPECT_STREQ(saved->columnName(1), "Force");
    EXPECT_STREQ(saved->columnName(2), "Force_f");
    EXPECT_GT(saved->columnTime(2), std::time(nullptr) - 86400) << "made now";
    EXPECT_STREQ(saved->columnDescription(2), "LpBu4/1 [kN]");
    EXPECT_EQ(saved->value(500, 1), wave(500));
}

TEST(SaveResults, cancelledSavesLeaveTheFileAsItWas)
{
    const TestDirectory directory;
    const auto work = makeFile("temp", kSamples, 2);
    makeFile("target", kSamples, 2)->flush(true);
    const auto before = bytesOf("target.ts");
    std::filesystem::path backup;
    EXPECT_EQ(saveToAddedColumn(*work, "target.ts", kSamples, stopsPastHalf), JobOutcome::Cancelled);
    EXPECT_EQ(bytesOf("target.ts"), before);
    EXPECT_FALSE(std::filesystem::exists("tmp.ts"));
    EXPECT_EQ(saveToColumns(*work, "target.ts", {2, 1}, kSamples, stopsPastHalf, backup),
              JobOutcome::Cancelled);
    EXPECT_EQ(bytesOf("target.ts").size(), before.size());
    EXPECT_EQ(openTsFile("target.ts", true)->value(7, 1), wave(7));
}

TEST(SaveResults, fullDiskLeavesEverythingAsItWas)
{
    const TestDirectory directory;
    const auto work = makeFile("temp", kSamples, 2);
    work->flush(true);
    makeFile("target", kSamples, 1)->flush(true);
    const auto before = bytesOf("target.ts");
    const FileSizeLimit full(before.size() + 1000);
    EXPECT_ANY_THROW(saveToAddedColumn(*work, "target.ts", kSamples, {}));
    EXPECT_ANY_THROW(saveToNewFile(*work, "new.ts", {}));
    EXPECT_EQ(bytesOf("target.ts"), before);
    EXPECT_EQ(directory.fileCount(), 2U);
}

TEST(SaveResults, columnsAreReplacedOrAddedAndTheOthersStay)
{
    const TestDirectory directory;
    const auto work = makeFile("temp", 400, 2);
    for (std::uint32_t s = 1; s <= 400; ++s)
        work->setValue(s, 2, static_cast<float>(s));
    work->columnName(2, "Force_f");
    makeFile("target", 300, 2)->flush(true);
    std::filesystem::path backup;
    ASSERT_EQ(saveToAddedColumn(*work, "target.ts", 300, {}), JobOutcome::Done);
    ASSERT_EQ(saveToColumns(*work, "target.ts", {0, 2}, 200, {}, backup), JobOutcome::Done);
    const auto target = openTsFile("target.ts", true);
    EXPECT_EQ(target->columns(), 3U);
    EXPECT_EQ(target->value(300, 3), 300.0F);
    EXPECT_STREQ(target->columnName(3), "Force_f");
    EXPECT_EQ(target->value(200, 2), 200.0F);
    EXPECT_EQ(target->value(201, 2), 0.0F);
    EXPECT_EQ(target->value(300, 1), wave(300));
    EXPECT_TRUE(backup.empty());
    ASSERT_EQ(saveToAddedColumn(*work, "target.ts", 300, {}), JobOutcome::Done);
    EXPECT_STREQ(openTsFile("target.ts", true)->columnName(4), "Force_f~2") << "names tell columns apart";
}

TEST(FilterRun, settledStartOfEveryTypeKeepsAConstantWhereItsGainAtZeroPutsIt)
{
    const TestDirectory directory;
    const auto file = makeFile("f", 2001, 1);
    const auto work = makeFile("w", 2000, 2);
    for (std::uint32_t s = 1; s <= 2001; ++s)
        file->setValue(s, 1, s < 4 ? std::nanf("") : 50.0F);
    for (int type = 1; type < static_cast<int>(filterTypes().size()); ++type) {
        const FilterRequest request{type, 5.0, 40.0, type < 9 ? 3 : 10, -0.1, FilterPass::Settled};
        const FidFilterPtr filter = designFilter(request, 360.0);
        const double rest = 50.0 * fid_response(filter.get(), 0.0);
        runFilter(SourceColumn(*file, 1, 2), *work, filter.get(), {}, request.pass);
        EXPECT_TRUE(std::isnan(work->value(1, 2)));
        for (const std::uint32_t s : {3U, 4U, 100U, 1998U})
            EXPECT_NEAR(work->value(s, 2), rest, 1e-4) << filterWords(request) << ' ' << s;
    }
    const FidFilterPtr flat(fid_flatten(designFilter({5, 5.0, 0.0, 3}, 360.0).get()));
    runFilter(SourceColumn(*file, 1, 2), *work, flat.get(), {}, FilterPass::Settled);
    EXPECT_NEAR(work->value(3, 2), 50.0, 1e-4);
}

TEST(FilterRun, zeroPhaseDelaysNothingSquaresTheGainAndBridgesWhatIsMissing)
{
    const TestDirectory directory;
    TSFILE file("w", kSamples, 2, 0);
    // Neither the first row nor the whole file; tones on both sides of the corner and an offset.
    const auto slow = [](double s) { return 1000.0 + 3.0 * std::sin(0.12 * s); };
    for (std::uint32_t s = 1; s <= kSamples; ++s)
        file.setValue(s, 1, static_cast<float>(slow(s) + std::sin(0.9 * s)));
    file.setValue(40000, 1, INFINITY);
    const FidFilterPtr filter = designFilter({5, 10.0, 0.0, 4}, 360.0);
    TSFILE work("z", kSamples - 6, 2, 0);
    const FilterOutcome outcome =
        runFilter(SourceColumn(file, 1, 7), work, filter.get(), {}, FilterPass::ZeroPhase);
    EXPECT_EQ(outcome.missing, 1U);
    EXPECT_TRUE(std::isnan(work.value(40000 - 6, 2)));
    const double kept = std::pow(fid_response(filter.get(), 0.12 / (2.0 * std::numbers::pi)), 2.0);
    EXPECT_LT(kept, 0.99);
    for (const std::uint32_t s : {500U, 32768U, 32769U, 60000U, kSamples - 500})
        EXPECT_NEAR(work.value(s - 6, 2), 1000.0 + kept * (slow(s) - 1000.0), 2e-4) << s;
    // The reflected ends hold the level: no ringing at either of them.
    EXPECT_NEAR(work.value(1, 2), slow(7), 1.5);
    EXPECT_NEAR(work.value(kSamples - 6, 2), slow(kSamples), 1.5);
    // And the slope: what rises evenly stays as it is up to both.
    TSFILE ramp("r", 400, 1, 0);
    TSFILE smoothed("s", 400, 2, 0);
    for (std::uint32_t s = 1; s <= 400; ++s)
        ramp.setValue(s, 1, 7.0F + 0.5F * static_cast<float>(s));
    runFilter(SourceColumn(ramp, 1, 1), smoothed, filter.get(), {}, FilterPass::ZeroPhase);
    for (const std::uint32_t s : {1U, 2U, 200U, 399U, 400U})
        EXPECT_NEAR(smoothed.value(s, 2), ramp.value(s, 1), 0.01) << s;
    EXPECT_EQ(
        runFilter(SourceColumn(file, 1, 7), work, filter.get(), stopsPastHalf, FilterPass::ZeroPhase).outcome,
        JobOutcome::Cancelled);
}

TEST(FilterCharacteristic, pagesAgreeWithOneAnotherAndZeroPhaseSquares)
{
    const FidFilterPtr filter = designFilter({5, 10.0, 0.0, 4}, 360.0);
    const FilterCharacteristic both = characteristicOf(filter.get(), 360.0, true);
    ASSERT_EQ(both.halfPower.size(), 1U);
    EXPECT_NEAR(std::pow(fid_response(filter.get(), both.halfPower[0] / 360.0), 4.0), 0.5, 1e-9);
    EXPECT_EQ(both.phase[100], 0.0F);
    // The delay is minus the slope of the phase, the step's end the gain at 0.
    double here = 0.0;
    double there = 0.0;
    fid_response_pha(filter.get(), 0.0199999, &here);
    fid_response_pha(filter.get(), 0.0200001, &there);
    EXPECT_NEAR(groupDelay(filter.get(), 0.02), (here - there) / 2e-7, 1e-5);
    const FilterResponses responses = responsesOf(filter.get(), 360.0, FilterPass::FromZero);
    EXPECT_NEAR(responses.step.back(), 1.0, 1e-5);
    const FilterResponses mirrored = responsesOf(filter.get(), 360.0, FilterPass::ZeroPhase);
    const std::size_t middle = mirrored.impulse.size() / 2;
    EXPECT_EQ(mirrored.seconds[middle], 0.0);
    EXPECT_NEAR(mirrored.impulse[middle - 9], mirrored.impulse[middle + 9], 1e-7);
    // A filter of its roots has its gain: also one of a long window.
    for (const int type : {5, 12, 13}) {
        const FidFilterPtr other = designFilter({type, 20.0, 40.0, 5, -0.5}, 360.0);
        const FilterRoots roots = rootsOf(other.get());
        ASSERT_TRUE(roots.isComplete);
        const auto product = [&](double fraction) {
            const std::complex<double> z = std::polar(1.0, 2.0 * std::numbers::pi * fraction);
            double gain = 1.0;
            for (const auto& zero : roots.zeros)
                gain *= std::abs(z - zero);
            for (const auto& pole : roots.poles)
                gain /= std::abs(z - pole);
            return gain;
        };
        EXPECT_NEAR(product(0.05) / product(0.03),
                    fid_response(other.get(), 0.05) / fid_response(other.get(), 0.03), 1e-6)
            << type;
    }
    const auto rows = filterNumbers(both, groupDelays(filter.get(), both.frequencies, 360.0), responses);
    EXPECT_EQ(rows.front().first, "\u22123.01 dB");
}

}  // namespace
