#include "converters/ImportKind.h"

#include <algorithm>
#include <exception>
#include <vector>

#include "converters/SCLSource.h"
#include "converters/STLDetect.h"
#include "converters/STLFormat.h"
#include "converters/STLSample.h"
#include "converters/TsaText.h"
#include "core/Characters.h"

namespace veltrac {

namespace {

constexpr std::uint64_t kTellingBytes = 1U << 24;

bool hasExtension(const std::filesystem::path& file, std::string_view wanted)
{
    return lowered(file.extension().string()) == wanted;
}

// The keys that no tsa text lacks: its counts.
bool isTsa(const STLSample& sample)
{
    bool samples = false;
    bool columns = false;
    for (const STLLine& line : sample.head) {
        const auto key = parseTsaKey(line.text);
        samples = samples || (key && key->key == 'S' && key->number == 0 && tsaCount(key->value) > 0);
        columns = columns || (key && key->key == 'C' && key->number == 0 && tsaCount(key->value) > 0);
    }
    return samples && columns;
}

// The part of a number before a decimal comma, and the part behind it, which may end in an exponent.
bool isWhole(std::string_view text)
{
    text.remove_prefix(text.starts_with('-') || text.starts_with('+') ? 1 : 0);
    return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

bool isFraction(std::string_view text)
{
    const std::size_t digits = std::min(text.find_first_of("eE"), text.size());
    return isWhole(text.substr(0, digits)) && isDigit(text.front()) &&
           (digits == text.size() || isWhole(text.substr(digits + 1)));
}

// "-0,245" below each other: one column with a decimal comma, which reads as two columns of whole numbers.
// Zeros behind the comma and a sign of zero tell it; exponents and numbers without a comma do, where those
// before the comma do not count the rows.
bool isDecimalComma(const STLSample& sample, const STLFormat& format)
{
    constexpr std::size_t kAlone = 2;  // one may be the last line, cut short
    if (format.columns.size() != 2 || format.cells.separator != ',')
        return false;
    bool zeros = false;
    bool exponents = false;
    std::size_t alone = 0;
    std::vector<double> wholes;
    std::vector<std::string_view> cells;
    for (const STLLine& line : sample.lines) {
        const std::size_t count = splitCells(line.text, ',', cells);
        if (line.number == format.namesLine && count > 1)
            return false;
        if (line.number < format.firstDataLine || isRemark(line.text, format))
            continue;
        const bool isNumber = isWhole(cells[0]);
        if (count == 1 && (isNumber || isMissing(cells[0], format.cells)))
            ++alone;
        else if (count != 2 || !isNumber || !isFraction(cells[1]))
            return false;
        if (isNumber)
            wholes.push_back(readNumber(cells[0], format.cells).value_or(0.0));
        if (count == 1)
            continue;
        zeros = zeros || (cells[1].size() > 1 && cells[1].front() == '0') || cells[0] == "-0";
        exponents = exponents || !isWhole(cells[1]);
    }
    const bool countsRows = std::adjacent_find(wholes.begin(), wholes.end(), [](double a, double b) {
                                return b - a != 1.0;
                            }) == wholes.end();
    return zeros || (!countsRows && (exponents || alone >= kAlone));
}

bool isSingleColumn(const std::filesystem::path& file)
try {
    const SCLSource source = detectSource(file, 0);
    return !source.inTurn;
} catch (const STLError&) {
    return false;
}

}  // namespace

ImportKind importKindOf(const std::filesystem::path& file) noexcept
try {
    const PlainText text = PlainText::beginningOf(file, kTellingBytes);
    const STLSample sample = readSample(text.path());
    if (hasExtension(file, ".tsa") || isTsa(sample))
        return ImportKind::Tsa;
    const STLFormat format = detectFormat(text);
    // Signs between thousands are read in columns alone.
    const bool single = hasExtension(file, ".scl") || isDecimalComma(sample, format) ||
                        (format.columns.size() == 1 && format.cells.grouping == 0);
    return single && isSingleColumn(file) ? ImportKind::Scl : ImportKind::Stl;
} catch (const std::exception&) {
    return ImportKind::None;
}

}  // namespace veltrac
