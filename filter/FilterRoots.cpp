#include "filter/FilterRoots.h"

#include <cmath>
#include <numbers>
#include <span>

namespace veltrac {

namespace {

using Complex = std::complex<double>;

// Value over derivative of sum of c[k] z^(n-k): by Horner inside of the unit circle, outside by that of the
// mirrored polynomial, so that no power overflows.
Complex newtonStep(std::span<const double> c, Complex z)
{
    const std::size_t n = c.size() - 1;
    const bool isInside = std::abs(z) <= 1.0;
    const Complex at = isInside ? z : 1.0 / z;
    Complex value;
    Complex slope;
    for (std::size_t k = 0; k <= n; ++k) {
        slope = slope * at + value;
        value = value * at + (isInside ? c[k] : c[n - k]);
    }
    if (isInside)
        return value / slope;
    // p(z) = z^n q(1/z), so p/p' = 1 / (n/z - q'(1/z) / (q(1/z) z^2)).
    return 1.0 / (static_cast<double>(n) * at - slope / value * at * at);
}

void solveLong(std::span<const double> c, std::vector<Complex>& roots)
{
    constexpr int kRounds = 200;
    constexpr double kExact = 1e-13;
    const std::size_t n = c.size() - 1;
    std::vector<Complex> found(n);
    for (std::size_t k = 0; k < n; ++k)
        found[k] =
            std::polar(0.95 + 0.1 * static_cast<double>(k % 2),
                       2.0 * std::numbers::pi * (static_cast<double>(k) + 0.3) / static_cast<double>(n));
    for (int round = 0; round < kRounds; ++round) {
        double farthest = 0.0;
        for (std::size_t k = 0; k < n; ++k) {
            const Complex newton = newtonStep(c, found[k]);
            if (!std::isfinite(newton.real()) || !std::isfinite(newton.imag()))
                continue;
            Complex others;
            for (std::size_t j = 0; j < n; ++j)
                if (j != k && found[j] != found[k])
                    others += 1.0 / (found[k] - found[j]);
            const Complex step = newton / (1.0 - newton * others);
            found[k] -= step;
            farthest = std::max(farthest, std::abs(step));
        }
        if (farthest < kExact)
            break;
    }
    roots.insert(roots.end(), found.begin(), found.end());
}

void solveShort(double a, double b, double c, std::vector<Complex>& roots)
{
    const double inner = b * b - 4.0 * a * c;
    if (inner < 0.0) {
        const Complex root(-b / (2.0 * a), std::sqrt(-inner) / (2.0 * a));
        roots.push_back(root);
        roots.push_back(std::conj(root));
        return;
    }
    // The larger one first: the other by their product, which loses no digits.
    const double sum = -0.5 * (b + std::copysign(std::sqrt(inner), b));
    roots.emplace_back(sum / a);
    roots.emplace_back(sum == 0.0 ? 0.0 : c / sum);
}

// Of c[0] + c[1] / z + c[2] / z^2 + ...; false where it is too long.
bool solve(std::span<const double> c, std::vector<Complex>& roots)
{
    while (!c.empty() && c.back() == 0.0)
        c = c.first(c.size() - 1);
    while (!c.empty() && c.front() == 0.0)
        c = c.subspan(1);
    if (c.size() < 2)
        return true;
    if (c.size() == 2)
        roots.emplace_back(-c[1] / c[0]);
    else if (c.size() == 3)
        solveShort(c[0], c[1], c[2], roots);
    else if (c.size() <= kMostRoots + 1)
        solveLong(c, roots);
    else
        return false;
    return true;
}

}  // namespace

FilterRoots rootsOf(const FidFilter* filter)
{
    FilterRoots roots;
    for (const FidFilter* block = filter; block->count > 0; block = block->next()) {
        const std::span<const double> c(block->coefficients(), static_cast<std::size_t>(block->count));
        roots.isComplete = solve(c, block->type == 'I' ? roots.poles : roots.zeros) && roots.isComplete;
    }
    return roots;
}

}  // namespace veltrac
