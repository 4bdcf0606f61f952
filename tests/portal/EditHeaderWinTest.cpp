// The header editor: what it refuses, what it asks, and that nothing is cut unasked.

#include "portal/EditHeaderWin.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QPushButton>
#include <QStatusBar>
#include <QTableWidget>
#include <QTest>

#include <cmath>
#include <filesystem>

#include "core/Rebuild.h"
#include "core/TSFILE.h"
#include "portal/StartField.h"
#include "share/NumberField.h"
#include "tests/BoxAnswer.h"
#include "tests/Desk.h"
#include "tests/FileSizeLimit.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

// The editor on a.ts of 30 samples and 2 columns.
class HeaderEditor : public testing::Test
{
protected:
    HeaderEditor()
    {
        TSFILE file("a", 30, 2, 0);
        file.dt(0.5F);
        file.setValue(25, 2, 7.0F);
        file.stampColumn(1);
        file.flush(true);
    }
    void open()
    {
        m_window = new EditHeaderWin(QStringLiteral("a.ts"));
        m_window->show();
    }
    void TearDown() override { delete m_window; }

    // The fields in their order: sample time, start time, samples, columns.
    NumberField& field(int index) { return *m_window->findChildren<NumberField*>().at(index); }
    void enter(int index, const char* text)
    {
        field(index).setText(QLatin1String(text));
        QTest::keyClick(&field(index), Qt::Key_Return);
    }
    QPushButton& button(const char* text)
    {
        for (QPushButton* const one : m_window->findChildren<QPushButton*>())
            if (one->text() == QLatin1String(text))
                return *one;
        throw std::logic_error(text);
    }
    QPushButton& ok() { return button("&OK"); }
    QTableWidget& table() { return *m_window->findChild<QTableWidget*>(); }
    static std::uint32_t samplesOnDisk() { return TSFILE("a", true).samples(); }

    const TestDirectory m_directory;
    Desk m_desk;
    EditHeaderWin* m_window = nullptr;
};

constexpr int kSampleTime = 0;
constexpr int kStartTime = 1;
constexpr int kSamples = 2;
constexpr int kColumns = 3;

}  // namespace

TEST_F(HeaderEditor, RefusedReductionIsRememberedButNothingIsCutUnasked)
{
    open();
    {
        const BoxAnswer no(QStringLiteral("&No"));
        enter(kSamples, "10");
        EXPECT_EQ(no.text(), "It is most unusual to reduce the size of a ts-file, proceed?");
    }
    EXPECT_EQ(samplesOnDisk(), 30U);
    {
        const BoxAnswer none(QStringLiteral("&No"));
        enter(kSamples, "10");
        EXPECT_FALSE(none.wasAsked());
    }
    {
        // 20 is more than 10, but less than what the file has.
        const BoxAnswer yes(QStringLiteral("&Yes"));
        enter(kSamples, "20");
        EXPECT_TRUE(yes.wasAsked());
    }
    EXPECT_EQ(samplesOnDisk(), 20U);
}

TEST_F(HeaderEditor, CancelRebuildsNothing)
{
    for (const bool byMouse : {true, false}) {
        open();
        QApplication::setActiveWindow(m_window);
        field(kSamples).setFocus();
        field(kSamples).setText(QStringLiteral("40"));
        if (byMouse)
            button("&Cancel").setFocus();
        m_window->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_window = nullptr;
        EXPECT_EQ(samplesOnDisk(), 30U) << byMouse;
    }
}

TEST_F(HeaderEditor, AnEditorThatIsDeletedWithTheFocusInAFieldRebuildsNothing)
{
    open();
    QApplication::setActiveWindow(m_window);
    field(kSamples).setFocus();
    field(kSamples).setText(QStringLiteral("40"));
    delete m_window;
    m_window = nullptr;
    EXPECT_EQ(samplesOnDisk(), 30U);
}

TEST_F(HeaderEditor, StartIsShownAndSetAsDateAndTime)
{
    open();
    EXPECT_EQ(m_window->findChild<StartField*>()->text().text(), "") << "a file without a date";
    const std::pair<const char*, double> rows[] = {{"2016-05-17 13:45:30.250", 1463492730.25},
                                                   {"2016-05-17", 1463443200.0},
                                                   {"2106-02-07 06:28:15", 4294967295.0}};
    for (const auto& [text, seconds] : rows) {
        QLineEdit& date = m_window->findChild<StartField*>()->text();
        m_window->findChild<QComboBox*>()->setCurrentText(QStringLiteral("UTC"));
        date.setText(QLatin1String(text));
        for (const char* const wrong :
             {"", "17.5.", "1969-12-31 23:59", "2106-02-07 06:28:16", "2016-02-30"}) {
            date.setText(QLatin1String(wrong));
            EXPECT_FALSE(ok().isEnabled()) << wrong;
        }
        date.setText(QLatin1String(text));
        ok().click();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        TSFILE file("a", true);
        EXPECT_EQ(file.startSeconds(), static_cast<std::uint32_t>(seconds)) << text;
        EXPECT_EQ(file.startTime(), static_cast<float>(seconds - std::floor(seconds))) << text;
        open();
    }
    // The start time is counted from the date's seconds, and moves what is shown.
    field(kStartTime).setText(QStringLiteral("1.5"));
    m_window->findChild<QComboBox*>()->setCurrentText(QStringLiteral("UTC"));
    EXPECT_EQ(m_window->findChild<StartField*>()->text().text(), "2106-02-07 06:28:16.500");
}

TEST_F(HeaderEditor, ColumnsFollowAFontThatComesLater)
{
    open();
    const int before = table().columnWidth(2);
    QFont large = table().font();
    large.setPointSize(3 * large.pointSize());
    table().setFont(large);
    EXPECT_GT(table().columnWidth(2), 2 * before);
}

TEST_F(HeaderEditor, FullDiskKeepsTheFileAndSaysWhy)
{
    open();
    const BoxAnswer told(QStringLiteral("Ok"));
    {
        const FileSizeLimit full(2048);
        enter(kSamples, "20000");
    }
    EXPECT_EQ(told.text(),
              "Caught a TS::OPEN_ERROR exception on:a.ts\nThe old file is still there, unchanged: "
              "the disk took no more (is it full?).");
    EXPECT_EQ(field(kSamples).text(), "30");
    EXPECT_EQ(samplesOnDisk(), 30U);
    EXPECT_EQ(m_directory.fileCount(), 1U);
}

TEST_F(HeaderEditor, ColumnsThatAnotherWindowHasAddedAreNotCutUnasked)
{
    open();
    ASSERT_EQ(rebuildTsFile("a.ts", 30, 5, {}), JobOutcome::Done);
    const BoxAnswer none(QStringLiteral("&No"));
    enter(kSamples, "40");
    EXPECT_FALSE(none.wasAsked());
    EXPECT_EQ(samplesOnDisk(), 40U);
    EXPECT_EQ(TSFILE("a", true).columns(), 5U);
    EXPECT_EQ(field(kColumns).text(), "5");
}

TEST_F(HeaderEditor, WhatAnotherProgramDoesToTheFileIsToldAndWhatWasTypedStays)
{
    open();
    const auto isTold = [&](const char* text) {
        return QTest::qWaitFor(
            [&] { return m_window->statusBar()->currentMessage() == QLatin1String(text); });
    };
    rebuildTsFile("a.ts", 45, 3, {});
    EXPECT_TRUE(isTold("a.ts has changed and was read again."));
    EXPECT_EQ(field(kSamples).text(), "45");
    EXPECT_EQ(table().rowCount(), 3);
    QTest::keyClicks(&field(kStartTime), QStringLiteral("7"));
    const QString typed = field(kStartTime).text();
    std::filesystem::rename("a.ts", "b.ts");
    EXPECT_TRUE(isTold("a.ts is gone; what was typed is still here."));
    EXPECT_EQ(field(kStartTime).text(), typed);
    std::filesystem::rename("b.ts", "a.ts");
    EXPECT_TRUE(isTold("a.ts has changed and was read again."));
    EXPECT_EQ(field(kStartTime).text(), typed);
}

TEST_F(HeaderEditor, GrowthKeepsTheValuesAndShowsTheNewColumns)
{
    open();
    enter(kSamples, "40");
    enter(kColumns, "10");
    TSFILE file("a", true);
    EXPECT_EQ(file.samples(), 40U);
    EXPECT_EQ(file.columns(), 10U);
    EXPECT_EQ(file.value(25, 2), 7.0F);
    ASSERT_EQ(table().rowCount(), 10);
    EXPECT_EQ(table().item(9, 2)->text(), "Column-10");
    EXPECT_EQ(m_directory.fileCount(), 1U);
    // What the window itself has done is not told as another's.
    QApplication::setActiveWindow(m_window);
    QEvent activated(QEvent::ActivationChange);
    QApplication::sendEvent(m_window, &activated);
    EXPECT_FALSE(m_window->statusBar()->currentMessage().contains(QStringLiteral("read again")));
}

TEST_F(HeaderEditor, BadNumbersDisableOkAndAZeroSampleTimeIsTold)
{
    open();
    for (const auto& [index, text] : {std::pair(kSamples, "x"), std::pair(kColumns, "1,5"),
                                      std::pair(kStartTime, "1e39"), std::pair(kSamples, "900000000")}) {
        const QString before = field(index).text();
        field(index).setText(QLatin1String(text));
        EXPECT_FALSE(ok().isEnabled()) << text;
        field(index).setText(before);
        EXPECT_TRUE(ok().isEnabled()) << text;
    }
    for (const char* const text : {"0", "-0.5", "1e-60"}) {
        field(kSampleTime).setText(QLatin1String(text));
        const BoxAnswer told(QStringLiteral("Ok"));
        ok().click();
        EXPECT_EQ(told.title(), "Ts sample time error") << text;
        EXPECT_EQ(told.text(), "A sample time of 0 is illegal.\n Modify the field and select OK.");
    }
    EXPECT_EQ(TSFILE("a", true).dt(), 0.5F);
}

TEST_F(HeaderEditor, OkWritesWhatWasChangedAndTheTableWritesAtOnce)
{
    open();
    field(kSampleTime).setText(QStringLiteral("0,25"));
    table().item(1, 2)->setText(QStringLiteral("Längsspannung"));
    {
        TSFILE file("a", true);
        EXPECT_STREQ(file.columnName(2), "Längsspann");  // 11 bytes at whole characters
        EXPECT_EQ(file.dt(), 0.5F);
    }
    EXPECT_EQ(table().item(1, 0)->text(), "Not used");
    ok().click();
    m_window = nullptr;  // it closes
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(TSFILE("a", true).dt(), 0.25F);
}

TEST_F(HeaderEditor, FileThatIsBeingEditedElsewhereOrIsARingKeepsItsCounts)
{
    open();
    m_desk.writer = QStringLiteral("a.ts");
    {
        const BoxAnswer told(QStringLiteral("Ok"));
        enter(kSamples, "50");
        EXPECT_TRUE(told.wasAsked());
    }
    EXPECT_EQ(samplesOnDisk(), 30U);
    delete m_window;
    m_desk.writer.clear();
    std::filesystem::permissions("a.ts", std::filesystem::perms(0444));
    open();
    for (const bool isCount : {true, false}) {
        const BoxAnswer told(QStringLiteral("Ok"));
        if (isCount)
            enter(kSamples, "50");
        else
            table().item(1, 2)->setText(QStringLiteral("Other"));
        EXPECT_EQ(told.text(), "The file a.ts is write-protected.");
    }
    EXPECT_EQ(samplesOnDisk(), 30U);
    EXPECT_STREQ(TSFILE("a", true).columnName(2), "Column-02");
    delete m_window;
    std::filesystem::permissions("a.ts", std::filesystem::perms(0644));
    TSFILE("a", false).setRingMode(true);
    open();
    const BoxAnswer told(QStringLiteral("Ok"));
    enter(kSamples, "50");
    EXPECT_TRUE(told.text().contains(QStringLiteral("ring file")));
    EXPECT_EQ(samplesOnDisk(), 30U);
}
