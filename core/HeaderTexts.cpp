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

std::string utf8OfWindows1252(std::string_view bytes)
{
    // What stands at 0x80 to 0x9F; '?' where nothing does.
    static constexpr char16_t kSpecial[32] = {0x20AC, '?',    0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                              0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, '?',    0x017D, '?',
                                              '?',    0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                              0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, '?',    0x017E, 0x0178};
    std::string text;
    for (const char raw : bytes) {
        const auto c = static_cast<unsigned char>(raw);
        appendUtf8(text, c >= 0x80 && c < 0xA0 ? kSpecial[c - 0x80] : c);
    }
    return text;
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
