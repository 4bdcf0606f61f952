// Filtering a column, over a work file of two columns: column 1 the input, column 2 the output. No window.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "core/Progress.h"
#include "core/SourceColumn.h"
#include "filter/FilterTypes.h"
#include "filter/fid.h"

class TSFILE;

namespace veltrac {

struct FreeFidFilter
{
    void operator()(FidFilter* filter) const { std::free(filter); }
};
using FidFilterPtr = std::unique_ptr<FidFilter, FreeFidFilter>;

// Collects the filter library's messages while it lives, each text once, so that they can be told together.
// Only one lives at a time.
class FidReports
{
public:
    FidReports();
    ~FidReports();
    FidReports(const FidReports&) = delete;
    FidReports& operator=(const FidReports&) = delete;

    // The messages in words for users, each with the library's own behind it; empty where there are none.
    std::string text() const;
};

// The filter of a request of types 1 and up, its promised frequencies at half power; null with a report.
FidFilterPtr designFilter(const FilterRequest& request, double samplingHz);

// The sampling frequency of a sample time: 0 where there is none. Seven digits, which are all that the
// 32-bit sample time holds: 1/360 s gives 360 Hz.
double samplingFrequency(float dt);

// Gives the work file the header of the source, column 1 the texts of its column, and column 2 a name and a
// description that tell what is done to it, in the same unit.
void describeWork(const SourceColumn& source, TSFILE& work, const std::string& filterWords);

struct FilterOutcome
{
    JobOutcome outcome = JobOutcome::Done;
    std::uint32_t missing = 0;  // samples of the input that are NaN (for a filter: or infinite)
};

// Both fill the work file, which has as many samples as the source: column 1 with the source, column 2 with
// what becomes of it. Each row is written once.

// Through the filter. Where a sample is missing or infinite the filter, which would never recover from it, is
// fed the one before it (but from zero: or the first one there is), and the output is missing there. For zero
// phase see filter/ZeroPhase.h.
FilterOutcome runFilter(const SourceColumn& source, TSFILE& work, const FidFilter* filter,
                        const Progress& progress, FilterPass pass = FilterPass::FromZero);

// The mean of `points` samples, centred (with an even number one more comes after the sample than before
// it). At both ends those that exist are averaged.
FilterOutcome runMovingAverage(const SourceColumn& source, TSFILE& work, std::uint32_t points,
                               const Progress& progress);

}  // namespace veltrac
