#include "filter/fid_prototype.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "filter/fid_report.h"

namespace veltrac {

namespace {

using LongComplex = std::complex<long double>;
using std::numbers::pi;

// Poles of the Butterworth low-pass (S. Butterworth, "On the theory of filter amplifiers", 1930): evenly
// spaced on the left half of the unit circle, the upper ones from the imaginary axis on, the real one last.
double butterworthAngle(int order, int k)
{
    return pi * (2 * k + 1) / (2 * order);
}

std::vector<FidRoot> butterworthPoles(int order)
{
    std::vector<FidRoot> poles;
    for (int k = 0; k < order / 2; ++k) {
        const double angle = butterworthAngle(order, k);
        poles.push_back({.s = {-std::sin(angle), std::cos(angle)}, .pair = true});
    }
    if (order % 2)
        poles.push_back({.s = -1.0});
    return poles;
}

// The reverse Bessel polynomial of degree n, lowest power first: a_k = (2n-k)! / (2^(n-k) k! (n-k)!).
// E. Grosswald, "Bessel Polynomials", Springer 1978, chapter 1; W. E. Thomson, "Delay networks having
// maximally flat frequency characteristics", 1949. All values are whole and exact in a long double.
std::vector<long double> besselPolynomial(int order)
{
    std::vector<long double> a(static_cast<std::size_t>(order) + 1, 1.0L);
    for (int k = order - 1; k >= 0; --k) {
        const auto at = static_cast<std::size_t>(k);
        a[at] = a[at + 1] * (2 * order - k) * (k + 1) / (2 * (order - k));
    }
    return a;
}

LongComplex evaluate(const std::vector<long double>& a, LongComplex s)
{
    LongComplex sum = 0;
    for (std::size_t k = a.size(); k-- > 0;)
        sum = sum * s + a[k];
    return sum;
}

// All roots at once by Weierstrass' iteration (W. Press et al., "Numerical Recipes", section 9.5).
std::vector<LongComplex> allRoots(const std::vector<long double>& a)
{
    const std::size_t count = a.size() - 1;
    const long double radius = std::pow(a[0], 1.0L / static_cast<long double>(count));
    std::vector<LongComplex> roots(count);
    for (std::size_t i = 0; i < count; ++i)
        roots[i] =
            std::polar(radius, 0.4L + 2.0L * std::numbers::pi_v<long double> * static_cast<long double>(i) /
                                          static_cast<long double>(count));
    for (int round = 0; round < 200; ++round) {
        long double moved = 0.0L;
        for (std::size_t i = 0; i < count; ++i) {
            LongComplex step = evaluate(a, roots[i]);
            for (std::size_t j = 0; j < count; ++j) {
                if (j != i)
                    step /= roots[i] - roots[j];
            }
            roots[i] -= step;
            moved = std::max(moved, std::abs(step));
        }
        if (moved < 1e-18L * radius)
            break;
    }
    return roots;
}

// The frequency of half power of an all-pole low-pass whose gain falls from 1: poles as FidRoots.
template <class Gain>
long double halfPowerFrequency(Gain gain)
{
    long double low = 0.0L;
    long double high = 1.0L;
    while (gain(high) > std::numbers::sqrt2_v<long double> / 2)
        high *= 2;
    for (int i = 0; i < 70; ++i) {
        const long double middle = (low + high) / 2;
        (gain(middle) > std::numbers::sqrt2_v<long double> / 2 ? low : high) = middle;
    }
    return (low + high) / 2;
}

// In the order of the Butterworth poles: from the imaginary axis to the real one.
std::vector<FidRoot> besselPoles(int order)
{
    const std::vector<long double> a = besselPolynomial(order);
    const long double corner =
        halfPowerFrequency([&](long double w) { return a[0] / std::abs(evaluate(a, LongComplex(0, w))); });
    std::vector<FidRoot> poles;
    for (const LongComplex& root : allRoots(a)) {
        const LongComplex scaled = root / corner;
        const bool real = std::abs(scaled.imag()) < 1e-12L;
        if (real || scaled.imag() > 0)
            poles.push_back(
                {.s = {static_cast<double>(scaled.real()), real ? 0.0 : static_cast<double>(scaled.imag())},
                 .pair = !real});
    }
    std::sort(poles.begin(), poles.end(),
              [](const FidRoot& x, const FidRoot& y) { return x.s.imag() > y.s.imag(); });
    return poles;
}

void scalePoles(std::vector<FidRoot>& poles, double factor)
{
    for (FidRoot& pole : poles)
        pole.s *= factor;
}

// Between the two kinds the poles' radii go geometrically and their angles linearly: Y. Peless and
// T. Murakami, "Analysis and synthesis of transitional Butterworth-Thomson filters and bandpass
// amplifiers", RCA Review 1957, equations 2 and 3. The outcome is brought back to half power at 1.
std::vector<FidRoot> crossPoles(int order, double share)
{
    std::vector<FidRoot> poles = besselPoles(order);
    const std::vector<FidRoot> butterworth = butterworthPoles(order);
    for (std::size_t k = 0; k < poles.size(); ++k) {
        const double radius = std::pow(std::abs(poles[k].s), share);
        const double angle = std::lerp(std::arg(butterworth[k].s), std::arg(poles[k].s), share);
        poles[k].s = poles[k].pair ? std::polar(radius, angle) : std::complex<double>(-radius);
    }
    const long double corner = halfPowerFrequency([&](long double w) {
        long double gain = 1.0L;
        for (const FidRoot& pole : poles) {
            const LongComplex p(pole.s);
            const LongComplex s(0, w);
            gain *= pole.pair ? std::norm(p) / std::abs((s - p) * (s - std::conj(p)))
                              : std::abs(p) / std::abs(s - p);
        }
        return gain;
    });
    scalePoles(poles, static_cast<double>(1 / corner));
    return poles;
}

// Chebyshev of the first kind (L. Weinberg, "Network Analysis and Synthesis", McGraw-Hill 1962, section
// 11.3): gain^2 = 1 / (1 + e^2 T_n(w)^2), e^2 = 10^(ripple/10) - 1, poles on an ellipse.
std::optional<FidPrototype> chebyshevPrototype(int order, double rippleDb, bool halfPower)
{
    if (!(rippleDb < 0.0)) {
        fidReport("Chebyshev ripple in dB should be -ve");
        return std::nullopt;
    }
    const double epsilon = std::sqrt(std::expm1(-rippleDb * std::numbers::ln10 / 10));
    const double mu = std::asinh(1 / epsilon) / order;
    if (!(mu > 1e-9) || !std::isfinite(std::sinh(mu))) {
        fidReport("Chebyshev ripple of %gdB out of range", rippleDb);
        return std::nullopt;
    }
    FidPrototype prototype{butterworthPoles(order), order % 2 ? 1.0 : std::pow(10.0, rippleDb / 20)};
    for (FidRoot& pole : prototype.poles)
        pole.s = {std::sinh(mu) * pole.s.real(), std::cosh(mu) * pole.s.imag()};
    if (halfPower) {
        // e T_n(w) = 1, at the outermost w; it lies inside the ripple when that is deeper than half power
        const double corner = epsilon <= 1 ? std::cosh(std::acosh(1 / epsilon) / order)
                                           : std::cos(std::acos(1 / epsilon) / order);
        scalePoles(prototype.poles, 1 / corner);
    }
    return prototype;
}

bool checkOrder(const FidSpec& spec)
{
    const FidFamily family = spec.format->family;
    if (family == FidFamily::Bessel || family == FidFamily::ButterworthBessel) {
        if (spec.order > kMaxBesselOrder) {
            fidReport("Maximum Bessel order is %d", kMaxBesselOrder);
            return false;
        }
    } else if (spec.order > kMaxOrder) {
        fidReport("Maximum butterworth/chebyshev order is %d", kMaxOrder);
        return false;
    }
    return true;
}

}  // namespace

std::optional<FidPrototype> makeFidPrototype(const FidSpec& spec, bool halfPower)
{
    if (!checkOrder(spec))
        return std::nullopt;
    const double value = spec.values[0];
    switch (spec.format->family) {
        case FidFamily::Bessel:
            return FidPrototype{besselPoles(spec.order)};
        case FidFamily::Chebyshev:
            return chebyshevPrototype(spec.order, value, halfPower);
        case FidFamily::ButterworthBessel:
            if (!(value >= 0.0 && value <= 100.0)) {
                fidReport("Butterworth-Bessel cross of %g%% out of range", value);
                return std::nullopt;
            }
            return FidPrototype{crossPoles(spec.order, value / 100)};
        default:
            return FidPrototype{butterworthPoles(spec.order)};
    }
}

}  // namespace veltrac
