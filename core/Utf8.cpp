#include "core/Utf8.h"

namespace veltrac {

std::size_t wholeCharacters(std::string_view text, std::size_t most) noexcept
{
    if (text.size() <= most)
        return text.size();
    // Back to the first byte of the character that does not fit.
    while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0U) == 0x80U)
        --most;
    return most;
}

std::string cutTo(std::string_view text, std::size_t most)
{
    return std::string(text.substr(0, wholeCharacters(text, most)));
}

bool isUtf8(std::string_view bytes) noexcept
{
    const auto at = [bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const unsigned lead = at(i);
        if (lead < 0x80U)
            continue;
        const std::size_t more = lead < 0xC2U   ? 0
                                 : lead < 0xE0U ? 1
                                 : lead < 0xF0U ? 2
                                 : lead < 0xF5U ? 3
                                                : 0;
        if (more == 0 || bytes.size() - i <= more)
            return false;
        // Longer forms than are needed, surrogates, and what lies beyond the last character.
        const unsigned second = at(i + 1);
        const unsigned least = lead == 0xE0U ? 0xA0U : lead == 0xF0U ? 0x90U : 0x80U;
        const unsigned most = lead == 0xEDU ? 0x9FU : lead == 0xF4U ? 0x8FU : 0xBFU;
        if (second < least || second > most)
            return false;
        for (std::size_t k = 2; k <= more; ++k)
            if ((at(i + k) & 0xC0U) != 0x80U)
                return false;
        i += more;
    }
    return true;
}

std::string utf8OfWindows1252(std::string_view bytes)
{
    // What it puts at 0x80 to 0x9F; 0 where it has nothing.
    static constexpr char16_t kSpecial[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                              0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                              0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                              0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};
    std::string text;
    for (const char raw : bytes) {
        const auto c = static_cast<unsigned char>(raw);
        const char16_t code = c >= 0x80 && c < 0xA0 ? kSpecial[c - 0x80] : c;
        if (code == 0 && c != 0)
            text += '?';
        else if (code < 0x80)
            text += static_cast<char>(code);
        else if (code < 0x800)
            (text += static_cast<char>(0xC0 | (code >> 6))) += static_cast<char>(0x80 | (code & 0x3F));
        else
            ((text += static_cast<char>(0xE0 | (code >> 12))) +=
             static_cast<char>(0x80 | ((code >> 6) & 0x3F))) += static_cast<char>(0x80 | (code & 0x3F));
    }
    return text;
}

std::string utf8OfBytes(std::string_view bytes)
{
    return isUtf8(bytes) ? std::string(bytes) : utf8OfWindows1252(bytes);
}

}  // namespace veltrac
