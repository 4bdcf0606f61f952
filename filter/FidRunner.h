// A filter of the library being run over one signal.
#pragma once

#include <span>

#include "filter/fid.h"

namespace veltrac {

class FidRunner
{
public:
    // Copies what it needs of the filter, which is not null. In the zero state.
    explicit FidRunner(const FidFilter* filter)
        : m_run(fid_run_new(filter, nullptr)), m_buffer(fid_run_newbuf(m_run))
    {
    }
    ~FidRunner()
    {
        fid_run_freebuf(m_buffer);
        fid_run_free(m_run);
    }
    FidRunner(const FidRunner&) = delete;
    FidRunner& operator=(const FidRunner&) = delete;

    // Into the state that a constant input leads to.
    void settle(double input) { fid_run_settle(m_run, m_buffer, input); }
    // In place, in the order of time.
    void run(std::span<double> samples) { fid_run_block(m_run, m_buffer, samples.data(), samples.size()); }

private:
    void* m_run;
    void* m_buffer;
};

}  // namespace veltrac
