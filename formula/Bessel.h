// Modified Bessel functions of order 0 and 1 by the polynomial approximations of Abramowitz and Stegun,
// Handbook of Mathematical Functions (1964), 9.8.1 to 9.8.8. Their errors, as stated there, stay below 2e-7
// of the scaled functions.
#pragma once

namespace veltrac {

double besselI0(double x);
double besselI1(double x);  // odd
double besselK0(double x);  // x > 0; infinity at 0, NaN below
double besselK1(double x);

}  // namespace veltrac
