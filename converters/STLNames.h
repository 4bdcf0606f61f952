// Names and units of a smart tool log's columns, from its first lines.
#pragma once

#include "converters/STLSample.h"

namespace veltrac {

// The last line of texts before the data gives the names; a line of units may stand between, and units in
// brackets behind the names are units too.
void guessNames(STLFormat& format, const std::vector<STLRow>& rows, std::size_t firstData);
// Without any names, a first row of rising years, or of whole numbers in equal steps, above rows of another
// kind is names, which the user is asked to check.
void guessNumericNames(STLFormat& format, const std::vector<STLRow>& rows, std::size_t firstData);

// Names that stand in a line with more or fewer cells than the data have, or in a remark, right above the
// data: behind a label, one above a date and its time, none above the names of rows. Those that cannot be
// matched are none.
void guessNamesAbove(STLFormat& format, const STLSample& sample, const std::vector<STLRow>& data);

// Names that remarks above the data list by the numbers of their columns ("# 2 X_IMAGE").
void guessListedNames(STLFormat& format, const STLSample& sample);

// A title with a number right above the names ("Block 1"), which may stand above each block of rows.
void findBlockTitle(STLFormat& format, const STLSample& sample);

// The lines above the data that give neither names nor units, and are no remarks.
void listTitles(STLFormat& format, const STLSample& sample);

// Units in brackets, behind names or alone, without their brackets.
void splitUnits(STLFormat& format);

// Columns of texts that are numbers, each with the same key before it ("temp=20.5") or the same unit behind
// it: they become columns of numbers, in the rows too.
void findSuffixes(STLFormat& format, std::vector<STLRow>& data);

// Marks sizes as numbers, in the columns that hold them.
void markFactored(std::vector<STLRow>& rows, std::size_t count, const STLCells& cells);
// Columns of sizes ("4.0K", "12G", "0"): they become columns of numbers, in the rows too.
void findFactors(STLFormat& format, std::vector<STLRow>& data);

// Names are none where a sentence stands above cells that bear their own ("ttl=64"), or where they are cells
// of a row, too ("31%").
void dropNamesOfCells(STLFormat& format);

}  // namespace veltrac
