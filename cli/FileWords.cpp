#include "cli/FileWords.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <numeric>

#include "cli/Options.h"
#include "cli/Verb.h"
#include "core/FileTime.h"
#include "core/HeaderTexts.h"
#include "core/NumberTexts.h"
#include "core/PlotFile.h"
#include "core/TSFILE.h"
#include "core/Utf8.h"
#include "core/WallClock.h"

namespace veltrac {

namespace {

template <typename Number>
std::string shortest(Number number)
{
    char text[40];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

constexpr std::uint32_t kMostListed = 30;
constexpr int kYearBase = 1900;

}  // namespace

std::string numberText(double number)
{
    return std::isnan(number) ? "nan" : shortest(number);
}

std::string numberText(float number)
{
    return std::isnan(number) ? "nan" : shortest(number);
}

std::string isoTime(double secondsSinceEpoch)
{
    if (!std::isfinite(secondsSinceEpoch) || std::fabs(secondsSinceEpoch) > 1e12)
        return {};
    auto micros = static_cast<std::int64_t>(std::llround(secondsSinceEpoch * 1e6));
    const std::int64_t fraction = (micros % kMicrosPerSecond + kMicrosPerSecond) % kMicrosPerSecond;
    const auto seconds = static_cast<std::time_t>((micros - fraction) / kMicrosPerSecond);
    std::tm local = {};
    if (localtime_r(&seconds, &local) == nullptr)
        return {};
    char text[64];
    std::string out(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local));
    if (fraction != 0) {
        std::snprintf(text, sizeof text, ".%06d", static_cast<int>(fraction));
        out += text;
        out.erase(out.find_last_not_of('0') + 1);
    }
    const long minutes = local.tm_gmtoff / 60;
    std::snprintf(text, sizeof text, "%c%02ld:%02ld", minutes < 0 ? '-' : '+', std::labs(minutes) / 60,
                  std::labs(minutes) % 60);
    return out + text;
}

std::string isoStamp(const int stamp[7])
{
    if (stamp[4] < 1 || stamp[4] > 31 || stamp[5] < 1 || stamp[5] > 12)
        return {};
    // Files of old, and texts without a stamp, count the year from 1900.
    const int year = stamp[6] < kYearBase ? stamp[6] + kYearBase : stamp[6];
    char text[96];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d", year, stamp[5], stamp[4], stamp[3],
                  stamp[2], stamp[1]);
    return text;
}

std::string columnLabel(TSFILE& file, std::uint32_t column)
{
    std::string name = headerUtf8(file.columnName(column));
    return name.empty() ? "Column " + std::to_string(column) : name;
}

namespace {

// 0 where there is none.
std::uint32_t columnFound(TSFILE& file, const std::string& text)
{
    if (const std::uint32_t number = columnNumber(text, file.columns()); number != 0)
        return number;
    if (const std::uint32_t column = file.columnNumber(text.c_str()); column != 0 && !text.empty())
        return column;
    // Texts of the user's are UTF-8, those of the file may be Windows-1252.
    for (std::uint32_t c = 1; c <= file.columns(); ++c)
        if (columnLabel(file, c) == text)
            return c;
    return 0;
}

}  // namespace

std::uint32_t columnMeant(TSFILE& file, const std::string& text)
{
    if (const std::uint32_t column = columnFound(file, text); column != 0)
        return column;
    std::string list;
    for (std::uint32_t c = 1; c <= std::min(file.columns(), kMostListed); ++c)
        list += (c > 1 ? ", " : "") + std::to_string(c) + " " + columnLabel(file, c);
    throw JobError("there is no column \"" + text + "\"; there are " + list +
                   (file.columns() > kMostListed ? ", …" : ""));
}

std::uint32_t columnNumber(std::string_view text, std::uint32_t count)
{
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && number <= count ? number : 0;
}

std::vector<std::uint32_t> columnRange(std::string_view text, std::uint32_t count)
{
    const std::size_t dash = text.find('-');
    if (dash == std::string_view::npos)
        return {};
    const std::uint32_t first = columnNumber(text.substr(0, dash), count);
    const std::uint32_t last = columnNumber(text.substr(dash + 1), count);
    if (first == 0 || last < first)
        return {};
    std::vector<std::uint32_t> numbers(last - first + 1);
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

std::vector<std::uint32_t> columnsMeant(TSFILE& file, const std::vector<std::string>& texts)
{
    std::vector<std::uint32_t> columns;
    for (const std::string& text : texts) {
        const std::vector<std::uint32_t> range = columnRange(text, file.columns());
        // A name may look like a range.
        if (!range.empty() && columnFound(file, text) == 0)
            columns.insert(columns.end(), range.begin(), range.end());
        else
            columns.push_back(columnMeant(file, text));
    }
    return columns;
}

std::string cutShortText(const PlotFile& file)
{
    return file.missingRows() == 0
               ? std::string()
               : "the file is cut short: " + groupedDigits(file.missingRows()) + " of its samples are gone";
}

void noteFrequencyUnit(TSFILE& file, std::vector<std::string>& notes)
{
    const FileTime time(file);
    if (time.unitSeconds() != 1.0)
        notes.push_back("its times count in " + time.unit() + ": 1 Hz stands for one per " + time.unit());
}

void PlaceOptions::addTo(Options& options)
{
    options.text("--from", from, "PLACE",
                 "First sample: its number (250000), a time (\"12.5 s\", 13:45:30, 2016-10-30T13:45) or a "
                 "share (50%)");
    options.text("--to", to, "PLACE", "Last sample, likewise");
}

namespace {

// The place of a sample from the oldest one on.
std::uint32_t placeMeant(TSFILE& file, const std::string& text, const char* option,
                         std::vector<std::string>& notes)
{
    const MeantSample meant = meantSample(text, file);
    if (!meant.note.empty())
        notes.push_back(meant.note);
    if (!meant.sample)
        throw JobError(std::string(option) + " " + text + ": " + meant.reason);
    return *meant.sample - FileTime(file).firstSample() + 1;
}

}  // namespace

SampleRange PlaceOptions::rangeIn(TSFILE& file, std::vector<std::string>& notes) const
{
    SampleRange range{1, FileTime(file).rows()};
    if (range.last == 0)
        throw JobError("it has no samples");
    if (!from.empty())
        range.first = placeMeant(file, from, "--from", notes);
    if (!to.empty())
        range.last = placeMeant(file, to, "--to", notes);
    if (range.first > range.last)
        throw JobError("--from lies behind --to");
    return range;
}

}  // namespace veltrac
