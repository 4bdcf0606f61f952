#include <algorithm>

#include "converters/STLFormat.h"

bool isRemark(std::string_view line, const STLFormat& format)
{
    const std::size_t at = line.find_first_not_of(" \t");
    if (at == std::string_view::npos)
        return false;
    const std::string_view text = line.substr(at);
    // Most lines begin with a number, and no sign does so.
    if (text.front() >= '0' && text.front() <= '9')
        return false;
    return std::any_of(format.remarks.begin(), format.remarks.end(), [&](const std::string& sign) {
        return !sign.empty() && text.starts_with(sign) &&
               !(sign.size() == 1 && sign.front() == format.cells.separator);
    });
}

std::string decoded(std::string_view bytes, STLEncoding encoding)
{
    if (encoding == STLEncoding::Utf8)
        return std::string(bytes);
    // What Windows-1252 puts at 0x80 to 0x9F; 0 where it has nothing.
    static constexpr char16_t kSpecial[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                              0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                              0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                              0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};
    std::string text;
    for (const char raw : bytes) {
        const auto c = static_cast<unsigned char>(raw);
        const char16_t code = c >= 0x80 && c < 0xA0 ? kSpecial[c - 0x80] : c;
        if (code == 0)
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
