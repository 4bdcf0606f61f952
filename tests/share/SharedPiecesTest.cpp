// What all windows share: header texts, number fields, choosing a source, progress, sub-windows.

#include <gtest/gtest.h>

#include <QCloseEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QProgressDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextEdit>
#include <QThread>
#include <QTimer>

#include <filesystem>
#include <fstream>

#include "core/TSFILE.h"
#include "share/FileWatch.h"
#include "share/HeaderText.h"
#include "share/JobProgress.h"
#include "share/NumberField.h"
#include "share/QtMessageWin.h"
#include "share/Resources.h"
#include "share/SourceChooser.h"
#include "share/SubWindow.h"
#include "share/TargetFile.h"
#include "tests/Desk.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

class StubbornWindow : public SubWindow
{
public:
    bool stays = true;

protected:
    bool mayClose() override { return !stays; }
};

}  // namespace

TEST(HeaderText, BytesAreCutAtWholeCharactersAndOldTextsKeepTheirUmlauts)
{
    EXPECT_EQ(headerBytes(QStringLiteral("Kräfte an Ö"), 11), QByteArray("Kräfte an "));
    EXPECT_EQ(headerBytes(QStringLiteral("12345678901"), 11), QByteArray("12345678901"));
    EXPECT_EQ(headerBytes(QString(), 5), QByteArray());
    EXPECT_EQ(headerText("Kr\xC3\xA4"
                         "fte \t"),
              QStringLiteral("Kräfte"));
    EXPECT_EQ(headerText("Kr\xE4"
                         "fte \x80"),
              QStringLiteral("Kräfte €"));
    EXPECT_EQ(headerText("cut \xC3"), QStringLiteral("cut Ã"));  // half a character is no UTF-8
    EXPECT_EQ(headerText(nullptr), QString());
}

TEST(TargetFile, SuggestsNamesThatADialogTakesWhole)
{
    EXPECT_EQ(saveSuggestion(QStringLiteral("3\" pipe.tsa")), QStringLiteral("3' pipe.tsa"));
    // A directory is what it is called.
    EXPECT_EQ(saveSuggestion(QStringLiteral("/a \"b\"/3\".ts")), QStringLiteral("/a \"b\"/3'.ts"));
}

// The file dialog takes the name, then each box is answered with "&No" or "Ok".
TEST(TargetFile, EveryWindowHearsTheSameAnswerBeforeItMayReplaceAFile)
{
    const TestDirectory directory;
    Desk desk;
    desk.writer = QStringLiteral("open.ts");
    for (const char* const name : {"open.ts", "protected.ts", "source.ts", "old.ts"})
        std::ofstream(name) << "kept";
    std::filesystem::permissions("protected.ts", std::filesystem::perms::owner_read);
    std::filesystem::create_symlink("source.ts", "link.ts");
    const struct
    {
        const char* typed;
        const char* told;
        const char* chosen;
    } rows[] = {
        {"open", "The file open.ts is open for writing in another window.\nClose that window first.", ""},
        {"protected.ts", "The file protected.ts is write-protected.", ""},
        {"link", "link.ts is the source itself.\nChoose another name.", ""},
        {"old", "The file old.ts exists.\nDo you want to overwrite the existing file?", ""},
        {"new.v2", "", "new.v2.ts"},
        {"7", "", "ts0007.ts"},
    };
    for (const auto& row : rows) {
        QString told;
        QTimer boxes;
        QObject::connect(&boxes, &QTimer::timeout, [&] {
            QWidget* const box = QApplication::activeModalWidget();
            if (auto* const message = qobject_cast<QMessageBox*>(box)) {
                told = message->text();
                message->reject();
            } else if (auto* const files = qobject_cast<QFileDialog*>(box)) {
                files->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))
                    ->setText(QLatin1String(row.typed));
                QMetaObject::invokeMethod(files, "accept", Qt::QueuedConnection);
            }
        });
        boxes.start(20);
        const QString chosen = askSaveName(
            nullptr, {QStringLiteral("Save"), QStringLiteral("x.ts"), QString(), QStringLiteral("ts"),
                      [](const QString& file) { return isSameFile(file, QStringLiteral("source.ts")); }});
        EXPECT_EQ(told.toStdString(), row.told);
        EXPECT_EQ(QFileInfo(chosen).fileName().toStdString(), row.chosen) << row.typed;
    }
}

TEST(NumberField, PointsAndCommasAreNumbersAndEverythingElseSaysWhy)
{
    const struct
    {
        const char* text;
        bool good;
        double number;
    } rows[] = {{"1.5", true, 1.5},    {" 1,5 ", true, 1.5},  {"+2e-3", true, 0.002},    {"-0", true, 0.0},
                {"", false, 0.0},      {"1,5,0", false, 0.0}, {"1 000", false, 0.0},     {"nan", false, 0.0},
                {"1e999", false, 0.0}, {"0x10", false, 0.0},  {"12\xC2\xB5", false, 0.0}};
    for (const auto& row : rows) {
        EXPECT_EQ(numberOf(QString::fromUtf8(row.text)).has_value(), row.good) << row.text;
        EXPECT_EQ(numberOf(QString::fromUtf8(row.text)).value_or(0.0), row.number) << row.text;
    }
    NumberField field(QStringLiteral("5"));
    QLabel reason;
    field.setReasonLabel(&reason);
    field.setWhole(1, 10);
    const QColor good = field.palette().color(QPalette::Base);
    QSignalSpy validated(&field, &NumberField::x_validated);
    for (const char* const text : {"11", "0", "2,5", "x", ""}) {
        field.setText(QLatin1String(text));
        EXPECT_FALSE(field.isValid()) << text;
        EXPECT_FALSE(reason.text().isEmpty()) << text;
        EXPECT_NE(field.palette().color(QPalette::Base), good) << text;
    }
    field.setText(QStringLiteral("10"));
    EXPECT_TRUE(field.isValid());
    EXPECT_TRUE(reason.text().isEmpty());
    EXPECT_EQ(field.palette().color(QPalette::Base), good);
    EXPECT_EQ(validated.count(), 6);
}

TEST(SourceChooser, ShowsWhatTheDirectoryHoldsAndKeepsTheChoice)
{
    const TestDirectory directory;
    for (const char* const name : {"file10", "file2"}) {
        TSFILE file(name, 1, 1, 1);
        file.columnName(2, name[4] == '2' ? "Force" : "");
    }
    std::filesystem::rename("file10.ts", "2016 log.v2.TS");
    std::ofstream("broken.ts") << "no ts-file";
    std::ofstream("notes.txt") << "no";
    std::filesystem::create_directory("folder.ts");
    EXPECT_EQ(tsFileNames(), QStringList({"2016 log.v2.TS", "broken.ts", "file2.ts"}));

    SourceChooser chooser(false);
    QSignalSpy changed(&chooser, &SourceChooser::x_source_changed);
    chooser.choose(QStringLiteral("file2.ts"), 0);
    EXPECT_EQ(chooser.columns()->count(), 1);  // "Time" is not offered
    EXPECT_EQ(chooser.column(), 2U);
    EXPECT_GT(changed.count(), 0);
    {
        TSFILE file("wide", 1, 3, 0);
    }
    chooser.choose(QStringLiteral("wide.ts"), 0);
    EXPECT_EQ(chooser.column(), 1U);  // not the number that the file before had
    std::filesystem::remove("wide.ts");
    chooser.refresh();
    chooser.files()->setCurrentIndex(0);
    EXPECT_EQ(chooser.columns()->currentText(), "Column 2");
    chooser.files()->setCurrentIndex(1);
    EXPECT_EQ(chooser.column(), 0U);
    chooser.choose(QStringLiteral("file2.ts"), 2);
    std::filesystem::remove("2016 log.v2.TS");
    chooser.refresh();
    EXPECT_EQ(chooser.file(), "file2.ts");
    EXPECT_EQ(chooser.column(), 2U);

    // The working directory becomes another one: the file stays the one that was chosen.
    const QString path = QDir::current().absoluteFilePath(QStringLiteral("file2.ts"));
    std::filesystem::current_path("folder.ts");
    EXPECT_EQ(chooser.file(), path);
    chooser.refresh();
    EXPECT_EQ(chooser.file(), path);
    EXPECT_EQ(chooser.column(), 2U);
    std::filesystem::remove("../file2.ts");
    chooser.refresh();
    EXPECT_EQ(chooser.file(), "");
    std::filesystem::current_path("..");
}

TEST(JobProgress, AppearsLateCancelsForGoodAndLetsNoWindowClose)
{
    SubWindow* const window = new SubWindow;
    window->show();
    {
        JobProgress job(nullptr, QStringLiteral("Working"));
        EXPECT_TRUE(job(1, 100));
        {
            const JobProgress::Pause question(job);
            QThread::msleep(600);
        }
        EXPECT_LT(job.seconds(), 0.5) << "the time of a question counts";
        EXPECT_TRUE(job(2, 100));
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        QThread::msleep(550);
        EXPECT_TRUE(job(50, 100));
        auto* const dialog = qobject_cast<QProgressDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(dialog->value() * 2, dialog->maximum());
        EXPECT_FALSE(window->close());
        dialog->findChild<QPushButton*>()->click();
        QThread::msleep(60);
        EXPECT_FALSE(job(51, 100));
        EXPECT_FALSE(job(52, 0));
        EXPECT_TRUE(job.wasCancelled());
    }
    EXPECT_FALSE(JobProgress::isRunning());
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_TRUE(window->close());
}

TEST(JobProgress, BeforeItAppearsWindowsAreDrawnAndEscapeAloneIsHeard)
{
    QLineEdit field;
    field.show();
    int beats = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&beats] { ++beats; });
    timer.start(1);
    JobProgress job(nullptr, QStringLiteral("Working"));
    QThread::msleep(100);
    EXPECT_TRUE(job(1, 3));
    EXPECT_GT(beats, 0);
    QThread::msleep(320);
    for (const Qt::Key key : {Qt::Key_X, Qt::Key_Escape})
        QCoreApplication::postEvent(
            &field, new QKeyEvent(QEvent::KeyPress, key, Qt::NoModifier, QStringLiteral("x")));
    EXPECT_FALSE(job(2, 3));
    EXPECT_TRUE(job.wasCancelled());
    EXPECT_EQ(field.text(), QString());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST(FileWatch, LooksForWhatTheSystemDoesNotTell)
{
    namespace fs = std::filesystem;
    const TestDirectory directory;
    std::ofstream("a") << "alike";
    std::ofstream("b") << "alike";
    fs::last_write_time("b", fs::last_write_time("a"));
    fs::create_symlink("a", "link");
    FileWatch watch;
    const QString path = QString::fromStdString((fs::current_path() / "link").string());
    watch.watch(path);
    QStringList told;
    QObject::connect(&watch, &FileWatch::x_changed, [&told](const QString& which) { told << which; });
    // Another file of the same size and time, and nothing happens to the one that was there.
    fs::create_symlink("b", "other");
    fs::rename("other", "link");
    EXPECT_TRUE(QTest::qWaitFor([&] { return told == QStringList(path); }, 20'000));
    EXPECT_EQ(watch.state(path), FileWatch::State::Changed);
    watch.watch(path);
    EXPECT_EQ(watch.state(path), FileWatch::State::Same);
}

TEST(SubWindow, TellsOnceThatItIsGoneAndOnlyWhenItIs)
{
    auto* const window = new StubbornWindow;
    QSignalSpy gone(window, SIGNAL(windowGone(subWindow)));
    window->show();
    EXPECT_FALSE(window->close());
    EXPECT_EQ(gone.count(), 0);
    window->stays = false;
    EXPECT_TRUE(window->close());
    EXPECT_EQ(gone.count(), 1);
}

TEST(MessageWin, HasItsTitleTextAndEscape)
{
    MessageWin* const window =
        new MessageWin(nullptr, QStringLiteral("messageWin"), QStringLiteral("<b>Text</b>"), QString(), 300,
                       200, QString(), 11);
    window->show();
    EXPECT_EQ(window->windowTitle(), "Ts-Information");
    EXPECT_EQ(window->objectName(), "messageWin");
    EXPECT_EQ(window->findChild<QTextEdit*>()->toPlainText(), "Text");
    EXPECT_TRUE(window->findChild<QTextEdit*>()->isReadOnly());
    QSignalSpy destroyed(window, &QObject::destroyed);
    for (QPushButton* const button : window->findChildren<QPushButton*>())
        if (button->text() == QLatin1String("&Ok")) {
            EXPECT_EQ(button->shortcut(), QKeySequence(Qt::Key_Escape));
            button->click();
            break;
        }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(destroyed.count(), 1);
}

TEST(HelpText, EveryWindowHasOneThatGoesWithIt)
{
    auto parent = std::make_unique<QWidget>();
    const QPointer<QWidget> help = showHelp(parent.get(), QStringLiteral("list"), QStringLiteral("List"));
    parent.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(help.isNull());
    for (const char* const name : {"intro", "tsa", "stl", "create", "header", "list", "plot", "derivative",
                                   "integral", "spectrum", "filter", "formula", "functions"})
        EXPECT_GT(helpText(QLatin1String(name)).size(), 500) << name;
}
