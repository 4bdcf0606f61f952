#include "core/LineReader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace veltrac {

namespace {

constexpr std::size_t kReadBytes = std::size_t{1} << 18;
constexpr std::size_t kFewestBytes = 4096;
constexpr std::string_view kMark = "\xEF\xBB\xBF";

[[noreturn]] void failToRead(const std::filesystem::path& file)
{
    throw std::system_error(errno, std::generic_category(), file.string());
}

}  // namespace

LineReader::LineReader(const std::filesystem::path& file, std::size_t longest)
    : m_longest(longest), m_file(std::fopen(file.c_str(), "rb"))
{
    if (!m_file)
        failToRead(file);
    // The buffer here is the only one.
    std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
    std::error_code unknown;
    const std::uintmax_t size = std::filesystem::file_size(file, unknown);
    m_fileBytes = unknown ? 0 : size;
    // Of a short file its size, and a byte more by which its end is found.
    m_buffer.resize(unknown ? mostBytes()
                            : std::min<std::uintmax_t>(mostBytes(), std::max(size + 1, kFewestBytes)));
    fill();
    skipMark();
    const std::string_view held(m_buffer.data(), m_end);
    if (held.find('\n') == std::string_view::npos && held.find('\r') != std::string_view::npos)
        m_newLine = '\r';
}

std::size_t LineReader::mostBytes() const
{
    return m_longest + kReadBytes;
}

// Makes the line's beginning the buffer's and reads on behind what is there; false at the end of the file.
bool LineReader::fill()
{
    std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
    m_bufferOffset += m_begin;
    m_end -= m_begin;
    m_begin = 0;
    // The file has grown.
    if (m_end == m_buffer.size())
        m_buffer.resize(mostBytes());
    const std::size_t read = std::fread(m_buffer.data() + m_end, 1, m_buffer.size() - m_end, m_file.get());
    if (read == 0 && std::ferror(m_file.get()) != 0)
        failToRead("read");
    m_end += read;
    return read != 0;
}

void LineReader::skipMark()
{
    if (m_bufferOffset == 0 && std::string_view(m_buffer.data(), m_end).starts_with(kMark))
        m_begin = kMark.size();
}

bool LineReader::next()
{
    std::size_t searched = 0;
    for (;;) {
        const char* const begin = m_buffer.data() + m_begin;
        const std::size_t held = m_end - m_begin;
        if (const void* const found = std::memchr(begin + searched, m_newLine, held - searched)) {
            m_lineOffset = position();
            m_lineBytes = static_cast<std::size_t>(static_cast<const char*>(found) - begin);
            m_isCut = m_lineBytes > m_longest;
            m_text = {begin, m_isCut ? m_longest : static_cast<std::size_t>(m_lineBytes)};
            m_begin += static_cast<std::size_t>(m_lineBytes) + 1;
            return true;
        }
        if (held > m_longest)
            return takeLongLine();
        searched = held;
        if (!fill())
            break;
    }
    if (m_begin == m_end)
        return false;
    m_lineOffset = position();
    m_lineBytes = m_end - m_begin;
    m_isCut = false;
    m_text = {m_buffer.data() + m_begin, m_end - m_begin};
    m_begin = m_end;
    return true;
}

bool LineReader::nextLines(std::size_t bytes)
{
    if (m_end - m_begin < bytes)
        fill();
    const std::string_view held(m_buffer.data() + m_begin, std::min(m_end - m_begin, bytes));
    const std::size_t last = held.rfind(m_newLine);
    if (last == std::string_view::npos)
        return next();
    m_lineOffset = position();
    m_lineBytes = last;
    m_isCut = false;
    m_text = held.substr(0, last);
    m_begin += last + 1;
    return true;
}

// Keeps the line's beginning at the buffer's and lets the rest of it run through the space behind.
bool LineReader::takeLongLine()
{
    m_lineOffset = position();
    if (std::feof(m_file.get()) == 0)
        m_buffer.resize(mostBytes());
    std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
    m_bufferOffset += m_begin;
    m_end -= m_begin;
    m_lineBytes = m_end;
    m_isCut = true;
    m_text = {m_buffer.data(), m_longest};

    char* const space = m_buffer.data() + m_longest;
    const std::size_t room = m_buffer.size() - m_longest;
    std::uint64_t offset = m_bufferOffset + m_end;
    for (;;) {
        const std::size_t read = std::fread(space, 1, room, m_file.get());
        if (read == 0 && std::ferror(m_file.get()) != 0)
            failToRead("read");
        const void* const found = read == 0 ? nullptr : std::memchr(space, m_newLine, read);
        const std::size_t ofLine =
            found == nullptr ? read : static_cast<std::size_t>(static_cast<const char*>(found) - space);
        m_lineBytes += ofLine;
        if (found != nullptr || read == 0) {
            m_begin = m_longest + ofLine + (found == nullptr ? 0 : 1);
            m_end = m_longest + read;
            m_bufferOffset = offset - m_longest;
            return true;
        }
        offset += read;
    }
}

void LineReader::seek(std::uint64_t offset)
{
    std::clearerr(m_file.get());
    // One byte before: where that is a new line, the offset itself begins a line.
    const std::uint64_t from = offset == 0 ? 0 : offset - 1;
    if (::fseeko(m_file.get(), static_cast<off_t>(from), SEEK_SET) != 0)
        failToRead("seek");
    m_bufferOffset = from;
    m_begin = m_end = 0;
    fill();
    if (offset == 0)
        skipMark();
    else
        next();
}

}  // namespace veltrac
