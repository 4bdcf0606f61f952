// What users say of a file's columns and places, and what they are told: numbers and times in one form,
// whatever the locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/SampleRange.h"

class TSFILE;

namespace veltrac {

class Options;
class PlotFile;

// The shortest text that reads back as the same number; "nan", "inf" and "-inf" for what is none.
std::string numberText(double number);
std::string numberText(float number);
// "2016-10-30T02:30:00.250+01:00": local time and its zone; with as many decimals as microseconds need.
std::string isoTime(double secondsSinceEpoch);
// A column's stamp, "2016-10-30T02:30:00"; empty where it is none.
std::string isoStamp(const int stamp[7]);

// How a column is called: its name, or "Column 3" where it has none. UTF-8.
std::string columnLabel(TSFILE& file, std::uint32_t column);
// A column by its number, else by its name. Throws JobError, which lists the columns there are.
std::uint32_t columnMeant(TSFILE& file, const std::string& text);
// Likewise of several texts, each of which may also be a range of numbers, "3-8".
std::vector<std::uint32_t> columnsMeant(TSFILE& file, const std::vector<std::string>& texts);
// The number that a text means of so many columns; 0 where it means none.
std::uint32_t columnNumber(std::string_view text, std::uint32_t count);
// The numbers of a range of so many columns; empty where it is none.
std::vector<std::uint32_t> columnRange(std::string_view text, std::uint32_t count);

// "the file is cut short: 236 of its samples are gone"; empty where all are there.
std::string cutShortText(const PlotFile& file);

// Says, where the file's times do not count in seconds, what its frequencies are.
void noteFrequencyUnit(TSFILE& file, std::vector<std::string>& notes);

// --from and --to of many verbs.
struct PlaceOptions
{
    std::string from;
    std::string to;

    void addTo(Options& options);
    bool isWhole() const noexcept { return from.empty() && to.empty(); }
    // From the oldest sample on, which is 1. Throws JobError where a place is none, or lies outside, and
    // where nothing is left. The notes get what is to be said of times that the clock skipped or showed
    // twice.
    SampleRange rangeIn(TSFILE& file, std::vector<std::string>& notes) const;
};

}  // namespace veltrac
