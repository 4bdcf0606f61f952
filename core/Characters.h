// Bytes of a text, whatever the locale.
#pragma once

namespace veltrac {

constexpr bool isDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

}  // namespace veltrac
