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

}  // namespace veltrac
