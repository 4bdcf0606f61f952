// The main window on directories of its own, driven with mouse and keys.

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QUrl>

#include <array>

#include "core/FileTime.h"
#include "core/RingFile.h"
#include "core/ScratchFile.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "portal/CreateTsWin_Veltrac.h"
#include "portal/Veltrac.h"
#include "share/JobProgress.h"
#include "share/QtMessageWin.h"
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
    struct Row
    {
        float dt;
        const char* text;
        const char* tip;
        const char* unit = "";
    };
    const Row rows[] = {{1.0F, "1.0000", "1 s, 1 Hz"},
                        {1.5F, "1.500", "1.5 s, 666.667 mHz"},
                        {-2.0F, "-2.000", "-2 s"},
                        {0.25F, "0.2500", "0.25 s, 4 Hz"},
                        {86400.0F, "86400.000", "86400 s, 11.5741 µHz"},
                        {static_cast<float>(1.0 / 22050.0), "0.0000", "4.5351473e-05 s, 22.05 kHz"},
                        {0.5F, "0.5000", "0.5 ms, 2 kHz", "Time[ms]"},
                        {0.5F, "0.5000", "0.5 Hz", "Frequency[Hz]"}};
    int number = 0;
    for (const Row& row : rows) {
        makeFile(QStringLiteral("%1.ts").arg(++number), row.dt);
        openTsFile(std::to_string(number) + ".ts", false)->timeUnit(row.unit);
    }
    Portal portal;
    ASSERT_EQ(portal.table().rowCount(), number);
    for (int row = 0; row < number; ++row) {
        EXPECT_EQ(portal.table().item(row, 3)->text(), QString::fromLatin1(rows[row].text));
        EXPECT_EQ(portal.table().item(row, 3)->toolTip(), QString::fromUtf8(rows[row].tip));
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

    {
        const BoxAnswer choose(QStringLiteral("&Choose"), [&](QWidget& dialog) {
            qobject_cast<QFileDialog*>(&dialog)->setDirectory(before + QLatin1Char('/') + odd);
        });
        portal->sl_otherDir();
    }
    // The next dialog for files begins there, wherever this one was.
    QString begins;
    const QString after = before + QLatin1Char('/') + odd;
    {
        const BoxAnswer cancel(QStringLiteral("&Cancel"), [&](QWidget& dialog) {
            begins = qobject_cast<QFileDialog*>(&dialog)->directory().absolutePath();
        });
        portal->sl_readASCIIFile();
    }
    EXPECT_EQ(begins, after);
    EXPECT_EQ(QDir::currentPath(), after);
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.first().first().toString(), after);
    EXPECT_EQ(portal.directoryLine(), QStringLiteral("Current working directory: ") + after +
                                          QStringLiteral(" with 1 off ts-files."));
}

TEST(VeltracTest, theFileThatTheLauncherNamesIsTheSelectedRow)
{
    const TestDirectory directory;
    for (const char* const name : {"a.ts", "50% \"Öl\".ts", "z.ts"})
        makeFile(QString::fromUtf8(name));
    for (const char* const asked : {"50% \"Öl\".ts", "z.ts", "gone.ts"}) {
        qputenv("VELTRAC_SELECT", asked);
        Portal portal;
        qunsetenv("VELTRAC_SELECT");
        const QList<QTableWidgetItem*> cells = portal.table().selectedItems();
        EXPECT_EQ(cells.isEmpty() ? "gone.ts" : cells.first()->text().toStdString(), asked);
    }
}

TEST(VeltracTest, examplesAreCopiedWhereTheUserSaysAndWhatWasChangedThereStays)
{
    const TestDirectory directory;
    std::filesystem::create_directories("share/doc/veltrac");
    std::filesystem::create_directory_symlink(VELTRAC_EXAMPLES, "share/doc/veltrac/examples");
    const QString home = QDir::currentPath();
    QDir().mkdir(QStringLiteral("my own"));
    QDir().mkpath(QStringLiteral("my own/Veltrac examples"));
    std::ofstream("my own/Veltrac examples/README.md") << "mine";
    const QByteArray before = qgetenv("XDG_DATA_DIRS");
    qputenv("XDG_DATA_DIRS", QFile::encodeName(home + QStringLiteral("/share")));
    Portal portal;
    {
        const BoxAnswer choose(QStringLiteral("&Choose"), [&](QWidget& dialog) {
            qobject_cast<QFileDialog*>(&dialog)->setDirectory(home + QStringLiteral("/my own"));
        });
        portal->sl_examples();
    }
    qputenv("XDG_DATA_DIRS", before);
    EXPECT_EQ(QDir::currentPath(), home + QStringLiteral("/my own/Veltrac examples"));
    EXPECT_EQ(bytesOf("README.md").size(), 4U);
    EXPECT_EQ(bytesOf("ecg.ts"), bytesOf(VELTRAC_EXAMPLES "/ecg.ts"));
    EXPECT_FALSE(QFile::exists(QStringLiteral("python")));
    EXPECT_EQ(portal.status(), QStringLiteral("Examples: 4 files copied, 1 were there already."));
    EXPECT_EQ(portal.names(), (QStringList{QStringLiteral("co2.ts"), QStringLiteral("ecg.ts"),
                                           QStringLiteral("weather.ts")}));
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

    portal.press(Qt::Key_End);
    EXPECT_EQ(portal.table().currentRow(), 2);
    portal.press(Qt::Key_Home);
    portal.press(Qt::Key_Down);
    portal.press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_EQ(otherWindows(), QStringList{QStringLiteral("Veltrac, listing b.ts")});
    QTest::keyClick(&portal.table(), Qt::Key_Return);
    EXPECT_EQ(otherWindows().count(QStringLiteral("Veltrac, listing b.ts")), 2);
    portal.click(2, true);
    EXPECT_TRUE(otherWindows().contains(QStringLiteral("Veltrac, listing c.ts")));

    EXPECT_GE(portal->metaObject()->indexOfSlot("sl_subwindowGone(subWindow)"), 0);
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
    // A row of the registry whose action has no slot of its own.
    for (const auto& [kind, title] :
         {std::pair(SubProgram::Filter, "Ts-Filt"), std::pair(SubProgram::SclImport, "Read text files")}) {
        const auto before = otherWindows().filter(QLatin1String(title)).size();
        QString seen;
        const BoxAnswer dialog(QStringLiteral("&Cancel"), [&](QWidget& box) { seen = box.windowTitle(); });
        QAction action;
        action.setData(static_cast<int>(kind));
        QObject::connect(&action, SIGNAL(triggered()), portal.operator->(), SLOT(sl_openSubProgram()));
        action.trigger();
        QApplication::processEvents();
        EXPECT_EQ((otherWindows() << seen).filter(QLatin1String(title)).size(), before + 1) << title;
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

// Drops files on the window, as a file manager does, and answers the question by the button of that text, or
// by the one that Enter presses.
QString dropped(Portal& portal, const QStringList& files, const QString& button)
{
    QMimeData data;
    QList<QUrl> urls;
    for (const QString& file : files)
        urls << QUrl::fromLocalFile(QFileInfo(file).absoluteFilePath());
    data.setUrls(urls);
    QDragEnterEvent enters(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(portal.operator->(), &enters);
    EXPECT_TRUE(enters.isAccepted());
    QString suggested;
    const BoxAnswer answer(button, [&](QWidget& box) {
        for (const QPushButton* const one : box.findChildren<QPushButton*>())
            if (one->isDefault())
                suggested = one->text();
    });
    QDropEvent drops(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(portal.operator->(), &drops);
    QTest::qWait(20);
    EXPECT_TRUE(!answer.wasAsked() || answer.text().contains(QStringLiteral(" looks like ")));
    return suggested;
}

TEST(VeltracTest, whatIsDroppedIsListedImportedOrGoneTo)
{
    const TestDirectory directory;
    makeFile(QStringLiteral("a.ts"));
    std::filesystem::create_directories("below/deep");
    std::ofstream("log.txt") << "Date;Temp\n17.05.2016 13:45:30;20,5\n17.05.2016 13:45:31;21,5\n";
    std::ofstream("values.csv") << "1.5\n2.5\n3.5\n4.5\n";
    std::ofstream("other.csv") << "5\n6\n7\n8\n";
    std::ofstream("text.dat") << "%S 2\n%C 1\n%D 0.5\n1\n2\n";
    Portal portal;
    EXPECT_EQ(dropped(portal, {QStringLiteral("a.ts")}, QString()), QString());
    EXPECT_EQ(otherWindows(), QStringList{QStringLiteral("Veltrac, listing a.ts")});

    const std::pair<QStringList, QString> rows[] = {
        {{QStringLiteral("log.txt")}, QStringLiteral("Read as ta&ble (STL)")},
        {{QStringLiteral("values.csv"), QStringLiteral("other.csv")},
         QStringLiteral("Read as &column (SCL)")},
        {{QStringLiteral("text.dat")}, QStringLiteral("Read as &tsa text")},
    };
    for (const auto& [files, button] : rows) {
        EXPECT_EQ(dropped(portal, files, QStringLiteral("Cancel")), button);
        EXPECT_EQ(otherWindows().size(), 1);
    }
    dropped(portal, rows[0].first, rows[0].second);
    dropped(portal, rows[1].first, rows[1].second);
    EXPECT_EQ(otherWindows().size(), 3) << otherWindows().join(QStringLiteral(", ")).toStdString();
    dropped(portal, rows[2].first, rows[2].second);
    EXPECT_EQ(portal.names(), (QStringList{QStringLiteral("a.ts"), QStringLiteral("text.ts")}));
    // Another importer than the suggested one.
    dropped(portal, rows[1].first, rows[0].second);
    EXPECT_EQ(otherWindows().size(), 5);

    dropped(portal, {QStringLiteral("below/deep")}, QString());
    EXPECT_TRUE(QDir::currentPath().endsWith(QStringLiteral("/below/deep")));
    EXPECT_EQ(portal.table().rowCount(), 0);
    portal->close();
}

TEST(VeltracTest, anEmptyDirectoryOffersWhatCanBeDone)
{
    const TestDirectory directory;
    Portal portal;
    const auto offered = [&] {
        QStringList texts;
        for (const QToolButton* const button : portal.table().viewport()->findChildren<QToolButton*>())
            if (button->isVisible())
                texts << button->defaultAction()->text();
        return texts;
    };
    const QStringList all = offered();
    EXPECT_EQ(all.size(), 7);
    EXPECT_EQ(all.first(), QStringLiteral("Create a (ts)file..."));

    // The menu below the last row offers the same.
    makeFile(QStringLiteral("a.ts"));
    portal->sl_refresh();
    EXPECT_EQ(offered(), QStringList());
    QStringList entries;
    QTimer::singleShot(0, [&] {
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        for (const QAction* const action : menu->actions())
            entries << action->text();
        menu->close();
    });
    const QPoint below(20, portal.table().viewport()->height() - 5);
    QContextMenuEvent wanted(QContextMenuEvent::Mouse, below, portal.table().viewport()->mapToGlobal(below));
    QApplication::sendEvent(portal.table().viewport(), &wanted);
    EXPECT_EQ(entries, all);
}

TEST(VeltracTest, copiesAndRenamesOverNothing)
{
    const TestDirectory directory;
    makeFile(QStringLiteral("a.ts"), 0.25F);
    makeFile(QStringLiteral("taken.ts"));
    const auto bytes = bytesOf("a.ts");
    Portal portal;
    const auto answer = [&](void (VeltracWin::*slot)(), const char* typed) {
        const BoxAnswer name(QStringLiteral("OK"), [&](QWidget& box) {
            if (auto* const field = box.findChild<QLineEdit*>())
                field->setText(QString::fromUtf8(typed));
        });
        QString told;
        QTimer look;
        QObject::connect(&look, &QTimer::timeout, [&] {
            if (auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                told = box->text();
                box->close();
            }
        });
        look.start(10);
        (portal.operator->()->*slot)();
        return told.isEmpty() ? name.text() : told;
    };
    portal.click(0);
    EXPECT_EQ(answer(&VeltracWin::sl_copyFile, "b.v2"), QString());
    EXPECT_EQ(bytesOf("b.v2.ts"), bytes);
    EXPECT_EQ(portal.table().item(portal.table().currentRow(), 0)->text(), QStringLiteral("b.v2.ts"));
    EXPECT_EQ(answer(&VeltracWin::sl_renameFile, "Öl"), QString());
    EXPECT_EQ(bytesOf("Öl.ts"), bytes);
    EXPECT_FALSE(std::filesystem::exists("b.v2.ts"));
    for (const auto slot : {&VeltracWin::sl_copyFile, &VeltracWin::sl_renameFile}) {
        const auto before = bytesOf("taken.ts");
        EXPECT_TRUE(answer(slot, "taken").contains(QStringLiteral("already")));
        EXPECT_EQ(bytesOf("taken.ts"), before);
    }
    portal->registerWriter(QStringLiteral("Öl.ts"));
    EXPECT_TRUE(answer(&VeltracWin::sl_renameFile, "c").contains(QStringLiteral("open for writing")));
    EXPECT_EQ(directory.fileCount(), 3U);
}

TEST(VeltracTest, aDialogMadeByHandHasItsFileListedAndWindowsGoWithTheMainWindow)
{
    const TestDirectory directory;
    QPointer<QWidget> left;
    {
        Portal portal;
        auto* const dialog = new CreateTsWin;
        dialog->show();
        dialog->sl_accept();
        EXPECT_EQ(portal.names(), QStringList{QStringLiteral("Myfile.ts")});
        left = portal->openSubProgram(SubProgram::Formula, QStringLiteral("Myfile.ts"), 1);
        ASSERT_NE(left, nullptr);
    }
    EXPECT_TRUE(left.isNull()) << "its scratch files would stay";
}

TEST(VeltracTest, oneCancelInTheClosingQuestionKeepsAllWindows)
{
    struct AskingWindow : SubWindow
    {
        bool answer = true;
        int asked = 0;
        bool mayClose() override
        {
            ++asked;
            return answer;
        }
    };
    const TestDirectory directory;
    VeltracWin main;
    main.show();
    std::array<QPointer<AskingWindow>, 3> windows;
    for (QPointer<AskingWindow>& window : windows) {
        window = new AskingWindow;
        window->show();
    }
    windows[1]->answer = false;
    for (const auto quit : {+[](VeltracWin& w) { w.sl_quit(); }, +[](VeltracWin& w) { w.close(); }}) {
        quit(main);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_TRUE(main.isVisible());
        for (const QPointer<AskingWindow>& window : windows)
            ASSERT_TRUE(window && window->isVisible());
    }
    windows[1]->answer = true;
    windows[0]->asked = 0;
    EXPECT_TRUE(main.close());
    EXPECT_EQ(windows[0]->asked, 1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (const QPointer<AskingWindow>& window : windows)
        EXPECT_TRUE(window.isNull());
}

TEST(VeltracTest, windowsAreCutToTheScreenAndNoFurther)
{
    const TestDirectory directory;
    Portal portal;
    const QSize screen = portal->screen()->availableSize();
    const std::pair<QSize, QSize> rows[] = {{screen, screen}, {screen + QSize(40, 300), screen}};
    for (const auto& [wanted, shown] : rows) {
        SubWindow window;
        MessageWin message(nullptr, QString(), QString(), QString(), wanted.width(), wanted.height(), {}, 11);
        window.resize(wanted);
        portal->hide();
        portal->resize(wanted);
        for (QWidget* const each :
             {static_cast<QWidget*>(&window), static_cast<QWidget*>(portal.operator->())}) {
            each->show();
            EXPECT_EQ(each->size(), shown);
        }
        message.setAttribute(Qt::WA_DeleteOnClose, false);
        message.show();
        EXPECT_EQ(message.size(), shown);
    }
}

TEST(VeltracTest, whatsThisTextsBeginWithTheImageOfTheirAction)
{
    const TestDirectory directory;
    Portal portal;
    int count = 0;
    for (const QAction* const action : portal->actions()) {
        if (action->whatsThis().isEmpty() || action->icon().isNull())
            continue;
        ++count;
        const auto begin = action->whatsThis().indexOf(QLatin1Char('"')) + 1;
        EXPECT_TRUE(action->whatsThis().startsWith(QStringLiteral("<p><img src=\":img_")));
        const QString image = action->whatsThis().mid(begin, action->whatsThis().indexOf('"', begin) - begin);
        EXPECT_FALSE(QImage(image).isNull()) << image.toStdString();
    }
    EXPECT_GE(count, 12);
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

// -- What others do in the directory --

TEST(VeltracTest, showsByItselfWhatComesAndGoesAndNothingMovesUnderTheUser)
{
    const TestDirectory directory;
    for (int i = 100; i < 200; ++i)
        makeFile(QStringLiteral("run%1.ts").arg(i));
    Portal portal;
    portal.click(3);
    portal.table().verticalScrollBar()->setValue(50);
    const QString top = portal.table().item(portal.table().rowAt(0), 0)->text();
    for (const char* const name : {"run100.ts", "run101.ts", "run199.ts"})
        std::filesystem::remove(name);
    for (const char* const name : {"run050.ts", "run1505.ts", "run1506.ts", "zebra.ts"})
        makeFile(QString::fromLatin1(name));
    makeFile(QStringLiteral("run160.ts"), 2.5F);
    EXPECT_TRUE(QTest::qWaitFor([&] { return portal.table().rowCount() == 101; }, 8000));
    QStringList sorted = portal.names();
    EXPECT_EQ(sorted.first(), "run050.ts");
    EXPECT_EQ(sorted.last(), "zebra.ts");
    EXPECT_TRUE(sorted.contains("run1505.ts") && !sorted.contains("run101.ts"));
    EXPECT_EQ(portal.table().item(portal.table().rowAt(0), 0)->text(), top);
    EXPECT_EQ(portal.table().selectedItems().first()->text(), "run103.ts");
    EXPECT_TRUE(portal.directoryLine().endsWith("with 101 off ts-files."));
    const int changed = static_cast<int>(sorted.indexOf("run160.ts"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return portal.table().item(changed, 3)->text() == "2.500"; }, 8000));
}

TEST(VeltracTest, tellsOfCorruptFilesWithoutABoxAndOncePerStateAndLeavesOwnScratchFilesOut)
{
    const TestDirectory directory;
    makeFile(QStringLiteral("good.ts"));
    Portal portal;
    const BoxAnswer none("Ok");
    const ScratchFile scratch(directory.path(), "work", ".ts");
    std::filesystem::copy_file("good.ts", scratch.path(), std::filesystem::copy_options::overwrite_existing);
    std::ofstream("bad.ts") << "no ts-file";
    EXPECT_TRUE(QTest::qWaitFor([&] { return portal.status().contains("bad.ts"); }, 8000));
    EXPECT_EQ(portal.status(), "Not listed: bad.ts is a corrupt ts-file.");
    EXPECT_EQ(portal.names(), QStringList{"good.ts"});
    portal->statusBar()->clearMessage();
    makeFile(QStringLiteral("other.ts"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return portal.names().size() == 2; }, 8000));
    QTest::qWait(2500);
    EXPECT_EQ(portal.status(), "");
    EXPECT_FALSE(none.wasAsked());
}

TEST(VeltracTest, unfoldsARingFileToANewOne)
{
    const TestDirectory directory;
    makeRingFile("ring.ts", {.samples = 5, .columns = {{"n", ""}}, .dt = 0.5F});
    {
        TSFILE ring("ring.ts", false);
        for (std::uint32_t s = 1; s <= 12; ++s) {
            const auto value = static_cast<float>(s);
            ring.writeRow(s, &value, true);
        }
    }
    const auto before = bytesOf("ring.ts");
    Portal portal;
    portal.click(0);
    const BoxAnswer name("OK");
    portal->sl_unfoldFile();
    EXPECT_TRUE(name.wasAsked());
    EXPECT_EQ(portal.names(), (QStringList{"ring.ts", "ring_unfolded.ts"}));
    TSFILE made("ring_unfolded.ts", true);
    EXPECT_EQ(made.samples(), 5U);
    for (std::uint32_t s = 1; s <= 5; ++s) {
        EXPECT_EQ(made.value(s, 1), static_cast<float>(s + 7));
        EXPECT_EQ(FileTime(made).moment(s), 0.5 * (s + 7));
    }
    EXPECT_EQ(bytesOf("ring.ts"), before);
}

}  // namespace
