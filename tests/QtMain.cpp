// The main function of the tests that show windows; they run on Qt's offscreen platform.

#include <gtest/gtest.h>

#include <QApplication>

#include <clocale>
#include <cstdlib>
#include <memory>

#include "tests/PaintWatch.h"

extern "C" void __lsan_disable() __attribute__((weak));
extern "C" void __lsan_enable() __attribute__((weak));

namespace {

// Qt's offscreen platform never frees its one screen, which takes the sanitizer long to find out again at the
// end of each test.
std::unique_ptr<QApplication> applicationWithoutItsLeaks(int& argc, char** argv)
{
    if (__lsan_disable != nullptr)
        __lsan_disable();
    auto application = std::make_unique<PaintWatched<QApplication>>(argc, argv);
    if (__lsan_enable != nullptr)
        __lsan_enable();
    return application;
}

}  // namespace

int main(int argc, char** argv)
{
    // Also while the tests are only listed, on a machine without a display.
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    const std::unique_ptr<QApplication> application = applicationWithoutItsLeaks(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
