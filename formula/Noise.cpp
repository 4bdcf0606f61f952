#include "formula/Noise.h"

#include <cmath>

namespace veltrac {

namespace {

constexpr double kC = 0.021602869033813477;
constexpr double kCd = 0.45623308420181274;
constexpr double kCm = 0.9999998211860657;
constexpr int kBits = 24;
constexpr int kProgramSeeds[] = {6902, 1577};
constexpr int kDefaultSeeds[] = {1802, 9373};

}  // namespace

UniversalGenerator::UniversalGenerator(int first, int second) : m_lags{}, m_c(kC)
{
    if (first < 0 || first > 31328 || second < 0 || second > 30081) {
        first = kDefaultSeeds[0];
        second = kDefaultSeeds[1];
    }
    int i = first / 177 % 177 + 2;
    int j = first % 177 + 2;
    int k = second / 169 % 178 + 1;
    int l = second % 169;
    for (double& lag : m_lags) {
        double bit = 0.5;
        for (int n = 0; n < kBits; ++n) {
            const int m = i * j % 179 * k % 179;
            i = j;
            j = k;
            k = m;
            l = (53 * l + 1) % 169;
            if (l * m % 64 >= 32)
                lag += bit;
            bit *= 0.5;
        }
    }
}

double UniversalGenerator::operator()()
{
    double deviate = m_lags[m_i] - m_lags[m_j];
    // The textbook asks for < 0. Kept as it is: sequences that users have recorded depend on it.
    if (deviate <= 0.0)
        deviate += 1.0;
    m_lags[m_i] = deviate;
    m_i = m_i == 0 ? m_lags.size() - 1 : m_i - 1;
    m_j = m_j == 0 ? m_lags.size() - 1 : m_j - 1;
    m_c -= kCd;
    if (m_c < 0.0)
        m_c += kCm;
    deviate -= m_c;
    return deviate < 0.0 ? deviate + 1.0 : deviate;
}

double uniformNoise(double /*ignored*/)
{
    static UniversalGenerator generator(kProgramSeeds[0], kProgramSeeds[1]);
    return generator();
}

double normalNoise(double scale)
{
    for (;;) {
        double u = uniformNoise(0.0);
        double v = uniformNoise(0.0);
        if (u <= 0.0 || v <= 0.0)
            u = v = 1.0;
        v = 1.7156 * (v - 0.5);
        const double x = u - 0.449871;
        const double y = std::fabs(v) + 0.386595;
        const double q = x * x + y * (0.196 * y - 0.25472 * x);
        if (q < 0.27597)
            return scale * v / u;
        if (q > 0.27846)
            continue;
        if (v * v <= -4.0 * std::log(u) * u * u)
            return scale * v / u;
    }
}

}  // namespace veltrac
