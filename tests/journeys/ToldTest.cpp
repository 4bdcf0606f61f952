// What every window tells and offers, as windows.txt records it: its title, its menus, its fields with what
// they hold, what is off. Where a window was changed on purpose, VELTRAC_TELL=tests/journeys/windows.txt
// writes the record anew, to be read before it is kept.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "tests/journeys/EveryWindow.h"
#include "tests/journeys/Telling.h"

using namespace veltrac;

namespace {

using Told = EveryWindow;

TEST_F(Told, ByEveryWindowWhatTheRecordHolds)
{
    setenv("TZ", "UTC", 1);
    std::string told;
    forEachWindow([&](QWidget& window, const std::string&) { told += allToldBy(window).toStdString(); });
    if (const char* const record = std::getenv("VELTRAC_TELL")) {
        std::ofstream(record) << told;
        return;
    }
    std::ifstream record(VELTRAC_TOLD);
    std::istringstream now(told);
    std::string window;
    for (std::string line, wanted; std::getline(now, line);) {
        window = line.starts_with("==") ? line : window;
        std::getline(record, wanted);
        ASSERT_EQ(line, wanted) << window;
    }
    EXPECT_EQ(record.peek(), std::ifstream::traits_type::eof());
}

}  // namespace
