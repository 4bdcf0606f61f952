// The main function of the tests that show windows; they run on Qt's offscreen platform.

#include <gtest/gtest.h>

#include <QApplication>

#include <clocale>

#include "tests/QtLeaks.h"

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
