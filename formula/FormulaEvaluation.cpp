#include "formula/FormulaEvaluation.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "core/ErrorReport.h"
#include "core/TSFILE.h"
#include "formula/FormulaFunctions.h"
#include "formula/FormulaOperations.h"
#include "formula/SourceLookup.h"

namespace veltrac {

const char* const kDivisionByZero = "Attempt to divide on zero";
const char* const kMissingArgument = "Missing argument in function";

namespace {

std::uint64_t reports = 0;

// A sample no farther away than this is the nearest one.
constexpr double kUnmistakable = 0.49;

// `index` counts from the oldest sample that the source holds.
float sampleOf(const FormulaNode& variable, std::uint32_t index)
{
    return variable.source->value(variable.lookup.first + index, static_cast<std::uint32_t>(variable.column));
}

// Out of line, so that the usual case passes without a stack frame.
[[gnu::noinline]] double fetchUnexpected(FormulaNode& variable, double t)
{
    SourceLookup& lookup = variable.lookup;
    const Place place = placeOf(lookup, t);
    if (place.isNowhere)
        return std::isnan(t) ? std::numeric_limits<double>::quiet_NaN() : 0.0;
    const double value = sampleOf(variable, place.index);
    if (place.fraction != 0.0)
        return interpolated(value, sampleOf(variable, place.index + 1), place.fraction);
    lookup.step = place.index - (lookup.expected - lookup.step);
    lookup.expected = place.index + lookup.step;
    return value;
}

// The column's value at time t, between its two neighbouring samples. A calculation meets the samples in
// steps that stay the same, so the value can be on its way before t has become a position.
double fetch(FormulaNode& variable, double t)
{
    SourceLookup& lookup = variable.lookup;
    const std::uint32_t expected = lookup.expected;
    // Where a float tells samples no more apart, the nearest one is to be found first.
    const double close = std::min(lookup.grainAt(t), kUnmistakable);
    if (!(std::fabs(lookup.positionAt(t) - expected) <= close) || expected >= lookup.samples) [[unlikely]]
        return fetchUnexpected(variable, t);
    lookup.expected = expected + lookup.step;
    return sampleOf(variable, expected);
}

// -- Evaluators: a function a kind, so that a walk over the tree is a chain of short calls --

// What an operand is, as far as that spares the call: numbers and the time are taken where they stand.
enum class Shape { Number, Time, Tree };
constexpr std::size_t kShapes = 3;

Shape shapeOf(const FormulaNode& node)
{
    if (isConstant(node))
        return Shape::Number;
    return node.kind == 't' && node.sign > 0 ? Shape::Time : Shape::Tree;
}

double valueOf(const std::unique_ptr<FormulaNode>& node, Moment at)
{
    return node->evaluator(*node, at);
}

template <Shape shape>
double operand(const std::unique_ptr<FormulaNode>& node, Moment at)
{
    if constexpr (shape == Shape::Number)
        return node->value;
    else if constexpr (shape == Shape::Time)
        return at.t;
    else
        return valueOf(node, at);
}

double number(FormulaNode& node, Moment /*at*/)
{
    return node.value;
}

double time(FormulaNode& /*node*/, Moment at)
{
    return at.t;
}

// Out of line, so that a twin that is there already costs nothing of it.
[[gnu::noinline]] double variable(FormulaNode& node, Moment at)
{
    node.value = fetch(node, at.t);
    node.fetchedIn = formulaEvaluations;
    return node.value;
}

// Of the target's own file, whose samples need no time to be found.
[[gnu::noinline]] double ownVariable(FormulaNode& node, Moment at)
{
    node.value = node.source->value(at.sample, static_cast<std::uint32_t>(node.column));
    return node.value;
}

// Another "x" of the same column: fetched once an evaluation, by whichever comes first.
double sharedVariable(FormulaNode& node, Moment at)
{
    FormulaNode& twin = *node.twin;
    node.value = twin.fetchedIn == formulaEvaluations ? twin.value : variable(twin, at);
    return node.value;
}

template <typename Operation, Shape left, Shape right>
double combined(FormulaNode& node, Moment at)
{
    const double first = operand<left>(node.left, at);
    return Operation::of(node, first, operand<right>(node.right, at));
}

template <typename Operation>
Evaluator combination(const FormulaNode& node)
{
    using enum Shape;
    static constexpr Evaluator kByShape[kShapes][kShapes] = {
        {combined<Operation, Number, Number>, combined<Operation, Number, Time>,
         combined<Operation, Number, Tree>},
        {combined<Operation, Time, Number>, combined<Operation, Time, Time>, combined<Operation, Time, Tree>},
        {combined<Operation, Tree, Number>, combined<Operation, Tree, Time>, combined<Operation, Tree, Tree>},
    };
    return kByShape[static_cast<std::size_t>(shapeOf(*node.left))]
                   [static_cast<std::size_t>(shapeOf(*node.right))];
}

double quotient(FormulaNode& node, Moment at)
{
    const double right = valueOf(node.right, at);
    if (right == 0.0) {
        reportFormulaError(kDivisionByZero);
        return 0.0;
    }
    return valueOf(node.left, at) / right;
}

double power(FormulaNode& node, Moment at)
{
    const double right = valueOf(node.right, at);
    return std::pow(valueOf(node.left, at), right);
}

double square(FormulaNode& node, Moment at)
{
    const double left = valueOf(node.left, at);
    return left * left;
}

double unary(FormulaNode& node, Moment at)
{
    return node.unaryFunction(valueOf(node.right, at));
}

double unarySquareRoot(FormulaNode& node, Moment at)
{
    return std::sqrt(valueOf(node.right, at));
}

double missingArgument(FormulaNode& /*node*/, Moment /*at*/)
{
    reportFormulaError(kMissingArgument);
    return 0.0;
}

// A comma that no function adopted, and an "x" of no source.
double nothing(FormulaNode& /*node*/, Moment /*at*/)
{
    return 0.0;
}

template <Evaluator positive>
double negative(FormulaNode& node, Moment at)
{
    return -positive(node, at);
}

template <Evaluator positive>
Evaluator withSign(const FormulaNode& node)
{
    return node.sign < 0 ? negative<positive> : positive;
}

Evaluator binaryEvaluator(const FormulaNode& node)
{
    if (node.left == nullptr || node.right == nullptr)
        return missingArgument;
    if (node.binaryFunction == larger)
        return combination<Larger>(node);
    return node.binaryFunction == smaller ? combination<Smaller>(node) : combination<Binary>(node);
}

Evaluator evaluatorOf(const FormulaNode& node)
{
    switch (node.kind) {
        case '+':
            return combination<Sum>(node);
        case '-':
            return combination<Difference>(node);
        case '*':
            return combination<Product>(node);
        case '/':
            return quotient;
        case '^':
            return isSquare(node) ? square : power;
        case 'f':
            return node.unaryFunction == squareRoot ? withSign<unarySquareRoot>(node) : withSign<unary>(node);
        case 'm':
            return binaryEvaluator(node);
        case 'n':
        case 'p':
            return number;
        case 't':
            return withSign<time>(node);
        case 'x':
            if (node.source == nullptr)
                return nothing;
            if (node.lookup.isOwn)
                return withSign<ownVariable>(node);
            return node.twin == nullptr ? withSign<variable>(node) : withSign<sharedVariable>(node);
        default:
            return nothing;
    }
}

void fillMissingOperand(FormulaNode& node, std::unique_ptr<FormulaNode>& child)
{
    if (child != nullptr)
        return;
    child = std::make_unique<FormulaNode>();
    child->kind = 'n';
    child->parent = &node;
    child->evaluator = number;
}

// "2*pi" is computed once, not once a sample. Divisions stay: each by zero is reported.
void foldConstants(FormulaNode& node)
{
    if (std::strchr("+-*", node.kind) == nullptr || !isConstant(*node.left) || !isConstant(*node.right))
        return;
    node.value = node.evaluator(node, {});
    node.kind = 'n';
    node.evaluator = number;
    node.left.reset();
    node.right.reset();
}

// The first "x" of each source that stands in a tree; there are few.
using FirstOfSource = std::vector<FormulaNode*>;

void linkTwin(FormulaNode& node, FirstOfSource& firsts)
{
    const auto found = std::find_if(firsts.begin(), firsts.end(), [&node](const FormulaNode* first) {
        return first->source == node.source && first->column == node.column;
    });
    if (found == firsts.end())
        firsts.push_back(&node);
    else
        node.twin = *found;
}

void prepare(FormulaNode& node, FirstOfSource& firsts)
{
    for (FormulaNode* const child : {node.left.get(), node.right.get()})
        if (child != nullptr)
            prepare(*child, firsts);
    const bool isOperator = std::strchr("+-*/^", node.kind) != nullptr;
    if (isOperator)
        fillMissingOperand(node, node.left);
    if (isOperator || node.kind == 'f')
        fillMissingOperand(node, node.right);
    if (node.kind == 'x')
        linkTwin(node, firsts);
    node.evaluator = evaluatorOf(node);
    if (isOperator)
        foldConstants(node);
}

}  // namespace

void prepareTree(FormulaNode& root)
{
    FirstOfSource firsts;
    prepare(root, firsts);
}

std::uint64_t formulaReports() noexcept
{
    return reports;
}

void reportFormulaError(const char* text)
{
    ++reports;
    reportError(text);
}

}  // namespace veltrac
