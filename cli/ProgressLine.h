// How far a run is, in one line of a terminal that is written over again and again.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace veltrac {

class ProgressLine
{
public:
    // Nothing is shown where standard error is no terminal, or `quiet`.
    ProgressLine(std::size_t files, bool quiet);
    ~ProgressLine() { clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void showFiles(std::size_t done);
    // Of a single file.
    void showShare(std::uint64_t done, std::uint64_t total);
    // Before anything else is written.
    void clear();

private:
    void show(const std::string& text);

    std::size_t m_files;
    bool m_isOn;
    bool m_isShown = false;
    std::chrono::steady_clock::time_point m_next;
};

}  // namespace veltrac
