#include "formula/Bessel.h"

#include <cmath>
#include <iterator>
#include <limits>

namespace veltrac {

namespace {

// c[0] + c[1] y + c[2] y^2 + …
template <std::size_t n>
double polynomial(const double (&c)[n], double y)
{
    double sum = 0.0;
    for (std::size_t i = n; i-- > 0;)
        sum = sum * y + c[i];
    return sum;
}

constexpr double kBreakI = 3.75;
constexpr double kBreakK = 2.0;

// The numbers of the formulas stand behind them.
constexpr double kI0Small[] = {1.0,       3.5156229, 3.0899424, 1.2067492,
                               0.2659732, 0.0360768, 0.0045813};  // 9.8.1
constexpr double kI0Large[] = {0.39894228,  0.01328592, 0.00225319,  -0.00157565, 0.00916281,
                               -0.02057706, 0.02635537, -0.01647633, 0.00392377};  // 9.8.2
constexpr double kI1Small[] = {0.5,        0.87890594, 0.51498869, 0.15084934,
                               0.02658733, 0.00301532, 0.00032411};  // 9.8.3
constexpr double kI1Large[] = {0.39894228, -0.03988024, -0.00362018, 0.00163801, -0.01031555,
                               0.02282967, -0.02895312, 0.01787654,  -0.00420059};  // 9.8.4
constexpr double kK0Small[] = {-0.57721566, 0.42278420, 0.23069756, 0.03488590,
                               0.00262698,  0.00010750, 0.00000740};  // 9.8.5
constexpr double kK0Large[] = {1.25331414, -0.07832358, 0.02189568, -0.01062446,
                               0.00587872, -0.00251540, 0.00053208};  // 9.8.6
constexpr double kK1Small[] = {1.0,         0.15443144,  -0.67278579, -0.18156897,
                               -0.01919402, -0.00110404, -0.00004686};  // 9.8.7
constexpr double kK1Large[] = {1.25331414,  0.23498619, -0.03655620, 0.01504268,
                               -0.00780353, 0.00325614, -0.00068245};  // 9.8.8

}  // namespace

double besselI0(double x)
{
    const double ax = std::fabs(x);
    if (ax < kBreakI)
        return polynomial(kI0Small, x / kBreakI * (x / kBreakI));
    return std::exp(ax) / std::sqrt(ax) * polynomial(kI0Large, kBreakI / ax);
}

double besselI1(double x)
{
    const double ax = std::fabs(x);
    const double value = ax < kBreakI ? ax * polynomial(kI1Small, x / kBreakI * (x / kBreakI))
                                      : std::exp(ax) / std::sqrt(ax) * polynomial(kI1Large, kBreakI / ax);
    return x < 0.0 ? -value : value;
}

double besselK0(double x)
{
    if (x == 0.0)
        return std::numeric_limits<double>::infinity();
    if (!(x > 0.0))
        return std::numeric_limits<double>::quiet_NaN();
    if (x <= kBreakK)
        return -std::log(x / 2.0) * besselI0(x) + polynomial(kK0Small, x * x / 4.0);
    return std::exp(-x) / std::sqrt(x) * polynomial(kK0Large, 2.0 / x);
}

double besselK1(double x)
{
    if (x == 0.0)
        return std::numeric_limits<double>::infinity();
    if (!(x > 0.0))
        return std::numeric_limits<double>::quiet_NaN();
    if (x <= kBreakK)
        return std::log(x / 2.0) * besselI1(x) + polynomial(kK1Small, x * x / 4.0) / x;
    return std::exp(-x) / std::sqrt(x) * polynomial(kK1Large, 2.0 / x);
}

}  // namespace veltrac
