// What detection looks at of a smart tool log: lines from its start, its middle and its end.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "converters/STLFormat.h"

namespace veltrac {

struct STLLine
{
    std::string text;
    std::uint64_t number = 0;  // 0 where it is not known
};

struct STLSample
{
    std::vector<STLLine> head;   // the first lines, empty ones included
    std::vector<STLLine> lines;  // non-empty lines from start, middle and end
};

// A line cut into cells; borrows the line.
struct STLRow
{
    const STLLine* line;
    std::vector<STLToken> cells;
};

// Throws STLError where the file holds no text, std::system_error where it cannot be read.
STLSample readSample(const std::filesystem::path& file);

// The lines that have this many cells and are neither empty nor remarks.
std::vector<STLRow> rowsOf(const std::vector<STLLine>& lines, const STLFormat& format, std::size_t count);

// The first of the lines right above a data line that are rows too, with more or fewer cells: short ones may
// hold texts in columns of texts.
std::uint64_t firstRaggedLine(const STLSample& sample, const STLFormat& format,
                              const std::vector<STLKind>& kinds, std::uint64_t dataLine);

// How many columns the names above the first rows tell, where some line fills more of them than most do; else
// 0.
std::size_t namedColumns(const STLSample& sample, const STLFormat& format, std::size_t usual);

// How like names the numbers of a row are: each sort is of the ones before it, too.
enum class NumericNames { None, Rising, Equal, Years };  // whole and rising, in equal steps, years

// Texts and empty cells beside the numbers say nothing; dates and times are no names.
NumericNames numericNames(const std::vector<STLToken>& cells);

// What most cells of each column are; missing ones only where nothing else is there.
std::vector<STLKind> kindsOf(const std::vector<STLRow>& rows, std::size_t count);

// The index of the row from which five in a row (or all that follow) look like data; rows.size() where none
// do.
std::size_t firstDataRow(const std::vector<STLRow>& rows, const std::vector<STLKind>& kinds);

}  // namespace veltrac
