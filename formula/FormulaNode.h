// One token of a compiled formula, a node of its tree.
#pragma once

#include <cstdint>

class TSFILE;
struct FormulaNode;

namespace veltrac {

// How a source variable finds its samples; taken from its file once, when the formula is compiled.
struct SourceLookup
{
    std::uint32_t samples = 0;
    double start = 0.0;         // time of the first sample, seconds
    double rate = 0.0;          // samples per second
    double lastPosition = 0.0;  // of the last sample, in samples behind the first
    double grain = 0.0;         // samples that a float of one second cannot tell apart
    // Where the next evaluation will most likely look, counted from 0: one step behind the last sample met.
    std::uint32_t expected = 0;
    std::uint32_t step = 1;
};
// Computes a node's value at time t, seconds.
using Evaluator = double (*)(FormulaNode&, double t);
using UnaryFunction = double (*)(double);
using BinaryFunction = double (*)(double, double);

}  // namespace veltrac

// kind: '+' '-' '*' '/' '^' ',' operators; 'f' unary and 'm' binary function; 'n' number; 'p' pi; 't' time;
// 'x' source variable. The parser that made a node owns it; parent is the node above.
struct FormulaNode
{
    char kind = 0;
    std::int32_t priority = 0;
    std::int32_t sign = 1;  // -1 where the operand was written with a leading "-"
    double value = 0.0;     // of 'n' and 'p'; of 'x' what was fetched last
    FormulaNode* left = nullptr;
    FormulaNode* right = nullptr;
    FormulaNode* parent = nullptr;
    veltrac::UnaryFunction unaryFunction = nullptr;
    veltrac::BinaryFunction binaryFunction = nullptr;
    TSFILE* source = nullptr;  // borrowed; null for an "x" of no source, which is 0
    std::int32_t column = 0;
    veltrac::SourceLookup lookup;
    FormulaNode* twin = nullptr;             // of 'x': the first one in the tree with the same source
    std::uint64_t fetchedIn = 0;             // of 'x': the evaluation that value belongs to
    veltrac::Evaluator evaluator = nullptr;  // chosen when the tree is complete
};

namespace veltrac {

// How tightly a kind binds; -1 for a kind that is none.
std::int32_t priorityOf(char kind);

// Deletes a node and all below it.
void freeTree(FormulaNode* node);

// The node at the top of the tree that a node stands in.
FormulaNode* topOf(FormulaNode* node);

}  // namespace veltrac
