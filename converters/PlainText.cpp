#include "converters/PlainText.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "converters/STLFormat.h"

namespace veltrac {

namespace {

enum class Packing { None, Gzip, Utf16Little, Utf16Big, Frames };

constexpr std::size_t kPiece = 1U << 16;

struct CloseFile
{
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, CloseFile>;

FileHandle openFile(const std::filesystem::path& path, const char* mode)
{
    FileHandle file(std::fopen(path.c_str(), mode));
    if (!file)
        throw std::system_error(errno, std::generic_category(), path.string());
    return file;
}

// The first two bytes of U+2500 to U+257F in UTF-8.
bool isFrameMark(unsigned char first, unsigned char second)
{
    return first == 0xE2 && (second == 0x94 || second == 0x95);
}

Packing packingOf(const std::filesystem::path& path)
{
    std::error_code unknown;
    // What is no file, or cannot be read, is told where it is read.
    FileHandle file(std::filesystem::is_regular_file(path, unknown) ? std::fopen(path.c_str(), "rb")
                                                                    : nullptr);
    std::array<unsigned char, 2> mark = {};
    if (!file || std::fread(mark.data(), 1, mark.size(), file.get()) != mark.size())
        return Packing::None;
    return mark[0] == 0x1F && mark[1] == 0x8B   ? Packing::Gzip
           : mark[0] == 0xFF && mark[1] == 0xFE ? Packing::Utf16Little
           : mark[0] == 0xFE && mark[1] == 0xFF ? Packing::Utf16Big
           : isFrameMark(mark[0], mark[1])      ? Packing::Frames
                                                : Packing::None;
}

class PieceWriter
{
public:
    // Of an empty file, which is not emptied once more: some systems would flush it as it is closed.
    explicit PieceWriter(const std::filesystem::path& path) : m_path(path), m_file(openFile(path, "r+b")) {}

    void write(std::string_view bytes)
    {
        if (std::fwrite(bytes.data(), 1, bytes.size(), m_file.get()) != bytes.size())
            fail();
    }

    void close()
    {
        if (std::fclose(m_file.release()) != 0)
            fail();
    }

private:
    [[noreturn]] void fail() const
    {
        throw std::system_error(errno, std::generic_category(), m_path.string());
    }

    std::filesystem::path m_path;
    FileHandle m_file;
};

// What a packed file is unpacked under.
struct Unpacking
{
    const Progress& progress;
    std::uint64_t packedBytes;
    std::uint64_t mostBytes;  // of the plain text

    // Whether more is wanted; tells how far it is.
    JobOutcome lookAt(std::uint64_t at) const
    {
        return goesOn(progress, std::min(at, packedBytes), packedBytes) ? JobOutcome::Done
                                                                        : JobOutcome::Cancelled;
    }
};

JobOutcome unpackGzip(const std::filesystem::path& file, PieceWriter& out, const Unpacking& how)
{
    struct Close
    {
        void operator()(gzFile_s* packed) const noexcept { gzclose(packed); }
    };
    const std::unique_ptr<gzFile_s, Close> packed(gzopen(file.c_str(), "rb"));
    if (!packed)
        throw std::system_error(errno, std::generic_category(), file.string());
    std::vector<char> piece(kPiece);
    int count = 0;
    std::uint64_t plain = 0;
    while ((count = gzread(packed.get(), piece.data(), static_cast<unsigned>(piece.size()))) > 0) {
        out.write({piece.data(), static_cast<std::size_t>(count)});
        plain += static_cast<std::uint64_t>(count);
        if (how.lookAt(static_cast<std::uint64_t>(gzoffset(packed.get()))) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
        if (plain >= how.mostBytes)
            return JobOutcome::Done;
    }
    int error = Z_OK;
    gzerror(packed.get(), &error);
    // A file that ends too early tells so only here.
    if (count < 0 || (error != Z_OK && error != Z_STREAM_END))
        throw STLError("The packed file is damaged; it cannot be unpacked.");
    return JobOutcome::Done;
}

void appendUtf8(std::string& out, std::uint32_t code)
{
    const auto put = [&out](std::uint32_t byte) { out.push_back(static_cast<char>(byte)); };
    const auto rest = [&](unsigned shift) { put(0x80 | ((code >> shift) & 0x3F)); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | (code >> 6));
        rest(0);
    } else if (code < 0x10000) {
        put(0xE0 | (code >> 12));
        rest(6);
        rest(0);
    } else {
        put(0xF0 | (code >> 18));
        rest(12);
        rest(6);
        rest(0);
    }
}

// Half a pair becomes U+FFFD, as a text says that a character is lost.
JobOutcome unpackUtf16(const std::filesystem::path& file, bool little, PieceWriter& out, const Unpacking& how)
{
    constexpr std::uint32_t kLost = 0xFFFD;
    const FileHandle in = openFile(file, "rb");
    std::vector<unsigned char> piece(kPiece);
    std::string text;
    std::uint32_t high = 0;
    bool first = true;
    std::uint64_t plain = 0;
    for (std::size_t count = 0;
         plain < how.mostBytes && (count = std::fread(piece.data(), 1, piece.size(), in.get())) > 0;) {
        text.clear();
        for (std::size_t i = 0; i + 1 < count; i += 2) {
            const std::uint32_t unit = little ? piece[i] | static_cast<std::uint32_t>(piece[i + 1]) << 8
                                              : piece[i + 1] | static_cast<std::uint32_t>(piece[i]) << 8;
            const bool low = unit >= 0xDC00 && unit < 0xE000;
            if (high != 0 && !low)
                appendUtf8(text, kLost);
            if (unit >= 0xD800 && unit < 0xDC00) {
                high = unit;
                continue;
            }
            if (low)
                appendUtf8(text, high == 0 ? kLost : 0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00));
            else if (!first)
                appendUtf8(text, unit);
            high = 0;
            first = false;
        }
        out.write(text);
        plain += count;
        if (how.lookAt(plain) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
    }
    if (std::ferror(in.get()) != 0)
        throw std::system_error(errno, std::generic_category(), file.string());
    return JobOutcome::Done;
}

// A line of a drawn frame as "|", "-" or "+".
char plainFrame(unsigned char second, unsigned char third)
{
    static constexpr std::string_view kAcross("\x02\x03\x06\x07\x0A\x0B\x51");
    static constexpr std::string_view kAlong("\x00\x01\x04\x05\x08\x09\x50", 7);
    const char index = static_cast<char>((second - 0x94) * 0x40 + (third & 0x3F));
    return kAcross.find(index) != std::string_view::npos  ? '|'
           : kAlong.find(index) != std::string_view::npos ? '-'
                                                          : '+';
}

JobOutcome drawFrames(const std::filesystem::path& file, PieceWriter& out, const Unpacking& how)
{
    const FileHandle in = openFile(file, "rb");
    std::vector<unsigned char> piece(kPiece);
    std::size_t held = 0;  // bytes of a character that the piece cut off
    std::uint64_t plain = 0;
    std::string text;
    for (std::size_t count = 0;
         plain < how.mostBytes &&
         (count = std::fread(piece.data() + held, 1, piece.size() - held, in.get())) > 0;) {
        plain += count;
        count += held;
        text.clear();
        std::size_t i = 0;
        for (; i < count; ++i) {
            const bool isCut = piece[i] == 0xE2 && i + 2 >= count;
            if (isCut && std::feof(in.get()) == 0)
                break;
            if (isCut || !isFrameMark(piece[i], piece[i + 1])) {
                text.push_back(static_cast<char>(piece[i]));
                continue;
            }
            text.push_back(plainFrame(piece[i + 1], piece[i + 2]));
            i += 2;
        }
        held = count - i;
        std::copy_n(piece.begin() + static_cast<std::ptrdiff_t>(i), held, piece.begin());
        out.write(text);
        if (how.lookAt(plain) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
    }
    if (std::ferror(in.get()) != 0)
        throw std::system_error(errno, std::generic_category(), file.string());
    return JobOutcome::Done;
}

JobOutcome unpack(Packing packing, const std::filesystem::path& file, PieceWriter& out, const Unpacking& how)
{
    switch (packing) {
        case Packing::Gzip:
            return unpackGzip(file, out, how);
        case Packing::Frames:
            return drawFrames(file, out, how);
        default:
            return unpackUtf16(file, packing == Packing::Utf16Little, out, how);
    }
}

}  // namespace

PlainText::PlainText(std::filesystem::path file, const Progress& progress, std::uint64_t mostBytes)
    : m_file(std::move(file))
{
    const Packing packing = packingOf(m_file);
    if (packing == Packing::None)
        return;
    m_state = stateOf(m_file);
    m_scratch = std::make_unique<ScratchFile>(scratchDirectory(), "veltrac-text", ".tmp");
    const Unpacking how{progress, std::filesystem::file_size(m_file), mostBytes};
    PieceWriter out(m_scratch->path());
    m_outcome = unpack(packing, m_file, out, how);
    out.close();
    // A packed text may be one of UTF-16.
    if (m_outcome == JobOutcome::Done && packing == Packing::Gzip &&
        packingOf(m_scratch->path()) != Packing::None) {
        PlainText inner(m_scratch->path(), progress, mostBytes);
        m_outcome = inner.m_outcome;
        m_scratch.swap(inner.m_scratch);
    }
}

std::optional<PlainText> PlainText::unpacked(const std::filesystem::path& file, const Progress& progress)
{
    PlainText text(file, progress, UINT64_MAX);
    return text.m_outcome == JobOutcome::Done ? std::optional(std::move(text)) : std::nullopt;
}

PlainText PlainText::beginningOf(const std::filesystem::path& file, std::uint64_t bytes)
{
    return PlainText(file, {}, bytes);
}

}  // namespace veltrac
