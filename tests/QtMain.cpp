// The main function of the tests that show windows; they run on Qt's offscreen platform.

#include <gtest/gtest.h>

#include <QApplication>

#include <clocale>

// Qt's offscreen platform never frees its one screen.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libqoffscreen\nleak:QScreen::QScreen\nleak:QPlatformScreen\nleak:handleScreenAdded\n";
}

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
