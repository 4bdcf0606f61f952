#include "filter/fid_sections.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace veltrac {

namespace {

using Complex = std::complex<double>;
using std::numbers::pi;

// The filter's roots in the analogue plane and the digital frequency at which its gain is set.
struct AnalogueFilter
{
    std::vector<FidRoot> poles;
    std::vector<FidRoot> zeros;
    double reference = 0.0;
};

double toAnalogue(double frequency, FidMapping mapping)
{
    return mapping == FidMapping::Bilinear ? std::tan(pi * frequency) : 2 * pi * frequency;
}

double toDigital(double w, FidMapping mapping)
{
    return mapping == FidMapping::Bilinear ? std::atan(w) / pi : w / (2 * pi);
}

// Solves s^2 - h 2 s + centre^2 = 0, the way from one low-pass pole to its two in a band.
void splitIntoBand(Complex half, bool pair, double centre, std::vector<FidRoot>& out)
{
    const Complex root = std::sqrt((half - centre) * (half + centre));
    const Complex first = std::abs(half + root) > std::abs(half - root) ? half + root : half - root;
    const Complex second = centre / first * centre;
    const auto upper = [](Complex s) { return s.imag() < 0 ? std::conj(s) : s; };
    if (pair) {
        out.push_back({.s = upper(first), .pair = true});
        out.push_back({.s = upper(second), .pair = true});
    } else if (first.imag() != 0.0) {
        out.push_back({.s = upper(first), .pair = true});  // the two are each other's conjugate
    } else {
        out.push_back({.s = first});
        out.push_back({.s = second});
    }
}

AnalogueFilter shapeLowPass(const FidPrototype& prototype, double corner)
{
    AnalogueFilter filter;
    for (const FidRoot& pole : prototype.poles) {
        filter.poles.push_back({.s = pole.s * corner, .pair = pole.pair});
        filter.zeros.insert(filter.zeros.end(), pole.pair ? 2 : 1, FidRoot{.infinite = true});
    }
    return filter;
}

AnalogueFilter shapeHighPass(const FidPrototype& prototype, double corner)
{
    AnalogueFilter filter;
    filter.reference = 0.5;
    for (const FidRoot& pole : prototype.poles) {
        const Complex s = corner / pole.s;
        filter.poles.push_back({.s = pole.pair ? std::conj(s) : s, .pair = pole.pair});
        filter.zeros.insert(filter.zeros.end(), pole.pair ? 2 : 1, FidRoot{});
    }
    return filter;
}

AnalogueFilter shapeBand(const FidPrototype& prototype, FidShape shape, double low, double high,
                         FidMapping mapping)
{
    AnalogueFilter filter;
    const double centre = std::sqrt(low) * std::sqrt(high);
    const double halfWidth = (high - low) / 2;
    const bool pass = shape == FidShape::BandPass;
    filter.reference = pass ? toDigital(centre, mapping) : 0.0;
    for (const FidRoot& pole : prototype.poles) {
        splitIntoBand(pass ? pole.s * halfWidth : halfWidth / pole.s, pole.pair, centre, filter.poles);
        const int order = pole.pair ? 2 : 1;
        for (int i = 0; i < order; ++i) {
            if (pass) {
                filter.zeros.push_back({});
                filter.zeros.push_back({.infinite = true});
            } else {
                filter.zeros.push_back({.s = {0.0, centre}, .pair = true});
            }
        }
    }
    return filter;
}

Complex toPlane(const FidRoot& root, FidMapping mapping)
{
    if (root.infinite)
        return -1.0;
    return mapping == FidMapping::Bilinear ? (1.0 + root.s) / (1.0 - root.s) : std::exp(root.s);
}

// The root's factor as a polynomial in 1/z, formed from s: taken from z itself, the small difference of a
// low frequency's root from 1 would be lost before it is squared.
std::vector<double> factorOf(const FidRoot& root, FidMapping mapping)
{
    if (root.infinite)
        return {1.0, 1.0};
    const double re = root.s.real();
    if (mapping == FidMapping::Matched) {
        if (!root.pair)
            return {1.0, -std::exp(re)};
        return {1.0, -2 * std::exp(re) * std::cos(root.s.imag()), std::exp(2 * re)};
    }
    if (!root.pair)
        return {1.0, -(1 + re) / (1 - re)};
    const double norm = std::norm(root.s);
    const double first = 1 - 2 * re + norm;
    return {1.0, 2 * (norm - 1) / first, (1 + 2 * re + norm) / first};
}

std::vector<double> multiplied(const std::vector<double>& x, const std::vector<double>& y)
{
    std::vector<double> product(x.size() + y.size() - 1, 0.0);
    for (std::size_t i = 0; i < x.size(); ++i) {
        for (std::size_t j = 0; j < y.size(); ++j)
            product[i + j] += x[i] * y[j];
    }
    return product;
}

// The poles of one section: a pair, two real ones or a single real one.
struct PoleGroup
{
    std::vector<FidRoot> poles;
    Complex z;           // the nearest to the unit circle
    double decay = 0.0;  // how fast its response fades: -ln |z|
};

PoleGroup makeGroup(std::vector<FidRoot> poles, FidMapping mapping)
{
    PoleGroup group;
    group.z = toPlane(poles.front(), mapping);
    group.poles = std::move(poles);
    group.decay = -std::log(std::abs(group.z));
    return group;
}

// The nearest to the unit circle first: these choose their zeros before the others. Left with zeros far from
// them they would amplify the rounding of everything before them.
std::vector<PoleGroup> groupPoles(const std::vector<FidRoot>& poles, FidMapping mapping)
{
    std::vector<PoleGroup> groups;
    std::vector<FidRoot> real;
    for (const FidRoot& pole : poles) {
        if (pole.pair)
            groups.push_back(makeGroup({pole}, mapping));
        else
            real.push_back(pole);
    }
    std::sort(real.begin(), real.end(),
              [](const FidRoot& x, const FidRoot& y) { return x.s.real() > y.s.real(); });
    for (std::size_t i = 0; i + 1 < real.size(); i += 2)
        groups.push_back(makeGroup({real[i], real[i + 1]}, mapping));
    if (real.size() % 2)
        groups.push_back(makeGroup({real.back()}, mapping));
    std::stable_sort(groups.begin(), groups.end(),
                     [](const PoleGroup& x, const PoleGroup& y) { return x.decay < y.decay; });
    return groups;
}

// Takes the zero nearest to a pole, real ones only where a pair would not fit.
std::vector<double> takeNearestZero(std::vector<FidRoot>& zeros, Complex pole, bool realOnly,
                                    FidMapping mapping)
{
    std::size_t best = zeros.size();
    double bestDistance = 0.0;
    for (std::size_t i = 0; i < zeros.size(); ++i) {
        const double distance = std::abs(toPlane(zeros[i], mapping) - pole);
        if (!(realOnly && zeros[i].pair) && (best == zeros.size() || distance < bestDistance)) {
            best = i;
            bestDistance = distance;
        }
    }
    if (best == zeros.size())
        return {1.0};
    std::vector<double> factor = factorOf(zeros[best], mapping);
    zeros.erase(zeros.begin() + static_cast<std::ptrdiff_t>(best));
    return factor;
}

FidCascade pairRoots(const AnalogueFilter& filter, FidMapping mapping)
{
    std::vector<PoleGroup> groups = groupPoles(filter.poles, mapping);
    std::vector<FidRoot> zeros = filter.zeros;
    if (mapping == FidMapping::Matched)
        std::erase_if(zeros, [](const FidRoot& zero) { return zero.infinite; });
    FidCascade cascade;
    std::size_t left = groups.size();
    for (const PoleGroup& group : groups) {
        FidSection section{{1.0}, {1.0}};
        for (const FidRoot& pole : group.poles)
            section.a = multiplied(section.a, factorOf(pole, mapping));
        const bool single = section.a.size() == 2;
        section.b = takeNearestZero(zeros, group.z, single, mapping);
        // a second real zero only where they do not run out before the sections do
        if (section.b.size() == 2 && !single && zeros.size() >= left)
            section.b = multiplied(section.b, takeNearestZero(zeros, group.z, true, mapping));
        --left;
        cascade.push_back(std::move(section));
    }
    std::reverse(cascade.begin(), cascade.end());
    return cascade;
}

// Each section alone is brought to a gain of 1 at the reference, so that no product in a cascade of 64
// leaves the range of a double.
void setGain(FidCascade& cascade, double reference, double gain)
{
    double factor = gain;
    for (FidSection& section : cascade) {
        factor /= static_cast<double>(std::abs(sectionResponse(section, reference)));
        for (double& b : section.b)
            b *= factor;
        factor = 1.0;
    }
}

}  // namespace

std::complex<long double> sectionResponse(const FidSection& section, double frequency)
{
    using Wide = std::complex<long double>;
    const long double angle = 2 * std::numbers::pi_v<long double> * static_cast<long double>(frequency);
    const bool half = frequency == 0.5;  // exact, or the sum for the gain would not be
    const Wide back = half ? Wide(-1) : Wide(std::cos(angle), -std::sin(angle));
    const auto sum = [&](const std::vector<double>& c) {
        Wide value = 0;
        for (std::size_t k = c.size(); k-- > 0;)
            value = value * back + Wide(c[k]);
        return value;
    };
    return sum(section.b) / sum(section.a);
}

double cascadeGain(const FidCascade& cascade, double frequency)
{
    long double gain = 1.0L;
    for (const FidSection& section : cascade)
        gain *= std::abs(sectionResponse(section, frequency));
    return static_cast<double>(gain);
}

bool isStable(const FidCascade& cascade, bool marginal)
{
    const double edge = marginal ? 4 * std::numeric_limits<double>::epsilon() : 0.0;
    for (const FidSection& section : cascade) {
        for (const double c : section.a) {
            if (!std::isfinite(c))
                return false;
        }
        for (const double c : section.b) {
            if (!std::isfinite(c))
                return false;
        }
        const double a1 = section.a.size() > 1 ? section.a[1] : 0.0;
        const double a2 = section.a.size() > 2 ? section.a[2] : 0.0;
        if (!(std::abs(a2) < 1 + edge && std::abs(a1) < 1 + a2 + edge))
            return false;
    }
    return true;
}

std::optional<FidCascade> makeCascade(const FidPrototype& prototype, FidShape shape, FidMapping mapping,
                                      double f0, double f1)
{
    const double w0 = toAnalogue(f0, mapping);
    AnalogueFilter filter;
    // A band that the bilinear transform ends at half the rate ends at infinity: it is a high-pass (or, for
    // a band-stop, a low-pass), and half of its poles would fall on its zeros at z = -1.
    const bool endless = mapping == FidMapping::Bilinear && f1 >= 0.5;
    if (shape == FidShape::LowPass || (shape == FidShape::BandStop && endless))
        filter = shapeLowPass(prototype, w0);
    else if (shape == FidShape::HighPass || endless)
        filter = shapeHighPass(prototype, w0);
    else
        filter = shapeBand(prototype, shape, w0, toAnalogue(f1, mapping), mapping);
    FidCascade cascade = pairRoots(filter, mapping);
    setGain(cascade, filter.reference, prototype.gain);
    if (!isStable(cascade))
        return std::nullopt;
    return cascade;
}

}  // namespace veltrac
