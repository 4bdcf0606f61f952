// What the verb spectrum computes beside a spectrum: two channels, correlations, spectrograms.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "calc/SpectrumRequest.h"
#include "cli/Verb.h"

class TSFILE;

namespace veltrac {

class Options;

class SpectrumAnalyses
{
public:
    void addTo(Options& options);
    // Throws UsageError.
    void check(const SpectrumRequest& request) const;
    // Whether one of them is wanted, rather than a spectrum.
    bool isWanted() const;

    // Asks what the samples of a file, called by that name, lead to doubt; the request becomes what is
    // agreed.
    using ClearDoubts = std::function<void(TSFILE& file, const std::string& name, SpectrumRequest& request)>;
    void perform(VerbJob& job, TSFILE& file, SpectrumRequest request, const ClearDoubts& clearDoubts) const;

private:
    struct Second;

    void twoChannels(VerbJob& job, TSFILE& file, SpectrumRequest request,
                     const ClearDoubts& clearDoubts) const;
    void correlation(VerbJob& job, TSFILE& file, SpectrumRequest request,
                     const ClearDoubts& clearDoubts) const;
    static void spectrogram(VerbJob& job, TSFILE& file, SpectrumRequest request,
                            const ClearDoubts& clearDoubts);

    std::string m_second;
    std::string m_secondFile;
    std::optional<int> m_result;
    bool m_unwrap = false;
    bool m_spectrogram = false;
    std::optional<double> m_lag;
    int m_scale = 0;
};

}  // namespace veltrac
