#include "core/HeaderTexts.h"

#include "core/TsHeader.h"
#include "core/Utf8.h"

namespace veltrac {

namespace {

void appendUtf8(std::string& text, unsigned code)
{
    const auto byte = [&](unsigned bits) { text += static_cast<char>(bits); };
    if (code < 0x80) {
        byte(code);
    } else if (code < 0x800) {
        byte(0xC0 | (code >> 6));
        byte(0x80 | (code & 0x3F));
    } else {
        byte(0xE0 | (code >> 12));
        byte(0x80 | ((code >> 6) & 0x3F));
        byte(0x80 | (code & 0x3F));
    }
}

// The shortest forms of RFC 3629; neither surrogates nor anything above U+10FFFF.
bool isValidUtf8(std::string_view bytes) noexcept
{
    for (std::size_t i = 0; i < bytes.size();) {
        const auto first = static_cast<unsigned char>(bytes[i++]);
        if (first < 0x80)
            continue;
        const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
        if (first < 0xC2 || first > 0xF4)
            return false;
        unsigned code = first & (0x3FU >> more);
        for (int k = 0; k < more; ++k) {
            if (i == bytes.size() || (static_cast<unsigned char>(bytes[i]) & 0xC0) != 0x80)
                return false;
            code = (code << 6) | (static_cast<unsigned char>(bytes[i++]) & 0x3FU);
        }
        constexpr unsigned kLeast[] = {0, 0x80, 0x800, 0x10000};
        if (code < kLeast[more] || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000))
            return false;
    }
    return true;
}

}  // namespace

std::string headerUtf8(const char* bytes)
{
    std::string_view raw = bytes == nullptr ? std::string_view() : std::string_view(bytes);
    while (!raw.empty() && static_cast<unsigned char>(raw.back()) <= ' ')
        raw.remove_suffix(1);
    return isValidUtf8(raw) ? std::string(raw) : utf8OfWindows1252(raw);
}

std::string fittingDescription(std::string_view text, std::string_view unit)
{
    const std::string bracket =
        unit.empty() ? "" : cutTo(" [" + std::string(unit) + "]", kColumnDescription.width);
    return cutTo(text, kColumnDescription.width - bracket.size()) + bracket;
}

}  // namespace veltrac
