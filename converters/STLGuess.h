// Guesses at names, units, head and time of a smart tool log, from its first lines.
#pragma once

#include "converters/STLSample.h"

// The last line of texts before the data gives the names; a line of units may stand between, and units in
// brackets behind the names are units too.
void guessNames(STLFormat& format, const std::vector<STLRow>& rows, std::size_t firstData);

// Units in brackets, behind names or alone, without their brackets.
void splitUnits(STLFormat& format);

// Keys and values above the data, and what those that are known say: start, step, description.
void guessHead(STLFormat& format, const STLSample& sample);

// Where the time comes from, how its dates are meant, and which columns are values then.
void guessTime(STLFormat& format, const std::vector<STLRow>& data);
