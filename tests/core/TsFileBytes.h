// Files that tests write by hand, byte by byte, and directories that are gone afterwards.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// A directory of the test's own, made the working directory for its life.
class TestDirectory
{
public:
    TestDirectory() : m_before(std::filesystem::current_path())
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "veltrac-test-XXXXXX").string();
        m_path = mkdtemp(pattern.data());
        std::filesystem::current_path(m_path);
    }
    ~TestDirectory()
    {
        std::filesystem::current_path(m_before);
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TestDirectory(const TestDirectory&) = delete;
    TestDirectory& operator=(const TestDirectory&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::size_t fileCount() const
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(m_path), {}));
    }

private:
    std::filesystem::path m_before;
    std::filesystem::path m_path;
};

inline std::vector<unsigned char> bytesOf(const std::string& file)
{
    std::ifstream in(file, std::ios::binary);
    std::error_code gone;
    const auto size = std::filesystem::file_size(file, gone);
    std::vector<unsigned char> bytes(gone ? 0 : size);
    in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

// A ts-file written by hand; `swapped` gives the byte order that is not this machine's.
class HandMadeFile
{
public:
    HandMadeFile(std::size_t bytes, bool swapped) : m_bytes(bytes, 0), m_swapped(swapped) {}

    HandMadeFile& word(std::size_t offset, std::uint32_t v)
    {
        if (m_swapped)
            v = __builtin_bswap32(v);
        std::memcpy(m_bytes.data() + offset, &v, sizeof v);
        return *this;
    }
    HandMadeFile& real(std::size_t offset, float v) { return word(offset, std::bit_cast<std::uint32_t>(v)); }
    HandMadeFile& text(std::size_t offset, const std::string& v)
    {
        std::memcpy(m_bytes.data() + offset, v.data(), v.size());
        return *this;
    }
    void write(const std::string& file) const
    {
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(m_bytes.data()),
                   static_cast<std::streamsize>(m_bytes.size()));
    }

private:
    std::vector<unsigned char> m_bytes;
    bool m_swapped;
};
