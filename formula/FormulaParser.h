// Compiles the right-hand side of a formula, such as "sqrt(x1^2+x2^2)", and evaluates it sample by sample.
//
// Operands are numbers, pi, the time t in seconds and the columns x1 to x8 of open ts-files. The scanner
// reads a token at a time and inserts it into a binary tree by climbing over parent links. What it accepts is
// a contract with the formulas that users keep, its oddities included; docs and help say them plainly.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "formula/FormulaNode.h"

class FormulaParser
{
public:
    // The text is borrowed and ends with NUL; null counts as an empty one.
    explicit FormulaParser(const char* text);
    ~FormulaParser();
    FormulaParser(const FormulaParser&) = delete;
    FormulaParser& operator=(const FormulaParser&) = delete;

    // Source x1 to x8: an open file, borrowed, and one of its columns. Any other k is ignored.
    void SetSource(TSFILE* source, std::int32_t column, int k);
    // The file whose samples are computed, borrowed; null, as at first: none. With a target a source is
    // looked up at the time since its own start, t + the target's start - its start, and a source of the
    // target's own file at the very sample that is computed. Without one t is the time on the scale of each
    // source's start.
    void setTarget(TSFILE* target) noexcept { m_target = target; }

    // Builds the tree; ErrorCode() tells the outcome. Returns 1 for an empty formula, else 0. Throws what
    // reading the headers of the sources throws.
    int Compile();

    // 0: no error, 1 to 12: errorText(). 1 before any Compile().
    std::int32_t ErrorCode() const noexcept { return m_errorCode; }
    // Characters read when an error was found, as its text tells it.
    std::int32_t errorPosition() const noexcept;
    // Reports the text of the code (core/ErrorReport.h); nothing for code 0.
    void ReportError() const;

    // What the compiler accepts without an error and the user may not have meant, each in words: "2x1 was
    // read as 2"; after Compile(), code 0.
    std::vector<std::string> readings() const;
    // The compiled tree, ready to be evaluated; null where there is none.
    FormulaNode* root() const noexcept { return m_root.get(); }

    // The value for a sample at time t, seconds; 0.0 where nothing is compiled. Reports a division by zero
    // and a missing argument each time (core/ErrorReport.h); they yield 0.0. Throws what reading a source
    // throws. Allocates nothing.
    double Evaluate(std::int32_t sample, double t);

private:
    static constexpr int kSources = 8;
    // Owns the tree that is being read.
    using Slot = std::unique_ptr<FormulaNode>;

    bool parseExpression(Slot& top);
    void insert(Slot& top, FormulaNode*& current, Slot token);
    bool readToken(Slot& slot);
    bool readGroup(Slot& slot);
    bool readOperator(Slot& slot);
    bool readOperand(Slot& slot);

    // What an operand reader has come to.
    enum class Outcome { Declined, Accepted, Failed };
    Outcome readNumber(Slot& slot);
    Outcome readSource(Slot& slot);
    Outcome readTime(Slot& slot);
    Outcome readPi(Slot& slot);
    Outcome readUnary(Slot& slot);
    Outcome readBinary(Slot& slot);

    double readDigits(int& count);
    bool readExponent(double& value);
    Outcome skipToGroup(Slot node, const char* name, Slot& slot);
    Slot makeNode(char kind);
    bool isNegated() const;
    void consume(int count);
    Outcome fail(std::int32_t code);

    std::array<TSFILE*, kSources> m_sources{};
    std::array<std::int32_t, kSources> m_sourceColumns{};
    bool m_expectOperand = true;
    Slot m_root;
    std::int32_t m_errorCode;
    const char* m_cursor;
    std::int32_t m_depth = 0;
    const char* m_text;
    std::int32_t m_position = 0;
    std::int32_t m_nodes = 0;  // made so far
    TSFILE* m_target = nullptr;
    std::vector<std::string> m_readings;  // of functions and of the tree
};

namespace veltrac {

// The text of an error code with the position filled in; an empty one for code 0.
const char* errorText(std::int32_t code, std::int32_t position);

}  // namespace veltrac
