// The main window on directories of its own, driven with mouse and keys.

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QScreen>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTableWidget>
#include <QTest>

#include "core/TSFILE.h"
#include "portal/Veltrac.h"
#include "share/JobProgress.h"
#include "share/SubWindow.h"
#include "tests/BoxAnswer.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

constexpr std::size_t kHeader = 512;

void makeFile(const QString& name, float dt = 1.0F)
{
    HandMadeFile(kHeader, false)
        .word(0, 7)
        .word(4, 0)
        .real(16, dt)
        .text(32, "A file")
        .word(508, 3)
        .write(QFile::encodeName(name).toStdString());
}

// The main window, shown and active in the present directory.
class Portal
{
public:
    Portal()
    {
        m_window.show();
        QApplication::setActiveWindow(&m_window);
        table().setFocus();
        QApplication::processEvents();
    }
    VeltracWin* operator->() { return &m_window; }
    QTableWidget& table() { return *m_window.findChild<QTableWidget*>(); }
    QStringList names()
    {
        QStringList all;
        for (int row = 0; row < table().rowCount(); ++row)
            all << table().item(row, 0)->text();
        return all;
    }
    QString status() { return m_window.statusBar()->currentMessage(); }
    QString directoryLine() { return m_window.statusBar()->findChild<QLabel*>()->text(); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        QApplication::processEvents();
    }
    void click(int row, bool twice = false)
    {
        const QPoint at = table().visualItemRect(table().item(row, 0)).center();
        QTest::mouseClick(table().viewport(), Qt::LeftButton, Qt::NoModifier, at);
        if (twice)
            QTest::mouseDClick(table().viewport(), Qt::LeftButton, Qt::NoModifier, at);
        QApplication::processEvents();
    }
    QMenu* subMenu(const QString& title)
    {
        for (QMenu* const menu : m_window.menuBar()->findChildren<QMenu*>())
            if (menu->title() == title)
                return menu;
        return nullptr;
    }

private:
    VeltracWin m_window;
};

// The other top-level windows, by their titles.
QStringList otherWindows()
{
    QStringList titles;
    for (QWidget* const window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->windowTitle() != QLatin1String("Veltrac"))
            titles << window->windowTitle();
    return titles;
}

TEST(VeltracTest, listsRegularFilesWhoseSuffixIsTsAndBlamesEachCorruptOneOnce)
{
    const TestDirectory directory;
    makeFile(QStringLiteral("data.TS"));
    makeFile(QStringLiteral("Öl & \"x\" <b>.ts"));
    makeFile(QStringLiteral("data.ts.bak"));
    std::filesystem::create_directories("inside.ts/below");
    makeFile(QStringLiteral("inside.ts/below/hidden.ts"));
    std::ofstream("broken<i>.ts") << "no ts-file";

    std::unique_ptr<Portal> portal;
    {
        const BoxAnswer box(QStringLiteral("Ok"));
        portal = std::make_unique<Portal>();
        EXPECT_EQ(box.title(), QStringLiteral("Veltrac error, nOOfTsFiles()"));
        EXPECT_EQ(box.text(), QStringLiteral("Found a corrupt ts-file: broken<i>.ts.\nThe file is ignored"));
    }
    EXPECT_EQ(portal->names(), (QStringList{QStringLiteral("data.TS"), QStringLiteral("Öl & \"x\" <b>.ts")}));
    const BoxAnswer again(QStringLiteral("Ok"));
    portal->press(Qt::Key_F6);
    EXPECT_TRUE(again.wasAsked());
    EXPECT_EQ(bytesOf("broken<i>.ts").size(), 10U);

    std::filesystem::remove("broken<i>.ts");
    std::ofstream("K\xF6ln.ts") << "a name in Latin-1";
    (*portal)->sl_refresh();
    EXPECT_TRUE(portal->status().startsWith(QStringLiteral("Not listed: 1 ts-file ")));
}

TEST(VeltracTest, showsSampleTimesWithTheDecimalsOfTheirSize)
{
    const TestDirectory directory;
    const std::pair<float, const char*> rows[] = {
        {1.0F, "1.0000"}, {1.5F, "1.500"}, {-2.0F, "-2.000"}, {0.25F, "0.2500"}, {86400.0F, "86400.000"}};
    int number = 0;
    for (const auto& [dt, text] : rows)
        makeFile(QStringLiteral("%1.ts").arg(++number), dt);
    Portal portal;
    ASSERT_EQ(portal.table().rowCount(), number);
    for (int row = 0; row < number; ++row) {
        EXPECT_EQ(portal.table().item(row, 3)->text(), QString::fromLatin1(rows[row].second));
        EXPECT_EQ(portal.table().item(row, 1)->text(), QStringLiteral("7"));
        EXPECT_EQ(portal.table().item(row, 4)->text(), QStringLiteral("A file"));
    }
}

TEST(VeltracTest, directoriesOfAnyNameAreEnteredAndACancelledDialogChangesNothing)
{
    const TestDirectory directory;
    const QString odd = QStringLiteral("100%2 \"Öl\" dir");
    QDir().mkdir(odd);
    makeFile(odd + QStringLiteral("/a.ts"));
    Portal portal;
    QSignalSpy changed(portal.operator->(), SIGNAL(x_new_plotdir(QString const&)));
    const QString before = QDir::currentPath();
    EXPECT_EQ(portal.directoryLine(), QStringLiteral("Current working directory: ") + before +
                                          QStringLiteral(" with 0 off ts-files."));
    {
        const BoxAnswer cancel(QStringLiteral("&Cancel"));
        portal->sl_otherDir();
        EXPECT_TRUE(cancel.wasAsked());
    }
    EXPECT_EQ(QDir::currentPath(), before);
    EXPECT_EQ(changed.count(), 0);

    const BoxAnswer choose(QStringLiteral("&Choose"), [&](QWidget& dialog) {
        qobject_cast<QFileDialog*>(&dialog)->setDirectory(before + QLatin1Char('/') + odd);
    });
    portal->sl_otherDir();
    const QString after = before + QLatin1Char('/') + odd;
    EXPECT_EQ(QDir::currentPath(), after);
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.first().first().toString(), after);
    EXPECT_EQ(portal.directoryLine(), QStringLiteral("Current working directory: ") + after +
                                          QStringLiteral(" with 1 off ts-files."));
}

TEST(VeltracTest, keysThatActionsShareRunNoneOfThem)
{
    const TestDirectory directory;
    makeFile(QStringLiteral("a.ts"));
    Portal portal;
    portal.press(Qt::Key_Down);
    const std::pair<Qt::Key, Qt::KeyboardModifiers> keys[] = {
        {Qt::Key_Z, Qt::ControlModifier}, {Qt::Key_F4, Qt::NoModifier}, {Qt::Key_F5, Qt::NoModifier}};
    const BoxAnswer nobody(QStringLiteral("&Cancel"));
    for (const auto& [key, modifiers] : keys) {
        portal->statusBar()->clearMessage();
        portal.press(key, modifiers);
        EXPECT_TRUE(portal.status().contains(QStringLiteral("stands for several actions"))) << key;
    }
    EXPECT_FALSE(nobody.wasAsked());
    EXPECT_EQ(otherWindows(), QStringList());
    EXPECT_TRUE(QFile::exists(QStringLiteral("a.ts")));
}

TEST(VeltracTest, mouseAndKeyboardSelectAndADoubleClickLists)
{
    const TestDirectory directory;
    makeFile(QStringLiteral("a.ts"));
    makeFile(QStringLiteral("b.ts"));
    makeFile(QStringLiteral("c.ts"));
    Portal portal;
    portal.press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_EQ(portal.status(), QStringLiteral("Select a ts-file in the table first."));
    EXPECT_EQ(otherWindows(), QStringList());

    portal.press(Qt::Key_Down);  // the first row
    portal.press(Qt::Key_Down);
    portal.press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_EQ(otherWindows(), QStringList{QStringLiteral("Veltrac, listing b.ts")});
    QTest::keyClick(&portal.table(), Qt::Key_Return);
    EXPECT_EQ(otherWindows().count(QStringLiteral("Veltrac, listing b.ts")), 2);
    portal.click(2, true);
    EXPECT_TRUE(otherWindows().contains(QStringLiteral("Veltrac, listing c.ts")));

    // A refresh keeps the selection; the main window takes the others along.
    makeFile(QStringLiteral("aa.ts"));
    portal->statusBar()->showMessage(QStringLiteral("A tip"));
    portal->sl_refresh();
    EXPECT_EQ(portal.table().item(portal.table().currentRow(), 0)->text(), QStringLiteral("c.ts"));
    EXPECT_EQ(portal.status(), QString()) << "it stands across the directory line";
    portal->close();
    EXPECT_EQ(otherWindows(), QStringList());
}

TEST(VeltracTest, everySubProgramOpens)
{
    const TestDirectory directory;
    {
        const TSFILE file("a.ts", 7, 1, 0);
    }
    Portal portal;
    portal.click(0);
    const std::pair<const char*, const char*> rows[] = {
        {"sl_createFile", "Create a ts-file"},
        {"sl_readSTLFile", "Read a text file of measurements"},
        {"sl_readSCLFile", "Read text files"},
        {"sl_editHeader", "Edit or view; a.ts header"},
        {"sl_plotFile", "Ts-Plot"},
        {"sl_listFile", "Veltrac, listing a.ts"},
        {"sl_editFile", "Veltrac, editing a.ts"},
        {"sl_editWin", "Ts-Edit"},
        {"sl_derivative", "Ts-Derivative"},
        {"sl_integrate", "Ts-Integrate"},
        {"sl_dft", "Ts-FFT"},
        {"sl_filter", "Ts-Filt"},
    };
    for (const auto& [slot, title] : rows) {
        // The importers first ask for their file.
        QString seen;
        const BoxAnswer dialog(QStringLiteral("&Cancel"), [&](QWidget& box) { seen = box.windowTitle(); });
        QMetaObject::invokeMethod(portal.operator->(), slot);
        QApplication::processEvents();
        const QStringList opened = otherWindows() << seen;
        EXPECT_FALSE(opened.filter(QLatin1String(title)).isEmpty())
            << slot << ": " << opened.join(QStringLiteral(", ")).toStdString();
    }
    for (QWidget* const window : QApplication::topLevelWidgets())
        if (qobject_cast<SubWindow*>(window) != nullptr && window->isVisible()) {
            const std::string title = window->windowTitle().toStdString();
            const QSize room = window->screen()->availableSize().expandedTo(window->minimumSizeHint());
            EXPECT_EQ(window->size().boundedTo(room), window->size()) << title;
            QApplication::setActiveWindow(window);
            const auto before = otherWindows().size();
            QTest::keyClick(window, Qt::Key_F1);
            EXPECT_EQ(otherWindows().size(), before + 1) << title << ": F1 shows no help";
        }
    portal->close();
    EXPECT_EQ(otherWindows(), QStringList());
}

TEST(VeltracTest, deletesOnlyAfterYesAndNeverWhatAWindowWrites)
{
    const TestDirectory directory;
    makeFile(QStringLiteral("a.ts"));
    Portal portal;
    portal.click(0);
    struct Row
    {
        const char* button;
        bool isOpen;
        const char* text;
        bool isThereAfterwards;
    };
    const Row rows[] = {
        {"&No", false, "Do you really want to delete a.ts?", true},
        {"Ok", true, "The file a.ts is open for writing in another window.\nClose that window first.", true},
        {"&Yes", false, "Do you really want to delete a.ts?", false},
    };
    // Registered under another name of the same file.
    const QString writer = QDir::currentPath() + QStringLiteral("/./a.ts");
    for (const Row& row : rows) {
        if (row.isOpen)
            portal->registerWriter(writer);
        const BoxAnswer box(QString::fromLatin1(row.button));
        portal->sl_deleteFile();
        EXPECT_EQ(box.text(), QString::fromLatin1(row.text));
        EXPECT_EQ(QFile::exists(QStringLiteral("a.ts")), row.isThereAfterwards) << row.button;
        if (row.isOpen)
            portal->unregisterWriter(writer);
    }
    EXPECT_EQ(portal.table().rowCount(), 0);
}

TEST(VeltracTest, fileMenusOfferEachFileAndStayShort)
{
    const TestDirectory directory;
    makeFile(QStringLiteral("R&D\t1.ts"));
    Portal portal;
    QMenu* const menu = portal.subMenu(QStringLiteral("&List"));
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->actions().size(), 1);
    EXPECT_EQ(menu->actions().first()->text(), QStringLiteral("R&&D 1.ts"));
    menu->actions().first()->trigger();
    EXPECT_EQ(otherWindows(), QStringList{QStringLiteral("Veltrac, listing R&D\t1.ts")});

    for (int i = 0; i < 1000; ++i)
        makeFile(QStringLiteral("f%1.ts").arg(i));
    portal->sl_refresh();
    emit menu->aboutToShow();
    int files = 0;
    std::vector<const QMenu*> open{menu};
    while (!open.empty()) {
        const QList<QAction*> entries = open.back()->actions();
        open.pop_back();
        EXPECT_LE(entries.size(), 30);
        for (const QAction* const entry : entries) {
            if (entry->menu() != nullptr)
                open.push_back(entry->menu());
            else
                ++files;
        }
    }
    EXPECT_EQ(files, 1001);
}

TEST(VeltracTest, sortsByTheClickedHeaderOnceSortingIsOn)
{
    const TestDirectory directory;
    makeFile(QStringLiteral("a.ts"), 3.0F);
    makeFile(QStringLiteral("b.ts"), 2.0F);
    Portal portal;
    const auto clickHeader = [&] {
        QHeaderView* const header = portal.table().horizontalHeader();
        const QPoint at(header->sectionViewportPosition(3) + header->sectionSize(3) / 2,
                        header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, at);
        return portal.names().first();
    };
    EXPECT_EQ(clickHeader(), QStringLiteral("a.ts"));
    for (QAction* const action : portal->actions())
        if (action->isCheckable())
            action->trigger();
    EXPECT_NE(clickHeader(), clickHeader());
}

TEST(VeltracTest, runTimeTextsOfFormulasCanBeSilencedUntilTheNextCalculation)
{
    const TestDirectory directory;
    Portal portal;
    const auto tick = [](QWidget& box) { box.findChild<QCheckBox*>()->setChecked(true); };
    const auto isShown = [&](const char* text, std::function<void(QWidget&)> before = {}) {
        const BoxAnswer box(QStringLiteral("Ok"), std::move(before));
        portal->ShowTsError(text);
        EXPECT_TRUE(!box.wasAsked() || box.title() == QLatin1String("Veltrac error"));
        return box.wasAsked();
    };
    const char* const zero = "Attempt to divide on zero";
    {
        const JobProgress first(nullptr, QStringLiteral("Calculating"));
        EXPECT_TRUE(isShown(zero));
        EXPECT_TRUE(isShown(zero, tick));
        EXPECT_FALSE(isShown(zero));
        EXPECT_TRUE(isShown("Missing argument in function"));
    }
    const JobProgress second(nullptr, QStringLiteral("Calculating"));
    EXPECT_TRUE(isShown(zero));
    EXPECT_TRUE(isShown("Illegal token"));
}

}  // namespace
