#include "cli/ProgressLine.h"

#include <unistd.h>

#include <cstdio>

namespace veltrac {

namespace {

constexpr auto kPatience = std::chrono::milliseconds(500);
constexpr auto kBetween = std::chrono::milliseconds(100);

}  // namespace

ProgressLine::ProgressLine(std::size_t files, bool quiet)
    : m_files(files),
      m_isOn(!quiet && isatty(STDERR_FILENO) != 0),
      m_next(std::chrono::steady_clock::now() + kPatience)
{
}

void ProgressLine::showFiles(std::size_t done)
{
    if (m_isOn && m_files > 1)
        show(std::to_string(done) + " of " + std::to_string(m_files) + " files");
}

void ProgressLine::showShare(std::uint64_t done, std::uint64_t total)
{
    if (m_isOn && m_files == 1 && total > 0)
        show(std::to_string(100 * done / total) + " %");
}

void ProgressLine::show(const std::string& text)
{
    const auto now = std::chrono::steady_clock::now();
    if (now < m_next)
        return;
    m_next = now + kBetween;
    m_isShown = true;
    std::fprintf(stderr, "\r\033[K%s", text.c_str());
    std::fflush(stderr);
}

void ProgressLine::clear()
{
    if (!m_isShown)
        return;
    m_isShown = false;
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
}

}  // namespace veltrac
