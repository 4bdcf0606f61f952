// A compiled formula computed for blocks of samples: each operation runs over a row of numbers instead of
// being called once a sample. The values are those of FormulaParser::Evaluate(), bit for bit.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "formula/FormulaNode.h"

namespace veltrac {

// One operation over rows of numbers; false where it divides by zero.
struct BlockStep
{
    using Kernel = bool (*)(const BlockStep& step, std::size_t count);

    Kernel kernel = nullptr;
    const FormulaNode* node = nullptr;
    const double* left = nullptr;
    const double* right = nullptr;
    double* out = nullptr;  // another row than its operands
};

class BlockFormula
{
public:
    // Samples that values() computes at most, and that load() reads at most.
    static constexpr std::size_t kBlock = 256;
    static constexpr std::size_t kRun = std::size_t{1} << 15;

    // Of a tree whose samples can be computed in any order and without a report: none that draws noise, lacks
    // an argument, or reads the target's column, which is being written, elsewhere than at the sample itself.
    // Null for all others and for no tree. Borrows both.
    static std::unique_ptr<BlockFormula> of(const FormulaNode* root, TSFILE& target, std::uint32_t column);

    // Reads what the formula needs for `count` samples of the target from `first` on. Throws what reading
    // throws.
    void load(std::uint32_t first, std::size_t count);

    // The values of out.size() samples from `first` on, among those that were loaded. False, with nothing
    // reported, where one of them divides by zero: they are to be computed one by one then.
    bool values(std::uint32_t first, std::span<float> out);

private:
    using Row = std::array<double, kBlock>;
    // A column that the formula reads.
    struct Source
    {
        const FormulaNode* node;
        Row* row;
        std::vector<float> run{};  // its samples from `begin` on, counted from the oldest, 0
        std::uint32_t begin = 0;
    };

    explicit BlockFormula(double dt) : m_dt(dt) {}
    Row* newRow();
    Row* rowForResult();
    void release(const Row* row);
    // The row in which a node's values will stand; null where it is none for blocks.
    const Row* add(const FormulaNode& node, TSFILE& target, std::uint32_t column);
    const Row* addConstant(double value);
    const Row* addTime();
    const Row* addSource(const FormulaNode& node);
    const Row* addStep(BlockStep::Kernel kernel, const FormulaNode& node, const Row* left, const Row* right);

    double timeOf(std::uint32_t sample) const noexcept { return (sample - 1U) * m_dt; }
    void placeRun(Source& source, std::uint32_t first, std::size_t count) const;
    void fill(const Source& source, std::uint32_t first, std::size_t count) const;

    double m_dt;
    std::vector<std::unique_ptr<Row>> m_rows;
    std::vector<Row*> m_results;  // rows that steps write
    std::vector<Row*> m_free;     // of these, those that no later step needs
    Row* m_times = nullptr;
    std::vector<Source> m_sources;
    std::vector<BlockStep> m_steps;
    const Row* m_result = nullptr;
};

}  // namespace veltrac
