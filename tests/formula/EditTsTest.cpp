// Ts-Edit as a person uses it.

#include <gtest/gtest.h>

#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QStatusBar>
#include <QTest>

#include <algorithm>
#include <fstream>

#include "core/ScratchFile.h"
#include "core/TSFILE.h"
#include "formula/EditTsWin1.h"
#include "formula/FormulaFile.h"
#include "share/NoticeStrip.h"
#include "tests/BoxAnswer.h"
#include "tests/Desk.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

void makeRamp(const char* name, std::uint32_t samples, float dt)
{
    TSFILE file(name, samples, 2, 0);
    file.dt(dt);
    for (std::uint32_t s = 1; s <= samples; ++s)
        file.setValue(s, 1, static_cast<float>(s - 1) * dt);
}

void type(EditTsWin& window, const char* formula)
{
    for (QLineEdit* const field : window.findChildren<QLineEdit*>())
        if (field->accessibleName() == QLatin1String("Formula"))
            field->setText(QLatin1String(formula));
}

QComboBox& targetBox(EditTsWin& window)
{
    for (QComboBox* const box : window.findChildren<QComboBox*>())
        if (box->accessibleName() == QLatin1String("Target row"))
            return *box;
    throw std::logic_error("no target box");
}

}  // namespace

TEST(EditTsWin, ComputesAColumnOverTheRangeOfItsRows)
{
    const TestDirectory directory;
    Desk desk;
    makeRamp("a", 100, 0.5F);
    makeRamp("b", 50, 1.0F);  // another sample time: interpolated
    EditTsWin window(QStringLiteral("a.ts"), 2);
    window.sl_addSource();
    window.sl_addSource();
    const auto rows = window.findChildren<EditVariable*>();
    ASSERT_EQ(rows.size(), 3);
    rows[1]->choose(QStringLiteral("a.ts"), 1);
    rows[2]->choose(QStringLiteral("b.ts"), 1);
    EXPECT_EQ(targetBox(window).count(), 3);
    EXPECT_EQ(rows[0]->ts(), rows[1]->ts());
    type(window, "x2*x3");
    window.sl_calculate();
    {
        TSFILE file("a", true);
        EXPECT_FLOAT_EQ(file.value(4, 2), 1.5F * 1.5F);
        EXPECT_FLOAT_EQ(file.value(99, 2), 49.0F * 49.0F);  // b ends at 49 s
        EXPECT_EQ(file.value(100, 2), 0.0F);
        EXPECT_GT(file.columnTime(2), 0);
    }
    EXPECT_TRUE(window.statusBar()->currentMessage().startsWith(QStringLiteral("99 samples")));
    type(window, "1/(x2-1)");
    window.sl_calculate();
    EXPECT_EQ(desk.errors, QStringList(QStringLiteral("Attempt to divide on zero")));
    EXPECT_TRUE(window.statusBar()->currentMessage().contains(QStringLiteral("1 with an error")));
    rows[0]->sl_StartTimeChanged(QStringLiteral("10"));
    rows[0]->sl_EndTimeChanged(QStringLiteral("10,5"));
    type(window, "7");
    window.sl_calculate();
    EXPECT_TRUE(window.statusBar()->currentMessage().startsWith(QStringLiteral("2 samples")));
    EXPECT_EQ(TSFILE("a", true).value(21, 2), 7.0F);
    window.sl_removeSource();
    EXPECT_EQ(targetBox(window).count(), 2);
}

// A plot offers what it shows, counted from the oldest sample.
TEST(EditTsWin, OfferedRangeIsComputedAlone)
{
    const TestDirectory directory;
    Desk desk;
    for (const std::uint32_t written : {0U, 1250U}) {
        {
            TSFILE file("a", 1000, 2, 0);
            file.dt(0.01F);
            file.startTime(0.24F);
            file.setRingMode(written != 0);
            const float row[] = {1.0F, 2.0F};
            for (std::uint32_t s = 1; s <= std::max(written, 1000U); ++s)
                file.writeRow(s, row, false);
            file.flush(true);
        }
        const std::uint32_t before = written == 0 ? 0 : 250;
        EditTsWin window(QStringLiteral("a.ts"), 2);
        window.offerRange({701, 900});
        type(window, "7");
        window.sl_calculate();
        TSFILE file("a", true);
        for (std::uint32_t s = 1; s <= 1000; ++s)
            ASSERT_EQ(file.value(before + s, 2), s >= 701 && s <= 900 ? 7.0F : 2.0F) << s;
    }
}

TEST(EditTsWin, RowStaysOnItsFileWhenTheWorkingDirectoryChanges)
{
    const TestDirectory directory;
    Desk desk;
    makeRamp("a", 10, 1.0F);
    std::filesystem::create_directory("other");
    makeRamp("other/a", 10, 1.0F);
    const auto other = bytesOf("other/a.ts");
    EditTsWin window(QStringLiteral("a.ts"), 2);
    type(window, "5");
    std::filesystem::current_path("other");
    window.findChild<EditVariable*>()->refreshFiles();
    window.sl_calculate();
    EXPECT_EQ(bytesOf("a.ts"), other);
    EXPECT_EQ(TSFILE("../a", true).value(1, 2), 5.0F);
}

TEST(EditTsWin, SourceThatIsGoneDoesNotBecomeZero)
{
    const TestDirectory directory;
    Desk desk;
    makeRamp("a", 100, 1.0F);
    makeRamp("b", 100, 1.0F);
    EditTsWin window(QStringLiteral("b.ts"), 2);
    window.sl_addSource();
    window.findChildren<EditVariable*>().at(1)->choose(QStringLiteral("a.ts"), 2);
    targetBox(window).setCurrentIndex(1);
    type(window, "x1*2");
    const auto before = bytesOf("a.ts");
    const auto refused = [&] {
        const BoxAnswer box(QStringLiteral("Ok"));
        window.sl_calculate();
        return box.text().toStdString();
    };
    {
        TSFILE narrow("b", 100, 1, 0);  // made anew with fewer columns
        narrow.dt(1.0F);
    }
    EXPECT_EQ(refused(), "x1: b.ts does not have the chosen column. Nothing was calculated.");
    // The window tells it by itself, too, and shows the columns and times that there are.
    const auto isTold = [&](const char* text) {
        const auto strips = window.findChildren<NoticeStrip*>();
        return QTest::qWaitFor([&] { return strips.at(1)->text() == QLatin1String(text); }, 20'000);
    };
    EXPECT_TRUE(isTold("b.ts has changed and was read again."));
    EXPECT_EQ(window.findChildren<EditVariable*>().at(0)->column(), 1U);
    std::filesystem::resize_file("b.ts", 1100);  // cut in the middle of its values
    type(window, "x1*3");
    EXPECT_TRUE(refused().starts_with("The calculation failed: "));
    std::filesystem::remove("b.ts");
    EXPECT_TRUE(isTold("b.ts is gone."));
    EXPECT_EQ(refused(), "x1: b.ts could not be opened. Nothing was calculated.");
    EXPECT_EQ(bytesOf("a.ts"), before);
    type(window, "7");  // a row that is not used may be gone
    window.sl_calculate();
    EXPECT_EQ(TSFILE("a", true).value(100, 2), 7.0F);
    // Its column is chosen again when it is back.
    std::filesystem::rename("a.ts", "away");
    EXPECT_TRUE(isTold("b.ts is gone. a.ts is gone."));
    EXPECT_EQ(window.findChildren<EditVariable*>().at(1)->column(), 0U);
    std::filesystem::rename("away", "a.ts");
    EXPECT_TRUE(isTold("b.ts is gone."));
    EXPECT_EQ(window.findChildren<EditVariable*>().at(1)->column(), 2U);
    std::filesystem::remove("a.ts");
    EXPECT_EQ(refused(), "x2: a.ts could not be opened. Nothing was calculated.");
}

TEST(EditTsWin, WhatTheCompilerAcceptsInSilenceStandsBesideTheFieldAndInTheInfoBar)
{
    const TestDirectory directory;
    Desk desk;
    makeRamp("a", 10, 1.0F);
    EditTsWin window(QStringLiteral("a.ts"), 2);
    const struct
    {
        std::string formula;
        const char* told;
        const char* also = "";  // of the values
    } rows[] = {
        {"t*2", ""},
        {" (x1) ", ""},
        {"SIN(x1)", "SIN(x1) was read as 0"},
        {"-(x1)", "-(x1) was read as 0"},
        {"  ", "a blank was read as 0"},
        {"2x1", "2x1 was read as 2"},
        {"x1+-(x1)", "x1+-(x1) was read as x1+0"},
        {"x1 + ", "x1 + was read as x1 + 0"},
        {"x9+1", "x9+1 was read as x; an x without a source gave 0"},
        {"2*sqrt(x1^2+1)+cos(pi*t) x1+2*sqrt(x1)+12",
         "\xE2\x80\xA6"
         "1^2+1)+cos(pi*t) x1+2*sqrt(x1)+1\xE2\x80\xA6 was read as \xE2\x80\xA6"
         "1^2+1)+cos(pi*t)"},
        {"t*2,5", "a comma gave 0 (decimals have a point)"},
        {"max(x1, 2.5)", ""},
        {"log2(t+1)+cosh (t)", "log2 was read as log; cosh was read as cos"},
        {"-max(t,1)", "the minus before max, min or pow was not read"},
        {"-t^2", "-a^b was read as (-a)^b"},
        {"(-t)^2-t^2-2^3", ""},
        {"log(-1)", "", "all 10 values are missing"},
        {"ln(-t+8.5)", "", "1 value is missing"},
        {"1/t", "", "1 with an error and the value 0"},
        {std::string(256, '1'), "The formula is longer than 255 characters and will be cut"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.formula);
        type(window, row.formula.c_str());
        const auto labels = window.centralWidget()->findChildren<QLabel*>();
        EXPECT_TRUE(std::any_of(labels.begin(), labels.end(), [&](const QLabel* label) {
            return label->text() == QString::fromUtf8(row.told);
        }));
        if (row.formula.size() > 255)
            continue;
        window.sl_calculate();
        QStringList words(QStringLiteral("x1 of a.ts was calculated"));
        for (const char* const word : {row.told, row.also})
            if (*word != '\0')
                words << QString::fromUtf8(word);
        EXPECT_EQ(window.findChild<NoticeStrip*>()->text(), words.join(QStringLiteral("; ")));
    }
}

TEST(EditTsWin, CalculationIsUndoneToTheLastBit)
{
    const TestDirectory directory;
    std::filesystem::create_directory("scratch");  // tests beside this one leave old values too
    ::setenv("TMPDIR", std::filesystem::absolute("scratch").c_str(), 1);
    Desk desk;
    makeRamp("a", 5000, 0.5F);
    {
        TSFILE file("a", false);
        file.startTime(3.0F);
        const int stamp[7] = {0, 1, 2, 3, 4, 5, 1999};
        file.setColumnStamp(1, stamp);
    }
    const auto before = bytesOf("a.ts");
    const auto scratchFiles = [] {
        const std::filesystem::directory_iterator all(scratchDirectory());
        return std::count_if(begin(all), end(all), [](const auto& entry) {
            return entry.path().filename().string().starts_with("veltrac-old-values");
        });
    };
    const auto others = scratchFiles();
    auto window = std::make_unique<EditTsWin>(QStringLiteral("a.ts"), 1);
    NoticeStrip& bar = *window->findChild<NoticeStrip*>();
    const auto pressUndo = [&] { emit bar.x_pressed(); };
    type(*window, "x1*1,5");
    window->sl_calculate();
    EXPECT_EQ(TSFILE("a", true).value(4000, 1), 0.0F);
    type(*window, "x1(2");  // refused: the calculation before can still be undone
    window->sl_calculate();
    desk.writer = QStringLiteral("a.ts");
    {
        const BoxAnswer box(QStringLiteral("Ok"));
        pressUndo();
        EXPECT_TRUE(
            box.text().startsWith(QStringLiteral("The file a.ts is open for writing in another window")));
    }
    desk.writer.clear();
    pressUndo();
    EXPECT_EQ(bytesOf("a.ts"), before);
    EXPECT_TRUE(bar.isHidden());
    pressUndo();  // there is nothing left to undo
    EXPECT_EQ(scratchFiles(), others);

    type(*window, "7");
    window->sl_calculate();
    EXPECT_EQ(scratchFiles(), others + 1);
    TSFILE("a", false).setValue(2, 1, 44.0F);
    {
        const BoxAnswer box(QStringLiteral("&No"));
        pressUndo();
        EXPECT_TRUE(box.text().startsWith(QStringLiteral("a.ts was changed after the calculation.")));
    }
    EXPECT_EQ(TSFILE("a", true).value(2, 1), 44.0F);
    std::filesystem::rename("a.ts", "gone.ts");
    {
        std::unique_ptr<BoxAnswer> second;
        const BoxAnswer first(QStringLiteral("&Yes"), [&](QWidget&) {
            // As on a busy machine, where the window looks while the box is open.
            window->findChild<EditVariable*>()->refreshFiles();
            EXPECT_EQ(window->findChild<EditVariable*>()->column(), 0U);
            second = std::make_unique<BoxAnswer>(QStringLiteral("Ok"));
        });
        pressUndo();
        EXPECT_TRUE(second->text().startsWith(
            QStringLiteral("a.ts cannot be opened for writing.\nThe old values lie in ")));
    }
    std::filesystem::rename("gone.ts", "a.ts");
    {
        const BoxAnswer box(QStringLiteral("&Yes"));
        pressUndo();
    }
    EXPECT_EQ(bytesOf("a.ts"), before);
    type(*window, "8");
    window->sl_calculate();
    EXPECT_EQ(TSFILE("a", true).value(4000, 1), 8.0F);
    window.reset();
    EXPECT_EQ(scratchFiles(), others);
    window.reset();
    ::unsetenv("TMPDIR");
}

// Each file's column 1 holds the numbers of its samples; the target is column 2.
TEST(EditTsWin, SourcesAreFoundByTheirStartsAndRingsByTheirSamples)
{
    const struct
    {
        const char* what;
        float dt, start, otherStart;
        std::uint32_t written, otherWritten;  // to rings of 100 rows; 0: an ordinary file of 100
        const char* formula;                  // x1: column 1 of the target's file, x2: of the other one
        std::uint32_t first, last;            // samples that are computed
        float firstValue, lastValue;
    } cases[] = {
        {"own rows, fractional start", 0.01F, 0.24F, 0.0F, 0, 0, "x1", 1, 100, 1.0F, 100.0F},
        {"other start", 0.01F, 0.24F, 0.10F, 0, 0, "x2", 1, 86, 15.0F, 100.0F},
        {"both, other start later", 0.5F, 3.0F, 10.0F, 0, 0, "x1+1000*x2", 15, 100, 1015.0F, 86100.0F},
        {"t counts from the target's start", 0.5F, 3.0F, 3.0F, 0, 0, "t", 1, 100, 0.0F, 49.5F},
        {"ring come round", 0.01F, 0.24F, 0.0F, 250, 0, "x1", 151, 250, 151.0F, 250.0F},
        {"ring half full", 2.0F, 7.0F, 0.0F, 40, 0, "x1", 1, 40, 1.0F, 40.0F},
        {"ring as source", 0.5F, 0.0F, 0.0F, 0, 130, "x2", 31, 100, 31.0F, 100.0F},
        {"ring with little as source", 0.5F, 1.0F, 1.0F, 0, 40, "x2", 1, 40, 1.0F, 40.0F},
        {"two rings", 0.5F, 4.0F, 0.0F, 250, 230, "x2", 151, 222, 159.0F, 230.0F},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.what);
        const TestDirectory directory;
        Desk desk;
        const auto make = [&](const char* name, float start, std::uint32_t written) {
            TSFILE file(name, 100, 2, 0);
            file.dt(row.dt);
            file.startTime(start);
            file.setRingMode(written != 0);
            for (std::uint32_t s = 1; s <= (written == 0 ? 100 : written); ++s) {
                const float values[] = {static_cast<float>(s), -1.0F};
                file.writeRow(s, values, false);
            }
            file.flush(true);
        };
        make("a", row.start, row.written);
        make("b", row.otherStart, row.otherWritten);
        const auto before = bytesOf("a.ts");
        EditTsWin window(QStringLiteral("a.ts"), 1);
        window.sl_addSource();
        window.sl_addSource();
        const auto rows = window.findChildren<EditVariable*>();
        rows[1]->choose(QStringLiteral("b.ts"), 1);
        rows[2]->choose(QStringLiteral("a.ts"), 2);
        targetBox(window).setCurrentIndex(2);
        type(window, row.formula);
        window.sl_calculate();
        {
            TSFILE file("a", true);
            const std::uint32_t oldest = std::max(1U, file.ringStart());
            const std::uint32_t newest = row.written == 0 ? 100 : row.written;
            EXPECT_EQ(file.lastSample(), row.written == 0 ? TSFILE("b", true).samples() : row.written);
            for (std::uint32_t s = oldest; s < oldest + 100; ++s) {
                const bool computed = s >= row.first && s <= row.last;
                const float expected = computed
                                           ? row.firstValue + (row.lastValue - row.firstValue) /
                                                                  static_cast<float>(row.last - row.first) *
                                                                  static_cast<float>(s - row.first)
                                           : -1.0F;
                if (s <= newest) {
                    ASSERT_EQ(file.value(s, 2), expected) << s;
                } else {
                    ASSERT_EQ(file.value(s, 2), 0.0F) << s;  // nobody has written it
                }
            }
        }
        window.sl_undo();
        EXPECT_EQ(bytesOf("a.ts"), before);
    }
}

TEST(EditTsWin, FormulaIsSavedAndComesBackAndTroublesAreTold)
{
    const TestDirectory directory;
    Desk desk;
    makeRamp("a", 10, 1.0F);
    EditTsWin window(QStringLiteral("a.ts"), 1);
    type(window, "x1+1");
    const auto inDialog = [](const QString& name) {
        return [name](QWidget& dialog) {
            dialog.findChild<QLineEdit*>()->setText(QDir::current().absoluteFilePath(name));
            static_cast<QDialog&>(dialog).accept();
        };
    };
    {
        const BoxAnswer dialog(QStringLiteral("-"), inDialog(QStringLiteral("a b.c.txt")));
        window.sl_saveas();
    }
    EXPECT_EQ(readFormulaFile("a b.c.txt"), "   x1+1");
    {
        const BoxAnswer dialog(QStringLiteral("-"));
        window.sl_saveas();
    }
    EXPECT_EQ(window.statusBar()->currentMessage(), QStringLiteral("Saving aborted"));
    type(window, "");
    {
        const BoxAnswer dialog(QStringLiteral("-"), inDialog(QStringLiteral("a b.c.txt")));
        window.sl_load();
    }
    QStringList texts;
    for (const QLineEdit* const field : window.findChildren<QLineEdit*>())
        texts << field->text();
    EXPECT_TRUE(texts.contains(QStringLiteral("   x1+1")));
    std::ofstream("none.txt") << "nothing in here\n";
    std::unique_ptr<BoxAnswer> box;
    {
        const BoxAnswer dialog(QStringLiteral("-"), [&](QWidget& widget) {
            box = std::make_unique<BoxAnswer>(QStringLiteral("Ok"));
            inDialog(QStringLiteral("none.txt"))(widget);
        });
        window.sl_load();
    }
    EXPECT_EQ(box->title(), QStringLiteral("Ts-Edit"));
    EXPECT_TRUE(box->text().startsWith(QStringLiteral("Function not found in ")) &&
                box->text().endsWith(QStringLiteral("/none.txt")));
    box.reset();
    {
        const BoxAnswer dialog(QStringLiteral("-"), [&](QWidget& widget) {
            box = std::make_unique<BoxAnswer>(QStringLiteral("Ok"));
            // Made unwritable by becoming a directory while the dialog is open.
            inDialog(QStringLiteral("late.txt"))(widget);
            std::filesystem::create_directories("late.txt/full");
        });
        window.sl_saveas();
    }
    EXPECT_EQ(box->title(), QStringLiteral("Ts-Curvefit"));
    EXPECT_TRUE(box->text().startsWith(QStringLiteral("Unable to open ")) &&
                box->text().endsWith(QStringLiteral("/late.txt")));
}

TEST(EditTsWin, RowsGrowToEightAndTheDirectoryMayBeEmpty)
{
    const TestDirectory directory;
    Desk desk;
    EditTsWin window;
    window.sl_addSource();
    EXPECT_EQ(window.statusBar()->currentMessage(), QStringLiteral("No ts-files found on present directory"));
    window.sl_removeSource();
    makeRamp("a", 10, 1.0F);
    for (int i = 0; i < 9; ++i)
        window.sl_addSource();
    EXPECT_EQ(targetBox(window).count(), 8);
    EXPECT_EQ(targetBox(window).itemText(7), QStringLiteral("x8"));
    targetBox(window).setCurrentIndex(7);
    window.sl_removeSource();  // the target follows
    EXPECT_EQ(targetBox(window).currentText(), QStringLiteral("x7"));
    type(window, "x8");
    window.sl_calculate();
    EXPECT_EQ(desk.errors, QStringList(QStringLiteral("Variable at position -1 is not a source")));
}

TEST(EditTsWin, WhatCannotBeDoneIsToldAndChangesNothing)
{
    const TestDirectory directory;
    Desk desk;
    makeRamp("a", 100, 1.0F);
    const auto before = bytesOf("a.ts");
    EditTsWin window(QStringLiteral("a.ts"), 1);
    type(window, "x1+x2");
    bool told = false;
    for (const QLabel* const label : window.findChildren<QLabel*>())
        told = told || label->text() == QLatin1String("Variable at position 2 is not a source");
    EXPECT_TRUE(told);
    EXPECT_TRUE(desk.errors.isEmpty());
    window.sl_calculate();
    EXPECT_EQ(desk.errors, QStringList(QStringLiteral("Variable at position 2 is not a source")));

    type(window, "x1*2");
    desk.writer = QStringLiteral("a.ts");
    {
        const BoxAnswer box(QStringLiteral("Ok"));
        window.sl_calculate();
        EXPECT_EQ(box.title(), "Veltrac");
        EXPECT_EQ(
            box.text(),
            "Cannot execute this command while the\ntarget file is open as read/write in the List window.");
    }
    desk.writer.clear();
    window.findChild<EditVariable*>()->sl_StartTimeChanged(QStringLiteral("noon"));
    window.sl_calculate();
    EXPECT_EQ(window.statusBar()->currentMessage(), QStringLiteral("Start or end of x1 is not a time"));
    const auto fields = window.findChildren<QLineEdit*>();
    QLineEdit* const start = *std::find_if(fields.begin(), fields.end(), [](const QLineEdit* field) {
        return field->accessibleName() == QLatin1String("x1 start time");
    });
    start->clear();
    QTest::keyClicks(start, "900");
    window.sl_calculate();
    EXPECT_TRUE(window.statusBar()->currentMessage().startsWith(QStringLiteral("Nothing to calculate")));
    targetBox(window).setCurrentIndex(-1);
    {
        const BoxAnswer box(QStringLiteral("Ok"));
        window.sl_calculate();
        EXPECT_EQ(box.text(), "No target selected");
    }
    EXPECT_EQ(bytesOf("a.ts"), before);
}
