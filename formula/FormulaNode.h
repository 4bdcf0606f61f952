// One token of a compiled formula, a node of its tree.
#pragma once

#include <cstdint>
#include <memory>

#include "formula/SourceLookup.h"

class TSFILE;
struct FormulaNode;

namespace veltrac {

// What is being computed: the sample's time, seconds, and its number.
struct Moment
{
    double t = 0.0;
    std::uint32_t sample = 0;
};

// Computes a node's value.
using Evaluator = double (*)(FormulaNode&, Moment);
using UnaryFunction = double (*)(double);
using BinaryFunction = double (*)(double, double);

}  // namespace veltrac

// kind: '+' '-' '*' '/' '^' ',' operators; 'f' unary and 'm' binary function; 'n' number; 'p' pi; 't' time;
// 'x' source variable. A node owns those below it; parent is the node above.
struct FormulaNode
{
    char kind = 0;
    std::int32_t priority = 0;
    std::int32_t sign = 1;  // -1 where the operand was written with a leading "-"
    double value = 0.0;     // of 'n' and 'p'; of 'x' what was fetched last
    std::unique_ptr<FormulaNode> left;
    std::unique_ptr<FormulaNode> right;
    FormulaNode* parent = nullptr;
    veltrac::UnaryFunction unaryFunction = nullptr;
    veltrac::BinaryFunction binaryFunction = nullptr;
    TSFILE* source = nullptr;  // borrowed; null for an "x" of no source, which is 0
    std::int32_t column = 0;
    bool hasMinus = false;  // a "-" stands directly before it, no parenthesis between
    veltrac::SourceLookup lookup;
    FormulaNode* twin = nullptr;             // of 'x': the first one in the tree with the same source
    std::uint64_t fetchedIn = 0;             // of 'x': the evaluation that value belongs to
    veltrac::Evaluator evaluator = nullptr;  // chosen when the tree is complete
};

namespace veltrac {

// How tightly a kind binds; -1 for a kind that is none.
std::int32_t priorityOf(char kind);

}  // namespace veltrac
