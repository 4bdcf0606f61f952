// veltrac-cli makes what the windows make, byte for byte.

#include <gtest/gtest.h>

#include <QComboBox>

#include "calc/DFTWin.h"
#include "calc/DerivativeWin.h"
#include "converters/STLObject.h"
#include "core/TSFILE.h"
#include "filter/FilterWin.h"
#include "share/PlotCanvas.h"
#include "share/PlotExport.h"
#include "share/QtPlotWin1.h"
#include "tests/Desk.h"
#include "tests/cli/Shell.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

class CliWindows : public testing::Test
{
protected:
    CliWindows()
    {
        std::filesystem::copy(VELTRAC_EXAMPLES "/ecg.ts", "ecg.ts");
        std::filesystem::copy(VELTRAC_EXAMPLES "/weather.ts", "weather.ts");
    }

    // The bytes of a file without the time stamps of its columns, which tell when it was made.
    static std::string unstamped(const std::string& name)
    {
        std::string bytes = textOf(name);
        for (std::size_t column = 0; column < 8 && bytes.size() > 1024; ++column)
            bytes.replace(512 + 64 * column, 7, 7, '\0');
        return bytes;
    }

    const TestDirectory m_directory;
    Desk m_desk;
};

TEST_F(CliWindows, AFilteredColumn)
{
    FilterWin window(QStringLiteral("ecg.ts"), 1);
    window.sl_cbFilterActivated(7);  // Butterworth Bp
    window.sl_fldFiltOrderChanged(QStringLiteral("2"));
    window.sl_fldFreq0Changed(QStringLiteral("5"));
    window.sl_fldFreq1Changed(QStringLiteral("25"));
    window.sl_execute();
    ASSERT_EQ(cli("filter --type butterworth-bp --order 2 --freq 5 --freq2 25 -o cli.ts ecg.ts").status, 0);
    ASSERT_TRUE(std::filesystem::exists("temp.ts"));
    EXPECT_EQ(unstamped("cli.ts"), unstamped("temp.ts"));
}

TEST_F(CliWindows, ASpectrum)
{
    DFTWin window(QStringLiteral("weather.ts"), 2);
    window.sl_execute();
    ASSERT_EQ(cli("spectrum --column temp_max -o cli.ts weather.ts").status, 0);
    ASSERT_TRUE(std::filesystem::exists("tempDFT.ts"));
    EXPECT_EQ(unstamped("cli.ts"), unstamped("tempDFT.ts"));
}

TEST_F(CliWindows, AHardCopyAndItsSvg)
{
    QtPlotWin window(QStringLiteral("weather.ts"));
    window.show();
    PlotCanvas& canvas = *window.canvas();
    for (const char* const name : {"window.eps", "window.svg"})
        ASSERT_EQ(writePlotEps(QString::fromLatin1(name), canvas.psParameters(), canvas.plot(),
                               canvas.colors(), false),
                  QString());
    ASSERT_EQ(cli("plot -o cli.eps weather.ts").status, 0);
    ASSERT_EQ(cli("plot -o cli.svg weather.ts").status, 0);
    EXPECT_EQ(textOf("cli.eps"), textOf("window.eps"));
    EXPECT_EQ(textOf("cli.svg"), textOf("window.svg"));
}

}  // namespace
