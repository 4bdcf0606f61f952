#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>
#include <numbers>

#include "filter/fid.h"
#include "filter/fid_biquad.h"
#include "filter/fid_filter.h"
#include "filter/fid_report.h"
#include "filter/fid_window.h"

using namespace veltrac;

namespace {

// What the "-3.01dB frequency" may be off, in the natural logarithm of the power: 0.0001 dB.
constexpr double kPowerTolerance = 0.0001 / 10 * std::numbers::ln10;

// The logarithm of the power at a frequency, relative to half power.
double excessPower(const std::optional<FidCascade>& cascade, double frequency)
{
    return cascade ? std::log(2.0) + 2 * std::log(cascadeGain(*cascade, frequency))
                   : std::numeric_limits<double>::quiet_NaN();
}

// A matched-z design keeps half power only roughly. Its one design frequency is moved until the response
// at the asked one is right: outwards until the two enclose it, then by halving.
std::optional<FidCascade> adjustSingle(const FidPrototype& prototype, FidShape shape, double frequency)
{
    const double sign = shape == FidShape::LowPass ? 1.0 : -1.0;
    const auto design = [&](double f) { return makeCascade(prototype, shape, FidMapping::Matched, f, 0.0); };
    const auto excess = [&](double f) { return sign * excessPower(design(f), frequency); };
    double low = frequency;
    double high = frequency;
    for (double step = 1.01; excess(low) > 0 && low > frequency / 100; step *= step)
        low = frequency / step;
    for (double step = 1.01; excess(high) < 0 && high < 0.5; step *= step)
        high = std::min(frequency * step, 0.5);
    if (!(excess(low) <= 0 && excess(high) >= 0)) {
        fidReport("auto_adjust_single internal error -- can't establish enclosing range");
        return std::nullopt;
    }
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2;
        (excess(middle) < 0 ? low : high) = middle;
    }
    auto cascade = design((low + high) / 2);
    if (!(std::abs(excessPower(cascade, frequency)) < kPowerTolerance)) {
        fidReport("auto_adjust_single internal error -- can't establish enclosing range");
        return std::nullopt;
    }
    return cascade;
}

// Two design frequencies, as logarithms, and how far the response at the two asked ones is off.
struct EdgeState
{
    double edge[2];
    double excess[2];
    std::optional<FidCascade> cascade;

    double error() const
    {
        const double worst = std::max(std::abs(excess[0]), std::abs(excess[1]));
        return excess[0] + excess[1] == excess[0] + excess[1] ? worst
                                                              : std::numeric_limits<double>::infinity();
    }
};

// Both edges at once by Newton's method with differences for the slopes, shortened where it overshoots.
std::optional<FidCascade> adjustDual(const FidPrototype& prototype, FidShape shape, const double asked[2])
{
    const auto stateAt = [&](double x, double y) {
        EdgeState state{{x, y}, {NAN, NAN}, std::nullopt};
        if (x < y && std::exp(y) <= 0.5)
            state.cascade = makeCascade(prototype, shape, FidMapping::Matched, std::exp(x), std::exp(y));
        for (int i = 0; i < 2; ++i)
            state.excess[i] = excessPower(state.cascade, asked[i]);
        return state;
    };
    EdgeState best = stateAt(std::log(asked[0]), std::log(asked[1]));
    for (int round = 0; round < 50 && best.error() > 1e-10 && std::isfinite(best.error()); ++round) {
        const double h = -1e-6 * (best.edge[1] - best.edge[0]);  // inwards: outwards may pass half the rate
        const EdgeState moved[2] = {stateAt(best.edge[0] - h, best.edge[1]),
                                    stateAt(best.edge[0], best.edge[1] + h)};
        const double slope[2][2] = {
            {(moved[0].excess[0] - best.excess[0]) / -h, (moved[1].excess[0] - best.excess[0]) / h},
            {(moved[0].excess[1] - best.excess[1]) / -h, (moved[1].excess[1] - best.excess[1]) / h}};
        const double determinant = slope[0][0] * slope[1][1] - slope[0][1] * slope[1][0];
        const double dx = (slope[0][1] * best.excess[1] - slope[1][1] * best.excess[0]) / determinant;
        const double dy = (slope[1][0] * best.excess[0] - slope[0][0] * best.excess[1]) / determinant;
        EdgeState next = best;
        double part = 1.0;
        for (int shorter = 0; shorter < 14; ++shorter, part /= 2) {
            next = stateAt(best.edge[0] + part * dx, best.edge[1] + part * dy);
            if (next.error() < best.error())
                break;
        }
        if (!(next.error() < best.error()))
            break;
        best = std::move(next);
    }
    if (!(best.error() < kPowerTolerance)) {
        fidReport("auto_adjust_dual -- design not converging");
        return std::nullopt;
    }
    return best.cascade;
}

// The bilinear transform carries the prototype's corner to both edges exactly, so there a prototype with
// half power at its corner is the whole adjustment; what is left to do is to see that it came out.
std::optional<FidCascade> checkHalfPower(std::optional<FidCascade> cascade, const double asked[2], bool range)
{
    if (range) {
        for (int i = 0; i < 2; ++i) {
            if (!(std::abs(excessPower(cascade, asked[i])) < kPowerTolerance)) {
                fidReport("auto_adjust_dual -- design not converging");
                return std::nullopt;
            }
        }
    } else if (!(std::abs(excessPower(cascade, asked[0])) < kPowerTolerance)) {
        fidReport("auto_adjust_single internal error -- can't establish enclosing range");
        return std::nullopt;
    }
    return cascade;
}

void reportRange(const FidSpec& spec, double rate)
{
    fidReport("Frequency of %gHz out of range with sampling rate of %gHz", spec.frequencies[0], rate);
}

bool checkBandOrder(const FidSpec& spec)
{
    const bool pass = spec.format->shape == FidShape::BandPass;
    if (!spec.format->hasRange() || spec.order <= kMaxOrder)
        return true;
    fidReport("Maximum order for %s filters is %d", pass ? "bandpass" : "bandstop", kMaxOrder);
    return false;
}

std::optional<FidCascade> designFromPrototype(const FidSpec& spec, double rate, const double asked[2],
                                              bool adjust)
{
    const auto prototype = makeFidPrototype(spec, adjust);
    if (!prototype || !checkBandOrder(spec))
        return std::nullopt;
    const FidFormat& format = *spec.format;
    auto cascade = makeCascade(*prototype, format.shape, format.mapping, asked[0], asked[1]);
    if (!cascade) {
        reportRange(spec, rate);
        return std::nullopt;
    }
    if (!adjust)
        return cascade;
    if (format.mapping == FidMapping::Bilinear)
        return checkHalfPower(std::move(cascade), asked, format.hasRange());
    return format.hasRange() ? adjustDual(*prototype, format.shape, asked)
                             : adjustSingle(*prototype, format.shape, asked[0]);
}

std::vector<FidBlock> blocksOf(const FidCascade& cascade)
{
    std::vector<FidBlock> blocks;
    for (const FidSection& section : cascade) {
        blocks.push_back({'I', section.a});
        blocks.push_back({'F', section.b});
    }
    return blocks;
}

// Empty, and reported, when the design fails.
std::vector<FidBlock> designBlocks(const FidSpec& spec, double rate, bool adjust, const char* text)
{
    const double asked[2] = {spec.frequencies[0] / rate, spec.frequencies[1] / rate};
    std::optional<FidCascade> cascade;
    switch (spec.format->family) {
        case FidFamily::Blackman:
        case FidFamily::Hamming:
        case FidFamily::Hann:
        case FidFamily::Bartlett:
            if (auto window = makeWindow(spec.format->family, asked[0]))
                return {{'F', std::move(*window)}};
            reportRange(spec, rate);
            return {};
        case FidFamily::Resonator:
            cascade = makeResonator(spec, asked[0], text);
            break;
        case FidFamily::ProportionalIntegral:
            cascade = makeProportionalIntegral(spec.format->mapping, asked[0]);
            break;
        case FidFamily::Biquad:
            adjust = adjust && spec.format->promisesHalfPower();
            cascade = makeBiquads(spec, asked[0], adjust, text);
            if (cascade && adjust)
                cascade = checkHalfPower(std::move(cascade), asked, false);
            break;
        default:
            cascade = designFromPrototype(spec, rate, asked, adjust);
            break;
    }
    return cascade ? blocksOf(*cascade) : std::vector<FidBlock>{};
}

char* copyOf(const std::string& text)
{
    auto* const copy = static_cast<char*>(std::calloc(text.size() + 1, 1));
    if (copy)
        std::copy(text.begin(), text.end(), copy);
    return copy;
}

}  // namespace

FidFilter* fid_design(const char* spec, double rate, double f0, double f1, int adjust, char** description)
try {
    if (description)
        *description = nullptr;
    const auto read = readFidSpec(spec, rate, f0, f1);
    if (!read)
        return nullptr;
    const std::vector<FidBlock> blocks = designBlocks(*read, rate, adjust != 0, spec);
    if (blocks.empty())
        return nullptr;
    FidFilter* const filter = makeFidFilter(blocks);
    if (filter && description) {
        *description = copyOf(describeFidSpec(*read));
        if (!*description) {
            std::free(filter);
            fidReport("Out of memory");
            return nullptr;
        }
    }
    return filter;
} catch (const std::bad_alloc&) {
    fidReport("Out of memory");
    return nullptr;
}

double fid_design_coef(double* coefficients, int count, const char* spec, double rate, double f0, double f1,
                       int adjust)
try {
    const auto read = readFidSpec(spec, rate, f0, f1);
    if (!read)
        return 0.0;
    const std::vector<FidBlock> blocks = designBlocks(*read, rate, adjust != 0, spec);
    if (blocks.empty())
        return 0.0;
    std::size_t needed = 0;
    for (const FidBlock& block : blocks)
        needed += block.coefficients.size();
    if (blocks.size() > 2 || count < 0 || needed != static_cast<std::size_t>(count)) {
        fidReport("fid_design_coef: \"%s\" has %zu coefficients in %zu sections, the array has room for %d",
                  spec, needed, (blocks.size() + 1) / 2, count);
        return 0.0;
    }
    double gain = 1.0;
    for (const FidBlock& block : blocks) {
        const double first = block.coefficients[0];
        gain = block.type == 'I' ? gain / first : gain * first;
        for (const double c : block.coefficients)
            *coefficients++ = c / first;
    }
    return gain;
} catch (const std::bad_alloc&) {
    fidReport("Out of memory");
    return 0.0;
}
