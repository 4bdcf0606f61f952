// The main function of the tests that show windows; they run on Qt's offscreen platform.

#include <gtest/gtest.h>

#include <QApplication>

#include <clocale>
#include <cstdlib>

#include "tests/QtLeaks.h"

int main(int argc, char** argv)
{
    // Also while the tests are only listed, on a machine without a display.
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
