#include "calc/WindowShape.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>

namespace veltrac {

namespace {

constexpr double kTurn = 2.0 * std::numbers::pi;

struct WindowRow
{
    SpectrumWindow window;
    const char* name;
    double terms[5];  // of a sum of cosines with alternating signs; none for Bartlett
};

constexpr WindowRow kWindows[] = {
    {SpectrumWindow::Hann, "Hann", {0.5, 0.5}},
    {SpectrumWindow::Rectangular, "Rectangular", {1.0}},
    {SpectrumWindow::Hamming, "Hamming", {0.54, 0.46}},
    {SpectrumWindow::Blackman, "Blackman", {0.42, 0.5, 0.08}},
    {SpectrumWindow::BlackmanHarris, "Blackman-Harris", {0.35875, 0.48829, 0.14128, 0.01168}},
    {SpectrumWindow::FlatTop, "Flat top", {1.0, 1.9383379, 1.3045202, 0.4028270, 0.0350665}},
    {SpectrumWindow::Bartlett, "Bartlett", {}},
};
static_assert(std::size(kWindows) == kSpectrumWindows);

// Of m ones, x periods in them, divided by m.
std::complex<double> rectangleTransform(std::uint32_t m, double x)
{
    const double slow = std::sin(kTurn / 2 * x / m);
    const double height = slow == 0.0 ? 1.0 : std::sin(kTurn / 2 * x) / (m * slow);
    return std::polar(1.0, -kTurn / 2 * x * (m - 1.0) / m) * height;
}

}  // namespace

std::complex<double> windowTransform(SpectrumWindow window, std::uint32_t m, double x)
{
    if (window == SpectrumWindow::Bartlett) {
        // Two rectangles of half the length, one over the other.
        const double slow = std::sin(kTurn / 2 * x / m);
        const double half = slow == 0.0 ? 1.0 : std::sin(kTurn / 4 * x) / (m / 2.0 * slow);
        return std::polar(half * half, -kTurn / 2 * x);
    }
    const double(&a)[5] = kWindows[static_cast<std::size_t>(window)].terms;
    std::complex<double> sum = a[0] * rectangleTransform(m, x);
    for (int k = 1; k < 5 && a[k] != 0.0; ++k)
        sum +=
            (k % 2 == 0 ? 0.5 : -0.5) * a[k] * (rectangleTransform(m, x - k) + rectangleTransform(m, x + k));
    return sum / a[0];
}

const char* spectrumWindowName(SpectrumWindow window)
{
    return kWindows[static_cast<std::size_t>(window)].name;
}

WindowShape::WindowShape(SpectrumWindow window, std::uint32_t m) : m_window(window), m_length(m)
{
    for (std::size_t i = 0; i < kTile; ++i) {
        m_cos[i] = std::cos(kTurn * static_cast<double>(i) / m);
        m_sin[i] = std::sin(kTurn * static_cast<double>(i) / m);
    }
}

void WindowShape::fill(std::uint32_t first, std::span<double> weights)
{
    for (std::size_t done = 0; done < weights.size(); done += kTile) {
        const std::span<double> tile = weights.subspan(done, std::min(kTile, weights.size() - done));
        fillTile(first + static_cast<std::uint32_t>(done), tile);
        for (const double weight : tile) {
            m_sum += weight;
            m_squares += weight * weight;
        }
    }
}

// A fresh cosine and sine a tile, turned on by the table: a rotation over the whole length would drift.
void WindowShape::fillTile(std::uint32_t first, std::span<double> weights) const
{
    if (m_window == SpectrumWindow::Bartlett) {
        for (std::size_t i = 0; i < weights.size(); ++i)
            weights[i] = 1.0 - std::fabs(2.0 * static_cast<double>(first + i) / m_length - 1.0);
        return;
    }
    const double seedCos = std::cos(kTurn * first / m_length);
    const double seedSin = std::sin(kTurn * first / m_length);
    const double(&a)[5] = kWindows[static_cast<std::size_t>(m_window)].terms;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        // a0 - a1 cos x + a2 cos 2x - ... by C. W. Clenshaw's recurrence (MTAC 9, 1955); the signs alternate
        // with -cos x for cos x.
        const double c = m_sin[i] * seedSin - m_cos[i] * seedCos;
        const double b4 = a[4];
        const double b3 = a[3] + 2.0 * c * b4;
        const double b2 = a[2] + 2.0 * c * b3 - b4;
        const double b1 = a[1] + 2.0 * c * b2 - b3;
        weights[i] = a[0] + c * b1 - b2;
    }
}

}  // namespace veltrac
