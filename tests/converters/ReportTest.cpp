// What was found in a log, as the user reads it.

#include "converters/STLReport.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "converters/STLObject.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

TEST(StlReport, TellsRowsStepsAndWhatTheFileWillHold)
{
    const TestDirectory directory;
    using enum STLTimeResult;
    const struct
    {
        const char* text;
        STLTimeResult result;
        const char* told;
    } cases[] = {
        {"t [s];a\n10;1\n12.5;2\n15;3\n", Constant,
         "3 rows, 1 column.\nStep 2.500 s, constant.\nWith a sample time of 2.5 s.\n"
         "No start was found: the moment of the import stands for it."},
        {"t [s];a;b\n0;1;2\n1;3;4\n2.5;5;x\n3;6;7\n", TimeColumn,
         "4 rows, 2 columns. 1 cell missing.\n0.5 to 1.5 s.\nWith a column \"Time\".\n"
         "No start was found: the moment of the import stands for it."},
        {"t [s];a;b\n0;1;2\n1;3;4\n2.5;5;x\n3;6;7\n", TimeTwoColumns,
         "4 rows, 2 columns. 1 cell missing.\n0.5 to 1.5 s.\nWith \"Time\" and \"Time32\".\n"
         "No start was found: the moment of the import stands for it."},
        {"t [s];a;b\n0;1;2\n1;3;4\n2.5;5;x\n3;6;7\n", Resampled,
         "4 rows, 2 columns. 1 cell missing.\n0.5 to 1.5 s.\nAt equal steps of 1 s.\n"
         "No start was found: the moment of the import stands for it."},
        {"t [s];a\n0;1\n1;2\n2;3\n3;4\n4;5\n5;6\n65;7\n66;8\n67;9\n", TimeColumn,
         "9 rows, 1 column.\n1.000 s, 1 gap, longest 60 s.\nWith a column \"Time\".\n"
         "No start was found: the moment of the import stands for it."},
        {"t [s];a\n0;1\n1;2\n2;3\n1.5;4\n4;5\n5;6\n6;7\n", TimeColumn,
         "7 rows, 1 column.\n-0.5 to 1 s, 1 gap, longest 2.5 s, some backwards.\nWith a column \"Time\".\n"
         "No start was found: the moment of the import stands for it."},
        {"t [s];a\n0;1\n1;2\n8388608;3\n", TimeColumn,
         "3 rows, 1 column.\n1 s to 97.09 d.\nWith a column \"Time\".\n"
         "No start was found: the moment of the import stands for it.\n"
         "A column \"Time\" tells these times to 0.5 s."},
        {"t [s];a\n\"1,000.0\";1\n\"1,000.3\";2\n\"1,000.5\";3\n\"1,000.8\";4\n\"1,001.0\";5\n", Constant,
         "5 rows, 1 column.\nStep 0.250 s, constant.\nWith a sample time of 0.25 s.\n"
         "No start was found: the moment of the import stands for it.\nThe times are taken for rounded ones: "
         "the rows lie at equal steps of 0.250 s, some of them beside their times."},
        {"a;b\n1;2.5\n4;2.5\n2;7\n", Constant,
         "3 rows, 2 columns.\nNo time was found; 1 s is assumed.\nWith a sample time of 1 s.\n"
         "No start was found: the moment of the import stands for it."},
        {"When;a\n01/02/2016 10:00;1\n01/02/2016 10:01;2\n01/02/2016 10:02;3\n", Constant,
         "3 rows, 1 column.\nStep 60.00 s, constant.\nWith a sample time of 60 s.\n"
         "No zone is named: the times are taken as local ones."},
    };
    for (const auto& c : cases) {
        std::ofstream("l.stl") << c.text;
        STLObject log("l.stl");
        log.detect();
        log.format().timeResult = c.result;
        log.check({});
        const STLCheck& found = log.found();
        EXPECT_EQ(summaryText(found) + '\n' + stepText(log.format(), found) + '\n' + resultText(found) +
                      '\n' + assumptionText(log.format(), found),
                  c.told);
    }
}

}  // namespace
