#include "formula/FormulaEvaluation.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "core/TSFILE.h"
#include "portal/TsApplication.h"

const char* const kDivisionByZero = "Attempt to divide on zero";
const char* const kMissingArgument = "Missing argument in function";

namespace {

std::uint64_t reports = 0;

// Before the first and behind the last sample, where the value is theirs, and times that are none.
[[gnu::noinline]] double fetchOutside(const FormulaSource& source, double position)
{
    if (std::isnan(position))
        return std::numeric_limits<double>::quiet_NaN();
    if (source.samples == 0)
        return 0.0;
    return source.file->value(position > 0.0 ? source.samples : 1, source.column);
}

// The column's value at time t, between its two neighbouring samples.
double fetch(const FormulaSource& source, float t)
{
    const double position = (static_cast<double>(t) - source.start) * source.rate;
    if (!(position > 0.0 && position < source.lastPosition)) [[unlikely]]
        return fetchOutside(source, position);
    const auto k = static_cast<std::uint32_t>(static_cast<std::int64_t>(position));
    const double fraction = position - k;
    // A float tells t to half of its last place: a sample within that is meant itself.
    const double grain = std::fabs(static_cast<double>(t)) * source.grain;
    if (fraction <= grain)
        return source.file->value(k + 1, source.column);
    if (1.0 - fraction <= grain)
        return source.file->value(k + 2, source.column);
    const double before = source.file->value(k + 1, source.column);
    const double after = source.file->value(k + 2, source.column);
    return before + (after - before) * fraction;
}

// -- Evaluators: a function a kind, so that a walk over the tree is a chain of short calls --

double valueOf(FormulaNode* node, double t)
{
    return node->evaluator(*node, t);
}

double number(FormulaNode& node, double /*t*/)
{
    return node.value;
}

double time(FormulaNode& /*node*/, double t)
{
    return t;
}

double variable(FormulaNode& node, double t)
{
    node.value = node.source.file == nullptr ? 0.0 : fetch(node.source, static_cast<float>(t));
    return node.value;
}

double sum(FormulaNode& node, double t)
{
    const double left = valueOf(node.left, t);
    return left + valueOf(node.right, t);
}

double difference(FormulaNode& node, double t)
{
    const double left = valueOf(node.left, t);
    return left - valueOf(node.right, t);
}

double product(FormulaNode& node, double t)
{
    const double left = valueOf(node.left, t);
    return left * valueOf(node.right, t);
}

double quotient(FormulaNode& node, double t)
{
    const double right = valueOf(node.right, t);
    if (right == 0.0) {
        reportFormulaError(kDivisionByZero);
        return 0.0;
    }
    return valueOf(node.left, t) / right;
}

double power(FormulaNode& node, double t)
{
    const double right = valueOf(node.right, t);
    return std::pow(valueOf(node.left, t), right);
}

// What pow() gives for the commonest power, without the way there.
double square(FormulaNode& node, double t)
{
    const double left = valueOf(node.left, t);
    return left * left;
}

double unary(FormulaNode& node, double t)
{
    return node.unaryFunction(valueOf(node.right, t));
}

double binary(FormulaNode& node, double t)
{
    const double left = valueOf(node.left, t);
    return node.binaryFunction(left, valueOf(node.right, t));
}

double missingArgument(FormulaNode& /*node*/, double /*t*/)
{
    reportFormulaError(kMissingArgument);
    return 0.0;
}

// A comma that no function adopted.
double nothing(FormulaNode& /*node*/, double /*t*/)
{
    return 0.0;
}

template <Evaluator positive>
double negative(FormulaNode& node, double t)
{
    return -positive(node, t);
}

template <Evaluator positive>
Evaluator withSign(const FormulaNode& node)
{
    return node.sign < 0 ? negative<positive> : positive;
}

Evaluator evaluatorOf(const FormulaNode& node)
{
    switch (node.kind) {
        case '+':
            return sum;
        case '-':
            return difference;
        case '*':
            return product;
        case '/':
            return quotient;
        case '^':
            return node.right->kind == 'n' && node.right->value == 2.0 ? square : power;
        case 'f':
            return withSign<unary>(node);
        case 'm':
            // The sign is dropped on purpose: -max(a,b) is max(a,b) in every formula that users keep.
            return node.left == nullptr || node.right == nullptr ? missingArgument : binary;
        case 'n':
        case 'p':
            return number;
        case 't':
            return withSign<time>(node);
        case 'x':
            return withSign<variable>(node);
        default:
            return nothing;
    }
}

bool isConstant(const FormulaNode& node)
{
    return node.kind == 'n' || node.kind == 'p';
}

void fillMissingOperand(FormulaNode& node, FormulaNode*& child)
{
    if (child != nullptr)
        return;
    child = new FormulaNode;
    child->kind = 'n';
    child->parent = &node;
    child->evaluator = number;
}

// "2*pi" is computed once, not once a sample. Divisions stay: each by zero is reported.
void foldConstants(FormulaNode& node)
{
    if (std::strchr("+-*", node.kind) == nullptr || !isConstant(*node.left) || !isConstant(*node.right))
        return;
    node.value = node.evaluator(node, 0.0);
    node.kind = 'n';
    node.evaluator = number;
    freeTree(node.left);
    freeTree(node.right);
    node.left = node.right = nullptr;
}

}  // namespace

void prepareTree(FormulaNode& root)
{
    for (FormulaNode* const child : {root.left, root.right})
        if (child != nullptr)
            prepareTree(*child);
    const bool isOperator = std::strchr("+-*/^", root.kind) != nullptr;
    if (isOperator)
        fillMissingOperand(root, root.left);
    if (isOperator || root.kind == 'f')
        fillMissingOperand(root, root.right);
    root.evaluator = evaluatorOf(root);
    if (isOperator)
        foldConstants(root);
}

std::uint64_t formulaReports() noexcept
{
    return reports;
}

void reportFormulaError(const char* text)
{
    ++reports;
    if (TsApplication* const application = TsApplication::instance())
        application->ShowTsError(text);
}
