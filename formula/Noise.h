// Random deviates for formulas.
#pragma once

#include <array>

namespace veltrac {

// The universal generator of G. Marsaglia and A. Zaman (Toward a Universal Random Number Generator, Florida
// State University report FSU-SCRI-87-50, 1987): the same sequence on every machine.
class UniversalGenerator
{
public:
    // Seeds within 0 to 31328 and 0 to 30081; any other pair is replaced by 1802 and 9373.
    UniversalGenerator(int first, int second);

    // The next deviate in [0, 1).
    double operator()();

private:
    std::array<double, 97> m_lags;
    std::size_t m_i = 96;
    std::size_t m_j = 32;
    double m_c;
};

// Deviates of the program's one generator, which is seeded once and never again.
double uniformNoise(double ignored);
// Mean 0, standard deviation `scale`; J. L. Leva, A Fast Normal Random Number Generator, ACM Transactions on
// Mathematical Software 18 (1992), pages 449 to 453.
double normalNoise(double scale);

}  // namespace veltrac
