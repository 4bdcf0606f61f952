// What the operators and the functions of two arguments do to two numbers: the same for single samples and
// for blocks of them.
#pragma once

#include "formula/FormulaFunctions.h"
#include "formula/FormulaNode.h"

namespace veltrac {

struct Sum
{
    static double of(const FormulaNode& /*node*/, double left, double right) { return left + right; }
};
struct Difference
{
    static double of(const FormulaNode& /*node*/, double left, double right) { return left - right; }
};
struct Product
{
    static double of(const FormulaNode& /*node*/, double left, double right) { return left * right; }
};
// The sign is dropped on purpose: -max(a,b) is max(a,b) in every formula that users keep.
struct Larger
{
    static double of(const FormulaNode& /*node*/, double left, double right) { return larger(left, right); }
};
struct Smaller
{
    static double of(const FormulaNode& /*node*/, double left, double right) { return smaller(left, right); }
};
struct Binary
{
    static double of(const FormulaNode& node, double left, double right)
    {
        return node.binaryFunction(left, right);
    }
};

inline bool isConstant(const FormulaNode& node)
{
    return node.kind == 'n' || node.kind == 'p';
}

// A power that is the product of a number with itself: what pow() gives, without the way there.
inline bool isSquare(const FormulaNode& power)
{
    return power.right->kind == 'n' && power.right->value == 2.0;
}

}  // namespace veltrac
