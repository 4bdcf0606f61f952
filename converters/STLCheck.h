// What a pass over a smart tool log has found, and what becomes of it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "converters/STLRows.h"

namespace veltrac {

// Troubles that are kept, of all that are counted.
inline constexpr std::size_t kMostTroubles = 1000;
// A step of more than so many typical ones is a gap.
inline constexpr double kGapSteps = 1.5;

// The steps between the chosen rows, in seconds, in the order of time where the newest is first; 0 for fewer
// than two rows.
struct STLStepFindings
{
    double least = 0.0;
    double greatest = 0.0;  // gaps apart
    double typical = 0.0;
    bool areEqual = false;
    // Of equal steps: those with which a constant one explains all times as rounded ones; `slowest` is above
    // `fastest` where none does.
    double slowest = 0.0;
    double fastest = 0.0;
    std::uint64_t gaps = 0;  // steps of more than kGapSteps typical ones
    double longestGap = 0.0;
    double span = 0.0;         // from the first chosen row to the last, in that order
    double earliest = 0.0;     // since the first; negative where a time runs back behind it
    double latest = 0.0;       // since the first
    bool newestFirst = false;  // the rows run back in time throughout: they are turned round
};

// The first date that the other order of day and month would make another one.
struct STLOrderDoubt
{
    std::string text;  // empty where there is none
    Micros date = 0;   // as it is read
    std::optional<DateSteps::Verdict> bySteps;
};

// The ts-file that becomes of a log.
struct STLTarget
{
    STLTimeResult timeResult = STLTimeResult::Constant;
    std::uint32_t samples = 0;
    std::uint32_t columns = 0;      // time columns included
    std::uint32_t timeColumns = 0;  // 0, 1 ("Time") or 2 ("Time32" too)
    bool resampled = false;
    float dt = 1.0F;
    std::uint32_t startSeconds = 0;
    float startTime = 0.0F;
    bool onLocalClock =
        false;                // rows lie where the local clock shows their times, in its hours of summer too
    double coarseness = 0.0;  // seconds that the farthest time in a float column is rounded by at most
};

struct STLCheck
{
    std::uint64_t rows = 0;    // with a readable time
    std::uint64_t chosen = 0;  // of them, by the user's from, to and every n-th
    STLLosses losses;
    STLBreaks breaks;
    std::uint64_t troubledRows = 0;
    std::uint64_t troubleCount = 0;
    std::vector<STLTrouble> troubles;  // the first thousand
    STLStepFindings steps;
    double chosenFrom = 0.0;    // from the log's first row to the first chosen one
    Micros firstWall = 0;       // of the first chosen row in the order of time
    double firstSeconds = 0.0;  // likewise
    bool zoned = false;         // the stamps name their zone
    STLOrderDoubt order;
    ClockLag lag;
    std::map<std::size_t, STLTexts> texts;
    STLTarget target;
};

}  // namespace veltrac
