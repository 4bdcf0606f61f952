// What was found in a smart tool log, in words.
#pragma once

#include <string>

#include "converters/STLCheck.h"

namespace veltrac {

// "86 400 rows, 3 columns. 12 cells missing, 2 lines skipped."
std::string summaryText(const STLCheck& found);

// "Step 1.000 s, constant.", "0.98 to 1.07 s, 3 gaps, longest 12 min."
std::string stepText(const STLFormat& format, const STLCheck& found);

// "With a sample time of 1 s."
std::string resultText(const STLCheck& found);

// "Sunday, 3 April 2016 13:30:00"
std::string wallInWords(Micros wall);

// "Read as cells between commas with a decimal point: 100 % of the lines have 3 cells, …"; with the first row
// of a second reading that comes near.
std::string evidenceText(const STLFormat& format);
// What does not come along, each with its count and the first texts, a line each; empty where all does.
std::string lossText(const STLFormat& format, const STLCheck& found);
// What the text does not say and the import has to assume, a line each.
std::string assumptionText(const STLFormat& format, const STLCheck& found);

// What the user is asked to check, a line each; empty where nothing is in doubt.
std::string orderDoubt(const STLFormat& format, const STLCheck& found);
std::string namesDoubt(const STLFormat& format);

// The question before an import whose times are a guess, or that would leave most of the text out; empty
// where there is none.
std::string importDoubt(const STLFormat& format, const STLCheck& found);

// "no number: missing"
std::string problemText(STLProblem problem);

}  // namespace veltrac
