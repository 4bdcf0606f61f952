// Compiles the right-hand side of a formula, such as "sqrt(x1^2+x2^2)", and evaluates it sample by sample.
//
// Operands are numbers, pi, the time t in seconds and the columns x1 to x8 of open ts-files. The scanner
// reads a token at a time and inserts it into a binary tree by climbing over parent links. What it accepts is
// a contract with the formulas that users keep, its oddities included; docs and help say them plainly.
#pragma once

#include <array>
#include <cstdint>

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

    // Builds the tree; ErrorCode() tells the outcome. Returns 1 for an empty formula, else 0. Throws what
    // reading the headers of the sources throws.
    int Compile();

    // 0: no error, 1 to 12: errorText(). 1 before any Compile().
    std::int32_t ErrorCode() const noexcept { return m_errorCode; }
    // Characters read when an error was found, as its text tells it.
    std::int32_t errorPosition() const noexcept;
    // Shows the text of the code through TsApplication; nothing for code 0 or without an application.
    void ReportError() const;

    // What the compiler accepts without an error and the user may not have meant; after Compile(), code 0.
    // Nothing was understood: the value is 0.
    bool isNothing() const noexcept { return m_root == nullptr; }
    // What stands behind the formula's end, perhaps blanks, and the characters read before it.
    const char* ignoredText() const noexcept { return m_cursor; }
    std::int32_t position() const noexcept { return m_position; }
    // The formula ends where an operand is expected.
    bool lacksOperand() const noexcept { return m_expectOperand; }
    // A comma is no list of two arguments, as in 2,5 for 2.5: it is 0.
    bool hasStrayComma() const noexcept;

    // The value for a sample at time t, seconds; 0.0 where nothing is compiled. Reports a division by zero
    // and a missing argument each time through TsApplication; they yield 0.0. Throws what reading a source
    // throws. Allocates nothing.
    double Evaluate(std::int32_t sample, double t);

private:
    static constexpr int kSources = 8;

    bool parseExpression(FormulaNode*& slot);
    void insert(FormulaNode*& current, FormulaNode* token);
    bool readToken(FormulaNode*& slot);
    bool readGroup(FormulaNode*& slot);
    bool readOperator(FormulaNode*& slot);
    bool readOperand(FormulaNode*& slot);

    // What an operand reader has come to.
    enum class Outcome { Declined, Accepted, Failed };
    Outcome readNumber(FormulaNode*& slot);
    Outcome readSource(FormulaNode*& slot);
    Outcome readTime(FormulaNode*& slot);
    Outcome readPi(FormulaNode*& slot);
    Outcome readUnary(FormulaNode*& slot);
    Outcome readBinary(FormulaNode*& slot);

    double readDigits(int& count);
    bool readExponent(double& value);
    Outcome skipToGroup(FormulaNode* node, FormulaNode*& slot);
    FormulaNode* makeNode(char kind);
    bool isNegated() const;
    void consume(int count);
    Outcome fail(std::int32_t code);

    std::array<TSFILE*, kSources> m_sources{};
    std::array<std::int32_t, kSources> m_sourceColumns{};
    bool m_expectOperand = true;
    FormulaNode* m_root = nullptr;
    std::int32_t m_errorCode;
    const char* m_cursor;
    std::int32_t m_depth = 0;
    const char* m_text;
    std::int32_t m_position = 0;
    std::int32_t m_nodes = 0;  // made so far
};

namespace veltrac {

// The text of an error code with the position filled in; an empty one for code 0.
const char* errorText(std::int32_t code, std::int32_t position);

}  // namespace veltrac
