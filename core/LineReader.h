// The lines of a text file of any size, one at a time, in memory that does not grow with the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>
#include <vector>

namespace veltrac {

// Lines end at a new line; the last one may lack it. A carriage return before it belongs to the text, and so
// does a NUL byte. In a file that begins with carriage returns alone, lines end at those. A UTF-8 byte order
// mark at the file's beginning is passed over.
class LineReader
{
public:
    // Keeps the first `longest` bytes of a line. Throws std::system_error where the file cannot be opened.
    LineReader(const std::filesystem::path& file, std::size_t longest);

    // Goes to the next line; false at the end. Throws std::system_error where reading fails.
    bool next();

    // Goes on by the lines that `bytes` (no more than the longest line's) hold whole, at least by one; false
    // at the end. text() is then all of them, as they stand.
    bool nextLines(std::size_t bytes);

    // The line without its new line: a view into the read buffer, good until the next call.
    std::string_view text() const noexcept { return m_text; }
    // What ends the lines: a new line, or a carriage return.
    char newLine() const noexcept { return m_newLine; }
    // True where the line is longer than what text() shows.
    bool isCut() const noexcept { return m_isCut; }
    // Length of the whole line, without its new line.
    std::uint64_t lineBytes() const noexcept { return m_lineBytes; }

    // Offset of the current line, and of what follows it.
    std::uint64_t lineOffset() const noexcept { return m_lineOffset; }
    std::uint64_t position() const noexcept { return m_bufferOffset + m_begin; }
    // Size of the file when it was opened.
    std::uint64_t fileBytes() const noexcept { return m_fileBytes; }

    // Goes on at the first line that begins at or behind this offset.
    void seek(std::uint64_t offset);

private:
    struct Close
    {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };

    std::size_t mostBytes() const;  // that the buffer takes
    bool fill();
    void skipMark();
    bool takeLongLine();

    std::size_t m_longest;
    char m_newLine = '\n';
    std::unique_ptr<std::FILE, Close> m_file;
    std::uint64_t m_fileBytes = 0;
    std::vector<char> m_buffer;
    std::uint64_t m_bufferOffset = 0;  // of the buffer's first byte in the file
    std::size_t m_begin = 0;           // what is not yet handed out: [m_begin, m_end)
    std::size_t m_end = 0;
    std::string_view m_text;
    bool m_isCut = false;
    std::uint64_t m_lineBytes = 0;
    std::uint64_t m_lineOffset = 0;
};

}  // namespace veltrac
