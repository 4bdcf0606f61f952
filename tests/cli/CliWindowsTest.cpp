// veltrac-cli makes what the windows make, byte for byte.

#include <gtest/gtest.h>

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QTabBar>

#include "calc/DFTWin.h"
#include "calc/DerivativeWin.h"
#include "calc/IntegrateWin.h"
#include "converters/STLWin.h"
#include "converters/TsaDialogs.h"
#include "core/TSFILE.h"
#include "filter/CharacteristicPlot.h"
#include "filter/FilterCharWin.h"
#include "filter/FilterRun.h"
#include "filter/FilterWin.h"
#include "formula/EditTsWin1.h"
#include "share/PlotCanvas.h"
#include "share/PlotExport.h"
#include "share/QtPlotWin1.h"
#include "tests/BoxAnswer.h"
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
        std::filesystem::create_directory("scratch");
        setenv("TMPDIR", std::filesystem::absolute("scratch").c_str(), 1);
    }
    ~CliWindows() override { unsetenv("TMPDIR"); }

    // Executes in a window and returns the bytes of its result, which stands in the scratch directory.
    template <typename Window>
    static std::string executed(const char* file, unsigned column)
    {
        Window window(QString::fromLatin1(file), column);
        window.sl_execute();
        for (const auto& entry : std::filesystem::directory_iterator("scratch"))
            if (entry.path().extension() == ".ts")
                return unstamped(entry.path().string());
        return "nothing was made";
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

TEST_F(CliWindows, ADerivativeAndAnIntegral)
{
    ASSERT_EQ(cli("derivative --column wind -o d.ts weather.ts").status, 0);
    ASSERT_EQ(cli("integral --column temp_min -o i.ts weather.ts").status, 0);
    EXPECT_EQ(unstamped("d.ts"), executed<DerivativeWin>("weather.ts", 4));
    EXPECT_EQ(unstamped("i.ts"), executed<IntegrateWin>("weather.ts", 3));
}

TEST_F(CliWindows, AFormulaInPlace)
{
    std::filesystem::copy("weather.ts", "cli.ts");
    ASSERT_EQ(cli("formula --formula x2*1.5-x3 --in-place 4 cli.ts").status, 0);
    EditTsWin window(QStringLiteral("weather.ts"), 2);
    window.sl_addSource();
    window.sl_addSource();
    const auto rows = window.findChildren<EditVariable*>();
    ASSERT_GE(rows.size(), 3);
    rows[0]->choose(QStringLiteral("weather.ts"), 4);
    rows[1]->choose(QStringLiteral("weather.ts"), 2);
    rows[2]->choose(QStringLiteral("weather.ts"), 3);
    for (QLineEdit* const field : window.findChildren<QLineEdit*>())
        if (field->accessibleName() == QLatin1String("Formula"))
            field->setText(QStringLiteral("x2*1.5-x3"));
    const BoxAnswer answer(QStringLiteral("&Yes"));
    window.sl_calculate();
    EXPECT_NE(unstamped("weather.ts"), unstamped(VELTRAC_EXAMPLES "/weather.ts"));
    EXPECT_EQ(unstamped("cli.ts"), unstamped("weather.ts"));
}

TEST_F(CliWindows, ALogAndATsaText)
{
    ASSERT_EQ(cli("export --csv -o log.csv weather.ts").status, 0);
    ASSERT_EQ(cli("import -o cli.ts log.csv").status, 0);
    STLWin window(QStringLiteral("log.csv"));
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    {
        const BoxAnswer answer(QStringLiteral("&Close"));
        window.sl_import();
    }
    EXPECT_EQ(unstamped("cli.ts"), unstamped("log.ts"));
    // The text names its own file.
    ASSERT_EQ(cli("export -o cli/text.tsa weather.ts").status, 0);
    std::filesystem::create_directory("window");
    ASSERT_TRUE(
        exportTsaTo(nullptr, QStringLiteral("weather.ts"), QStringLiteral("window/text.tsa"), 1, 1461).done);
    EXPECT_TRUE(textOf("cli/text.tsa") == textOf("window/text.tsa"));
}

TEST_F(CliWindows, ThePagesOfACharacteristic)
{
    const FilterRequest request{7, 5.0, 25.0, 2, 0.0};  // Butterworth Bp
    const FidFilterPtr filter = designFilter(request, 360.0);
    ASSERT_NE(filter, nullptr);
    FilterCharWin window(filter.get(), 360.0, FilterPass::FromZero, QStringLiteral("BpBu2/5-25"));
    window.show();
    PlotCanvas& canvas = *window.findChild<PlotCanvas*>();
    for (QAction* const action : window.findChildren<QAction*>())
        if (action->isCheckable() && action->text().contains(QLatin1String("dB")))
            action->setChecked(true);
    int page = 0;
    for (const char* const words : {"gain-and-phase --db", "group-delay", "impulse-and-step"}) {
        window.findChild<QTabBar*>()->setCurrentIndex(page++);
        ASSERT_EQ(writePlotEps(QStringLiteral("window.eps"), canvas.psParameters(), canvas.plot(),
                               canvas.colors(), false),
                  QString());
        const std::string filterOptions = " --type butterworth-bp --order 2 --freq 5 --freq2 25 ";
        for (const char* const rate : {"ecg.ts", "--rate 360"})
            ASSERT_EQ(
                cli("plot --force -o cli.eps --characteristic " + std::string(words) + filterOptions + rate)
                    .status,
                0);
        EXPECT_EQ(textOf("cli.eps"), textOf("window.eps")) << words;
    }
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
    Plot2D& plot = canvas.plot();
    for (std::size_t g = 0; g < plot.groups().size(); ++g)
        plot.setLogarithmicY(g, true);
    plot.setMode(XMode::Sample);
    plot.setLogarithmicX(true);
    plot.fitAll();
    plot.grid = PlotGrid::Dotted;
    plot.title = "A week";
    plot.legend = false;
    ASSERT_EQ(writePlotEps(QStringLiteral("window.eps"), canvas.psParameters(), plot, canvas.colors(), false),
              QString());
    ASSERT_EQ(cli("plot --force --x samples --log-x --log-y --grid dotted --title \"A week\" --no-legend "
                  "-o cli.eps weather.ts")
                  .status,
              0);
    EXPECT_EQ(textOf("cli.eps"), textOf("window.eps"));
}

}  // namespace
