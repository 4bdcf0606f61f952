// Cutting UTF-8 texts to the bytes that a field has.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace veltrac {

// How many of the first `most` bytes of a text are whole characters.
std::size_t wholeCharacters(std::string_view text, std::size_t most) noexcept;

// Those bytes.
std::string cutTo(std::string_view text, std::size_t most);

}  // namespace veltrac
