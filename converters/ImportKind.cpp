#include "converters/ImportKind.h"

#include <algorithm>
#include <exception>

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

bool isDigits(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

// "-0,245" below each other: one column with a decimal comma, which reads as two columns of whole numbers.
bool isDecimalComma(const STLSample& sample, const STLFormat& format)
{
    if (format.columns.size() != 2 || format.cells.separator != ',' || format.namesLine != 0)
        return false;
    bool leadingZero = false;
    std::vector<std::string_view> cells;
    for (const STLLine& line : sample.lines) {
        if (line.number < format.firstDataLine || isRemark(line.text, format))
            continue;
        if (splitCells(line.text, ',', cells) != 2 || !isDigits(cells[1]))
            return false;
        leadingZero = leadingZero || (cells[1].size() > 1 && cells[1].front() == '0') || cells[0] == "-0";
    }
    return leadingZero;
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
    const bool single =
        format.columns.size() == 1 || hasExtension(file, ".scl") || isDecimalComma(sample, format);
    return single && isSingleColumn(file) ? ImportKind::Scl : ImportKind::Stl;
} catch (const std::exception&) {
    return ImportKind::None;
}

}  // namespace veltrac
