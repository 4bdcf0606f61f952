// Designs, checked against theory.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <numbers>
#include <random>

#include "tests/filter/FidSupport.h"

namespace {

const double kHalfPower = std::numbers::sqrt2 / 2;

double gain(const Filter& filter, double hz, double rate = 1000.0)
{
    return fid_response(filter.get(), hz / rate);
}

// Every pole inside the unit circle, by the triangle of stability of each section.
void expectStable(const FidFilter* filter, const std::string& spec)
{
    for (const FidFilter* block = filter; block->count > 0; block = block->next()) {
        const double* a = block->coefficients();
        if (block->type == 'F')
            continue;
        const double a1 = block->count > 1 ? a[1] / a[0] : 0.0;
        const double a2 = block->count > 2 ? a[2] / a[0] : 0.0;
        EXPECT_TRUE(block->count <= 3 && std::abs(a2) < 1 && std::abs(a1) < 1 + a2) << spec;
    }
}

TEST(FidDesign, everyFormatHasItsGainsAndItsDescription)
{
    struct Row
    {
        const char* spec;
        double hz[3];
        double gain[3];
        const char* description;
    };
    const double h = kHalfPower;
    const double r = std::pow(10.0, -0.5 / 20);  // ripple of -0.5 dB
    const double c = std::sqrt(50.0 * 200.0);
    // the bilinear centre of 50 and 200 Hz of 1000
    const double b =
        std::atan(std::sqrt(std::tan(std::numbers::pi * 0.05) * std::tan(std::numbers::pi * 0.2))) * 1000 /
        std::numbers::pi;
    const double nan = std::nan("");
    const Row rows[] = {
        {"BpRe/10/100", {0, 100, 500}, {0, 1, 0}, "Bandpass resonator, Q=10 (0 means Inf), frequency 100"},
        {"BsRe/10/100", {0, 100, 500}, {1, 0, 1}, "Bandstop resonator, Q=10 (0 means Inf), frequency 100"},
        {"ApRe/10/100", {0, 130, 500}, {1, 1, 1}, "Allpass resonator, Q=10 (0 means Inf), frequency 100"},
        {"Pi/100", {nan, 100, 500}, {0, std::sqrt(2.0), 1}, "Proportional-integral filter, frequency 100"},
        {"PiZ/10",
         {nan, 100, 500},
         {0, nan, 1},
         "Proportional-integral filter, matched z-transform, frequency 10"},
        {"LpBe4/100", {0, 100, 500}, {1, h, 0}, "Lowpass Bessel filter, order 4, -3.01dB frequency 100"},
        {"HpBe5/100", {0, 100, 500}, {0, h, 1}, "Highpass Bessel filter, order 5, -3.01dB frequency 100"},
        {"BpBe3/50-200",
         {50, b, 200},
         {h, 1, h},
         "Bandpass Bessel filter, order 3, -3.01dB frequencies 50-200"},
        {"BsBe4/50-200",
         {50, b, 200},
         {h, 0, h},
         "Bandstop Bessel filter, order 4, -3.01dB frequencies 50-200"},
        {"LpBu64/100",
         {0, 100, 500},
         {1, h, 0},
         "Lowpass Butterworth filter, order 64, -3.01dB frequency 100"},
        {"HpBu1/1e2",
         {0, 100, 500},
         {0, h, 1},
         "Highpass Butterworth filter, order 1, -3.01dB frequency 1e2"},
        {"BpBu64/50-200",
         {50, b, 200},
         {h, 1, h},
         "Bandpass Butterworth filter, order 64, -3.01dB frequencies 50-200"},
        {"BsBu7/50-200",
         {50, b, 200},
         {h, 0, h},
         "Bandstop Butterworth filter, order 7, -3.01dB frequencies 50-200"},
        {"LpCh4/-0.5/100",
         {0, 100, 500},
         {r, r, 0},
         "Lowpass Chebyshev filter, order 4, passband ripple -0.5dB, -3.01dB frequency 100"},
        {"HpCh5/-0.5/100",
         {0, 100, 500},
         {0, r, 1},
         "Highpass Chebyshev filter, order 5, passband ripple -0.5dB, -3.01dB frequency 100"},
        {"BpCh64/-0.5/50-200",
         {50, b, 200},
         {r, r, r},
         "Bandpass Chebyshev filter, order 64, passband ripple -0.5dB, -3.01dB frequencies 50-200"},
        {"BsCh3/-0.5/50-200",
         {50, b, 200},
         {r, 0, r},
         "Bandstop Chebyshev filter, order 3, passband ripple -0.5dB, -3.01dB frequencies 50-200"},
        {"LpBeZ4/50",
         {0, nan, nan},
         {1, 0, 0},
         "Lowpass Bessel filter, matched z-transform, order 4, -3.01dB frequency 50"},
        {"HpBeZ3/50",
         {0, nan, 500},
         {0, 0, 1},
         "Highpass Bessel filter, matched z-transform, order 3, -3.01dB frequency 50"},
        {"BpBeZ2/50-200",
         {0, c, nan},
         {0, 1, 0},
         "Bandpass Bessel filter, matched z-transform, order 2, -3.01dB frequencies 50-200"},
        {"BsBeZ2/50-200",
         {0, c, nan},
         {1, 0, 0},
         "Bandstop Bessel filter, matched z-transform, order 2, -3.01dB frequencies 50-200"},
        {"LpBuZ4/50",
         {0, nan, nan},
         {1, 0, 0},
         "Lowpass Butterworth filter, matched z-transform, order 4, -3.01dB frequency 50"},
        {"HpBuZ3/50",
         {0, nan, 500},
         {0, 0, 1},
         "Highpass Butterworth filter, matched z-transform, order 3, -3.01dB frequency 50"},
        {"BpBuZ3/50-200",
         {0, c, nan},
         {0, 1, 0},
         "Bandpass Butterworth filter, matched z-transform, order 3, -3.01dB frequencies 50-200"},
        {"BsBuZ3/50-200",
         {0, c, nan},
         {1, 0, 0},
         "Bandstop Butterworth filter, matched z-transform, order 3, -3.01dB frequencies 50-200"},
        {"LpChZ4/-0.5/50",
         {0, nan, nan},
         {r, 0, 0},
         "Lowpass Chebyshev filter, matched z-transform, order 4, passband ripple -0.5dB, -3.01dB frequency "
         "50"},
        {"HpChZ3/-0.5/50",
         {0, nan, 500},
         {0, 0, 1},
         "Highpass Chebyshev filter, matched z-transform, order 3, passband ripple -0.5dB, -3.01dB frequency "
         "50"},
        {"BpChZ3/-0.5/50-200",
         {0, c, nan},
         {0, 1, 0},
         "Bandpass Chebyshev filter, matched z-transform, order 3, passband ripple -0.5dB, -3.01dB "
         "frequencies 50-200"},
        {"BsChZ4/-0.5/50-200",
         {0, c, nan},
         {r, 0, 0},
         "Bandstop Chebyshev filter, matched z-transform, order 4, passband ripple -0.5dB, -3.01dB "
         "frequencies 50-200"},
        {"LpBuBe5/37.5/100",
         {0, 100, 500},
         {1, h, 0},
         "Lowpass Butterworth-Bessel 37.5% cross, order 5, -3.01dB frequency 100"},
        {"LpBq/0.8/100",
         {0, 100, 500},
         {1, 0.8, 0},
         "Lowpass biquad filter, order 1, Q=0.8, -3.01dB frequency 100"},
        {"HpBq2/0.8/100",
         {0, 100, 500},
         {0, 0.64, 1},
         "Highpass biquad filter, order 2, Q=0.8, -3.01dB frequency 100"},
        {"BpBq3/5/100",
         {0, 100, 500},
         {0, 1, 0},
         "Bandpass biquad filter, order 3, Q=5, centre frequency 100"},
        {"BsBq/5/100",
         {0, 100, 500},
         {1, 0, 1},
         "Bandstop biquad filter, order 1, Q=5, centre frequency 100"},
        {"ApBq/5/100", {0, 107, 500}, {1, 1, 1}, "Allpass biquad filter, order 1, Q=5, centre frequency 100"},
        {"PkBq/5/-6/100",
         {0, 100, 500},
         {1, std::pow(10.0, -0.3), 1},
         "Peaking biquad filter, order 1, Q=5, dBgain=-6, frequency 100"},
        {"LsBq/1/6/100",
         {0, 100, 500},
         {std::pow(10.0, 0.3), std::pow(10.0, 0.15), 1},
         "Lowpass shelving biquad filter, S=1, dBgain=6, frequency 100"},
        {"HsBq/1/6/100",
         {0, 100, 500},
         {1, std::pow(10.0, 0.15), std::pow(10.0, 0.3)},
         "Highpass shelving biquad filter, S=1, dBgain=6, frequency 100"},
        {"LpBl/20", {0, 20, nan}, {1, h, 0}, "Lowpass Blackman window, -3.01dB frequency 20"},
        {"LpHm/20", {0, 20, nan}, {1, h, 0}, "Lowpass Hamming window, -3.01dB frequency 20"},
        {"LpHn/20", {0, 20, nan}, {1, h, 0}, "Lowpass Hann window, -3.01dB frequency 20"},
        {"LpBa/20", {0, 20, nan}, {1, h, 0}, "Lowpass Bartlet (triangular) window, -3.01dB frequency 20"},
    };
    for (const Row& row : rows) {
        char* words = nullptr;
        const Filter filter(fid_design(row.spec, 1000.0, -1.0, -1.0, 0, &words));
        ASSERT_TRUE(filter) << row.spec;
        EXPECT_STREQ(words, row.description);
        std::free(words);
        for (int i = 0; i < 3; ++i) {
            if (!std::isnan(row.hz[i]) && !std::isnan(row.gain[i])) {
                EXPECT_NEAR(gain(filter, row.hz[i]), row.gain[i], 1e-9) << row.spec << " at " << row.hz[i];
            }
        }
    }
}

TEST(FidDesign, promisedFrequenciesAreAtHalfPower)
{
    const std::vector<std::string> kinds{"Be%/",  "Bu%/",  "Ch%/-0.1/", "Ch%/-6/",
                                         "BeZ%/", "BuZ%/", "ChZ%/-0.1/"};
    for (const std::string& kind : kinds) {
        for (const int order : {1, 2, 3, 4, 7, 10}) {
            std::string form = kind;
            form.replace(form.find('%'), 1, std::to_string(order));
            for (const char* shape : {"Lp", "Hp", "Bp", "Bs"}) {
                const bool band = shape[0] == 'B';
                const std::string spec = shape + form + (band ? "40-90" : "60");
                const Filter filter = design(spec, 1000.0, true);
                ASSERT_TRUE(filter) << spec;
                for (const double hz : band ? std::vector{40.0, 90.0} : std::vector{60.0})
                    EXPECT_NEAR(20 * std::log10(gain(filter, hz) / kHalfPower), 0.0, 1e-4) << spec;
            }
        }
    }
    for (const char* spec : {"LpBq2/3/60", "HpBq3/0.3/60", "LpBuBe7/50/60", "LpHm/60"})
        EXPECT_NEAR(gain(design(spec, 1000.0, true), 60), kHalfPower, 1e-9) << spec;
}

TEST(FidDesign, polesStayInsideTheUnitCircle)
{
    for (const char* family : {"Be", "Bu", "Ch", "BeZ", "BuZ", "ChZ"}) {
        for (const int order : {1, 2, 3, 5, 8, 10, 17, 64}) {
            for (const double low : {1e-5, 0.003, 0.1, 0.3, 0.45}) {
                for (const std::string shape : {"Lp", "Hp", "Bp", "Bs"}) {
                    if (family[1] == 'e' && order > 10)
                        continue;
                    std::string spec = shape + family + std::to_string(order);
                    spec += family[0] == 'C' ? "/-1/" : "/";
                    spec += std::to_string(low) + (shape[0] == 'B' ? "-" + std::to_string(low * 1.1) : "");
                    const Filter filter = design(spec, 1.0);
                    ASSERT_TRUE(filter) << spec;
                    expectStable(filter.get(), spec);
                }
            }
        }
    }
}

TEST(FidDesign, butterworthFallsAllTheWay)
{
    const Filter filter = design("LpBu9/100");
    for (int i = 1; i <= 1000; ++i)
        EXPECT_LE(gain(filter, i * 0.5), gain(filter, (i - 1) * 0.5) * (1 + 1e-14)) << i;
}

TEST(FidDesign, chebyshevRipplesEquallyAndAsOftenAsItsOrder)
{
    const double low = std::pow(10.0, -1.0 / 20);
    for (const int order : {3, 4, 7, 12}) {
        const Filter filter = design("LpCh" + std::to_string(order) + "/-1/200");
        std::vector<double> extremes;
        for (int i = 1; i < 19999; ++i) {
            const double before = gain(filter, (i - 1) * 0.01);
            const double here = gain(filter, i * 0.01);
            const double after = gain(filter, (i + 1) * 0.01);
            if ((here - before) * (after - here) < 0)
                extremes.push_back(here);
        }
        // inside (0, edge) the polynomial of degree n has n - 1 extremes, the last one a maximum
        ASSERT_EQ(extremes.size(), static_cast<std::size_t>(order - 1));
        for (std::size_t i = 0; i < extremes.size(); ++i)
            EXPECT_NEAR(extremes[extremes.size() - 1 - i], i % 2 ? low : 1.0, 1e-5) << order;
    }
}

TEST(FidDesign, besselDelayIsFlat)
{
    const Filter filter = design("LpBe8/1", 1000.0);
    const auto delay = [&](double hz) {
        double before = 0.0;
        double after = 0.0;
        fid_response_pha(filter.get(), (hz - 0.01) / 1000, &before);
        fid_response_pha(filter.get(), (hz + 0.01) / 1000, &after);
        return std::remainder(before - after, 1.0) / 0.02;  // seconds
    };
    for (const double hz : {0.2, 0.5, 0.8, 1.0})
        EXPECT_NEAR(delay(hz) / delay(0.05), 1.0, 2e-4) << hz;
}

TEST(FidDesign, crossEndsAtItsTwoKinds)
{
    for (const double hz : {50.0, 150.0, 300.0}) {
        EXPECT_NEAR(gain(design("LpBuBe6/0/100"), hz), gain(design("LpBu6/100"), hz), 1e-12);
        EXPECT_NEAR(gain(design("LpBuBe6/100/100"), hz), gain(design("LpBe6/100"), hz), 1e-12);
    }
}

TEST(FidDesign, resonatorHasItsWidth)
{
    // half power at the ends of the width f/Q, which lie unevenly about the centre
    const Filter filter = design("BpRe/20/100");
    double low = 100;
    double high = 100;
    while (gain(filter, low) > kHalfPower)
        low -= 1e-4;
    while (gain(filter, high) > kHalfPower)
        high += 1e-4;
    EXPECT_NEAR(high - low, 5.0, 5e-4);
}

TEST(FidDesign, windowsAreSymmetricWithSumOne)
{
    for (const char* spec : {"LpBl/", "LpHm/", "LpHn/", "LpBa/"}) {
        for (const char* hz : {"0.02", "3", "17.3", "249", "499"}) {
            const Filter filter = design(std::string(spec) + hz);
            ASSERT_TRUE(filter) << spec << hz;
            const double* b = filter->coefficients();
            double sum = 0.0;
            for (int i = 0; i < filter->count; ++i) {
                sum += b[i];
                EXPECT_EQ(b[i], b[filter->count - 1 - i]);
            }
            EXPECT_NEAR(sum, 1.0, 1e-12) << spec << hz;
            EXPECT_NEAR(gain(filter, std::stod(hz)), kHalfPower, 1e-10) << spec << hz;
        }
    }
}

TEST(FidDesign, bandUpToHalfTheRateIsItsLimit)
{
    for (const double hz : {30.0, 100.0, 450.0}) {
        EXPECT_NEAR(gain(design("BpBu3/100-500"), hz), gain(design("HpBu3/100"), hz), 1e-13);
        EXPECT_NEAR(gain(design("BsCh4/-1/100-500"), hz), gain(design("LpCh4/-1/100"), hz), 1e-13);
    }
}

TEST(FidDesign, coefficientsIntoAnArray)
{
    double c[6];
    const double g = fid_design_coef(c, 6, "LpBq/0.7/100", 1000.0, -1, -1, 0);
    const Filter filter = design("LpBq/0.7/100");
    EXPECT_EQ(c[0], 1.0);
    EXPECT_EQ(c[3], 1.0);
    EXPECT_NEAR(g * (c[3] + c[4] + c[5]) / (c[0] + c[1] + c[2]), 1.0, 1e-13);
    EXPECT_EQ(c[1], filter->coefficients()[1]);
    const Quiet quiet;
    EXPECT_EQ(fid_design_coef(c, 6, "LpBu4/100", 1000.0, -1, -1, 0), 0.0);
    EXPECT_EQ(g_reports.size(), 1U);
}

TEST(FidDesign, defaultsStandInForFrequencies)
{
    const Filter single(fid_design("LpCh3/-1", 1000.0, 100.0, -1, 0, nullptr));
    EXPECT_NEAR(gain(single, 100), std::pow(10.0, -0.05), 1e-12);
    const Filter range(fid_design("BpBu2", 1000.0, 50.0, 200.0, 0, nullptr));
    EXPECT_NEAR(gain(range, 200), kHalfPower, 1e-12);
}

TEST(FidDesign, everyErrorHasItsText)
{
    const double nan = std::nan("");
    struct Row
    {
        const char* spec;
        double rate;
        const char* text;
        double f0 = -1;
        double f1 = -1;
    };
    const Row rows[] = {
        {"LpXx4/10", 100, "Spec-string \"LpXx4/10\" matches no known format"},
        {"LpBu 4/10", 100, "Spec-string \"LpBu 4/10\" matches no known format"},
        {"LpBu4/nan", 100, "Spec-string \"LpBu4/nan\" matches no known format"},
        {"LpBu4/", 100, "Spec-string \"LpBu4/\" matches no known format"},
        {"", 100, "Spec-string \"\" matches no known format"},
        {"LpBu0/10", 100, "Bad order 0 in spec-string \"LpBu0/10\""},
        {"LpBu-3/10", 100, "Bad order -3 in spec-string \"LpBu-3/10\""},
        {"BpBq65/1/10", 100, "Bad order 65 in spec-string \"BpBq65/1/10\""},
        {"BpBu4/20-10", 100, "Backwards frequency range in spec-string \"BpBu4/20-10\""},
        {"LpBu4", 100, "Frequency omitted from filter-spec, and no default provided"},
        {"LpBu4", 100, "Frequency omitted from filter-spec, and no default provided", nan},
        {"BpBu4", 100, "Frequency omitted from filter-spec, and no default provided", 10, 0},
        {"LpBu4/60", 100, "Frequency of 60Hz out of range with sampling rate of 100Hz"},
        {"LpBu4/50", 100, "Frequency of 50Hz out of range with sampling rate of 100Hz"},
        {"LpBu4/-1", 100, "Frequency of -1Hz out of range with sampling rate of 100Hz"},
        {"LpBu4/1e-999", 100, "Frequency of 0Hz out of range with sampling rate of 100Hz"},
        {"BpBu4/10-60", 100, "Frequency of 60Hz out of range with sampling rate of 100Hz"},
        {"BpBu4/10-10", 100, "Frequency of 10Hz out of range with sampling rate of 100Hz"},
        {"LpBu4/10", -100, "Frequency of 10Hz out of range with sampling rate of -100Hz"},
        {"LpBu4/10", nan, "Frequency of 10Hz out of range with sampling rate of nanHz"},
        {"LpBu8/1e-20", 100, "Frequency of 1e-20Hz out of range with sampling rate of 100Hz"},
        {"LpHn/1e-9", 100, "Frequency of 1e-09Hz out of range with sampling rate of 100Hz"},
        {"BsBe11/10-20", 100, "Maximum Bessel order is 10"},
        {"LpBuBe99999999999/50/10", 100, "Maximum Bessel order is 10"},
        {"BpCh65/-1/10-20", 100, "Maximum butterworth/chebyshev order is 64"},
        {"LpCh4/0/10", 100, "Chebyshev ripple in dB should be -ve"},
        {"BpRe/0.1/10", 100, "Resonator binary search failed to converge"},
        {"LpBq/-1/10", 100, "Q of -1 out of range in spec-string \"LpBq/-1/10\""},
        {"HpBuZ1/49", 100, "auto_adjust_single internal error -- can't establish enclosing range"},
        {"BpBu4/10-50", 100, "auto_adjust_dual -- design not converging"},
    };
    for (const Row& row : rows) {
        const Quiet quiet;
        char* words = nullptr;
        EXPECT_EQ(fid_design(row.spec, row.rate, row.f0, row.f1, 1, &words), nullptr) << row.spec;
        EXPECT_EQ(words, nullptr);
        EXPECT_EQ(g_reports, std::vector<std::string>{row.text}) << row.spec;
    }
}

TEST(FidDesign, anyTextAndAnyRateComeToAnEnd)
{
    std::mt19937 random(5);
    const char* const pieces[] = {"Lp", "Hp", "Bp",   "Bs", "Ap",  "Pk",   "Ls",  "Hs",  "Pi", "Be",
                                  "Bu", "Ch", "Bq",   "Re", "Bl",  "Hm",   "Hn",  "Ba",  "Z",  "/",
                                  "/",  "/",  "-",    "1",  "2",   "7",    "10",  "64",  "0",  ".",
                                  "5e", "-1", "\xc3", " ",  "1e9", "9e-7", "0.3", "0.49"};
    const char* const heads[] = {"LpBe#/",      "BpBeZ#/0.1-", "HpBuZ#/",   "BsBu#/0.01-", "BpChZ#/-1/0.2-",
                                 "LpBuBe#/40/", "LpBq#/2/",    "HsBq/1/6/", "BpRe/#/",     "LpHm/"};
    const double rates[] = {1.0, 1000.0, 0.0, -1.0, 1e-300, 1e300, std::nan(""), INFINITY};
    const auto pick = [&](const auto& from) { return from[random() % std::size(from)]; };
    const Quiet quiet;
    int designed = 0;
    for (int i = 0; i < 1'000'000; ++i) {
        std::string spec;
        if (i % 2)
            spec = pick(heads);
        if (const std::size_t order = spec.find('#'); order != std::string::npos)
            spec.replace(order, 1, std::to_string(random() % 12));
        for (auto n = random() % 7; n > 0; --n)
            spec += pick(pieces);
        g_reports.clear();
        const double rate = i % 4 ? 1.0 : pick(rates);
        const Filter filter(fid_design(spec.c_str(), rate, pick(rates), pick(rates), i % 3 == 0, nullptr));
        ASSERT_EQ(g_reports.size(), filter ? 0U : 1U) << spec;
        if (!filter)
            continue;
        ++designed;
        for (const FidFilter* block = filter.get(); block->count > 0; block = block->next())
            ASSERT_TRUE(std::all_of(block->coefficients(), block->coefficients() + block->count,
                                    [](double c) { return std::isfinite(c); }))
                << spec << " " << rate;
    }
    EXPECT_GT(designed, 3000);
}

}  // namespace
