#include "filter/fid_biquad.h"

#include <cmath>
#include <numbers>

#include "filter/fid_report.h"

namespace veltrac {

namespace {

using std::numbers::pi;

std::optional<FidCascade> badQ(double q, const char* text)
{
    fidReport("Q of %g out of range in spec-string \"%s\"", q, text);
    return std::nullopt;
}

FidSection normalised(std::vector<double> b, std::vector<double> a)
{
    const double first = a[0];
    for (double& c : b)
        c /= first;
    for (double& c : a)
        c /= first;
    return {std::move(a), std::move(b)};
}

// R. Bristow-Johnson, "Cookbook formulae for audio EQ biquad filter coefficients"; alpha belongs to Q.
FidSection biquad(FidShape shape, double w, double alpha, double amplitude)
{
    const double c = std::cos(w);
    const double low = 2 * std::sin(w / 2) * std::sin(w / 2);   // 1 - cos, without the cancellation
    const double high = 2 * std::cos(w / 2) * std::cos(w / 2);  // 1 + cos
    const std::vector<double> a{1 + alpha, -2 * c, 1 - alpha};
    switch (shape) {
        case FidShape::LowPass:
            return normalised({low / 2, low, low / 2}, a);
        case FidShape::HighPass:
            return normalised({high / 2, -high, high / 2}, a);
        case FidShape::BandPass:
            return normalised({alpha, 0.0, -alpha}, a);
        case FidShape::BandStop:
            return normalised({1.0, -2 * c, 1.0}, a);
        case FidShape::AllPass:
            return normalised({1 - alpha, -2 * c, 1 + alpha}, a);
        default:
            return normalised({1 + alpha * amplitude, -2 * c, 1 - alpha * amplitude},
                              {1 + alpha / amplitude, -2 * c, 1 - alpha / amplitude});
    }
}

// The same cookbook's shelves; the high one is the low one with cos of the other sign, z turned to -z.
FidSection shelf(FidShape shape, double w, double alpha, double amplitude)
{
    const double sign = shape == FidShape::LowShelf ? 1.0 : -1.0;
    const double c = sign * std::cos(w);
    const double root = 2 * std::sqrt(amplitude) * alpha;
    const double plus = amplitude + 1;
    const double minus = amplitude - 1;
    return normalised({amplitude * (plus - minus * c + root), sign * 2 * amplitude * (minus - plus * c),
                       amplitude * (plus - minus * c - root)},
                      {plus + minus * c + root, sign * -2 * (minus + plus * c), plus + minus * c - root});
}

// How far above its corner `order` equal low-pass sections, each 1 / |1 - w^2 + i w/Q|, are at half power.
double halfPowerRatio(double q, int order)
{
    const double half = 1 - 1 / (2 * q * q);
    const double rest = std::exp2(1.0 / order) - 1;
    const double root = std::hypot(half, std::sqrt(rest));
    return std::sqrt(half > 0 ? half + root : rest / (root - half));
}

// Centre of the pass band of poles at radius r and angle `angle` with zeros at 1 and -1.
double centreOf(double radius, double angle)
{
    return std::acos(2 * radius / (1 + radius * radius) * std::cos(angle));
}

}  // namespace

std::optional<FidCascade> makeBiquads(const FidSpec& spec, double frequency, bool halfPower, const char* text)
{
    const FidShape shape = spec.format->shape;
    const double q = spec.values[0];
    if (spec.order > kMaxOrder) {
        fidReport("Bad order %d in spec-string \"%s\"", spec.order, text);
        return std::nullopt;
    }
    double w = 2 * pi * frequency;
    if (halfPower && q > 0) {
        const double ratio = halfPowerRatio(q, spec.order);
        w = 2 * std::atan(std::tan(w / 2) * (shape == FidShape::LowPass ? 1 / ratio : ratio));
    }
    const double amplitude = std::pow(10.0, spec.values[1] / 40);
    const bool shelving = shape == FidShape::LowShelf || shape == FidShape::HighShelf;
    double alpha = std::sin(w) / (2 * q);
    if (shelving)
        alpha = std::sin(w) / 2 * std::sqrt((amplitude + 1 / amplitude) * (1 / q - 1) + 2);
    if (!(q > 0) || !std::isfinite(alpha))
        return badQ(q, text);
    const FidSection section =
        shelving ? shelf(shape, w, alpha, amplitude) : biquad(shape, w, alpha, amplitude);
    FidCascade cascade(static_cast<std::size_t>(spec.order), section);
    if (!isStable(cascade))
        return badQ(q, text);
    return cascade;
}

// Poles at radius r with zeros at 1 and -1, at the centre frequency, or outside at 1/r. S. J. Orfanidis,
// "Introduction to Signal Processing", Prentice Hall 1996, section 11.3: r^2 = (1 - t) / (1 + t), where t is
// the tangent of half the bandwidth, gives that bandwidth at half power exactly.
std::optional<FidCascade> makeResonator(const FidSpec& spec, double frequency, const char* text)
{
    const double q = spec.values[0];
    if (!(q >= 0))
        return badQ(q, text);
    const double w = 2 * pi * frequency;
    const double t = q > 0 ? std::tan(std::min(w / (2 * q), pi / 2)) : 0.0;
    const double square = (1 - t) / (1 + t);
    // The zeros pull the centre away from the poles' angle, so the angle is searched for.
    double low = 0.0;
    double high = pi;
    for (int i = 0; i < 60 && square > 0; ++i) {
        const double middle = (low + high) / 2;
        (centreOf(std::sqrt(square), middle) < w ? low : high) = middle;
    }
    const double radius = std::sqrt(std::max(square, 0.0));
    const double angle = (low + high) / 2;
    // Within rounding: near 0 and half the rate the arc cosine has but half of the digits.
    if (!(square > 0) || std::abs(2 * radius * std::cos(angle) - (1 + square) * std::cos(w)) > 1e-12) {
        fidReport("Resonator binary search failed to converge");
        return std::nullopt;
    }
    const double middle = -2 * radius * std::cos(angle);
    const std::vector<double> a{1.0, middle, square};
    switch (spec.format->shape) {
        case FidShape::BandPass: {
            const double gain =
                q > 0 ? (1 - square) / 2 : 0.5;  // with an infinite Q no gain brings the peak to 1
            return FidCascade{{a, {gain, 0.0, -gain}}};
        }
        case FidShape::BandStop: {
            const double gain = (1 + square) / 2;
            return FidCascade{{a, {gain, middle, gain}}};
        }
        default:
            return FidCascade{{a, {square, middle, 1.0}}};
    }
}

// H(s) = (s + w) / s, whose gain towards high frequencies is 1.
FidCascade makeProportionalIntegral(FidMapping mapping, double frequency)
{
    if (mapping == FidMapping::Bilinear) {
        const double w = std::tan(pi * frequency);
        return {{{1.0, -1.0}, {1 + w, w - 1}}};
    }
    const double zero = std::exp(-2 * pi * frequency);
    const double gain = 2 / (1 + zero);
    return {{{1.0, -1.0}, {gain, -gain * zero}}};
}

}  // namespace veltrac
