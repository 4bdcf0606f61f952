// The Ts-Filt window, driven as a user would.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPointer>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>

#include <cmath>
#include <fstream>
#include <optional>

#include "core/FileTime.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "filter/FilterCharWin.h"
#include "filter/FilterTypes.h"
#include "filter/FilterWin.h"
#include "filter/SaveResultsDialog.h"
#include "share/NumberField.h"
#include "share/PlotCanvas.h"
#include "share/PlotReadout.h"
#include "tests/BoxAnswer.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

class FilterWinTest : public testing::Test
{
protected:
    FilterWinTest()
    {
        TSFILE file("hum", 2000, 1, 0);
        file.dt(0.001F);
        file.columnName(1, "Signal");
        for (std::uint32_t s = 1; s <= 2000; ++s)
            file.setValue(s, 1, static_cast<float>(1.0 + std::sin(s * 0.314159265358979)));  // 50 Hz
        std::ofstream("temp.ts") << "the user's own";
    }
    ~FilterWinTest() override { delete m_window; }

    FilterWin& open()
    {
        m_window = new FilterWin(QStringLiteral("hum.ts"), 1);
        m_window->show();
        return *m_window;
    }
    QComboBox& types()
    {
        for (QComboBox* const box : m_window->findChildren<QComboBox*>()) {
            if (box->count() == 17)
                return *box;
        }
        throw std::logic_error("no filter types");
    }
    void choose(int type)
    {
        types().setCurrentIndex(type);
        m_window->sl_cbFilterActivated(type);
    }
    NumberField& field(int index) { return *m_window->findChildren<NumberField*>()[index]; }

    TestDirectory m_directory;
    QPointer<FilterWin> m_window;
};

enum { Freq0, Order, Freq1, Ripple };

TEST_F(FilterWinTest, FieldsThatATypeDoesNotUseAreDisabledAndValuesStay)
{
    open();
    struct Row
    {
        int type;
        bool used[4];
    };
    for (const Row& row : {Row{0, {false, true, false, false}}, Row{2, {true, true, false, false}},
                           Row{8, {true, true, true, false}}, Row{12, {true, true, true, true}},
                           Row{16, {true, false, false, false}}}) {
        choose(row.type);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(field(i).isEnabled(), row.used[i]) << row.type << " " << i;
    }
    choose(7);
    field(Order).setText(QStringLiteral("6"));
    choose(0);
    field(Order).setText(QStringLiteral("99"));
    choose(11);
    EXPECT_EQ(field(Order).text(), QStringLiteral("6"));
    choose(0);
    EXPECT_EQ(field(Order).text(), QStringLiteral("99"));
}

TEST_F(FilterWinTest, WrongFieldsAreToldBeforeAnythingIsMade)
{
    open();
    choose(5);
    // the sample time that counts is the one of now
    openTsFile("hum.ts", false)->dt(0.01F);
    field(Freq0).setText(QStringLiteral("50"));
    BoxAnswer answer(QStringLiteral("Ok"));
    m_window->sl_execute();
    EXPECT_EQ(answer.title(), QStringLiteral("Ts-Filt"));
    EXPECT_EQ(answer.text(), QStringLiteral("Freq0 must be below half of the sampling frequency, 50 Hz"));
    std::filesystem::remove("hum.ts");
    m_window->sl_execute();
    EXPECT_EQ(m_window->statusBar()->currentMessage(), QStringLiteral("hum.ts could not be opened"));
    EXPECT_FALSE(std::filesystem::exists("temp_1.ts"));
}

TEST_F(FilterWinTest, FrequenciesThatNobodyHasTypedSuitTheFile)
{
    openTsFile("hum.ts", false)->dt(86400.0F);
    open();
    EXPECT_EQ(field(Freq0).text(), QStringLiteral("3e-07"));
    field(Freq0).setText(QStringLiteral("5e-7"));
    openTsFile("hum.ts", false)->dt(0.001F);
    m_window->sl_updateCanvas();
    EXPECT_EQ(field(Freq0).text(), QStringLiteral("5e-7"));
    EXPECT_EQ(field(Freq1).text(), QStringLiteral("40"));
}

TEST_F(FilterWinTest, WorkFilesAreItsOwnAndGoWithIt)
{
    open();
    choose(5);
    m_window->sl_execute();
    EXPECT_EQ(m_window->statusBar()->currentMessage(), QStringLiteral("Filtering...finished"));
    m_window->sl_execute();  // over the one before
    FilterWin* const second = new FilterWin(QStringLiteral("hum.ts"), 1);
    second->sl_execute();
    EXPECT_TRUE(std::filesystem::exists("temp_1.ts"));
    EXPECT_TRUE(std::filesystem::exists("temp_2.ts"));
    {
        const BoxAnswer no(QStringLiteral("&No"));
        m_window->close();
        EXPECT_EQ(no.text(), QStringLiteral("Do you want to save the results?"));
    }
    delete second;
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    int left = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("."))
        ++left;
    EXPECT_EQ(left, 2);  // the source and the user's own temp.ts
    std::string text;
    std::getline(std::ifstream("temp.ts"), text);
    EXPECT_EQ(text, "the user's own");
}

TEST_F(FilterWinTest, ResultsAreSavedBothWays)
{
    open();
    choose(8);
    field(Freq0).setText(QStringLiteral("40,0"));
    field(Freq1).setText(QStringLiteral("60"));
    m_window->sl_execute();
    QSignalSpy changed(m_window, SIGNAL(x_directory_changed()));
    QSignalSpy made(m_window, SIGNAL(x_file_made(QString)));
    {
        BoxAnswer answer(QStringLiteral("&Save"));
        m_window->sl_saveResults();
    }
    const auto saved = openTsFile("hum_filt.ts", true);
    EXPECT_STREQ(saved->columnName(2), "Signal_f");
    EXPECT_NEAR(saved->value(1500, 2), 1.0F, 1e-3F);  // the hum is gone
    {
        BoxAnswer answer(QStringLiteral("&Save"), [](QWidget& dialog) {
            auto* const method = dialog.findChild<QComboBox*>();
            method->setCurrentIndex(1);
            emit method->activated(1);
        });
        m_window->sl_saveResults();
    }
    const auto source = openTsFile("hum.ts", true);
    ASSERT_EQ(source->columns(), 2U);
    EXPECT_EQ(source->value(1500, 2), saved->value(1500, 2));
    EXPECT_EQ(made.count(), 1);
    EXPECT_EQ(changed.count(), 1);
    // what would go with the window is refused
    std::optional<BoxAnswer> refused;
    const BoxAnswer answer(QStringLiteral("&Save"), [&](QWidget& dialog) {
        dialog.findChild<QLineEdit*>()->setText(QStringLiteral("temp_1.ts"));
        refused.emplace(QStringLiteral("Ok"));
    });
    m_window->sl_saveResults();
    EXPECT_TRUE(refused && refused->text().startsWith(QStringLiteral("temp_1.ts is the work file")));
    EXPECT_EQ(openTsFile("temp_1.ts", true)->value(1500, 2), saved->value(1500, 2));
}

TEST_F(FilterWinTest, WorkFileFollowsTheWorkingDirectory)
{
    open();
    m_window->sl_execute();
    std::filesystem::create_directory("sub");
    std::filesystem::current_path("sub");
    m_window->sl_execute();
    EXPECT_EQ(m_window->statusBar()->currentMessage(), QStringLiteral("Filtering...finished"));
    EXPECT_TRUE(std::filesystem::exists("temp.ts"));
    EXPECT_FALSE(std::filesystem::exists("../temp_1.ts"));
}

TEST_F(FilterWinTest, PreviewFollowsTheFields)
{
    open();
    const QList<PlotCanvas*> canvases = m_window->findChildren<PlotCanvas*>();
    const auto found = std::find_if(canvases.begin(), canvases.end(), [](const PlotCanvas* canvas) {
        return canvas->accessibleName() == QStringLiteral("Characteristic of the filter");
    });
    ASSERT_NE(found, canvases.end());
    const PlotCanvas& preview = **found;
    struct Row
    {
        int type;
        const char* freq0;
        const char* marked;
    };
    for (const Row& row : {Row{5, "12,5", "-3.01 dB @ 12.5 Hz"}, Row{7, "20", "-3.01 dB @ 20, 40 Hz"},
                           Row{16, "100", "-3.01 dB @ 100 Hz"}, Row{16, "abc", "-3.01 dB @ 100 Hz"},
                           Row{2, "499", "-3.01 dB @ 499 Hz"}}) {
        choose(row.type);
        field(Freq0).setText(QString::fromLatin1(row.freq0));
        const auto& variables = preview.plot().variables();
        ASSERT_EQ(variables.size(), 2U) << row.freq0;
        EXPECT_EQ(variables[1]->variable().label, row.marked);
        (*found)->grab();  // painting tells what is seen
        // Of a field that is no number the last picture is not left standing.
        EXPECT_EQ(preview.accessibleDescription() == "A field is not right: it is marked.",
                  std::string(row.freq0) == "abc");
    }
}

TEST_F(FilterWinTest, AWorkFileThatIsGoneIsToldAndNothingFalls)
{
    open();
    QObject::connect(m_window->statusBar(), &QStatusBar::messageChanged, [](const QString& text) {
        if (text == QStringLiteral("Filtering...finished"))
            std::filesystem::remove("temp_1.ts");
    });
    m_window->sl_execute();
    for (const PlotCanvas* const canvas : m_window->findChildren<PlotCanvas*>())
        EXPECT_TRUE(canvas->accessibleName() == QStringLiteral("Characteristic of the filter") ||
                    canvas->plot().variables().empty());
    EXPECT_FALSE(std::filesystem::exists("temp_1.ts"));
}

TEST_F(FilterWinTest, SlotsSetTheirFieldsAndNumbersKeepTheirSpelling)
{
    open();
    choose(11);
    m_window->sl_fldFreq0Changed(QStringLiteral("0.0001"));
    m_window->sl_fldFiltOrderChanged(QStringLiteral("2"));
    m_window->sl_fldFreq1Changed(QStringLiteral("100,5"));
    m_window->sl_fldRippleChanged(QStringLiteral("-0.25"));
    const char* const texts[] = {"0.0001", "2", "100,5", "-0.25"};
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(field(i).text(), QLatin1String(texts[i])) << i;
    EXPECT_EQ(filterSpec({11, 0.0001, 100000, 2, -0.25}), "BpCh2/-0.25/0.0001-100000");
    SaveResultsDialog dialog(QStringLiteral("hum.ts"), QStringLiteral("x.ts"), nullptr);
    dialog.sl_methodSelected(1);
    EXPECT_EQ(dialog.method(), SaveResultsDialog::ToSourceColumn);
    dialog.sl_cbResultColActivated(0);
    EXPECT_EQ(dialog.outputColumn(), 1U);
}

TEST_F(FilterWinTest, ARangeIsFilteredAloneAndDoesNotGoToOtherSamplesOfItsSource)
{
    openTsFile("hum.ts", false)->startSeconds(1000);
    open();
    choose(0);
    for (QLineEdit* const edge : m_window->findChildren<QLineEdit*>())
        if (edge->accessibleName() == QStringLiteral("From sample"))
            edge->setText(QStringLiteral("1.5 s"));
    m_window->sl_execute();
    const auto work = openTsFile("temp_1.ts", true);
    EXPECT_EQ(work->samples(), 501U);
    EXPECT_EQ(work->value(1, 1), openTsFile("hum.ts", true)->value(1500, 1));
    EXPECT_NEAR(FileTime(*work).moment(1), 1001.5, 1e-6);
    std::optional<BoxAnswer> refused;
    const BoxAnswer answer(QStringLiteral("&Save"), [&](QWidget& dialog) {
        dynamic_cast<SaveResultsDialog&>(dialog).sl_methodSelected(1);
        refused.emplace(QStringLiteral("Ok"));
    });
    m_window->sl_saveResults();
    EXPECT_TRUE(refused && refused->text().startsWith(QStringLiteral("The results begin with sample 1500")));
    EXPECT_EQ(openTsFile("hum.ts", true)->columns(), 1U);
}

TEST(SaveResultsDialog, NamesAreTakenAsTyped)
{
    const TestDirectory directory;
    TSFILE("two", 10, 2, 0).flush(true);
    TSFILE("one", 10, 1, 0).flush(true);
    struct Row
    {
        const char* typed;
        const char* file;
        bool good;
        unsigned input;
        unsigned output;
    };
    const Row rows[] = {
        {"7", "ts0007.ts", true, 0, 0},
        {"data.v2", "data.v2.ts", true, 0, 0},
        {" \u00d6l ", "\u00d6l.ts", true, 0, 0},
        {"sub/x", "sub/x.ts", true, 0, 0},
        {"a.TS", "a.TS", true, 0, 0},
        {"", "", false, 0, 0},
        {"two", "two.ts", true, 1, 2},
        {"one.ts", "one.ts", false, 1, 1},
    };
    SaveResultsDialog dialog(QStringLiteral("two.ts"), QStringLiteral("x.ts"), nullptr);
    for (const Row& row : rows) {
        dialog.findChild<QLineEdit*>()->setText(QString::fromUtf8(row.typed));
        EXPECT_EQ(dialog.file(), QString::fromUtf8(row.file));
        for (const QAbstractButton* const button : dialog.findChildren<QAbstractButton*>())
            EXPECT_TRUE(button->text() != QStringLiteral("&Save") || button->isEnabled() == row.good)
                << row.typed;
        EXPECT_EQ(dialog.inputColumn(), row.input) << row.typed;
        EXPECT_EQ(dialog.outputColumn(), row.output) << row.typed;
    }
}

TEST_F(FilterWinTest, CharacteristicOpensAndSwitchesItsAxes)
{
    open();
    choose(3);
    m_window->sl_plotFiltWin();
    FilterCharWin* shown = nullptr;
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        if (auto* const window = qobject_cast<FilterCharWin*>(widget))
            shown = window;
    }
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(shown->windowTitle(), QStringLiteral("Ts-Filt with: BpBe4/10-40"));
    for (QAction* const action : shown->findChildren<QAction*>()) {
        if (action->isCheckable())
            action->toggle();
    }
    EXPECT_FALSE(shown->grab().isNull());
    // Its points stand at unequal distances: extremes can be read off, a plain mean would be wrong.
    const Plot2D& plot = shown->findChild<PlotCanvas*>()->plot();
    const std::vector<IntervalRow> rows = intervalRows(plot);
    ASSERT_FALSE(rows.empty());
    const IntervalFields fields = intervalFields(plot, rows[0]);
    for (std::size_t c = 5; c < 10; ++c)
        EXPECT_EQ(fields[c].empty(), c > 6) << kIntervalHeadings[c];
    shown->close();
    choose(0);
    BoxAnswer answer(QStringLiteral("Ok"));
    m_window->sl_plotFiltWin();
    EXPECT_EQ(answer.text(), QStringLiteral("Frequency plot of the moving average filter is not available."));
}

}  // namespace
