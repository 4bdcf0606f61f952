// Words for what the compiler of formulas reads otherwise than a user may have meant. It accepts such texts
// without an error, on purpose; whoever shows a formula shows these words beside it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formula/FormulaNode.h"

namespace veltrac {

// "cosh was read as cos". Long texts are shortened.
std::string readAs(std::string_view written, std::string_view read);

// Of a formula whose reader stopped behind its first `read` bytes, with an operand still to come or not: "2x1
// was read as 2", "x1 + was read as x1 + 0". An empty text where all of it was read.
std::string readUpTo(std::string_view formula, std::size_t read, bool lacksOperand);

// What a whole tree shows, before constants are put together: stray commas, an "x" of no source, a minus that
// binds closer than "^" or is dropped. Each once, behind those in `readings`.
void noteOddities(const FormulaNode& root, std::vector<std::string>& readings);

}  // namespace veltrac
