// The list window, driven with keys as a user does.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QSpinBox>
#include <QStatusBar>
#include <QTest>

#include <unistd.h>

#include "core/ColumnBackup.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "portal/SampleView.h"
#include "portal/TsApplication.h"
#include "portal/TsTableView.h"
#include "share/NoticeStrip.h"
#include "tests/BoxAnswer.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

// Plays the main window: keeps the files that are open for writing.
class Portal : public TsApplication
{
public:
    Portal() { setInstance(this); }
    void registerWriter(const QString& path) override { m_writers << path; }
    void unregisterWriter(const QString& path) override { m_writers.removeOne(path); }
    bool isOpenForWriting(const QString& path) const override { return m_writers.contains(path); }
    int writers() const { return static_cast<int>(m_writers.size()); }

private:
    QStringList m_writers;
};

void makeFile(const std::vector<float>& values)
{
    TSFILE file("test.ts", static_cast<std::uint32_t>(values.size()), 2, 0);
    for (std::uint32_t s = 1; s <= values.size(); ++s)
        file.setValue(s, 1, values[s - 1]);
    file.flush(true);
}

float valueInFile(std::uint32_t sample, std::uint32_t column)
{
    return openTsFile("test.ts", true)->value(sample, column);
}

// A window on test.ts that is shown and, in the end, gone.
class Window
{
public:
    explicit Window(int mode, const char* file = "test.ts") : m_window(new TsTableView(file, nullptr, mode))
    {
        m_window->show();
        m_window->activateWindow();
        view().setFocus();
        activate();
        QApplication::processEvents();
    }
    ~Window() { delete m_window; }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    TsTableView& window() { return *m_window; }
    SampleView& view() { return *m_window->findChild<SampleView*>(); }
    // What the status bar says about the current cell.
    QString position()
    {
        for (const QLabel* const label : m_window->findChildren<QLabel*>())
            if (label->accessibleName() == "Current sample")
                return label->text();
        return QString();
    }
    bool isGone()
    {
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return m_window.isNull();
    }
    // As a window manager does when a dialog has closed.
    void activate() { QApplication::setActiveWindow(m_window); }
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        if (QApplication::focusWidget() == nullptr)
            activate();
        QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key), modifiers);
        QApplication::processEvents();
    }
    // Types into the cell that is current, and leaves it by Enter.
    void enter(const QString& text)
    {
        if (QApplication::focusWidget() == nullptr)
            activate();
        QTest::keyClicks(QApplication::focusWidget(), text.left(1));
        QTest::keyClicks(QApplication::focusWidget(), text.mid(1));
        press(Qt::Key_Return);
        QApplication::processEvents();
    }
    // A slot of the window or of one of its parts.
    void call(const char* slot)
    {
        const QByteArray signature = QByteArray(slot) + "()";
        QList<QObject*> parts = m_window->findChildren<QObject*>();
        parts.prepend(m_window);
        for (QObject* const part : parts)
            if (part->metaObject()->indexOfSlot(signature) >= 0) {
                QMetaObject::invokeMethod(part, slot);
                return;
            }
        ADD_FAILURE() << slot;
    }
    // Presses a box's button while the slot runs; returns the box's text.
    QString callAndAnswer(const char* slot, const QString& button, std::function<void(QWidget&)> before = {})
    {
        const BoxAnswer answer(button, std::move(before));
        call(slot);
        EXPECT_TRUE(answer.wasAsked()) << slot;
        return answer.text();
    }

private:
    QPointer<TsTableView> m_window;
};

// 500 million zeros that take no room on the disk.
void makeHugeFile()
{
    {
        TSFILE file("test.ts", 1, 1, 0);
    }
    std::fstream file("test.ts", std::ios::binary | std::ios::in | std::ios::out);
    const std::uint32_t samples = 500000000;
    file.write(reinterpret_cast<const char*>(&samples), sizeof samples);
    file.close();
    ASSERT_EQ(::truncate("test.ts", 1024 + 512 * ((500000000LL + 127) / 128)), 0);
}

}  // namespace

TEST(TsTableView, ScanBoxesTellTheirTextsAndSelectTheCell)
{
    const TestDirectory directory;
    makeFile({3, 7, 7, 1});
    Window list(0);
    EXPECT_EQ(list.window().windowTitle(), "Veltrac, listing test.ts");
    EXPECT_EQ(list.window().lastScan().maximumSample, 0U);
    EXPECT_EQ(list.callAndAnswer("sl_findmax", "&Ok"), "The max value in column 1 is:\n 7 at sample 2");
    EXPECT_EQ(list.view().currentRow(), 1);
    EXPECT_EQ(list.callAndAnswer("sl_findmin", "&Ok"), "The minimum value in column 1 is:\n 1 at sample 4");
    EXPECT_EQ(list.view().currentRow(), 3);
    EXPECT_EQ(list.callAndAnswer("sl_findaverage", "&Ok"), "The average value of column 1 is:\n4.5");
    EXPECT_EQ(list.window().lastScan().maximumSample, 2U);

    makeFile({3, NAN});
    list.call("sl_reload");
    EXPECT_EQ(
        list.callAndAnswer("sl_findmax", "&Ok"),
        "The max value in column 1 is:\n 3 at sample 1\n1 value is missing; the average without them is 3");
    {
        TSFILE empty("test.ts", 0, 1, 0);
    }
    list.call("sl_reload");
    EXPECT_EQ(list.callAndAnswer("sl_findaverage", "&Ok"), "The file has no samples.");
    {
        TSFILE empty("test.ts", 4000000000, 0, 0);
    }
    list.call("sl_reload");
    EXPECT_EQ(list.callAndAnswer("sl_findmax", "&Ok"), "The file has no columns.");
}

TEST(TsTableView, KeysAndSelectionReachAllOfAHugeFile)
{
    const TestDirectory directory;
    makeHugeFile();
    Window list(0);
    SampleView& view = list.view();
    list.press(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(view.currentRow(), 499999999);
    ASSERT_EQ(view.selectedBlocks().size(), 1U);
    EXPECT_EQ(view.selectedBlocks()[0].firstRow, 499999999) << "an edit would change what is out of view";
    EXPECT_EQ(view.sampleBar()->value(), view.sampleBar()->maximum());
    EXPECT_EQ(view.sampleBar()->maximum(), 500000000 - view.viewport()->height() / view.rowHeight(0));
    list.press(Qt::Key_Up);
    EXPECT_EQ(view.currentRow(), 499999998);
    list.press(Qt::Key_Home, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_EQ(view.selectedBlocks().size(), 1U);
    EXPECT_EQ(view.selectedBlocks()[0].firstRow, 0);
    EXPECT_EQ(view.selectedBlocks()[0].lastRow, 499999998);
    view.sampleBar()->setValue(250000000);
    EXPECT_EQ(view.selectedBlocks()[0].lastRow, 499999998) << "scrolling loses the selection";
    EXPECT_TRUE(view.selectionModel()->isSelected(view.indexAt(QPoint(5, 5)))) << "and shows it";
    EXPECT_EQ(view.currentRow(), 0);
    list.press(Qt::Key_Down);
    EXPECT_EQ(view.currentRow(), 1) << "after scrolling, the keys go on from the current cell";

    // Over the edge of the million rows that the table holds at a time.
    view.goTo(999998, 0);
    for (int i = 0; i < 3; ++i)
        list.press(Qt::Key_Down);
    EXPECT_EQ(view.currentRow(), 1000001);
    EXPECT_EQ(view.model()->headerData(view.currentIndex().row(), Qt::Vertical).toInt(), 1000002);
    list.press(Qt::Key_PageUp);
    EXPECT_LT(view.currentRow(), 1000001);

    list.callAndAnswer("sl_goTo", "OK", [](QWidget& box) { box.findChild<QLineEdit*>()->setText("50%"); });
    EXPECT_EQ(view.currentRow(), 250000000);
    list.call("sl_pageDown");
    EXPECT_EQ(view.currentRow(), 255000000);
    view.selectColumn(0);
    EXPECT_EQ(view.selectedBlocks()[0].firstRow, 0) << "a whole column means all samples";
    EXPECT_EQ(view.selectedBlocks()[0].lastRow, 499999999);
}

TEST(TsTableView, SelectionExtendsFromTheCurrentCellHoweverItWasReached)
{
    const TestDirectory directory;
    struct Row
    {
        const char* label;
        std::function<void(Window&)> reach;
        int key;
        int first, last;  // rows after two presses, counted from the table's end where negative
    };
    const auto goTo = [](Window& w) {
        w.callAndAnswer("sl_goTo", "OK", [](QWidget& box) { box.findChild<QLineEdit*>()->setText("5"); });
    };
    const Row rows[] = {
        {"Ctrl+Home", [](Window& w) { w.press(Qt::Key_Home, Qt::ControlModifier); }, Qt::Key_Down, 0, 2},
        {"Ctrl+End", [](Window& w) { w.press(Qt::Key_End, Qt::ControlModifier); }, Qt::Key_Up, -3, -1},
        {"Ctrl+G", goTo, Qt::Key_Down, 4, 6},
        {"maximum", [](Window& w) { w.callAndAnswer("sl_findmax", "&Ok"); }, Qt::Key_Up, 4, 6},
        {"Shift+Tab", [](Window& w) { w.press(Qt::Key_Backtab, Qt::ShiftModifier); }, Qt::Key_Up, 0, 1},
    };
    for (const bool huge : {false, true}) {
        if (huge)
            makeHugeFile();
        else
            makeFile({1, 2, 3, 4, 5, 6, 9, 8});
        for (const Row& row : rows) {
            if (huge && std::strcmp(row.label, "maximum") == 0)
                continue;  // half a billion samples
            Window edit(1);
            SampleView& view = edit.view();
            QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier,
                              view.visualRect(view.model()->index(2, 0)).center());
            row.reach(edit);
            edit.press(row.key, Qt::ShiftModifier);
            edit.press(row.key, Qt::ShiftModifier);
            ASSERT_EQ(view.selectedBlocks().size(), 1U) << row.label;
            const CellBlock& block = view.selectedBlocks()[0];
            const int end = row.first < 0 ? view.rows().total() : 0;
            EXPECT_EQ(block.firstRow, row.first + end) << row.label << huge;
            EXPECT_EQ(block.lastRow, row.last + end) << row.label << huge;
            EXPECT_EQ(view.currentRow(), row.key == Qt::Key_Down ? block.lastRow : block.firstRow);
        }
    }
}

TEST(TsTableView, DraggingTheMouseSelectsOverTheEdgeOfTheShownMillionRows)
{
    const TestDirectory directory;
    makeHugeFile();
    Window list(0);
    SampleView& view = list.view();
    QWidget* const port = view.viewport();
    view.goTo(999998, 0);
    const QPoint from = view.visualRect(view.currentIndex()).center();
    QTest::mousePress(port, Qt::LeftButton, Qt::NoModifier, from);
    const QPoint below(from.x(), port->height() + 100);
    for (int i = 0; i < 3; ++i) {
        QMouseEvent move(QEvent::MouseMove, below, port->mapToGlobal(below), Qt::NoButton, Qt::LeftButton,
                         {});
        QApplication::sendEvent(port, &move);
    }
    // It goes on while the mouse rests there, and no longer than the button is held.
    QCursor::setPos(port->mapToGlobal(below));
    const int resting = view.currentRow();
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.currentRow() > resting; }));
    QTest::mouseRelease(port, Qt::LeftButton, Qt::NoModifier, below);
    const int released = view.currentRow();
    QTest::mouseMove(port, from);
    EXPECT_EQ(view.currentRow(), released);
    ASSERT_EQ(view.selectedBlocks().size(), 1U);
    EXPECT_EQ(view.selectedBlocks()[0].firstRow, 999998);
    EXPECT_GT(view.selectedBlocks()[0].lastRow, 1000050);
    EXPECT_EQ(view.currentRow(), view.selectedBlocks()[0].lastRow);
}

TEST(TsTableView, FileThatChangesOrVanishesIsToldAndReadAgain)
{
    const TestDirectory directory;
    makeFile({1, 2});
    Window list(0);
    auto& strip = *list.window().findChild<NoticeStrip*>();
    const auto activate = [&] {
        QEvent event(QEvent::ActivationChange);
        QApplication::sendEvent(&list.window(), &event);
    };
    activate();
    EXPECT_FALSE(strip.isVisible());
    makeFile({1, 2, 3});
    // Also while the window stays in front.
    EXPECT_TRUE(QTest::qWaitFor([&] { return strip.text() == "test.ts has changed."; }, 5000));
    list.window().findChild<QCheckBox*>()->setChecked(true);
    ASSERT_TRUE(list.view().rows().isSorted());
    strip.findChild<QPushButton*>()->click();
    EXPECT_FALSE(strip.isVisible());
    EXPECT_EQ(list.view().rows().total(), 3);
    EXPECT_FALSE(list.view().rows().isSorted());
    activate();
    EXPECT_FALSE(strip.isVisible()) << "what was read again is told again";
    std::filesystem::remove("test.ts");
    activate();
    EXPECT_EQ(strip.text(), "test.ts is gone; it is shown as it was.");
}

TEST(TsTableView, FollowerTellsEachTimeThatTheFileIsGone)
{
    const TestDirectory directory;
    makeFile({1, 2});
    Window list(0);
    list.press(Qt::Key_L);
    auto& strip = *list.window().findChild<NoticeStrip*>();
    for (int samples = 3; samples < 5; ++samples) {
        std::filesystem::rename("test.ts", "away.ts");
        EXPECT_TRUE(QTest::qWaitFor([&] { return strip.isVisible(); }, 20'000));
        makeFile(std::vector<float>(static_cast<std::size_t>(samples), 1.0F));
        EXPECT_TRUE(QTest::qWaitFor([&] { return list.view().rows().total() == samples; }, 20'000));
        EXPECT_FALSE(strip.isVisible());
    }
}

TEST(TsTableView, FileThatCouldNotBeOpenedIsTriedAgainOnReload)
{
    const TestDirectory directory;
    TsTableView window("test.ts", nullptr, 1);
    EXPECT_EQ(window.findChild<SampleView*>(), nullptr);
    makeFile({1, 2, 3});
    QMetaObject::invokeMethod(&window, "sl_reload");
    ASSERT_NE(window.findChild<SampleView*>(), nullptr);
    EXPECT_EQ(window.findChild<SampleView*>()->rows().total(), 3);
    EXPECT_TRUE(window.isEditing());
}

TEST(TsTableView, EmptyRowsOfARingAreToldAndDoNotCount)
{
    const TestDirectory directory;
    struct Row
    {
        std::uint32_t first, last;
        std::vector<float> rows;  // 100: never written
        const char* maximum;
        const char* emptyRow;  // of the status bar, on the last row
    };
    const Row rows[] = {
        {1,
         3,
         {-5, -7, -2, 100, 100},
         " -2 at sample 3\n2 rows of the ring are empty and do not count",
         "Row 5 of 5 of the ring is empty: nothing was written there yet."},
        {4,
         6,
         {-1, 100, 100, -5, -7},
         " -1 at sample 6 (row 1)\n2 rows of the ring are empty and do not count",
         nullptr},
        {8, 12, {-5, -7, -2, -9, -9}, " -2 at sample 8 (row 3)", nullptr},
    };
    for (const Row& row : rows) {
        HandMadeFile ring(1024 + 512, false);
        ring.word(0, 5).word(4, 1).real(16, 1.0F).word(140, row.first).word(144, row.last).word(508, 3);
        for (std::size_t i = 0; i < row.rows.size(); ++i)
            ring.real(1024 + 4 * i, row.rows[i]);
        ring.write("test.ts");
        Window list(0);
        EXPECT_EQ(list.callAndAnswer("sl_findmax", "&Ok"),
                  QString("The max value in column 1 is:\n") + row.maximum);
        list.view().goTo(4, 0);
        if (row.emptyRow != nullptr)
            EXPECT_EQ(list.position(), row.emptyRow);
        else
            EXPECT_TRUE(list.position().startsWith("Sample ")) << list.position().toStdString();
    }
}

TEST(TsTableView, GoesToEveryTimeAsItShowsItAndSurvivesDamagedOnes)
{
    const TestDirectory directory;
    {
        TSFILE file("test.ts", 100, 2, 0);
        file.dt(0.25F);
        file.startSeconds(1477797000);
        file.flush(true);
    }
    Window list(0);
    for (const int row : {6, 98}) {
        list.view().goTo(row, 0);
        const QString shown = list.position().section(QStringLiteral(", "), 2);
        ASSERT_FALSE(shown.isEmpty()) << list.position().toStdString();
        list.view().goTo(0, 1);
        list.callAndAnswer("sl_goTo", "OK",
                           [&](QWidget& box) { box.findChild<QLineEdit*>()->setText(shown); });
        EXPECT_EQ(list.view().currentRow(), row) << shown.toStdString();
    }
    {
        TSFILE file("test.ts", 2, 1, 1);
        file.setValue(1, 1, 1e30F);
        file.setValue(2, 1, 2e30F);
        file.flush(true);
    }
    list.call("sl_reload");
    list.view().goTo(1, 0);
    EXPECT_TRUE(list.position().startsWith("Sample 2 of 2, 2")) << list.position().toStdString();
    EXPECT_FALSE(list.position().contains(':')) << "no calendar has such a date";
}

TEST(TsTableView, ColumnsFollowAFontThatComesLaterAndTheFindBarHidesNoCurrentCell)
{
    const TestDirectory directory;
    makeFile(std::vector<float>(200, 123456.0F));
    Window list(0);
    const int before = list.view().columnWidth(0);
    EXPECT_GE(before, list.view().fontMetrics().horizontalAdvance("Column-01")) << "fitted when it is shown";
    QFont font = list.window().font();
    font.setPointSize(3 * font.pointSize());
    list.window().setFont(font);
    QApplication::processEvents();
    EXPECT_GT(list.view().columnWidth(0), 3 * before / 2);

    for (QSpinBox* const box : list.window().findChildren<QSpinBox*>())
        if (box->accessibleName() == QLatin1String("Row height in pixels"))
            box->setValue(27);
    EXPECT_EQ(list.view().rowHeight(0), 27);

    const int lowest = list.view().rowAt(list.view().viewport()->height() - 1) - 1;
    list.view().goTo(lowest, 0);
    list.call("sl_find");
    QApplication::processEvents();
    EXPECT_TRUE(list.view().viewport()->rect().contains(list.view().visualRect(list.view().currentIndex())));
}

TEST(TsTableView, OldValuesThatAFailedSaveHasLeftAreBroughtBack)
{
    const TestDirectory directory;
    makeFile({1, 2, 3});
    std::filesystem::path kept;
    {
        const auto file = openTsFile("test.ts", false);
        ColumnBackup backup(*file);
        backup.save(1, 2, 2, {});
        backup.saveInfo(1);
        kept = std::filesystem::current_path() / "veltrac-old-values.bin";
        std::filesystem::copy_file(backup.path(), kept);
        file->setValue(2, 1, 8);
        file->setValue(3, 1, 9);
        file->flush(true);
    }
    Window list(0);
    QString question;
    QTimer yes;
    QObject::connect(&yes, &QTimer::timeout, [&] {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr)
            return;
        question = box->text();
        for (QAbstractButton* const button : box->buttons())
            if (button->text() == "&Yes")
                button->click();
    });
    yes.start(10);
    list.callAndAnswer("sl_restoreOldValues", "&Open", [&](QWidget& box) {
        qobject_cast<QFileDialog*>(&box)->selectFile(QString::fromStdString(kept.string()));
    });
    EXPECT_TRUE(question.contains("column 1, samples 2 to 3")) << question.toStdString();
    EXPECT_EQ(valueInFile(2, 1), 2.0F);
    EXPECT_EQ(valueInFile(3, 1), 3.0F);
    EXPECT_EQ(list.view().model()->index(1, 0).data().toString(), "2.0000") << "and is read again";
    QEvent activated(QEvent::ActivationChange);
    QApplication::sendEvent(&list.window(), &activated);
    EXPECT_FALSE(list.window().findChild<NoticeStrip*>()->isVisible()) << "nobody else has changed it";
}

TEST(TsTableView, OnlyChosenColumnsShowAndAreCopied)
{
    const TestDirectory directory;
    makeFile({0.1F, 2});
    Window list(0);
    list.view().selectAll();
    list.call("sl_copy");
    EXPECT_EQ(QApplication::clipboard()->text(), "0.1\t0\n2\t0\n");
    list.window().findChild<QListWidget*>()->item(1)->setSelected(false);
    EXPECT_TRUE(list.view().isColumnHidden(1));
    list.call("sl_copyWithNames");
    EXPECT_EQ(QApplication::clipboard()->text(), "Column-01\n0.1\n2\n");
    list.window().findChild<QCheckBox*>()->setChecked(true);
    EXPECT_TRUE(list.view().isColumnHidden(1)) << "sorted";
}

TEST(TsTableView, SortsOnValuesAndBack)
{
    const TestDirectory directory;
    makeFile({3, 9, 1});
    Window edit(1);
    auto& sorting = *edit.window().findChild<QCheckBox*>();
    sorting.setChecked(true);
    EXPECT_EQ(edit.view().model()->index(0, 0).data().toString(), "1.0000");
    EXPECT_EQ(edit.view().rows().sampleOf(2), 2U);
    EXPECT_TRUE(edit.view().horizontalHeader()->isSortIndicatorShown());
    edit.view().goTo(2, 0);
    // What is seen of it is painted anew.
    QModelIndex end;
    QObject::connect(edit.view().model(), &QAbstractItemModel::dataChanged,
                     [&end](const QModelIndex&, const QModelIndex& last) { end = last; });
    edit.enter("4");
    EXPECT_EQ(end, edit.view().model()->index(2, 1));
    sorting.setChecked(false);
    EXPECT_EQ(edit.view().model()->index(1, 0).data().toString(), "4.0000");
    EXPECT_EQ(edit.view().rows().sampleOf(edit.view().currentRow()), 2U);
    edit.call("sl_save");
    EXPECT_EQ(valueInFile(2, 1), 4.0F);
    edit.view().goTo(2, 0);
    QApplication::clipboard()->setText("5\n6\n7");
    edit.call("sl_paste");
    EXPECT_EQ(edit.window().statusBar()->currentMessage(), "Left out: 2 values beyond the table.");
}

TEST(TsTableView, EditsWithKeysUndoesAndSaves)
{
    const TestDirectory directory;
    const Portal portal;
    makeFile({1, 2, 3, 4, 5});
    {
        Window edit(1);
        EXPECT_EQ(edit.window().windowTitle(), "Veltrac, editing test.ts");
        EXPECT_EQ(portal.writers(), 1);
        edit.enter("12,5");
        EXPECT_EQ(edit.view().currentRow(), 1) << "Enter goes down by one";
        EXPECT_EQ(edit.window().windowTitle(), "Veltrac, editing test.ts*");
        edit.press(Qt::Key_F2);
        edit.press(Qt::Key_Return);  // untouched
        edit.enter("9x");            // refused
        EXPECT_EQ(edit.view().currentRow(), 3);
        // a cell that is left for another one by its editor stays left
        QTest::keyClicks(QApplication::focusWidget(), "8");
        edit.view().goTo(0, 1);
        EXPECT_EQ(edit.view().currentRow(), 0);
        EXPECT_EQ(edit.view().currentColumn(), 1);
        edit.view().selectBlock({3, 4, 0, 1});
        QApplication::clipboard()->setText("7");
        edit.call("sl_paste");
        edit.view().goTo(1, 0);
        QApplication::clipboard()->setText("20\t21\n30\t31");
        edit.call("sl_paste");
        EXPECT_EQ(valueInFile(1, 1), 1.0F) << "nothing is written before it is saved";
        edit.call("sl_save");
        EXPECT_EQ(edit.window().windowTitle(), "Veltrac, editing test.ts");
        const float saved[5][2] = {{12.5F, 0}, {20, 21}, {30, 31}, {7, 7}, {7, 7}};
        for (std::uint32_t s = 1; s <= 5; ++s)
            for (std::uint32_t c = 1; c <= 2; ++c)
                EXPECT_EQ(valueInFile(s, c), saved[s - 1][c - 1]) << s << ", " << c;
        for (int i = 0; i < 4; ++i)
            edit.call("sl_undo");
        edit.call("sl_save");
        EXPECT_EQ(valueInFile(1, 1), 1.0F);
        EXPECT_EQ(valueInFile(5, 2), 0.0F);
    }
    EXPECT_EQ(portal.writers(), 0);
}

TEST(TsTableView, ClosingAsksAboutEdits)
{
    const TestDirectory directory;
    struct Row
    {
        const char* button;
        bool closes;
        float inFile;
    };
    for (const Row& row : {Row{"&Cancel", false, 1}, Row{"&Discard", true, 1}, Row{"&Save", true, 8}}) {
        makeFile({1, 2});
        Window edit(1);
        edit.enter("8");
        edit.callAndAnswer("close", row.button);
        EXPECT_EQ(edit.isGone(), row.closes) << row.button;
        EXPECT_EQ(valueInFile(1, 1), row.inFile) << row.button;
    }
}

TEST(TsTableView, FileThatIsEmptiedWhileItIsEditedClosesLikeAnyOther)
{
    const TestDirectory directory;
    const Portal portal;
    makeFile({1, 2, 3});
    Window edit(1);
    edit.enter("8");
    ASSERT_EQ(::truncate("test.ts", 0), 0);
    EXPECT_TRUE(edit.callAndAnswer("sl_save", "&Ok").startsWith("Nothing was saved: "));
    EXPECT_EQ(edit.view().rows().total(), 3);
    edit.press(Qt::Key_Down);
    edit.callAndAnswer("close", "&Discard");
    EXPECT_TRUE(edit.isGone());
    EXPECT_EQ(portal.writers(), 0);
}

TEST(TsTableView, FileThatWasDeletedIsRescuedUnderItsOwnName)
{
    const TestDirectory directory;
    const Portal portal;
    makeFile({1, 2, 3});
    Window edit(1);
    edit.enter("8");
    std::filesystem::remove("test.ts");
    edit.callAndAnswer("sl_saveAs", "&Save");
    ASSERT_TRUE(std::filesystem::exists("test.ts"));
    EXPECT_EQ(valueInFile(1, 1), 8.0F);
    EXPECT_EQ(valueInFile(3, 1), 3.0F);
}

TEST(TsTableView, FileThatAnotherChangesUnderEditsIsToldAndTheUserChooses)
{
    const TestDirectory directory;
    const Portal portal;
    makeFile({1, 2, 3});
    Window edit(1);
    auto& strip = *edit.window().findChild<NoticeStrip*>();
    edit.enter("8");
    openTsFile("test.ts", false)->setValue(1, 1, 44.0F);
    EXPECT_TRUE(QTest::qWaitFor([&] { return strip.text() == "test.ts has changed."; }));
    EXPECT_EQ(edit.callAndAnswer("sl_save", "&Look first"),
              "Another program has changed test.ts since it was read.\n1 value that you have edited:\n"
              "column 1, sample 1: was 1, is 44");
    EXPECT_EQ(valueInFile(1, 1), 44.0F);
    // A file in its place: the edits are kept until the user gives them up.
    makeFile({5, 6, 7, 9});
    std::filesystem::rename("test.ts", "other.ts");
    EXPECT_TRUE(QTest::qWaitFor([&] { return strip.text() == "test.ts is gone; it is shown as it was."; }));
    EXPECT_EQ(strip.findChild<QPushButton*>()->text(), "Save as new file…");
    std::filesystem::rename("other.ts", "test.ts");
    edit.callAndAnswer("sl_reload", "&Cancel");
    EXPECT_EQ(edit.view().rows().total(), 3);
    edit.callAndAnswer("sl_reload", "&Discard");
    EXPECT_EQ(edit.view().rows().total(), 4);
    edit.enter("30");
    edit.call("sl_save");
    EXPECT_EQ(valueInFile(1, 1), 30.0F);
    EXPECT_EQ(valueInFile(4, 1), 9.0F);
}

TEST(TsTableView, WhatCannotBeEditedIsListedAndSaysSo)
{
    const TestDirectory directory;
    Portal portal;
    makeFile({1, 2});
    std::filesystem::permissions("test.ts", std::filesystem::perms(0444));
    const auto noteOf = [](Window& window) {
        for (const QLabel* const label : window.window().findChildren<QLabel*>())
            if (label->text().contains("listed"))
                return label->text();
        return QString();
    };
    {
        Window readOnly(1);
        EXPECT_EQ(readOnly.window().windowTitle(), "Veltrac, listing test.ts");
        EXPECT_EQ(noteOf(readOnly), "test.ts is read-only, so it is listed.");
        EXPECT_EQ(portal.writers(), 0);
    }
    std::filesystem::permissions("test.ts", std::filesystem::perms(0644));
    Window first(1);
    Window second(1);
    EXPECT_FALSE(second.window().isEditing());
    EXPECT_EQ(noteOf(second), "test.ts is being edited in another window, so it is listed here.");

    TsTableView none("missing.ts", nullptr, 1);
    EXPECT_EQ(none.findChild<SampleView*>(), nullptr);
}
