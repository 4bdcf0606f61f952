#include "formula/FormulaParser.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <numbers>
#include <string_view>
#include <utility>

#include "core/Characters.h"
#include "formula/FormulaEvaluation.h"
#include "formula/FormulaFunctions.h"
#include "formula/FormulaReading.h"

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

constexpr std::int32_t kGroupPriority = 100;
// Beyond these a formula is no formula, and its tree would not fit on the stack.
constexpr std::int32_t kDeepestGroup = 1000;
constexpr std::int32_t kMostNodes = 10000;

bool isBlank(char c)
{
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

bool endsWord(char c)
{
    return c == '\0' || isBlank(c) || std::strchr("+-*/^,)", c) != nullptr;
}

}  // namespace

const char* veltrac::errorText(std::int32_t code, std::int32_t position)
{
    static thread_local char buffer[128];
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

FormulaParser::~FormulaParser() = default;

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
    m_root.reset();
    m_readings.clear();

    parseExpression(m_root);
    if (m_errorCode == kNoError && m_depth != 0)
        m_errorCode = kMismatched;
    if (m_errorCode != kNoError)
        m_root.reset();
    if (m_root != nullptr) {
        noteOddities(*m_root, m_readings);
        prepareTree(*m_root);
    }
    return 0;
}

// expression = token { token }; a group's parser ends at its ")".
bool FormulaParser::parseExpression(Slot& top)
{
    m_expectOperand = true;
    if (!readToken(top)) {
        if (top != nullptr)
            m_errorCode = kUnknown;
        return false;
    }
    FormulaNode* current = top.get();
    for (;;) {
        Slot token;
        if (!readToken(token))
            return m_errorCode == kNoError;
        insert(top, current, std::move(token));
    }
}

void FormulaParser::insert(Slot& top, FormulaNode*& current, Slot token)
{
    const bool argumentList = token->kind == ',' && token->priority == kGroupPriority;
    if (current->kind == 'm' && argumentList) {
        current->left = std::move(token->left);
        current->right = std::move(token->right);
        for (FormulaNode* const argument : {current->left.get(), current->right.get()})
            if (argument != nullptr)
                argument->parent = current;
        return;
    }
    FormulaNode* const inserted = token.get();
    if (token->priority <= current->priority) {
        while (current->parent != nullptr && token->priority <= current->parent->priority) {
            // "^" binds to the right, all others to the left.
            if (token->priority == current->parent->priority && token->kind == '^')
                break;
            current = current->parent;
        }
        // The token takes the place of what has been read so far, and that goes below it.
        Slot& place = current->parent == nullptr ? top : current->parent->right;
        token->parent = current->parent;
        current->parent = inserted;
        token->left = std::move(place);
        place = std::move(token);
    } else {
        token->parent = current;
        current->right = std::move(token);
    }
    current = inserted;
}

bool FormulaParser::readToken(Slot& slot)
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

bool FormulaParser::readGroup(Slot& slot)
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
    slot->priority = kGroupPriority;
    slot->hasMinus = false;
    return true;
}

// What is no operator ends the parse without an error, on purpose: "2x1" is 2.
bool FormulaParser::readOperator(Slot& slot)
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

bool FormulaParser::readOperand(Slot& slot)
{
    using Reader = Outcome (FormulaParser::*)(Slot&);
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

FormulaParser::Slot FormulaParser::makeNode(char kind)
{
    auto node = std::make_unique<FormulaNode>();
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
FormulaParser::Outcome FormulaParser::readNumber(Slot& slot)
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
    slot->hasMinus = negative;
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

FormulaParser::Outcome FormulaParser::readSource(Slot& slot)
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
    const SourceLookup lookup = source == nullptr ? SourceLookup() : lookupOf(*source, m_target);
    slot = makeNode('x');
    slot->sign = negative ? -1 : 1;
    slot->hasMinus = negative;
    slot->source = source;
    slot->column = column;
    slot->lookup = lookup;
    m_expectOperand = false;
    return Outcome::Accepted;
}

FormulaParser::Outcome FormulaParser::readTime(Slot& slot)
{
    const bool negative = isNegated();
    const char* const at = m_cursor + (negative ? 1 : 0);
    if ((*at != 't' && *at != 'T') || !endsWord(at[1]))
        return Outcome::Declined;
    consume(negative ? 2 : 1);
    slot = makeNode('t');
    slot->sign = negative ? -1 : 1;
    slot->hasMinus = negative;
    m_expectOperand = false;
    return Outcome::Accepted;
}

FormulaParser::Outcome FormulaParser::readPi(Slot& slot)
{
    const bool negative = isNegated();
    const char* const at = m_cursor + (negative ? 1 : 0);
    if ((*at != 'p' && *at != 'P') || (at[1] != 'i' && at[1] != 'I') || !endsWord(at[2]))
        return Outcome::Declined;
    consume(negative ? 3 : 2);
    slot = makeNode('p');
    slot->value = negative ? -std::numbers::pi : std::numbers::pi;
    slot->hasMinus = negative;
    m_expectOperand = false;
    return Outcome::Accepted;
}

FormulaParser::Outcome FormulaParser::readUnary(Slot& slot)
{
    const UnaryEntry* const entry = unaryAt(m_cursor + (isNegated() ? 1 : 0));
    if (entry == nullptr)
        return Outcome::Declined;
    Slot node = makeNode('f');
    node->unaryFunction = entry->function;
    return skipToGroup(std::move(node), entry->name, slot);
}

FormulaParser::Outcome FormulaParser::readBinary(Slot& slot)
{
    const BinaryEntry* const entry = binaryAt(m_cursor + (isNegated() ? 1 : 0));
    if (entry == nullptr)
        return Outcome::Declined;
    Slot node = makeNode('m');
    node->binaryFunction = entry->function;
    return skipToGroup(std::move(node), entry->name, slot);
}

// Whatever stands between a function's name and its "(" is passed over.
FormulaParser::Outcome FormulaParser::skipToGroup(Slot node, const char* name, Slot& slot)
{
    node->hasMinus = isNegated();
    node->sign = node->hasMinus ? -1 : 1;
    const char* const begin = m_cursor + (node->hasMinus ? 1 : 0);
    while (*m_cursor != '\0' && *m_cursor != '(')
        consume(1);
    if (*m_cursor == '\0')
        return fail(kInvalidFunction);
    std::string_view written(begin, static_cast<std::size_t>(m_cursor - begin));
    while (isBlank(written.back()))
        written.remove_suffix(1);
    if (written != name)
        m_readings.push_back(readAs(written, name));
    slot = std::move(node);
    m_expectOperand = true;
    return Outcome::Accepted;
}

std::vector<std::string> FormulaParser::readings() const
{
    if (m_errorCode != kNoError)
        return {};
    if (m_root == nullptr)
        return {readAs(m_text, "0")};
    std::vector<std::string> all;
    std::string end = readUpTo(m_text, static_cast<std::size_t>(m_cursor - m_text), m_expectOperand);
    if (!end.empty())
        all.push_back(std::move(end));
    all.insert(all.end(), m_readings.begin(), m_readings.end());
    return all;
}

// -- Evaluating --

double FormulaParser::Evaluate(std::int32_t sample, double t)
{
    // No formula with an error keeps its tree.
    return m_root == nullptr ? 0.0 : evaluateTree(*m_root, {t, static_cast<std::uint32_t>(sample)});
}
