#include "formula/FormulaParser.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

#include "core/TSFILE.h"
#include "formula/FormulaEvaluation.h"
#include "formula/FormulaFunctions.h"

using namespace veltrac;

namespace {

enum Code : std::int32_t {
    kNoError = 0,
    kNoFormula = 1,
    kOperatorExpected = 2,
    kOperandExpected = 3,
    kMismatched = 4,
    kInvalidFunction = 8,
    kNotASource = 9,
    kUnknown = 12
};

// Codes 5, 6, 7, 10 and 11 are raised no more; their texts keep the table's numbers.
constexpr const char* kErrorTexts[] = {
    "",
    "No formula to compile",
    "Operator expected at position %d",
    "Operand expected at position %d",
    "Mismatched '(' or ')'",
    "Mathematical error: Illegal floating point number",
    "Error in variable identifier",
    "Variable does not exist",
    "Invalid mathematical function expression",
    "Variable at position %d is not a source",
    "Invalid x-variable notation",
    "This function is not available in this version",
    "Unknown error, most likely a misspelled math function.",
};

constexpr double kPi = 3.141592653589793;
constexpr std::int32_t kGroupPriority = 100;
// Beyond these a formula is no formula, and its tree would not fit on the stack.
constexpr std::int32_t kDeepestGroup = 1000;
constexpr std::int32_t kMostNodes = 10000;

bool isBlank(char c)
{
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool endsWord(char c)
{
    return c == '\0' || isBlank(c) || std::strchr("+-*/^,)", c) != nullptr;
}

SourceLookup lookupOf(TSFILE& source)
{
    SourceLookup lookup;
    lookup.samples = source.samples();
    lookup.start = source.startTime();
    lookup.rate = 1.0 / static_cast<double>(source.dt());
    lookup.lastPosition = static_cast<double>(lookup.samples) - 1.0;
    lookup.grain = static_cast<double>(std::numeric_limits<float>::epsilon()) * lookup.rate;
    return lookup;
}

}  // namespace

const char* veltrac::errorText(std::int32_t code, std::int32_t position)
{
    static char buffer[128];
    const bool known = code > 0 && code < static_cast<std::int32_t>(std::size(kErrorTexts));
    if (!known || std::strchr(kErrorTexts[code], '%') == nullptr)
        return known ? kErrorTexts[code] : "";
    std::snprintf(buffer, sizeof buffer, kErrorTexts[code], static_cast<int>(position));
    return buffer;
}

FormulaParser::FormulaParser(const char* text)
    : m_errorCode(kNoFormula), m_cursor(text != nullptr ? text : ""), m_text(m_cursor)
{
}

FormulaParser::~FormulaParser()
{
    freeTree(m_root);
}

void FormulaParser::SetSource(TSFILE* source, std::int32_t column, int k)
{
    if (k < 1 || k > kSources)
        return;
    m_sources[static_cast<std::size_t>(k - 1)] = source;
    m_sourceColumns[static_cast<std::size_t>(k - 1)] = column;
}

std::int32_t FormulaParser::errorPosition() const noexcept
{
    // Two less than the characters read, on purpose: it points before the operator, as the help explains.
    return m_errorCode == kNotASource ? m_position - 2 : m_position;
}

void FormulaParser::ReportError() const
{
    if (m_errorCode != kNoError)
        reportFormulaError(errorText(m_errorCode, errorPosition()));
}

// -- Compiling --

int FormulaParser::Compile()
{
    if (*m_text == '\0') {
        m_errorCode = kNoFormula;
        return 1;
    }
    m_errorCode = kNoError;
    m_depth = m_position = m_nodes = 0;
    m_cursor = m_text;
    freeTree(m_root);
    m_root = nullptr;

    parseExpression(m_root);
    m_root = topOf(m_root);
    if (m_errorCode == kNoError && m_depth != 0)
        m_errorCode = kMismatched;
    if (m_errorCode != kNoError) {
        freeTree(m_root);
        m_root = nullptr;
    }
    if (m_root != nullptr)
        prepareTree(*m_root);
    return 0;
}

// expression = token { token }; a group's parser ends at its ")".
bool FormulaParser::parseExpression(FormulaNode*& slot)
{
    m_expectOperand = true;
    if (!readToken(slot)) {
        if (slot != nullptr)
            m_errorCode = kUnknown;
        return false;
    }
    FormulaNode* current = slot;
    for (;;) {
        FormulaNode* token = nullptr;
        if (!readToken(token)) {
            freeTree(topOf(token));
            return m_errorCode == kNoError;
        }
        insert(current, token);
    }
}

namespace {

bool hasComma(const FormulaNode* node)
{
    return node != nullptr && (node->kind == ',' || hasComma(node->left) || hasComma(node->right));
}

}  // namespace

// Those of argument lists were taken out of the tree when it was built.
bool FormulaParser::hasStrayComma() const noexcept
{
    return hasComma(m_root);
}

void FormulaParser::insert(FormulaNode*& current, FormulaNode* token)
{
    const bool argumentList = token->kind == ',' && token->priority == kGroupPriority;
    if (current->kind == 'm' && argumentList) {
        current->left = token->left;
        current->right = token->right;
        for (FormulaNode* const argument : {current->left, current->right})
            if (argument != nullptr)
                argument->parent = current;
        delete token;
        return;
    }
    if (token->priority <= current->priority) {
        while (current->parent != nullptr && token->priority <= current->parent->priority) {
            // "^" binds to the right, all others to the left.
            if (token->priority == current->parent->priority && token->kind == '^')
                break;
            current = current->parent;
        }
        if (current->parent != nullptr) {
            token->parent = current->parent;
            current->parent->right = token;
        }
        current->parent = token;
        token->left = current;
    } else {
        current->right = token;
        token->parent = current;
    }
    current = token;
}

bool FormulaParser::readToken(FormulaNode*& slot)
{
    while (*m_cursor != '\0' && isBlank(*m_cursor))
        consume(1);
    if (m_nodes > kMostNodes) {
        m_errorCode = kUnknown;
        return false;
    }
    if (*m_cursor == '(')
        return readGroup(slot);
    return m_expectOperand ? readOperand(slot) : readOperator(slot);
}

bool FormulaParser::readGroup(FormulaNode*& slot)
{
    if (!m_expectOperand) {
        m_errorCode = kOperatorExpected;
        return false;
    }
    if (m_depth >= kDeepestGroup) {
        m_errorCode = kMismatched;
        return false;
    }
    consume(1);
    ++m_depth;
    if (!parseExpression(slot))
        return false;
    slot = topOf(slot);
    slot->priority = kGroupPriority;
    return true;
}

// What is no operator ends the parse without an error, on purpose: "2x1" is 2.
bool FormulaParser::readOperator(FormulaNode*& slot)
{
    const char c = *m_cursor;
    if (c == '\0' || std::strchr("+-*/^),", c) == nullptr)
        return false;
    consume(1);
    if (c == ')') {
        --m_depth;
        return false;
    }
    slot = makeNode(c);
    m_expectOperand = true;
    return true;
}

bool FormulaParser::readOperand(FormulaNode*& slot)
{
    using Reader = Outcome (FormulaParser::*)(FormulaNode*&);
    static constexpr Reader kReaders[] = {&FormulaParser::readNumber, &FormulaParser::readSource,
                                          &FormulaParser::readTime,   &FormulaParser::readPi,
                                          &FormulaParser::readUnary,  &FormulaParser::readBinary};
    for (const Reader reader : kReaders) {
        const Outcome outcome = (this->*reader)(slot);
        if (outcome != Outcome::Declined)
            return outcome == Outcome::Accepted;
    }
    return false;
}

// -- Operands; a leading "-" belongs to them --

FormulaNode* FormulaParser::makeNode(char kind)
{
    auto* const node = new FormulaNode;
    node->kind = kind;
    node->priority = priorityOf(kind);
    ++m_nodes;
    return node;
}

bool FormulaParser::isNegated() const
{
    return *m_cursor == '-';
}

void FormulaParser::consume(int count)
{
    m_cursor += count;
    m_position += count;
}

FormulaParser::Outcome FormulaParser::fail(std::int32_t code)
{
    m_errorCode = code;
    return Outcome::Failed;
}

// number = ["-"] digits ["." digits] ["e" ["-"] ["+"] digits]
FormulaParser::Outcome FormulaParser::readNumber(FormulaNode*& slot)
{
    const bool negative = isNegated();
    const char first = m_cursor[negative ? 1 : 0];
    if (!isDigit(first) && first != '.')
        return Outcome::Declined;
    consume(negative ? 1 : 0);

    int digits = 0;
    double value = readDigits(digits);
    if (*m_cursor == '.') {
        consume(1);
        double place = 0.1;
        for (; isDigit(*m_cursor); consume(1), ++digits) {
            value += (*m_cursor - '0') * place;
            place /= 10.0;
        }
    }
    if (digits == 0 || !readExponent(value))
        return fail(kOperandExpected);
    slot = makeNode('n');
    slot->value = negative ? -value : value;
    m_expectOperand = false;
    return Outcome::Accepted;
}

double FormulaParser::readDigits(int& count)
{
    double value = 0.0;
    for (; isDigit(*m_cursor); consume(1), ++count)
        value = value * 10.0 + (*m_cursor - '0');
    return value;
}

bool FormulaParser::readExponent(double& value)
{
    if (*m_cursor != 'e' && *m_cursor != 'E')
        return true;
    consume(1);
    const bool negative = *m_cursor == '-';
    consume(negative ? 1 : 0);
    consume(*m_cursor == '+' ? 1 : 0);
    int digits = 0;
    const double exponent = std::min(readDigits(digits), static_cast<double>(INT_MAX));
    if (digits == 0)
        return false;
    value *= std::pow(10.0, negative ? -exponent : exponent);
    return true;
}

FormulaParser::Outcome FormulaParser::readSource(FormulaNode*& slot)
{
    const bool negative = isNegated();
    const char letter = m_cursor[negative ? 1 : 0];
    if (letter != 'x' && letter != 'X')
        return Outcome::Declined;
    consume(negative ? 2 : 1);

    TSFILE* source = nullptr;
    std::int32_t column = 0;
    if (*m_cursor >= '1' && *m_cursor <= '8') {
        const auto k = static_cast<std::size_t>(*m_cursor - '1');
        // x1 is taken without any check: it is the target where nothing else was chosen.
        if (k > 0 && m_sources[k] == nullptr)
            return fail(kNotASource);
        source = m_sources[k];
        column = m_sourceColumns[k];
        consume(1);
    }
    const SourceLookup lookup = source == nullptr ? SourceLookup() : lookupOf(*source);
    slot = makeNode('x');
    slot->sign = negative ? -1 : 1;
    slot->source = source;
    slot->column = column;
    slot->lookup = lookup;
    m_expectOperand = false;
    return Outcome::Accepted;
}

FormulaParser::Outcome FormulaParser::readTime(FormulaNode*& slot)
{
    const bool negative = isNegated();
    const char* const at = m_cursor + (negative ? 1 : 0);
    if ((*at != 't' && *at != 'T') || !endsWord(at[1]))
        return Outcome::Declined;
    consume(negative ? 2 : 1);
    slot = makeNode('t');
    slot->sign = negative ? -1 : 1;
    m_expectOperand = false;
    return Outcome::Accepted;
}

FormulaParser::Outcome FormulaParser::readPi(FormulaNode*& slot)
{
    const bool negative = isNegated();
    const char* const at = m_cursor + (negative ? 1 : 0);
    if ((*at != 'p' && *at != 'P') || (at[1] != 'i' && at[1] != 'I') || !endsWord(at[2]))
        return Outcome::Declined;
    consume(negative ? 3 : 2);
    slot = makeNode('p');
    slot->value = negative ? -kPi : kPi;
    m_expectOperand = false;
    return Outcome::Accepted;
}

FormulaParser::Outcome FormulaParser::readUnary(FormulaNode*& slot)
{
    const UnaryEntry* const entry = unaryAt(m_cursor + (isNegated() ? 1 : 0));
    if (entry == nullptr)
        return Outcome::Declined;
    FormulaNode* const node = makeNode('f');
    node->unaryFunction = entry->function;
    return skipToGroup(node, slot);
}

FormulaParser::Outcome FormulaParser::readBinary(FormulaNode*& slot)
{
    const BinaryEntry* const entry = binaryAt(m_cursor + (isNegated() ? 1 : 0));
    if (entry == nullptr)
        return Outcome::Declined;
    FormulaNode* const node = makeNode('m');
    node->binaryFunction = entry->function;
    return skipToGroup(node, slot);
}

// Whatever stands between a function's name and its "(" is passed over.
FormulaParser::Outcome FormulaParser::skipToGroup(FormulaNode* node, FormulaNode*& slot)
{
    node->sign = isNegated() ? -1 : 1;
    while (*m_cursor != '\0' && *m_cursor != '(')
        consume(1);
    if (*m_cursor == '\0') {
        delete node;
        return fail(kInvalidFunction);
    }
    slot = node;
    m_expectOperand = true;
    return Outcome::Accepted;
}

// -- Evaluating --

double FormulaParser::Evaluate(std::int32_t /*sample*/, double t)
{
    // No formula with an error keeps its tree.
    return m_root == nullptr ? 0.0 : evaluateTree(*m_root, t);
}
