#include "formula/FormulaReading.h"

#include <algorithm>
#include <cmath>

#include "core/Utf8.h"

namespace veltrac {

namespace {

constexpr std::size_t kShown = 32;        // bytes of a text
constexpr std::size_t kShownAround = 16;  // on either side of the place that matters
constexpr const char* kEllipsis = "\xE2\x80\xA6";

std::string_view trimmed(std::string_view text)
{
    constexpr const char* kBlanks = " \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string beginOf(std::string_view text, std::size_t most)
{
    return text.size() <= most ? std::string(text) : cutTo(text, most) + kEllipsis;
}

std::string endOf(std::string_view text, std::size_t most)
{
    if (text.size() <= most)
        return std::string(text);
    std::size_t from = text.size() - most;
    while (from < text.size() && (static_cast<unsigned char>(text[from]) & 0xC0U) == 0x80U)
        ++from;
    return kEllipsis + std::string(text.substr(from));
}

// A power of an odd whole number is the same with the minus inside and outside.
bool minusMatters(const FormulaNode& power)
{
    return power.left != nullptr && power.left->hasMinus && power.left->kind != 'm' &&
           (power.right == nullptr || power.right->kind != 'n' ||
            std::fabs(std::fmod(power.right->value, 2.0)) != 1.0);
}

}  // namespace

std::string readAs(std::string_view written, std::string_view read)
{
    const std::string_view text = trimmed(written);
    return (text.empty() ? "a blank" : beginOf(text, kShown)) + " was read as " + beginOf(read, kShown);
}

std::string readUpTo(std::string_view formula, std::size_t read, bool lacksOperand)
{
    const std::string_view before = trimmed(formula.substr(0, read));
    const std::string_view rest = trimmed(formula.substr(read));
    if (rest.empty() && !lacksOperand)
        return {};
    const std::string_view ignored = trimmed(formula).substr(before.size());
    const bool isSpaced = before.size() > 1 && before[before.size() - 2] == ' ';
    const std::string taken = endOf(before, kShownAround);
    return taken + beginOf(ignored, kShownAround) + " was read as " + taken +
           (!lacksOperand ? ""
            : isSpaced    ? " 0"
                          : "0");
}

void noteOddities(const FormulaNode& root, std::vector<std::string>& readings)
{
    const auto note = [&readings](const char* text) {
        if (std::find(readings.begin(), readings.end(), text) == readings.end())
            readings.emplace_back(text);
    };
    if (root.kind == ',')  // those of argument lists were taken out when the tree was built
        note("a comma gave 0 (decimals have a point)");
    if (root.kind == 'x' && root.source == nullptr)
        note("an x without a source gave 0");
    if (root.kind == 'm' && root.hasMinus)
        note("the minus before max, min or pow was not read");
    if (root.kind == '^' && minusMatters(root))
        note("-a^b was read as (-a)^b");
    for (const FormulaNode* const child : {root.left.get(), root.right.get()})
        if (child != nullptr)
            noteOddities(*child, readings);
}

}  // namespace veltrac
