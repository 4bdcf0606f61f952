#include "formula/BlockFormula.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "core/TSFILE.h"
#include "formula/FormulaOperations.h"
#include "formula/Noise.h"

namespace veltrac {

namespace {

// More rows would not stay near the processor; such formulas are computed sample by sample.
constexpr std::size_t kMostRows = 64;
// A source that is this much finer than the target is read sample by sample.
constexpr std::size_t kMostRun = 4 * BlockFormula::kRun;

// -- Kernels --

template <typename Operation>
bool combine(const BlockStep& step, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        step.out[i] = Operation::of(*step.node, step.left[i], step.right[i]);
    return true;
}

bool divide(const BlockStep& step, std::size_t count)
{
    bool good = true;
    for (std::size_t i = 0; i < count; ++i)
        good = good && step.right[i] != 0.0;
    if (!good)
        return false;
    for (std::size_t i = 0; i < count; ++i)
        step.out[i] = step.left[i] / step.right[i];
    return true;
}

bool raise(const BlockStep& step, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        step.out[i] = std::pow(step.left[i], step.right[i]);
    return true;
}

bool multiplyByItself(const BlockStep& step, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        step.out[i] = step.left[i] * step.left[i];
    return true;
}

bool apply(const BlockStep& step, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        step.out[i] = step.node->unaryFunction(step.left[i]);
    return true;
}

bool takeRoot(const BlockStep& step, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        step.out[i] = std::sqrt(step.left[i]);
    return true;
}

bool negate(const BlockStep& step, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        step.out[i] = -step.left[i];
    return true;
}

BlockStep::Kernel kernelOf(const FormulaNode& node)
{
    switch (node.kind) {
        case '+':
            return combine<Sum>;
        case '-':
            return combine<Difference>;
        case '*':
            return combine<Product>;
        case '/':
            return divide;
        case '^':
            return isSquare(node) ? multiplyByItself : raise;
        case 'f':
            return node.unaryFunction == squareRoot ? takeRoot : apply;
        default:
            return node.binaryFunction == larger    ? combine<Larger>
                   : node.binaryFunction == smaller ? combine<Smaller>
                                                    : combine<Binary>;
    }
}

bool drawsNoise(const FormulaNode& node)
{
    return node.unaryFunction == uniformNoise || node.unaryFunction == normalNoise;
}

}  // namespace

// -- Making --

std::unique_ptr<BlockFormula> BlockFormula::of(const FormulaNode* root, TSFILE& target, std::uint32_t column)
{
    if (root == nullptr)
        return nullptr;
    std::unique_ptr<BlockFormula> formula(new BlockFormula(static_cast<double>(target.dt())));
    formula->m_result = formula->add(*root, target, column);
    return formula->m_result == nullptr || formula->m_rows.size() > kMostRows ? nullptr : std::move(formula);
}

BlockFormula::Row* BlockFormula::newRow()
{
    m_rows.push_back(std::make_unique<Row>());
    return m_rows.back().get();
}

BlockFormula::Row* BlockFormula::rowForResult()
{
    if (m_free.empty()) {
        m_results.push_back(newRow());
        return m_results.back();
    }
    Row* const row = m_free.back();
    m_free.pop_back();
    return row;
}

// Those of constants, times and sources stay.
void BlockFormula::release(const Row* row)
{
    const auto found = std::find(m_results.begin(), m_results.end(), row);
    if (found != m_results.end())
        m_free.push_back(*found);
}

const BlockFormula::Row* BlockFormula::add(const FormulaNode& node, TSFILE& target, std::uint32_t column)
{
    if (isConstant(node))
        return addConstant(node.value);
    if (node.kind == 't')
        return node.sign > 0 ? addTime() : addStep(negate, node, addTime(), nullptr);
    if (node.kind == 'x' && node.source != nullptr) {
        if (node.source == &target && static_cast<std::uint32_t>(node.column) == column && !node.lookup.isOwn)
            return nullptr;
        return node.sign > 0 ? addSource(node) : addStep(negate, node, addSource(node), nullptr);
    }
    if (node.kind == 'x' || node.kind == ',')
        return addConstant(0.0);
    if (node.kind == 'f') {
        const Row* const argument = drawsNoise(node) ? nullptr : add(*node.right, target, column);
        const Row* const value =
            argument == nullptr ? nullptr : addStep(kernelOf(node), node, argument, nullptr);
        return value == nullptr || node.sign > 0 ? value : addStep(negate, node, value, nullptr);
    }
    if (node.left == nullptr || node.right == nullptr)
        return nullptr;
    const Row* const left = add(*node.left, target, column);
    const Row* const right = left == nullptr ? nullptr : add(*node.right, target, column);
    return right == nullptr ? nullptr : addStep(kernelOf(node), node, left, right);
}

const BlockFormula::Row* BlockFormula::addConstant(double value)
{
    Row* const row = newRow();
    row->fill(value);
    return row;
}

const BlockFormula::Row* BlockFormula::addTime()
{
    if (m_times == nullptr)
        m_times = newRow();
    return m_times;
}

const BlockFormula::Row* BlockFormula::addSource(const FormulaNode& node)
{
    const auto found = std::find_if(m_sources.begin(), m_sources.end(), [&node](const Source& source) {
        return source.node->source == node.source && source.node->column == node.column;
    });
    if (found != m_sources.end())
        return found->row;
    m_sources.push_back({&node, newRow()});
    return m_sources.back().row;
}

const BlockFormula::Row* BlockFormula::addStep(BlockStep::Kernel kernel, const FormulaNode& node,
                                               const Row* left, const Row* right)
{
    Row* const out = rowForResult();
    m_steps.push_back({kernel, &node, left->data(), right == nullptr ? nullptr : right->data(), out->data()});
    release(left);
    if (right != left)
        release(right);
    return out;
}

// -- Computing --

void BlockFormula::load(std::uint32_t first, std::size_t count)
{
    for (Source& source : m_sources)
        placeRun(source, first, count);
    // Neighbours of one file come in one pass over its rows.
    std::vector<TSFILE::ColumnRun> together;
    for (std::size_t i = 0; i < m_sources.size(); ++i) {
        Source& source = m_sources[i];
        const auto isAlike = [&source](const Source& other) {
            return other.node->source == source.node->source && other.begin == source.begin &&
                   other.run.size() == source.run.size();
        };
        if (std::any_of(m_sources.begin(), m_sources.begin() + static_cast<std::ptrdiff_t>(i), isAlike))
            continue;
        together.clear();
        for (Source& other : std::span(m_sources).subspan(i))
            if (isAlike(other))
                together.push_back({static_cast<std::uint32_t>(other.node->column), other.run.data()});
        const std::uint32_t begin = source.node->lookup.first + source.begin;
        if (together.size() > 1)
            source.node->source->readColumns(begin, static_cast<std::uint32_t>(source.run.size()), together);
        else
            source.node->source->readColumn(together.front().column, begin, source.run);
    }
}

void BlockFormula::placeRun(Source& source, std::uint32_t first, std::size_t count) const
{
    const SourceLookup& lookup = source.node->lookup;
    const auto last = static_cast<std::uint32_t>(first + count - 1);
    std::uint32_t begin = first - lookup.first;
    std::uint32_t end = begin + static_cast<std::uint32_t>(count);
    if (!lookup.isOwn) {
        const auto [from, to] =
            std::minmax({placeOf(lookup, timeOf(first)).index, placeOf(lookup, timeOf(last)).index});
        begin = from;
        // One more, towards which the last one may be interpolated.
        end = static_cast<std::uint32_t>(std::min<std::uint64_t>(std::uint64_t{to} + 2, lookup.samples));
        if (end - begin > kMostRun)
            end = begin;
    }
    source.begin = begin;
    source.run.resize(end - begin);
}

void BlockFormula::fill(const Source& source, std::uint32_t first, std::size_t count) const
{
    const SourceLookup& lookup = source.node->lookup;
    Row& row = *source.row;
    if (lookup.isOwn) {
        const float* const from = source.run.data() + (first - lookup.first - source.begin);
        for (std::size_t i = 0; i < count; ++i)
            row[i] = static_cast<double>(from[i]);
        return;
    }
    const auto sampleAt = [&](std::uint32_t index) {
        const std::size_t at = index - source.begin;
        return static_cast<double>(
            at < source.run.size()
                ? source.run[at]
                : source.node->source->value(lookup.first + index,
                                             static_cast<std::uint32_t>(source.node->column)));
    };
    for (std::size_t i = 0; i < count; ++i) {
        const Place place = placeOf(lookup, timeOf(first + static_cast<std::uint32_t>(i)));
        row[i] = place.isNowhere ? 0.0 : sampleAt(place.index);
        if (place.fraction != 0.0)
            row[i] = interpolated(row[i], sampleAt(place.index + 1), place.fraction);
    }
}

bool BlockFormula::values(std::uint32_t first, std::span<float> out)
{
    const std::size_t count = out.size();
    for (std::size_t i = 0; m_times != nullptr && i < count; ++i)
        (*m_times)[i] = timeOf(first + static_cast<std::uint32_t>(i));
    for (const Source& source : m_sources)
        fill(source, first, count);
    for (const BlockStep& step : m_steps)
        if (!step.kernel(step, count))
            return false;
    for (std::size_t i = 0; i < count; ++i)
        out[i] = static_cast<float>((*m_result)[i]);
    return true;
}

}  // namespace veltrac
