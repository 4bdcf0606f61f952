#include "formula/FormulaNode.h"

#include <algorithm>
#include <iterator>

using namespace veltrac;

namespace {

struct Priority
{
    char kind;
    std::int32_t priority;
};

constexpr Priority kPriorities[] = {
    {',', 15}, {'+', 20}, {'-', 20},  {'*', 50},  {'/', 50},  {'^', 70},
    {'f', 80}, {'m', 80}, {'n', 100}, {'p', 100}, {'t', 100}, {'x', 100},
};

}  // namespace

std::int32_t veltrac::priorityOf(char kind)
{
    const auto* const found = std::find_if(std::begin(kPriorities), std::end(kPriorities),
                                           [&](const Priority& row) { return row.kind == kind; });
    return found == std::end(kPriorities) ? -1 : found->priority;
}
