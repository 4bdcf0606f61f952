#include "converters/TextKind.h"

#include <string_view>

#include "converters/STLDetect.h"
#include "converters/TsaText.h"
#include "core/LineReader.h"

namespace veltrac {

namespace {

constexpr int kMostHeadLines = 200;

// A remark of a log may begin with '%' too, but hardly with one of the keys as a word.
bool beginsWithTsaKey(const std::filesystem::path& file)
{
    LineReader lines(file, kTsaHeaderWidth);
    for (int i = 0; i < kMostHeadLines && lines.next(); ++i) {
        const TsaLine kind = tsaLineKind(lines.text());
        if (kind == TsaLine::Data)
            return false;
        const auto key = kind == TsaLine::Header ? parseTsaKey(lines.text()) : std::nullopt;
        if (key && std::string_view("SCDUINT").find(key->key) != std::string_view::npos)
            return true;
    }
    return false;
}

}  // namespace

TextKind textKind(const std::filesystem::path& file)
{
    if (beginsWithTsaKey(file))
        return TextKind::Tsa;
    try {
        return detectFormat(file).columns.size() == 1 ? TextKind::SingleColumn : TextKind::Table;
    } catch (const STLError&) {
        return TextKind::Table;  // its window says what is wrong with it
    }
}

}  // namespace veltrac
