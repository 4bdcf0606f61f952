#include "formula/FormulaEvaluation.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "core/ErrorReport.h"
#include "core/TSFILE.h"
#include "formula/FormulaFunctions.h"

namespace veltrac {

const char* const kDivisionByZero = "Attempt to divide on zero";
const char* const kMissingArgument = "Missing argument in function";

namespace {

std::uint64_t reports = 0;

// A sample no farther away than this is the nearest one.
constexpr double kUnmistakable = 0.49;

float sampleOf(const FormulaNode& variable, std::uint32_t sample)
{
    return variable.source->value(sample, static_cast<std::uint32_t>(variable.column));
}

// Before the first and behind the last sample, where the value is theirs, and times that are none.
// The samples of a file without a sample time all lie at its start: up to there it is the first one.
double outside(const FormulaNode& variable, double position, float t)
{
    if (std::isnan(t))
        return std::numeric_limits<double>::quiet_NaN();
    const std::uint32_t samples = variable.lookup.samples;
    return samples == 0 ? 0.0 : sampleOf(variable, position > 0.0 ? samples : 1);
}

double between(const FormulaNode& variable, double position)
{
    const auto k = static_cast<std::uint32_t>(static_cast<std::int64_t>(position));
    const double before = sampleOf(variable, k + 1);
    const double after = sampleOf(variable, k + 2);
    return before + (after - before) * (position - k);
}

// Out of line, so that the usual case passes without a stack frame.
[[gnu::noinline]] double fetchUnexpected(FormulaNode& variable, double position, double grain, float t)
{
    SourceLookup& lookup = variable.lookup;
    if (!(position > 0.0 && position < lookup.lastPosition))
        return outside(variable, position, t);
    auto nearest = static_cast<std::uint32_t>(static_cast<std::int64_t>(position));
    nearest += position - nearest > 0.5 ? 1 : 0;
    // A float tells t to half of its last place: a sample within that is meant itself.
    if (std::fabs(position - nearest) > grain)
        return between(variable, position);
    lookup.step = nearest - (lookup.expected - lookup.step);
    lookup.expected = nearest + lookup.step;
    return sampleOf(variable, nearest + 1);
}

// The column's value at time t, between its two neighbouring samples. A calculation meets the samples in
// steps that stay the same, so the value can be on its way before t has become a position.
double fetch(FormulaNode& variable, float t)
{
    SourceLookup& lookup = variable.lookup;
    const double seconds = t;
    const double position = (seconds - lookup.start) * lookup.rate;
    const double grain = std::fabs(seconds) * lookup.grain;
    const std::uint32_t expected = lookup.expected;
    // Where a float tells samples no more apart, the nearest one is to be found first.
    const double close = std::min(grain, kUnmistakable);
    if (!(std::fabs(position - expected) <= close) || expected >= lookup.samples) [[unlikely]]
        return fetchUnexpected(variable, position, grain, t);
    lookup.expected = expected + lookup.step;
    return sampleOf(variable, expected + 1);
}

// -- Evaluators: a function a kind, so that a walk over the tree is a chain of short calls --

// What an operand is, as far as that spares the call: numbers and the time are taken where they stand.
enum class Shape { Number, Time, Tree };
constexpr std::size_t kShapes = 3;

bool isConstant(const FormulaNode& node)
{
    return node.kind == 'n' || node.kind == 'p';
}

Shape shapeOf(const FormulaNode& node)
{
    if (isConstant(node))
        return Shape::Number;
    return node.kind == 't' && node.sign > 0 ? Shape::Time : Shape::Tree;
}

double valueOf(FormulaNode* node, double t)
{
    return node->evaluator(*node, t);
}

template <Shape shape>
double operand(FormulaNode* node, double t)
{
    if constexpr (shape == Shape::Number)
        return node->value;
    else if constexpr (shape == Shape::Time)
        return t;
    else
        return valueOf(node, t);
}

double number(FormulaNode& node, double /*t*/)
{
    return node.value;
}

double time(FormulaNode& /*node*/, double t)
{
    return t;
}

// Out of line, so that a twin that is there already costs nothing of it.
[[gnu::noinline]] double variable(FormulaNode& node, double t)
{
    node.value = fetch(node, static_cast<float>(t));
    node.fetchedIn = formulaEvaluations;
    return node.value;
}

// Another "x" of the same column: fetched once an evaluation, by whichever comes first.
double sharedVariable(FormulaNode& node, double t)
{
    FormulaNode& twin = *node.twin;
    node.value = twin.fetchedIn == formulaEvaluations ? twin.value : variable(twin, t);
    return node.value;
}

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

template <typename Operation, Shape left, Shape right>
double combined(FormulaNode& node, double t)
{
    const double first = operand<left>(node.left, t);
    return Operation::of(node, first, operand<right>(node.right, t));
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

double unarySquareRoot(FormulaNode& node, double t)
{
    return std::sqrt(valueOf(node.right, t));
}

double missingArgument(FormulaNode& /*node*/, double /*t*/)
{
    reportFormulaError(kMissingArgument);
    return 0.0;
}

// A comma that no function adopted, and an "x" of no source.
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
            return node.right->kind == 'n' && node.right->value == 2.0 ? square : power;
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
            return node.twin == nullptr ? withSign<variable>(node) : withSign<sharedVariable>(node);
        default:
            return nothing;
    }
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
    for (FormulaNode* const child : {node.left, node.right})
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
