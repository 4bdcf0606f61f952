// Ring files as wholes: made, unfolded, and renewed when their times or sample numbers have run too far.
//
// What changes a ring that others read is done on a copy beside it, which takes its place in one step: at
// every moment a whole ring bears the name.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/Progress.h"

class TSFILE;

namespace veltrac {

struct RingColumn
{
    std::string name;         // at most 11 bytes
    std::string description;  // at most 45, its unit in brackets
};

struct RingShape
{
    std::uint32_t samples = 0;  // rows of the ring
    std::vector<RingColumn> columns{};
    int timeMode = 0;  // as TSFILE has it; time columns stand before the others
    float dt = 1.0F;
    std::string description{};
};

// Makes an empty ring file; one of that name is replaced. Throws the TS exceptions and std::system_error.
void makeRingFile(const std::filesystem::path& file, const RingShape& shape);

// Writes what a ring file holds into an ordinary one, the oldest sample first; each sample keeps its time.
// `target` is made or replaced in one step and may be the ring file itself. Cancelled also where the ring
// holds no samples. Throws the TS exceptions and std::system_error; nothing has changed then.
JobOutcome unfoldRing(const std::filesystem::path& ring, const std::filesystem::path& target,
                      const Progress& progress);

// "ring, oldest sample 123 457", "ring, no samples yet"; empty for an ordinary file.
std::string ringText(TSFILE& file);

// Whether floats of a column "Time" that have come to `time` tell moments finer than a hundredth of `step`.
bool isFineTime(double time, double step);

// Moves the start of a ring with a column "Time" to its oldest sample, so that the floats become finer; the
// moments of all samples stay. False where that would halve the numbers at best, and nothing has changed.
// Throws the TS exceptions and std::system_error.
bool rebaseRing(const std::filesystem::path& ring);

// Gives the samples of a full ring the lowest numbers that leave them in their rows and at their moments.
// Throws as above.
void renumberRing(const std::filesystem::path& ring);

}  // namespace veltrac
