// The dialog that makes a new ts-file.

#include <gtest/gtest.h>

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

#include "core/TSFILE.h"
#include "core/TsHeader.h"
#include "core/TsNames.h"
#include "portal/CreateTsWin_Veltrac.h"
#include "portal/TsApplication.h"
#include "tests/BoxAnswer.h"
#include "tests/FileSizeLimit.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

class Portal : public TsApplication
{
public:
    Portal() { setInstance(this); }
};

enum Field { kName, kSamples, kColumns, kDescription, kTimeUnit, kSampleTime };

class Dialog
{
public:
    Dialog() : m_window(new CreateTsWin) { m_window->show(); }
    ~Dialog() { delete m_window; }
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    CreateTsWin* operator->() { return m_window; }
    void set(Field field, const QString& text)
    {
        m_window->findChild<Basic_Tab*>()
            ->findChildren<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly)
            .at(field)
            ->setText(text);
    }
    QTableWidget& columns() { return *m_window->findChild<QTableWidget*>(); }
    bool isOkEnabled()
    {
        return m_window->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->isEnabled();
    }
    bool isOpen() const { return !m_window.isNull() && m_window->isVisible(); }

private:
    QPointer<CreateTsWin> m_window;
};

TEST(CreateTsWinTest, theDefaultsMakeMyfileAndAnOldOneIsAskedFor)
{
    const TestDirectory directory;
    Portal portal;
    Dialog first;
    first->sl_accept();
    EXPECT_FALSE(first.isOpen());
    {
        const auto file = openTsFile("Myfile.ts", true);
        EXPECT_EQ(file->samples(), 100U);
        ASSERT_EQ(file->columns(), 2U);
        EXPECT_EQ(file->dt(), 1.0F);
        EXPECT_STREQ(file->timeUnit(), "Time[s]");
        EXPECT_STREQ(file->description(), "File descr");
        EXPECT_STREQ(file->columnName(2), "Col-2");
        EXPECT_STREQ(file->columnDescription(2), "Col 2 description");
        EXPECT_NEAR(static_cast<double>(file->columnTime(2)), static_cast<double>(std::time(nullptr)), 60.0);
    }
    const auto old = bytesOf("Myfile.ts");
    Dialog second;
    second.set(kSamples, QStringLiteral("5"));
    {
        const BoxAnswer cancel(QStringLiteral("Cancel"));
        second->sl_accept();
        EXPECT_EQ(cancel.text(),
                  QStringLiteral("The file Myfile.ts exists.\nDo you want to overwrite the existing file?"));
    }
    EXPECT_TRUE(second.isOpen());
    EXPECT_EQ(bytesOf("Myfile.ts"), old);
    const BoxAnswer yes(QStringLiteral("&Yes"));
    second->sl_accept();
    EXPECT_EQ(openTsFile("Myfile.ts", true)->samples(), 5U);
}

TEST(CreateTsWinTest, theFileHasTheNameThatWasTypedWhateverItHolds)
{
    const std::pair<const char*, const char*> rows[] = {{"2016-05-17 log", "2016-05-17 log.ts"},
                                                        {"data.v2", "data.v2.ts"},
                                                        {"Öl", "Öl.ts"},
                                                        {"5", "ts0005.ts"},
                                                        {"kept.ts", "kept.ts"},
                                                        {" a \"b\" & %1", " a \"b\" & %1.ts"}};
    for (const auto& [typed, made] : rows) {
        const TestDirectory directory;
        Portal portal;
        Dialog dialog;
        dialog.set(kName, QString::fromUtf8(typed));
        dialog->sl_accept();
        EXPECT_EQ(directory.fileCount(), 1U) << typed;
        EXPECT_TRUE(std::filesystem::exists(made)) << made;
    }
}

TEST(CreateTsWinTest, fieldsThatMakeNoFileDisableOk)
{
    const std::pair<Field, const char*> rows[] = {
        {kName, ""},        {kName, "nowhere/a"},    {kSamples, "-1"},       {kSamples, "1.5"},
        {kSamples, "many"}, {kSamples, "268435456"}, {kColumns, "0"},        {kColumns, "4294967297"},
        {kSampleTime, "0"}, {kSampleTime, "-1"},     {kSampleTime, "1e-60"}, {kSampleTime, "1e60"},
    };
    const TestDirectory directory;
    Portal portal;
    for (const auto& [field, text] : rows) {
        Dialog dialog;
        ASSERT_TRUE(dialog.isOkEnabled());
        dialog.set(field, QString::fromLatin1(text));
        EXPECT_FALSE(dialog.isOkEnabled()) << text;
        dialog->sl_accept();
        EXPECT_TRUE(dialog.isOpen());
    }
    EXPECT_EQ(directory.fileCount(), 0U);
    // The smallest file that is too large has just the bytes that no file may have.
    std::uint32_t most = 268435456;
    while (tsFileBytes(most, 2) > 1ULL << 31)
        --most;
    ASSERT_EQ(tsFileBytes(most, 2), 1ULL << 31);
    Dialog largest;
    largest.set(kSamples, QString::number(most));
    EXPECT_FALSE(largest.isOkEnabled());
    largest.set(kSamples, QString::number(most - 64));
    EXPECT_TRUE(largest.isOkEnabled());
    Dialog comma;
    comma.set(kSampleTime, QStringLiteral("0,25"));
    comma->sl_accept();
    EXPECT_EQ(openTsFile("Myfile.ts", true)->dt(), 0.25F);
}

TEST(CreateTsWinTest, rowsFollowTheNumberOfColumnsAndNamesAreCutAtWholeCharacters)
{
    const TestDirectory directory;
    Portal portal;
    Dialog dialog;
    dialog.columns().item(1, 0)->setText(QStringLiteral("Geschwindigkeit"));
    dialog.columns().item(0, 0)->setText(QStringLiteral("0123456789Ö"));
    dialog.set(kColumns, QStringLiteral("10"));
    dialog.set(kColumns, QStringLiteral("x"));
    EXPECT_EQ(dialog.columns().rowCount(), 10);
    dialog.set(kColumns, QStringLiteral("3"));
    dialog->sl_accept();
    const auto file = openTsFile("Myfile.ts", true);
    ASSERT_EQ(file->columns(), 3U);
    EXPECT_STREQ(file->columnName(1), "0123456789");
    EXPECT_STREQ(file->columnName(2), "Geschwindig");
    EXPECT_STREQ(file->columnName(3), "Col-3");
}

TEST(CreateTsWinTest, aFullDiskLeavesWhatWasThere)
{
    for (const bool isOld : {false, true}) {
        const TestDirectory directory;
        Portal portal;
        if (isOld)
            std::ofstream("Myfile.ts") << "old";
        const BoxAnswer yes(QStringLiteral("&Yes"));
        Dialog dialog;
        {
            const FileSizeLimit full(1024);
            dialog->sl_accept();
        }
        EXPECT_EQ(yes.wasAsked(), isOld);
        EXPECT_TRUE(dialog.isOpen());
        EXPECT_EQ(directory.fileCount(), isOld ? 1U : 0U);
        EXPECT_EQ(bytesOf("Myfile.ts").size(), isOld ? 3U : 0U);
    }
}

// A process that is killed while it makes the file leaves the directory as it was, save for a file under
// another name.
TEST(CreateTsWinTest, untilTheNewFileIsWholeTheNameBelongsToTheOldOne)
{
    const TestDirectory directory;
    Portal portal;
    std::ofstream("Myfile.ts") << "old";
    std::size_t seen = 0;
    {
        const BoxAnswer yes(QStringLiteral("&Yes"));
        const std::unique_ptr<TSFILE> made(portal.CreateTs(
            QStringLiteral("Myfile"), 100, 2, [&](TSFILE& /*file*/) { seen = bytesOf("Myfile.ts").size(); }));
        ASSERT_NE(made, nullptr);
        made->setValue(100, 2, 7.0F);
    }
    EXPECT_EQ(seen, 3U);
    EXPECT_EQ(openTsFile("Myfile.ts", true)->value(100, 2), 7.0F);
    EXPECT_EQ(directory.fileCount(), 1U);
}

TEST(CreateTsWinTest, linksStayLinksAndWriteProtectedFilesStay)
{
    const TestDirectory directory;
    Portal portal;
    // Another file system, where there is one; whether the link leads to a file yet or not.
    const std::filesystem::path elsewhere =
        (std::filesystem::exists("/dev/shm") ? "/dev/shm" / directory.path().filename() : directory.path()) /
        "real.ts";
    std::filesystem::create_directories(elsewhere.parent_path());
    std::filesystem::create_symlink(elsewhere, "Myfile.ts");
    for (int i = 0; i < 2; ++i) {
        const BoxAnswer yes(QStringLiteral("&Yes"));
        Dialog dialog;
        dialog->sl_accept();
        EXPECT_EQ(yes.wasAsked(), i == 1);
        EXPECT_TRUE(std::filesystem::is_symlink("Myfile.ts"));
        EXPECT_EQ(openTsFile(elsewhere.string(), true)->samples(), 100U);
    }
    std::filesystem::permissions(elsewhere, std::filesystem::perms(0444));
    const BoxAnswer told(QStringLiteral("OK"));
    Dialog dialog;
    dialog.set(kSamples, QStringLiteral("5"));
    dialog->sl_accept();
    EXPECT_EQ(told.text(), QStringLiteral("The file Myfile.ts is write-protected."));
    EXPECT_TRUE(dialog.isOpen());
    EXPECT_EQ(openTsFile("Myfile.ts", true)->samples(), 100U);
    std::filesystem::remove_all(elsewhere.parent_path());
}

TEST(CreateTsWinTest, whatCreateTsMakesOpensUnderTheNameThatItWasGiven)
{
    const TestDirectory directory;
    Portal portal;
    const auto opened = [&](const char* name) {
        const std::unique_ptr<TSFILE> file(portal.OpenTs(QString::fromUtf8(name), true));
        return file ? static_cast<int>(file->samples()) : -1;
    };
    int samples = 0;
    for (const char* const name : {"Myfile", "5", "data.v2", "kept.ts", "Öl"}) {
        delete portal.CreateTs(QString::fromUtf8(name), static_cast<unsigned>(++samples), 1);
        EXPECT_EQ(opened(name), name == std::string("kept.ts") ? -1 : samples) << name;
    }
    // What bears the very name comes first, though it is no ts-file.
    std::ofstream("Myfile") << "text";
    EXPECT_EQ(opened("Myfile"), -1);
    EXPECT_EQ(opened("Myfile.ts"), 1);
    EXPECT_EQ(opened("none"), -1);
}

}  // namespace
