// The values of a formula's tree.
#pragma once

#include <cstdint>

#include "formula/FormulaNode.h"

namespace veltrac {

// Makes a complete tree ready: constants are computed once, an operand that is missing behind an operator
// becomes 0, and each node gets the evaluator of its kind. Nothing is allocated after that.
void prepareTree(FormulaNode& root);

// Counts the evaluations of all trees: tells a value of this one from one of an earlier one.
inline std::uint64_t formulaEvaluations = 0;

// The value of a tree that is ready. Allocates nothing.
inline double evaluateTree(FormulaNode& root, Moment at)
{
    ++formulaEvaluations;
    return root.evaluator(root, at);
}

// Reports a text (core/ErrorReport.h) and counts it.
void reportFormulaError(const char* text);
// How many texts were reported since the program began.
std::uint64_t formulaReports() noexcept;

// The two texts that evaluation reports, each time that it happens.
extern const char* const kDivisionByZero;
extern const char* const kMissingArgument;

}  // namespace veltrac
