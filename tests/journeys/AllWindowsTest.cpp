// Every sub-program opened on one measured file, as a person does who compares: each works on it, none
// disturbs another, and when all are closed the directory holds what was there and what was saved.

#include <gtest/gtest.h>
#include <sys/mount.h>

#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>

#include "calc/DFTWin.h"
#include "calc/DerivativeWin.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "filter/FilterWin.h"
#include "formula/EditTsWin1.h"
#include "portal/SampleView.h"
#include "portal/TsApplication.h"
#include "share/FileWatch.h"
#include "share/NoticeStrip.h"
#include "share/SubWindow.h"
#include "tests/BoxAnswer.h"
#include "tests/core/TsFileBytes.h"
#include "tests/journeys/EveryWindow.h"

using namespace veltrac;

namespace {

// The ECG under a name that is easily mistaken, with a second column for results.
class AllWindows : public testing::Test
{
protected:
    AllWindows()
    {
        const auto ecg = openTsFile(VELTRAC_EXAMPLES "/ecg.ts", true);
        const auto copy = createTsFile(kName.toStdString(), 20000, 2);
        copy->dt(ecg->dt());
        copy->columnName(1, "MLII");
        for (std::uint32_t s = 1; s <= 20000; ++s)
            copy->setValue(s, 1, ecg->value(s, 1));
    }
    template <typename Window>
    Window* open(SubProgram kind)
    {
        return dynamic_cast<Window*>(TsApplication::instance()->openSubProgram(kind, kName, 1));
    }
    static void close(QWidget* window)
    {
        const QPointer<QWidget> watched(window);
        const BoxAnswer no(QStringLiteral("&No"));
        window->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_TRUE(watched.isNull());
    }
    std::vector<float> column(std::uint32_t col) const
    {
        std::vector<float> values(20000);
        openTsFile(kName.toStdString(), true)->readColumn(col, 1, values);
        return values;
    }

    const QString kName = QStringLiteral("2016-05 Bett 3.v2.ts");
    const TestDirectory m_directory;
};

// What a window tells in its strips and its status bar.
QString toldBy(const QWidget& window)
{
    QString text;
    for (const NoticeStrip* const strip : window.findChildren<NoticeStrip*>())
        if (strip->isVisible())
            text += strip->text() + QLatin1Char('\n');
    for (const QStatusBar* const bar : window.findChildren<QStatusBar*>())
        text += bar->currentMessage() + QLatin1Char('\n');
    return text;
}

// Waits until the window tells what has become of the file.
testing::AssertionResult isTold(const QWidget& window, const QString& words)
{
    if (QTest::qWaitFor([&] { return toldBy(window).contains(words); }, 20'000))
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << words.toStdString() << " is not told, but " << toldBy(window).toStdString();
}

}  // namespace

TEST_F(AllWindows, OpenSideBySideAndLeaveNothingBehind)
{
    std::vector<QWidget*> windows;
    for (const SubProgram kind :
         {SubProgram::Header, SubProgram::List, SubProgram::Plot, SubProgram::PlotColumn, SubProgram::Formula,
          SubProgram::Derivative, SubProgram::Integral, SubProgram::Spectrum, SubProgram::Filter}) {
        windows.push_back(open<SubWindow>(kind));
        ASSERT_NE(windows.back(), nullptr) << static_cast<int>(kind);
        EXPECT_TRUE(windows.back()->isVisible());
        EXPECT_FALSE(windows.back()->windowIcon().isNull()) << static_cast<int>(kind);
        QApplication::processEvents();
    }
    for (QWidget* const window : windows)
        close(window);
    EXPECT_EQ(m_directory.fileCount(), 1U);
}

TEST_F(AllWindows, FormulaWritesTheColumnThatTheOthersThenRead)
{
    auto* const edit = open<EditTsWin>(SubProgram::Formula);
    edit->sl_addSource();
    edit->findChildren<EditVariable*>().at(1)->choose(kName, 2);
    for (QComboBox* const box : edit->findChildren<QComboBox*>())
        if (box->accessibleName() == QLatin1String("Target row"))
            box->setCurrentIndex(1);
    for (QLineEdit* const field : edit->findChildren<QLineEdit*>())
        if (field->accessibleName() == QLatin1String("Formula"))
            field->setText(QStringLiteral("x1^2"));
    edit->sl_calculate();
    close(edit);
    const std::vector<float> source = column(1);
    const std::vector<float> squares = column(2);
    for (std::size_t i = 0; i < source.size(); ++i)
        ASSERT_NEAR(squares[i], source[i] * source[i], 1e-6F * (1.0F + source[i] * source[i])) << i;

    // While it is being edited, nobody else writes it.
    auto* const list = open<SubWindow>(SubProgram::Edit);
    EXPECT_TRUE(TsApplication::instance()->isOpenForWriting(kName));
    auto* const again = open<EditTsWin>(SubProgram::Formula);
    {
        const BoxAnswer refused(QStringLiteral("Ok"));
        again->sl_calculate();
        EXPECT_TRUE(refused.text().contains(QStringLiteral("open as read/write in the List window")));
    }
    close(again);
    close(list);
    EXPECT_FALSE(TsApplication::instance()->isOpenForWriting(kName));
    EXPECT_EQ(column(2), squares);
}

TEST_F(AllWindows, FilterAndSpectrumWorkOnScratchFilesOfTheirOwn)
{
    auto* const filter = open<FilterWin>(SubProgram::Filter);
    auto* const spectrum = open<DFTWin>(SubProgram::Spectrum);
    auto* const derivative = open<DerivativeWin>(SubProgram::Derivative);
    spectrum->sl_execute();
    derivative->sl_execute();
    filter->sl_execute();
    EXPECT_EQ(filter->statusBar()->currentMessage(), "Filtering...finished");
    EXPECT_GT(m_directory.fileCount(), 2U);
    close(derivative);
    close(spectrum);
    close(filter);
    EXPECT_EQ(m_directory.fileCount(), 1U);
}

using FileUnderneath = EveryWindow;

TEST_F(FileUnderneath, IsToldByEveryWindowWhenItIsWrittenGrownCutReplacedOrGone)
{
    // However slow this machine is: nothing stays unseen for longer.
    static_assert(FileWatch::kPollMs + FileWatch::kSoonMs < 2000);
    namespace fs = std::filesystem;
    const std::set<QString> withoutAFile = {"VeltracWin",     "CreateTsWin",       "veltrac::FilterCharWin",
                                            "PsConfigDialog", "ColorConfigDialog", "MessageWin"};
    const std::function<void(const fs::path&)> changes[] = {
        [](const fs::path& file) {
            std::fstream out(file);
            out.seekp(-1, std::ios::end) << '7';
        },
        [](const fs::path& file) { std::ofstream(file, std::ios::app) << "17;5\n"; },
        [](const fs::path& file) { fs::resize_file(file, fs::file_size(file) / 2); },
    };
    std::size_t asked = 0;
    forEachWindow([&](QWidget& window, const std::string& title) {
        SCOPED_TRACE(title);
        const QString kind = window.metaObject()->className();
        if (window.isModal() || withoutAFile.count(kind) != 0)
            return;
        const fs::path file = kind == "STLWin" ? "troubles.stl" : kind == "SCLWin" ? "clock.scl" : "bed 3.ts";
        const QString name = QString::fromStdString(file.string());
        fs::copy_file(file, "kept");
        changes[asked++ % std::size(changes)](file);
        EXPECT_TRUE(isTold(window, name + " has changed"));
        fs::rename(file, "away");
        EXPECT_TRUE(isTold(window, name + " is gone"));
        fs::rename("kept", file);
        EXPECT_TRUE(isTold(window, name + " has changed"));
        fs::remove("away");
    });
    EXPECT_GE(asked, 13U);
}

TEST_F(FileUnderneath, GoesWithItsDiskOrItsFolderAndEditsAreSavedElsewhere)
{
    namespace fs = std::filesystem;
    for (const bool isDisk : {true, false}) {
        fs::create_directory("stick");
        if (isDisk && ::mount("veltrac", "stick", "tmpfs", 0, "size=8m") != 0)
            continue;  // only a superuser may
        fs::copy_file("bed 3.ts", "stick/bed 3.ts");
        const QString file = QDir().absoluteFilePath(QStringLiteral("stick/bed 3.ts"));
        std::vector<QPointer<QWidget>> windows;
        for (const SubProgram kind : {SubProgram::Plot, SubProgram::PlotColumn, SubProgram::List,
                                      SubProgram::Header, SubProgram::Spectrum, SubProgram::Edit})
            windows.emplace_back(TsApplication::instance()->openSubProgram(kind, file, 2));
        QWidget& edit = *windows.back();
        QApplication::setActiveWindow(&edit);
        auto& view = *edit.findChild<SampleView*>();
        view.setFocus();
        view.goTo(699, 1);
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("8"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        if (isDisk) {
            ASSERT_EQ(::umount2("stick", MNT_DETACH), 0);
        } else {
            fs::rename("stick", "away");
            fs::create_directory("stick");
        }
        for (const QPointer<QWidget>& window : windows)
            EXPECT_TRUE(isTold(*window, QStringLiteral("bed 3.ts is gone")));
        {
            const BoxAnswer save(QStringLiteral("&Save"), [](QWidget& box) {
                box.findChild<QLineEdit*>()->setText(QDir().absoluteFilePath(QStringLiteral("rescued.ts")));
            });
            edit.findChild<NoticeStrip*>()->findChild<QPushButton*>()->click();
        }
        const auto rescued = openTsFile("rescued.ts", true);
        EXPECT_EQ(rescued->value(700, 2), 8.0F);
        EXPECT_EQ(rescued->value(2999, 2), openTsFile("bed 3.ts", true)->value(2999, 2));
        const BoxAnswer discard(QStringLiteral("&Discard"));
        for (const QPointer<QWidget>& window : windows)
            window->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        for (const char* const made : {"stick", "away", "rescued.ts"})
            fs::remove_all(made);
    }
}
