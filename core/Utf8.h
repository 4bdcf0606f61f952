// Texts as bytes: UTF-8 told from Windows-1252, and cut to the bytes that a field has.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace veltrac {

// How many of the first `most` bytes of a text are whole characters.
std::size_t wholeCharacters(std::string_view text, std::size_t most) noexcept;

// Those bytes.
std::string cutTo(std::string_view text, std::size_t most);

// Whether bytes are whole UTF-8 characters, each in its shortest form.
bool isUtf8(std::string_view bytes) noexcept;

std::string utf8OfWindows1252(std::string_view bytes);

// Bytes of a file, which are UTF-8 where they can be, else Windows-1252.
std::string utf8OfBytes(std::string_view bytes);

}  // namespace veltrac
