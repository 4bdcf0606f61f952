// What each field, choice and entry of a window changes in it, as pressed.txt records it. Where a window was
// changed on purpose, VELTRAC_PRESSED=tests/journeys/pressed.txt writes the record anew, to be read before it
// is kept; each part is added at its end.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAbstractEventDispatcher>
#include <QAbstractItemView>
#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QMouseEvent>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QStatusBar>
#include <QTabBar>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "portal/TsApplication.h"
#include "tests/BoxAnswer.h"
#include "tests/journeys/EveryWindow.h"
#include "tests/journeys/Telling.h"

using namespace veltrac;

// In the names of the tests.
static void PrintTo(SubProgram kind, std::ostream* out)
{
    *out << static_cast<int>(kind);
}

namespace {

// What leaves the window, writes, needs a printer, takes its time, has a picture as
// wide as the window allows, or goes on by the clock.
bool isLeft(const QString& text)
{
    static const QRegularExpression words(
        QStringLiteral("zeros|rint|ose$|quit|what's "
                       "this|help|execut|^&calcul|mathm|llow|^&save$|ok$|cancel|import|^check"),
        QRegularExpression::CaseInsensitiveOption);
    return text.contains(words);
}

std::vector<QPointer<QAction>> entriesOf(const QWidget& menu)
{
    std::vector<QPointer<QAction>> entries;
    for (QAction* const action : menu.actions()) {
        if (action->menu() != nullptr) {
            emit action->menu()->aboutToShow();
            const auto below = entriesOf(*action->menu());
            entries.insert(entries.end(), below.begin(), below.end());
        } else if (!action->isSeparator() && action->isVisible()) {
            entries.emplace_back(action);
        }
    }
    return entries;
}

// Where the line was another one before: how it begins, and what of it has changed.
QString changeOf(const QString& line, const QStringList& before)
{
    constexpr int kBeginning = 24;
    int same = 0;
    QString change = line.trimmed();
    for (const QString& old : before) {
        int from = 0, to = 0;  // how much is alike on both sides
        const int most = static_cast<int>(std::min(old.size(), line.size()));
        while (from < most && old[from] == line[from])
            ++from;
        while (to < most - from && old[old.size() - 1 - to] == line[line.size() - 1 - to])
            ++to;
        if (from < 4 || from + to <= same)
            continue;
        same = from + to;
        change = line.left(std::min(from, kBeginning)).trimmed() + QStringLiteral(" -> ") +
                 line.mid(from, line.size() - from - to);
    }
    return change;
}

// Other windows than those that are opened by their kind.
bool isWalkedThrough(const QWidget& window)
{
    for (const char* const kind : {"veltrac::FilterCharWin", "veltrac::HistogramWin", "HistogramWin",
                                   "veltrac::XyWin", "PsConfigDialog", "ColorConfigDialog"})
        if (window.inherits(kind))
            return true;
    return window.isModal();
}

class Dialogs : public EveryWindow, public QObject
{
protected:
    void walk(QWidget& window)
    {
        m_window = &window;
        m_pictures.clear();  // a new widget may lie where one of the window before lay
        m_lines << window.windowTitle();
        for (QComboBox* const choice : window.findChildren<QComboBox*>())
            if (choice->accessibleName() == QLatin1String("Segment length"))
                choice->setCurrentIndex(0);  // of which the file has more than one
        execute();
        m_last = now();
        looksOtherwise();
        QList<QPointer<QWidget>> fields;
        for (QWidget* const widget : window.findChildren<QWidget*>())
            fields << widget;
        for (const QPointer<QWidget>& field : fields)
            if (field && field->isVisibleTo(&window) && field->isEnabled() && field->window() == &window)
                work(*field);
        for (const QPointer<QWidget>& field : fields)
            if (field && field->isVisible() && field->window() == &window) {
                hover(*field);
                askForMenu(*field);
            }
        for (const QMenuBar* const bar : window.findChildren<QMenuBar*>())
            for (const QPointer<QAction>& entry : entriesOf(*bar))
                if (entry && m_window)
                    trigger(*entry);
    }
    const QStringList& lines() const { return m_lines; }

private:
    // Where something is computed, each choice is followed by its result.
    void execute()
    {
        if (m_window->metaObject()->indexOfSlot("sl_execute()") < 0)
            return;
        const BoxAnswer told(QStringLiteral("by its frame"));
        QMetaObject::invokeMethod(m_window, "sl_execute");
        if (told.wasAsked())
            m_lines << QStringLiteral("    told ") + told.text();
    }

    QStringList now() const { return calmFieldsOf(*m_window) + menusOf(*m_window); }

    // Whether what is drawn would look otherwise than after the last step; it has been painted anew then.
    bool looksOtherwise()
    {
        std::map<const QWidget*, QImage> pictures;
        bool isOther = false;
        for (QWidget* const widget : m_window->findChildren<QWidget*>()) {
            if (!(widget->inherits("veltrac::PlotPicture") || widget->inherits("veltrac::OverviewStrip")) ||
                !widget->isVisible())
                continue;
            const bool isPainted = m_painted.count(widget) != 0;
            const QImage& now = pictures[widget] = widget->grab().toImage();
            const auto before = m_pictures.find(widget);
            EXPECT_TRUE(before == m_pictures.end() || before->second == now || isPainted)
                << "not painted anew: " << m_lines.last().toStdString();
            isOther = isOther || before == m_pictures.end() || before->second != now;
            widget->installEventFilter(this);
        }
        m_pictures = std::move(pictures);
        m_painted.clear();
        return isOther;
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            m_painted.insert(watched);
        return false;
    }

    // What has come since the last step.
    void note(const QString& step)
    {
        m_lines << step;
        if (m_window == nullptr)
            return;
        const QStringList now = this->now();
        QStringList gone = m_last;
        QStringList come;
        for (const QString& line : now)
            if (!gone.removeOne(line) && !line.startsWith(QLatin1String("status \"\"")))
                come << line;
        for (const QString& line : come)
            m_lines << QStringLiteral("    ") + changeOf(line, gone);
        if (looksOtherwise())
            m_lines << QStringLiteral("    another picture");
        if (const QMimeData* const copied = QApplication::clipboard()->mimeData(); copied != nullptr)
            if (copied->hasImage() || copied->hasText())
                m_lines
                    << QStringLiteral("    copied ") +
                           (copied->hasImage()
                                ? QStringLiteral("a picture")
                                : QStringLiteral("%1 lines").arg(copied->text().count(QLatin1Char('\n'))));
        QApplication::clipboard()->clear();
        // It rests when all is done.
        for (QObject* const part : m_window->findChildren<QObject*>()) {
            if (part->isWidgetType())
                continue;  // a hidden table of Qt's waits so for being shown
            for (const auto& timer : QAbstractEventDispatcher::instance()->registeredTimers(part))
                EXPECT_GT(timer.interval, 0)
                    << part->metaObject()->className() << " after " << step.toStdString();
        }
        EXPECT_EQ(QApplication::overrideCursor(), nullptr) << "waits after " << step.toStdString();
        m_last = now;
        for (QStatusBar* const bar : m_window->findChildren<QStatusBar*>())
            bar->clearMessage();  // after some seconds it goes by itself
    }

    void work(QWidget& field)
    {
        const QString name = field.accessibleName();
        if (auto* const choice = qobject_cast<QComboBox*>(&field)) {
            const int before = choice->currentIndex();
            for (int i = 0; i < std::min(choice->count(), 20); ++i) {
                QTest::keyClick(choice, i == 0 ? Qt::Key_Home : Qt::Key_Down);
                if (i == 0 && before == 0)
                    continue;
                execute();
                note(QStringLiteral("choose ") + choice->currentText() + QStringLiteral(" in ") + name);
            }
            while (choice->currentIndex() > std::max(before, 0))
                QTest::keyClick(choice, Qt::Key_Up);
            m_last = now();
        } else if (auto* const text = qobject_cast<QLineEdit*>(&field);
                   text != nullptr && qobject_cast<QSpinBox*>(text->parentWidget()) == nullptr) {
            const QString before = text->text();
            // The last but one is what there is in the directory.
            for (const QString& typed :
                 {QStringLiteral("x"), QStringLiteral("-2"), QStringLiteral("bed 3.ts"), before}) {
                if (typed == QLatin1String("bed 3.ts") && name != QLatin1String("File"))
                    continue;
                text->selectAll();
                QTest::keyClick(text, Qt::Key_Delete);
                QTest::keyClicks(text, typed);
                note(QStringLiteral("type ") + typed + QStringLiteral(" in ") + name);
            }
        } else if (auto* const box = qobject_cast<QSpinBox*>(&field)) {
            QTest::keyClick(box, Qt::Key_Up);
            note(QStringLiteral("up in ") + name);
            QTest::keyClick(box, Qt::Key_Down);
            note(QStringLiteral("down in ") + name);
        } else if (auto* const tabs = qobject_cast<QTabBar*>(&field)) {
            for (int i = 1; i <= tabs->count(); ++i) {
                if (isLeft(tabs->tabText(i % tabs->count())))
                    continue;
                tabs->setCurrentIndex(i % tabs->count());
                note(QStringLiteral("turn to ") + tabs->tabText(tabs->currentIndex()));
            }
        } else if (auto* const button = qobject_cast<QAbstractButton*>(&field);
                   button != nullptr && button->isCheckable() &&
                   qobject_cast<QToolButton*>(button) == nullptr) {
            for (int i = 0; i < 2 && button->isEnabled(); ++i) {
                QTest::keyClick(button, Qt::Key_Space);
                note(QStringLiteral("press ") + button->text());
            }
        } else if (auto* const push = qobject_cast<QPushButton*>(&field);
                   push != nullptr && !isLeft(push->text()) && QApplication::activeModalWidget() == nullptr) {
            const QString label = push->text();
            note(QStringLiteral("press ") + label +
                 answeredBy([&] { QTest::keyClick(push, Qt::Key_Space); }));
        }
    }

    // Does it, closes what opens, and tells what that was.
    static QString answeredBy(const std::function<void()>& action)
    {
        const QWidgetList before = QApplication::topLevelWidgets();
        QString asked;
        {
            const BoxAnswer close(QStringLiteral("by its frame"), [&](QWidget& box) {
                const auto* const message = qobject_cast<QMessageBox*>(&box);
                asked = QStringLiteral(", asked ") + box.windowTitle() + QStringLiteral(": ") +
                        (message == nullptr ? QString() : message->text());
            });
            action();
        }
        for (QWidget* const window : QApplication::topLevelWidgets())
            if (window->isVisible() && !before.contains(window) && window->windowType() == Qt::Window) {
                asked += QStringLiteral(", opened ") + window->windowTitle();
                window->close();
            }
        return asked.replace(QLatin1Char('\n'), QLatin1Char('|'));
    }

    // With the right button: on the first axis of a picture, on the first row of a table.
    void askForMenu(QWidget& field)
    {
        auto* const table = qobject_cast<QAbstractItemView*>(&field);
        if (!field.inherits("veltrac::PlotPicture") &&
            (table == nullptr || field.contextMenuPolicy() == Qt::DefaultContextMenu))
            return;
        QWidget& place = table == nullptr ? field : *table->viewport();
        const QPoint at = table == nullptr ? QPoint(field.width() / 2, field.height() / 4)
                                           : table->visualRect(table->model()->index(0, 0)).center();
        QTimer::singleShot(0, [this, &field] {
            QWidget* const popup = QApplication::activePopupWidget();
            if (auto* const menu = qobject_cast<QMenu*>(popup))
                m_lines << QStringLiteral("menu of ") + field.accessibleName() << entriesIn(*menu);
            if (popup != nullptr)
                popup->close();
        });
        QContextMenuEvent wanted(QContextMenuEvent::Mouse, at, place.mapToGlobal(at));
        QApplication::sendEvent(&place, &wanted);
        QApplication::processEvents();
    }

    // What is told of the place under the mouse hangs on pixels; that something is told does not.
    void hover(QWidget& field)
    {
        if (!field.inherits("veltrac::PlotPicture"))
            return;
        const QPointF at(field.width() / 2.0, field.height() / 4.0);
        QMouseEvent move(QEvent::MouseMove, at, field.mapToGlobal(at.toPoint()), Qt::NoButton, Qt::NoButton,
                         {});
        QApplication::sendEvent(&field, &move);
        for (const QLabel* const label : m_window->findChildren<QLabel*>())
            if (label->accessibleName() == QLatin1String("Values under the mouse"))
                m_lines << QStringLiteral("told of the place: %1 values")
                               .arg(label->text().count(QLatin1String("<tr>")));
        for (const QStatusBar* const bar : m_window->findChildren<QStatusBar*>())
            m_lines << QStringLiteral("told below: %1").arg(bar->currentMessage().count(QLatin1Char('=')));
        QEvent leaves(QEvent::Leave);
        QApplication::sendEvent(&field, &leaves);
        m_last = now();
        looksOtherwise();
    }

    void trigger(QAction& entry)
    {
        const QString text = entry.text();
        const QPointer<QAction> held(&entry);
        // What hides a part shows it again.
        const int times = entry.isCheckable() && entry.actionGroup() == nullptr ? 2 : 1;
        for (int i = 0; i < times && held && held->isEnabled() && !isLeft(text); ++i)
            note(QStringLiteral("trigger ") + text + answeredBy([&] { held->trigger(); }));
    }

    QPointer<QWidget> m_window;
    QStringList m_last;
    QStringList m_lines;
    std::map<const QWidget*, QImage> m_pictures;
    std::set<const QObject*> m_painted;
};

class Pressed : public Dialogs, public testing::WithParamInterface<SubProgram>
{
};

void expectRecorded(const std::string& title, const QStringList& lines)
{
    if (const char* const record = std::getenv("VELTRAC_PRESSED")) {
        std::ofstream(record, std::ios::app) << title << '\n'
                                             << lines.join(QLatin1Char('\n')).toStdString() << '\n';
        return;
    }
    std::ifstream record(VELTRAC_PRESSED);
    std::string line;
    while (line != title && std::getline(record, line)) {
    }
    std::string step;
    for (const QString& now : lines) {
        std::getline(record, line);
        step = now.startsWith(QLatin1Char(' ')) ? step : now.toStdString();
        ASSERT_EQ(now.toStdString(), line) << step;
    }
    EXPECT_TRUE(!std::getline(record, line) || line.starts_with("==")) << line;
}

TEST_P(Pressed, ChangesWhatTheRecordHolds)
{
    QWidget* const window = TsApplication::instance()->openSubProgram(GetParam(), fileOf(GetParam()), 2);
    const std::string title =
        "== " + std::to_string(static_cast<int>(GetParam())) + ' ' + window->windowTitle().toStdString();
    show(window, [&](QWidget& shown, const std::string&) { walk(shown); });
    expectRecorded(title, lines());
}

TEST_F(Dialogs, ChangeWhatTheRecordHolds)
{
    forEachWindow([&](QWidget& window, const std::string&) {
        if (isWalkedThrough(window))
            walk(window);
    });
    expectRecorded("== Dialogs", lines());
}

INSTANTIATE_TEST_SUITE_P(Each, Pressed,
                         testing::Values(SubProgram::Create, SubProgram::Plot, SubProgram::PlotColumn,
                                         SubProgram::List, SubProgram::Edit, SubProgram::Header,
                                         SubProgram::Formula, SubProgram::StlImport, SubProgram::SclImport,
                                         SubProgram::Derivative, SubProgram::Integral, SubProgram::Spectrum,
                                         SubProgram::Filter));

}  // namespace
