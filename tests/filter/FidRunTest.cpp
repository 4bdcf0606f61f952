// Running filters, and making them by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <numbers>

#include "tests/filter/FidSupport.h"

namespace {

// The spectrum of the impulse response, summed directly, against the response computed from the blocks:
// one case for each way of running.
TEST(FidRun, impulseResponseHasTheFiltersSpectrum)
{
    for (const char* spec : {"LpBu1/100", "LpBe4/100", "BpCh9/-1/90-180", "BsBu10/50-200", "HpBuZ3/80",
                             "LpHm/9.7", "LpBl/400", "PkBq3/2/6/100", "LpBu18/150"}) {
        const Filter cascade = design(spec);
        const Filter flat(fid_flatten(cascade.get()));
        for (const FidFilter* filter : {cascade.get(), flat.get()}) {
            std::vector<double> signal(20000, 0.0);
            signal[0] = 1.0;
            const std::vector<double> impulse = runFilter(filter, signal);
            for (const double f : {0.0, 0.031, 0.1, 0.17, 0.5}) {
                std::complex<double> sum = 0;
                for (std::size_t t = 0; t < impulse.size(); ++t)
                    sum += impulse[t] * std::polar(1.0, -2 * std::numbers::pi * f * static_cast<double>(t));
                double phase = 0.0;
                const double gain = fid_response_pha(filter, f, &phase);
                const double tolerance = filter == flat.get() ? 1e-5 : 1e-10;
                EXPECT_NEAR(std::abs(sum - std::polar(gain, 2 * std::numbers::pi * phase)), 0.0, tolerance)
                    << spec << " at " << f;
                EXPECT_TRUE(phase >= 0 && phase < 1);
                EXPECT_EQ(gain, fid_response(filter, f));
            }
        }
    }
}

TEST(FidRun, sharpCascadesHoldOverLongSeries)
{
    // where one flattened polynomial overflows
    const std::vector<double> out = runFilter(design("LpBu8/2").get(), std::vector<double>(1'000'000, 1.0));
    EXPECT_NEAR(out.back(), 1.0, 1e-9);
}

// In the order of their sharpness the sections of these lose 40 to 185 bits.
TEST(FidRun, highOrdersKeepTheirDigits)
{
    for (const char* spec : {"HpCh64/-0.5/40", "BpCh64/-0.5/40-90", "BsCh64/-3/40-400", "BpBuZ64/40-90"}) {
        const Filter filter = design(spec);
        std::vector<double> signal(400'000, 0.0);
        signal[0] = 1.0;
        const std::vector<double> impulse = runFilter(filter.get(), signal);
        for (const double f : {0.0, 0.03, 0.062, 0.1, 0.45}) {
            std::complex<double> sum = 0;
            for (std::size_t t = 0; t < impulse.size(); ++t)
                sum += impulse[t] * std::polar(1.0, -2 * std::numbers::pi * f * static_cast<double>(t));
            EXPECT_NEAR(std::abs(sum), fid_response(filter.get(), f), 1e-9) << spec << " at " << f;
        }
    }
}

// Against the same blocks in 80 bits: what is left is the rounding of the run, which sections whose zeros lie
// far from their poles amplify.
TEST(FidRun, wideBandPassesOfLowOrderKeepTheirDigits)
{
    for (const char* spec : {"BpBu2/0.05-100", "BpBu4/0.1-50", "BpBe2/0.05-100", "BpCh3/-0.5/0.1-100"}) {
        const Filter filter = design(spec);
        std::vector<double> signal(40'000);
        for (std::size_t t = 0; t < signal.size(); ++t)
            signal[t] = 5.0 + std::sin(0.01 * static_cast<double>(t * (t % 17)));
        std::vector<long double> wide(signal.begin(), signal.end());
        for (const FidFilter* block = filter.get(); block->count > 0; block = block->next()) {
            std::vector<long double> out(wide.size());
            for (std::size_t t = 0; t < wide.size(); ++t) {
                const bool feedback = block->type == 'I';
                long double sum = feedback ? wide[t] : 0.0L;
                for (int k = feedback ? 1 : 0; k < block->count && static_cast<std::size_t>(k) <= t; ++k) {
                    const long double c = block->coefficients()[k];
                    const std::size_t back = t - static_cast<std::size_t>(k);
                    sum += feedback ? -c * out[back] : c * wide[back];
                }
                out[t] = feedback ? sum / static_cast<long double>(block->coefficients()[0]) : sum;
            }
            wide.swap(out);
        }
        const std::vector<double> narrow = runFilter(filter.get(), signal);
        long double worst = 0.0L;
        long double highest = 0.0L;
        for (std::size_t t = 0; t < wide.size(); ++t) {
            worst = std::max(worst, std::fabs(wide[t] - static_cast<long double>(narrow[t])));
            highest = std::max(highest, std::fabs(wide[t]));
        }
        EXPECT_LT(static_cast<double>(worst / highest), 1e-10) << spec;
    }
}

TEST(FidRun, handMadeBlocksRunInTheirOrder)
{
    // y[t] = (3 x[t] + x[t-1] + 0.5 y[t-1]) through (1 - z^-1) and a gain of 2, a0 not 1
    const double table[] = {'I', 2, 2.0, -1.0, 'F', 2, 6.0, 2.0, 'F', 2, 1.0, -1.0, 'F', 1, 2.0, 0};
    const Filter filter(fid_cv_array(table));
    double inner = 0.0;
    double before = 0.0;
    double innerBefore = 0.0;
    const std::vector<double> in{1, 0, -2, 5, 5, 0, 0, 1};
    const std::vector<double> out = runFilter(filter.get(), in);
    for (std::size_t t = 0; t < in.size(); ++t) {
        inner = 3 * in[t] + before + 0.5 * innerBefore;
        EXPECT_DOUBLE_EQ(out[t], 2 * (inner - innerBefore)) << t;
        before = in[t];
        innerBefore = inner;
    }
}

TEST(FidRun, blocksAndStepsTakeTurns)
{
    for (const char* spec : {"LpBu5/50", "BpBu12/50-90", "LpHn/20"}) {
        const Filter filter = design(spec);
        std::vector<double> signal(300);
        for (std::size_t t = 0; t < signal.size(); ++t)
            signal[t] = std::sin(0.1 * static_cast<double>(t * t));
        const std::vector<double> expected = runFilter(filter.get(), signal);
        FidFunc* step = nullptr;
        void* const run = fid_run_new(filter.get(), &step);
        void* const buffer = fid_run_newbuf(run);
        fid_run_block(run, buffer, signal.data(), 100);
        signal[100] = step(buffer, signal[100]);
        fid_run_block(run, buffer, signal.data() + 101, 199);
        EXPECT_EQ(signal, expected) << spec;
        fid_run_freebuf(buffer);
        fid_run_free(run);
    }
}

TEST(FidRun, dyingResponsesReachZero)
{
    std::vector<double> signal(200'000, 0.0);
    signal[0] = 1.0;
    for (const double y : runFilter(design("LpBu10/50").get(), signal))
        EXPECT_TRUE(y == 0.0 || std::isnormal(y));
    EXPECT_EQ(runFilter(design("LpBu10/50").get(), signal).back(), 0.0);
}

TEST(FidRun, buffersAreIndependentAndHaveTheirLayout)
{
    const Filter filter = design("LpBu4/100");
    FidFunc* step = nullptr;
    void* const run = fid_run_new(filter.get(), &step);
    std::uint32_t magic = 0;
    std::memcpy(&magic, run, sizeof magic);
    EXPECT_EQ(magic, 0x64966325U);
    void* const one = fid_run_newbuf(run);
    std::vector<double> two(fid_run_bufsize(run) / sizeof(double), 7.0);
    fid_run_initbuf(two.data(), run);
    std::uint64_t historyBytes = 0;
    std::memcpy(&historyBytes, two.data() + 2, sizeof historyBytes);
    EXPECT_EQ(historyBytes, (two.size() - 3 - 1) * sizeof(double));
    const double first = step(one, 1.0);
    const double second = step(one, 0.0);
    EXPECT_EQ(step(two.data(), 1.0), first);
    fid_run_initbuf(one, run);
    EXPECT_EQ(step(one, 1.0), first);
    EXPECT_EQ(step(two.data(), 0.0), second);
    fid_run_freebuf(one);
    fid_run_free(run);
}

TEST(FidRun, badHandlesAndTypesAreTold)
{
    std::uint32_t junk[8] = {};
    const double table[] = {'X', 1, 1.0, 0};
    const Filter odd(fid_cv_array(table));
    const Quiet quiet;
    EXPECT_EQ(fid_run_newbuf(junk), nullptr);
    EXPECT_EQ(fid_run_newbuf(nullptr), nullptr);
    EXPECT_EQ(fid_run_bufsize(junk), 0U);
    fid_run_initbuf(junk, junk);
    fid_run_free(junk);
    FidFunc* step = nullptr;
    EXPECT_EQ(fid_run_new(odd.get(), &step), nullptr);
    EXPECT_EQ(fid_response(odd.get(), 0.1), 0.0);
    EXPECT_EQ(fid_response_pha(odd.get(), 0.1, nullptr), 0.0);
    const std::vector<std::string> texts{
        "Bad handle passed to fid_run_newbuf()",
        "Bad handle passed to fid_run_newbuf()",
        "Bad handle passed to fid_run_bufsize()",
        "Bad handle passed to fid_run_initbuf()",
        "Bad handle passed to fid_run_free()",
        "Internal error: fid_run_new can only handle IIR + FIR types",
        "Unknown filter type 88 in fid_response()",
        "Unknown filter type 88 in fid_response_pha()",
    };
    EXPECT_EQ(g_reports, texts);
}

}  // namespace
