// The main function of the tests that run inside the whole application, with its main window, on a machine
// without any locale.

#include <gtest/gtest.h>

#include <cstdlib>

#include "portal/MyApplication.h"
#include "tests/PaintWatch.h"
#include "tests/QtLeaks.h"

int main(int argc, char** argv)
{
    // Also while the tests are only listed, on a machine without a display.
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    setenv("LC_ALL", "C", 1);
    const PaintWatched<MyApplication> application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
