// The import windows, as a person uses them.
#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTableWidget>
#include <QTest>
#include <QTimer>

#include <cmath>
#include <fstream>

#include "converters/ImportReport.h"
#include "converters/SCLWin.h"
#include "converters/STLWin.h"
#include "converters/TsaDialogs.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"

using namespace veltrac;

namespace {

namespace fs = std::filesystem;

const QString kData = QStringLiteral(TEST_DATA "/");

struct ImportWin : testing::Test
{
    ImportWin()
    {
        std::string name = (fs::temp_directory_path() / "winXXXXXX").string();
        fs::current_path(mkdtemp(name.data()));
        QObject::connect(&answering, &QTimer::timeout, [this] { answer(); });
        answering.start(10);
    }
    ~ImportWin() override
    {
        const fs::path directory = fs::current_path();
        fs::current_path("/");
        fs::remove_all(directory);
    }

    // Presses the button that the test wants, in whatever box comes up, and notes what the box said.
    void answer()
    {
        QWidget* const box = QApplication::activeModalWidget();
        // How far a job is, on a slow machine, asks nothing.
        if (box == nullptr || qobject_cast<QProgressDialog*>(box) != nullptr)
            return;
        for (const QLabel* label : box->findChildren<QLabel*>())
            said += label->text() + QLatin1Char('\n');
        titles << box->windowTitle();
        for (QPushButton* button : box->findChildren<QPushButton*>()) {
            if (!buttons.contains(button->text()))
                continue;
            button->click();
            return;
        }
        ADD_FAILURE() << "no button in " << qPrintable(box->windowTitle());
        box->close();
    }

    QTimer answering;
    QStringList buttons = {QStringLiteral("Ok"), QStringLiteral("&Close"), QStringLiteral("&Yes")};
    QString said;
    QStringList titles;
};

template <typename Child>
Child* field(QWidget& window, const char* name)
{
    for (Child* child : window.findChildren<Child*>())
        if (child->accessibleName() == QLatin1String(name))
            return child;
    ADD_FAILURE() << name;
    return nullptr;
}

bool hasButton(QWidget& window, const char* text, bool enabled)
{
    for (const QPushButton* button : window.findChildren<QPushButton*>())
        if (button->text() == QLatin1String(text))
            return button->isEnabled() == enabled;
    return false;
}

TEST_F(ImportWin, enterImportsWhatWasFound)
{
    auto* const window = new STLWin(kData + QStringLiteral("seattle-weather.csv"));
    QSignalSpy made(window, &STLWin::x_file_made);
    QSignalSpy changed(window, &STLWin::x_directory_changed);
    window->show();
    QTest::keyClick(window->focusWidget(), Qt::Key_Return);
    ASSERT_EQ(1, made.count());
    EXPECT_EQ(0, changed.count()) << "the table would be read twice";
    EXPECT_EQ(QStringLiteral("seattle-weather.ts"), made[0][0].toString());
    EXPECT_TRUE(said.contains(QStringLiteral("1 461 rows, 4 columns"))) << qPrintable(said);
    EXPECT_EQ(1461U, openTsFile("seattle-weather.ts", true)->samples());
}

TEST_F(ImportWin, fieldsReachTheFile)
{
    auto* const window = new STLWin(kData + QStringLiteral("quotes.stl"));
    window->show();
    auto* const columns = field<QTableWidget>(*window, "The columns");
    columns->item(2, 0)->setCheckState(Qt::Checked);
    columns->item(3, 1)->setText(QStringLiteral("Heat"));
    columns->item(3, 3)->setText(QStringLiteral("K"));
    auto* const fill = field<QComboBox>(*window, "Missing become");
    fill->setCurrentIndex(1);
    QTest::keyClick(window, Qt::Key_Enter);
    const auto ts = openTsFile("quotes.ts", true);
    ASSERT_EQ(3U, ts->columns());
    EXPECT_EQ(3.0F, ts->value(3, 2)) << "numbered texts";
    EXPECT_STREQ("Heat", ts->columnName(3));
    EXPECT_STREQ("Temp [K]", ts->columnDescription(3));
    EXPECT_EQ(0.0F, ts->value(2, 3));
}

TEST_F(ImportWin, hopelessFileCannotBeImported)
{
    STLWin window(kData + QStringLiteral("words.stl"));
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.show();
    EXPECT_TRUE(hasButton(window, "&Import", false));
    EXPECT_TRUE(hasButton(window, "Check onl&y", false));
    bool told = false;
    for (const QLabel* label : window.findChildren<QLabel*>())
        told = told || label->text() == QStringLiteral("No line of numbers was found in words.stl.");
    EXPECT_TRUE(told);
}

TEST_F(ImportWin, otherReadingIsOneClickAway)
{
    STLWin window(kData + QStringLiteral("one-column.stl"));
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.show();
    auto* const columns = field<QTableWidget>(window, "The columns");
    EXPECT_EQ(2, columns->rowCount());
    for (QPushButton* button : window.findChildren<QPushButton*>())
        if (button->text() == QStringLiteral("Or one column with decimal comma?"))
            button->click();
    EXPECT_EQ(1, columns->rowCount());
}

TEST_F(ImportWin, orderThatTheCheckFindsReachesItsField)
{
    std::ofstream log("late.csv");
    log << "When,Level\n";
    for (int i = 0; i < 2000; ++i)
        log << (i == 600 ? "3/14/2016 13:30:00," : "3/4/2016 13:30:00,") << i << '\n';
    log.close();
    STLWin window(QStringLiteral("late.csv"));
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    EXPECT_EQ(QStringLiteral("month before day"), field<QComboBox>(window, "Order")->currentText());
    field<QLineEdit>(window, "Description")->setText(QStringLiteral("x"));
    window.sl_import();
    EXPECT_EQ(2000U, openTsFile("late.ts", true)->samples()) << "no row is skipped";
}

TEST_F(ImportWin, refusedFieldsSayWhy)
{
    STLWin window(kData + QStringLiteral("preamble.stl"));
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.show();
    const auto says = [&](const char* text) {
        for (const QLabel* label : window.findChildren<QLabel*>())
            if (!label->isHidden() && label->text() == QLatin1String(text))
                return hasButton(window, "&Import", false);
        return false;
    };
    auto* const to = field<QLineEdit>(window, "to (0: the last)");
    to->setText(QStringLiteral("x"));
    EXPECT_TRUE(says("\"x\" is not a number."));
    to->setText(QStringLiteral("0"));
    EXPECT_TRUE(hasButton(window, "&Import", true));
    field<QComboBox>(window, "From")->setCurrentIndex(0);
    field<QLineEdit>(window, "Start")->setText(QStringLiteral("2016-02-31"));
    EXPECT_TRUE(says("\"2016-02-31\" is no date and time; write yyyy-mm-dd hh:mm:ss."));
    field<QLineEdit>(window, "Start")->clear();
    auto* const first = field<QSpinBox>(window, "First data line");
    first->setValue(99);
    EXPECT_TRUE(says("No line of numbers was found in preamble.stl."));
    first->setValue(8);
    EXPECT_TRUE(hasButton(window, "&Import", true)) << "what is mended is good again";
}

TEST_F(ImportWin, longFileIsReadWhenItIsShown)
{
    std::ofstream log("long.csv");
    log << "A;B\n";
    for (int i = 0; i < 600'000; ++i)
        log << "1,25;2,5\n";
    log << "oops;1\n";
    log.close();
    STLWin window(QStringLiteral("long.csv"));
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.show();
    const auto shows = [&] {
        for (const QLabel* label : window.findChildren<QLabel*>())
            if (label->text().startsWith(QStringLiteral("600 001 rows, 2 columns. 1 cell missing.\n")))
                return true;
        return false;
    };
    EXPECT_TRUE(QTest::qWaitFor(shows, 20000));
    for (QPushButton* button : window.findChildren<QPushButton*>())
        if (button->text() == QStringLiteral("&Cancel"))
            QTest::keyClick(button, Qt::Key_Return);
    EXPECT_FALSE(window.isVisible()) << "Enter presses the button that has the focus";
    EXPECT_FALSE(fs::exists("long.ts"));
}

TEST_F(ImportWin, reportTellsWhereAndWhat)
{
    STLWin window(kData + QStringLiteral("troubles.stl"));
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.show();
    QStringList rows;
    QTimer reading;
    QObject::connect(&reading, &QTimer::timeout, [&] {
        auto* const report = qobject_cast<ImportReport*>(QApplication::activeModalWidget());
        if (report == nullptr || !rows.isEmpty())
            return;
        const auto* const table = report->findChild<QTableWidget*>();
        for (int row = 0; row < table->rowCount(); ++row)
            rows << table->item(row, 0)->text() + QLatin1Char('|') + table->item(row, 1)->text() +
                        QLatin1Char('|') + table->item(row, 3)->text();
    });
    answering.setInterval(200);
    reading.start(10);
    window.sl_check();
    EXPECT_EQ((QStringList{"Line 3|2|x", "Line 4||2016-05-17 00:20;1", "Line 5||2016-05-17 00:30;1;2;3",
                           "Line 6|1|2016-99-17 00:40", "Line 8||End of log", "Line 8|1|End of log"}),
              rows);
    EXPECT_TRUE(
        said.contains(QStringLiteral("5 rows, 2 columns. 3 cells missing, 2 lines skipped.\n"
                                     "10.00 min, 1 gap, longest 20 min.")))
        << qPrintable(said);
    EXPECT_FALSE(fs::exists("troubles.ts")) << "only checked";
}

TEST_F(ImportWin, keptOldFileStays)
{
    std::ofstream("gaps.ts") << "old";
    buttons = QStringList{QStringLiteral("&No")};
    STLWin window(kData + QStringLiteral("gaps.stl"));
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.show();
    QTest::keyClick(&window, Qt::Key_Return);
    EXPECT_TRUE(
        said.contains(QStringLiteral("A file called gaps.ts already exists.Do you want to overwrite it?")));
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(3U, fs::file_size("gaps.ts"));
}

TEST_F(ImportWin, singleColumnLogsBecomeColumns)
{
    auto* const window = new SCLWin(kData + QStringLiteral("timed.scl"));
    window->add(kData + QStringLiteral("index.scl"));
    window->show();
    field<QLineEdit>(*window, "Result name")->setText(QStringLiteral("both"));
    QTest::keyClick(window, Qt::Key_Return);
    const auto ts = openTsFile("both.ts", true);
    EXPECT_EQ(2U, ts->columns());
    EXPECT_EQ(0.5F, ts->dt());
    EXPECT_STREQ("timed", ts->columnName(1));
    EXPECT_TRUE(std::isnan(ts->value(4, 1)));
    EXPECT_TRUE(said.contains(QStringLiteral("timed.scl has 1 value fewer.")));
}

TEST_F(ImportWin, aReportShowsItsLastLineHoweverLongItIs)
{
    const QString summary =
        QStringLiteral("Something that was assumed and takes more than one line of the box to be told.\n")
            .repeated(9);
    for (const QVector<ImportTrouble>& troubles :
         {QVector<ImportTrouble>(), QVector<ImportTrouble>(3, ImportTrouble{})}) {
        ImportReport box(nullptr, QStringLiteral("Check"), summary, troubles, 3, true);
        box.show();
        const auto* const label = box.findChild<QLabel*>();
        EXPECT_GE(label->height(), label->heightForWidth(label->width()));
    }
}

TEST_F(ImportWin, tsaBoxesSpeakTheProgramsOwnTexts)
{
    std::ofstream("a.tsa") << "1 2 x\n";
    buttons = QStringList{QStringLiteral("&OK"), QStringLiteral("OK"), QStringLiteral("Ok"),
                          QStringLiteral("&Yes")};
    std::ofstream("a.ts") << "old";
    const TsaOutcome outcome = importTsa(nullptr, QStringLiteral("a.tsa"));
    ASSERT_TRUE(outcome.done);
    EXPECT_EQ(QStringLiteral("Enter no of samples: "), titles[0]);
    EXPECT_EQ(QStringLiteral("Enter no of columns:"), titles[1]);
    EXPECT_EQ(QStringLiteral("Overwrite File? "), titles[2]);
    EXPECT_TRUE(said.contains(QStringLiteral("No of samples was not found in a.tsa\n")) &&
                said.contains(QStringLiteral("No of columns was not found in a.tsa\n")));
    EXPECT_TRUE(said.contains(QStringLiteral("9 samples have no line"))) << qPrintable(said);
    EXPECT_TRUE(said.contains(QStringLiteral("2 values are more than the columns")));
    EXPECT_EQ(10U, openTsFile("a.ts", true)->samples());

    EXPECT_FALSE(importTsa(nullptr, QStringLiteral("none.tsa")).done);
    EXPECT_TRUE(said.contains(QStringLiteral("Could not open none.tsa.\nOperation is aborted.")));
}

}  // namespace
