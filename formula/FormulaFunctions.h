// The functions that a formula can call, in the order in which their names are tried.
#pragma once

#include <span>

#include "formula/FormulaNode.h"

namespace veltrac {

struct UnaryEntry
{
    const char* name;
    UnaryFunction function;
};
struct BinaryEntry
{
    const char* name;
    BinaryFunction function;
};

// "sqrt", "max" and "min", which evaluation knows by their functions and computes in place. Of two arguments
// that cannot be compared "max" is the second and "min" the first.
double squareRoot(double x);
inline double larger(double a, double b)
{
    return a > b ? a : b;
}
inline double smaller(double a, double b)
{
    return b < a ? b : a;
}

std::span<const UnaryEntry> unaryFunctions();
std::span<const BinaryEntry> binaryFunctions();

// The first function whose name the text begins with, or null. A longer word that begins with a name means
// that function, on purpose: formulas in use rely on "sinus(t)" and on "cosh" being "cos".
const UnaryEntry* unaryAt(const char* text);
const BinaryEntry* binaryAt(const char* text);

}  // namespace veltrac
