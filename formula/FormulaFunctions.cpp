#include "formula/FormulaFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "formula/Bessel.h"
#include "formula/Noise.h"

namespace veltrac {

namespace {

double sgn(double x)
{
    return x < 0.0 ? -1.0 : 1.0;
}

double power(double a, double b)
{
    return std::pow(a, b);
}

double angle(double y, double x)
{
    return std::atan2(y, x);
}

const UnaryEntry kUnary[] = {
    {"abs", [](double x) { return std::fabs(x); }},
    {"acos", [](double x) { return std::acos(x); }},
    {"asin", [](double x) { return std::asin(x); }},
    {"atan", [](double x) { return std::atan(x); }},
    {"ceil", [](double x) { return std::ceil(x); }},
    {"cos", [](double x) { return std::cos(x); }},
    {"cosh", [](double x) { return std::cosh(x); }},
    {"exp", [](double x) { return std::exp(x); }},
    {"floor", [](double x) { return std::floor(x); }},
    {"ln", [](double x) { return std::log(x); }},
    {"log", [](double x) { return std::log10(x); }},
    {"nint", [](double x) { return std::round(x); }},  // halves away from zero
    {"sin", [](double x) { return std::sin(x); }},
    {"sinh", [](double x) { return std::sinh(x); }},
    {"sqrt", squareRoot},
    {"tan", [](double x) { return std::tan(x); }},
    {"tanh", [](double x) { return std::tanh(x); }},
    {"bessi0", besselI0},
    {"bessi1", besselI1},
    {"bessk0", besselK0},
    {"bessk1", besselK1},
    {"sgn", sgn},
    {"gnois", normalNoise},
    {"rnois", uniformNoise},
    {"int", [](double x) { return std::trunc(x); }},
};

const BinaryEntry kBinary[] = {
    {"max", larger},
    {"min", smaller},
    {"atan2", angle},  // never reached: "atan" is tried before
    {"pow", power},
};

template <typename Entry>
const Entry* firstAt(std::span<const Entry> table, const char* text)
{
    const auto found = std::find_if(table.begin(), table.end(), [&](const Entry& entry) {
        return std::strncmp(text, entry.name, std::strlen(entry.name)) == 0;
    });
    return found == table.end() ? nullptr : &*found;
}

}  // namespace

double squareRoot(double x)
{
    return std::sqrt(x);
}

std::span<const UnaryEntry> unaryFunctions()
{
    return kUnary;
}

std::span<const BinaryEntry> binaryFunctions()
{
    return kBinary;
}

const UnaryEntry* unaryAt(const char* text)
{
    return firstAt(unaryFunctions(), text);
}

const BinaryEntry* binaryAt(const char* text)
{
    return firstAt(binaryFunctions(), text);
}

}  // namespace veltrac
