// What the filter library's tests share: owners, the last report, quiet designs.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "filter/fid.h"

struct FreeFilter
{
    void operator()(void* filter) const { std::free(filter); }
};
using Filter = std::unique_ptr<FidFilter, FreeFilter>;

inline std::vector<std::string> g_reports;

// Collects the reports, which in a test are wanted, and keeps them off the terminal.
class Quiet
{
public:
    Quiet() : m_stderr(::dup(2))
    {
        g_reports.clear();
        fid_set_error_handler([](const char* text) { g_reports.emplace_back(text); });
        const int null = ::open("/dev/null", O_WRONLY);
        ::dup2(null, 2);
        ::close(null);
    }
    ~Quiet()
    {
        ::dup2(m_stderr, 2);
        ::close(m_stderr);
        fid_set_error_handler(nullptr);
    }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

private:
    int m_stderr;
};

inline Filter design(const std::string& spec, double rate = 1000.0, bool adjust = false)
{
    return Filter(fid_design(spec.c_str(), rate, -1.0, -1.0, adjust, nullptr));
}

// Runs a signal through a filter and returns what comes out.
inline std::vector<double> runFilter(const FidFilter* filter, std::vector<double> signal)
{
    FidFunc* step = nullptr;
    void* const run = fid_run_new(filter, &step);
    void* const buffer = fid_run_newbuf(run);
    for (double& sample : signal)
        sample = step(buffer, sample);
    fid_run_freebuf(buffer);
    fid_run_free(run);
    return signal;
}
