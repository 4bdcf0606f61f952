// Somebody who presses, types, clicks and drags anything anywhere, in all windows at once, while other
// programs change, cut, replace and remove the files underneath. Nothing is asked of it but that the program
// stands, under sanitizers above all, and that no exception reaches the event loop.
//
// VELTRAC_MONKEY_SECONDS and VELTRAC_MONKEY_SEED make it longer and another one; it prints its seed.

#include <gtest/gtest.h>
#include <unistd.h>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QErrorMessage>
#include <QFileDialog>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QPrintDialog>
#include <QTest>
#include <QTextEdit>
#include <QThread>
#include <QTimer>
#include <QWheelEvent>
#include <QWindow>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <utility>
#include <vector>

#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "portal/TsApplication.h"
#include "share/JobProgress.h"
#include "tests/FileSizeLimit.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

namespace fs = std::filesystem;

constexpr rlim_t kMostBytes = 8 << 20;  // of a file: what is typed may ask for a file of 2 GB
constexpr int kMostWindows = 8;

unsigned fromEnvironment(const char* name, unsigned otherwise)
{
    bool isNumber = false;
    const unsigned value = qEnvironmentVariable(name).toUInt(&isNumber);
    return isNumber ? value : otherwise;
}

class Monkey
{
public:
    Monkey(unsigned seed, const fs::path& directory) : m_random(seed), m_directory(directory)
    {
        makeFiles();
        for (const fs::directory_entry& entry : fs::directory_iterator(directory))
            m_files.emplace_back(entry.path(), bytesOf(entry.path()));
    }

    // Runs beside whatever boxes are open, and leaves none.
    void play(std::chrono::seconds time)
    {
        m_end = std::chrono::steady_clock::now() + time;
        next();
        while (!m_isDone)
            QApplication::exec();  // which the program ends as well
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    std::size_t steps() const { return m_steps; }

private:
    unsigned below(std::size_t count) { return static_cast<unsigned>(m_random() % count); }
    template <typename Things>
    auto& oneOf(Things& things)
    {
        return things[static_cast<decltype(things.size())>(below(static_cast<std::size_t>(things.size())))];
    }

    void makeFiles()
    {
        for (const auto& [name, samples, timeMode] :
             {std::tuple{"a.ts", 20'000U, 0}, {"b.ts", 300U, 2}, {"c 3.v2.ts", 1U, 1}, {"ring.ts", 50U, 0}}) {
            const auto file = createTsFile(name, samples, 3, timeMode);
            file->dt(0.01F);
            for (std::uint32_t s = 1; s <= samples; ++s) {
                const double t = 1e9 + s * 0.01;
                if (timeMode != 0)
                    file->setSampleTime(s, t);
                file->setValue(s, file->columns(), s % 97 == 0 ? NAN : static_cast<float>(std::sin(t)));
                file->setValue(s, file->columns() - 1, static_cast<float>(s * 7 % 31));
            }
            if (timeMode == 0 && samples == 50)
                file->setRingMode(true);
        }
        std::ofstream("log.stl") << "time;force [N];x\n0,0;1,5;3\n0,5;2,5;3\n1,0;4;\n";
        std::ofstream("one.scl") << "1\n2\n3.5\n";
        std::ofstream("text.tsa") << "%S 3\n%C 2\n%D 0.5\n1 2\n3 4\n5 6\n";
    }

    // -- Steps --

    void next()
    {
        QTimer::singleShot(0, qApp, [this] { step(); });
    }

    void step()
    {
        next();  // first: what comes now may open a box, which runs a loop of its own
        // Events that an action lets through on its way are no place for the next one; a box's loop is.
        const int level = QThread::currentThread()->loopLevel();
        if (level <= m_actingLevel && !JobProgress::isRunning())
            return;
        const int before = std::exchange(m_actingLevel, level);
        ++m_steps;
        lookAround();
        const bool isOver = std::chrono::steady_clock::now() > m_end;
        QWidget* const modal = QApplication::activeModalWidget();
        if (JobProgress::isRunning())
            stepInAJob(modal);
        else if (QWidget* const popup = QApplication::activePopupWidget())
            stepInAPopup(*popup, isOver);
        else if (modal != nullptr)
            stepInABox(*modal, isOver);
        else if (isOver)
            finish();
        else
            actAnywhere();
        m_actingLevel = before;
    }

    void lookAround() const
    {
        if (fs::current_path() != m_directory) {
            ADD_FAILURE() << "away to " << fs::current_path();
            fs::current_path(m_directory);  // nothing is to be touched elsewhere
        }
        for (QWidget* const box : QApplication::topLevelWidgets())
            if (qobject_cast<QErrorMessage*>(box) != nullptr && box->isVisible()) {
                ADD_FAILURE() << "an exception has reached the event loop: "
                              << box->findChild<QTextEdit*>()->toPlainText().toStdString();
                box->hide();
            }
    }

    // Keys and clicks wait for the job, but for those on its bar.
    void stepInAJob(QWidget* modal)
    {
        if (below(20) == 0)
            changeFile();
        else if (modal != nullptr && below(40) == 0)
            answer(*modal);
    }

    void stepInAPopup(QWidget& popup, bool isOver)
    {
        if (isOver || below(8) == 0)
            popup.close();
        else
            act(popup);
    }

    void stepInABox(QWidget& box, bool isOver)
    {
        if (auto* const files = qobject_cast<QFileDialog*>(&box))
            chooseFile(*files);
        else if (isOver || below(12) == 0 || qobject_cast<QPrintDialog*>(&box) != nullptr)
            answer(box);
        else
            act(box);
    }

    void finish()
    {
        const auto* const main = dynamic_cast<QWidget*>(TsApplication::instance());
        for (QWidget* const window : QApplication::topLevelWidgets())
            if (window->isVisible() && window != main) {
                window->close();
                return;
            }
        m_isDone = true;
        QApplication::quit();
    }

    void actAnywhere()
    {
        std::vector<QWidget*> windows;
        for (QWidget* const window : QApplication::topLevelWidgets())
            if (window->isVisible() && window->windowHandle() != nullptr)
                windows.push_back(window);
        const unsigned what = below(100);
        if (what < 3)
            changeFile();
        else if (what < 6 || windows.empty())
            openWindow(windows.size());
        else if (what < 7)
            oneOf(windows)->close();
        else if (what < 10)
            oneOf(windows)->resize(30 + static_cast<int>(below(900)), 30 + static_cast<int>(below(700)));
        else
            act(*oneOf(windows));
    }

    void openWindow(std::size_t open)
    {
        TsApplication* const application = TsApplication::instance();
        if (auto* const main = dynamic_cast<QWidget*>(application); main != nullptr && !main->isVisible())
            main->show();
        if (open > kMostWindows)
            return;
        const char* const names[] = {"a.ts", "b.ts", "c 3.v2.ts", "ring.ts", "none.ts", "log.stl", "one.scl"};
        const auto kind = static_cast<SubProgram>(below(static_cast<std::size_t>(SubProgram::Filter) + 1));
        application->openSubProgram(kind, QString::fromLatin1(names[below(std::size(names))]), below(4));
    }

    // What others do to the files meanwhile.
    void changeFile()
    {
        const auto& [path, bytes] = oneOf(m_files);
        std::error_code ignored;
        const unsigned what = below(6);
        if (what == 0) {
            fs::remove(path, ignored);
        } else if (what == 1) {
            fs::resize_file(path, below(bytes.size() + 700), ignored);
        } else if (what == 2) {
            std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
            file.seekp(below(bytes.size()));
            file.put(static_cast<char>(below(256)));
        } else {
            const fs::path made = m_directory / "made";
            std::ofstream(made, std::ios::binary)
                .write(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<std::streamsize>(bytes.size()));
            fs::rename(made, path, ignored);
        }
    }

    // By any of its buttons, or none.
    void answer(QWidget& box)
    {
        auto buttons = box.findChildren<QAbstractButton*>();
        if (buttons.isEmpty() || below(3) == 0 || qobject_cast<QPrintDialog*>(&box) != nullptr)
            box.close();
        else
            oneOf(buttons)->click();
    }

    // A name of this directory: nothing is to be touched elsewhere.
    void chooseFile(QFileDialog& dialog)
    {
        const char* const names[] = {"a.ts",    "b.ts",    "new.ts", "out",  "text.tsa",
                                     "log.stl", "one.scl", "x.svg",  "y.png"};
        auto* const name = dialog.findChild<QLineEdit*>();
        if (name == nullptr || below(3) == 0 || dialog.fileMode() == QFileDialog::Directory) {
            dialog.reject();
            return;
        }
        dialog.setDirectory(QString::fromStdString(m_directory.string()));
        name->setText(QString::fromStdString((m_directory / names[below(std::size(names))]).string()));
        for (QAbstractButton* const button : dialog.findChildren<QAbstractButton*>())
            if (button->text() == QLatin1String("&Save") || button->text() == QLatin1String("&Open")) {
                button->click();
                return;
            }
        dialog.reject();
    }

    // -- What a hand does in a window --

    void act(QWidget& window)
    {
        auto* const handle = window.windowHandle();
        if (handle == nullptr)
            return;
        std::vector<QWidget*> widgets = {&window};
        for (QWidget* const widget : window.findChildren<QWidget*>())
            if (widget->isVisible() && widget->window() == &window)
                widgets.push_back(widget);
        QWidget& widget = *oneOf(widgets);
        const QPoint point = widget.mapTo(&window, pointIn(widget));
        switch (below(8)) {
            case 0:
            case 1:
                pressKey(*handle);
                break;
            case 2:
                if (widget.focusPolicy() != Qt::NoFocus)
                    widget.setFocus();
                typeText(*handle);
                break;
            case 3:
                turnWheel(widget);
                break;
            case 4:
                drag(*handle, point);
                break;
            case 5:
                trigger(window);
                break;
            default:
                click(*handle, point);
        }
    }

    QPoint pointIn(const QWidget& widget)
    {
        return {static_cast<int>(below(static_cast<std::size_t>(std::max(1, widget.width())))),
                static_cast<int>(below(static_cast<std::size_t>(std::max(1, widget.height()))))};
    }

    Qt::KeyboardModifiers modifiers()
    {
        const Qt::KeyboardModifiers some[] = {Qt::NoModifier,    Qt::NoModifier,      Qt::NoModifier,
                                              Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier};
        return some[below(std::size(some))];
    }

    void pressKey(QWindow& window)
    {
        const Qt::Key keys[] = {Qt::Key_Tab,      Qt::Key_Return, Qt::Key_Escape,    Qt::Key_Space,
                                Qt::Key_Left,     Qt::Key_Right,  Qt::Key_Up,        Qt::Key_Down,
                                Qt::Key_Home,     Qt::Key_End,    Qt::Key_PageUp,    Qt::Key_Delete,
                                Qt::Key_PageDown, Qt::Key_Insert, Qt::Key_Backspace, Qt::Key_Plus,
                                Qt::Key_Minus,    Qt::Key_F2,     Qt::Key_F5,        Qt::Key_Menu};
        if (below(3) != 0) {
            press(window, keys[below(std::size(keys))], modifiers());
            return;
        }
        const int letter = static_cast<int>(below(26));
        const Qt::KeyboardModifiers with = modifiers();
        press(window, Qt::Key_A + letter, with,
              with == Qt::NoModifier ? QString(QLatin1Char(static_cast<char>('a' + letter))) : QString());
    }

    // A press may close the window, or take all the time until a box is answered.
    static void press(QWindow& window, int key, Qt::KeyboardModifiers modifiers,
                      const QString& text = QString())
    {
        const QPointer<QWindow> held(&window);
        QTest::simulateEvent(held, true, key, modifiers, text, false);
        if (held)
            QTest::simulateEvent(held, false, key, modifiers, text, false);
    }

    // No '/' is among them: nothing is to be touched elsewhere.
    void typeText(QWindow& window)
    {
        const char* const texts[] = {"0",
                                     "1",
                                     "-1",
                                     "7.5",
                                     "1e30",
                                     "nan",
                                     "99999999999",
                                     "x1+x2*3",
                                     "t^",
                                     "50%",
                                     "2,5",
                                     "a.ts",
                                     "new",
                                     "12:45:30",
                                     "%s%n",
                                     "sin(x1)+noise(1)",
                                     "",
                                     " ",
                                     "1e-9",
                                     "65536",
                                     "Time",
                                     "\xC3\x84\xE2\x82\xAC",
                                     "2016-02-30",
                                     "if(x1>0,1"};
        const char* const text = texts[below(std::size(texts))];
        const QPointer<QWindow> held(&window);
        if (below(2) == 0)
            press(window, Qt::Key_A, Qt::ControlModifier);
        QObject* const focus = QApplication::focusObject();
        if (focus != nullptr && below(2) == 0) {
            QInputMethodEvent whole;
            whole.setCommitString(QString::fromUtf8(text));
            QApplication::sendEvent(focus, &whole);
        } else {
            for (const char* c = text; *c > 0 && held; ++c)
                press(*held, QTest::asciiToKey(*c), Qt::NoModifier, QString(QLatin1Char(*c)));
        }
        if (held && below(2) == 0)
            press(*held, below(2) == 0 ? Qt::Key_Return : Qt::Key_Tab, Qt::NoModifier);
    }

    void turnWheel(QWidget& widget)
    {
        const QPoint point = pointIn(widget);
        const QPoint angle(0, below(2) == 0 ? 120 : -120);
        QWheelEvent event(point, widget.mapToGlobal(point), QPoint(), angle, Qt::NoButton, modifiers(),
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(&widget, &event);
    }

    Qt::MouseButton button()
    {
        const unsigned what = below(10);
        return what == 0 ? Qt::RightButton : what == 1 ? Qt::MiddleButton : Qt::LeftButton;
    }

    void click(QWindow& window, QPoint point)
    {
        const QPointer<QWindow> held(&window);
        const Qt::MouseButton which = button();
        const Qt::KeyboardModifiers with = modifiers();
        const bool isDouble = below(6) == 0;
        for (int i = 0; i < (isDouble ? 2 : 1); ++i) {
            if (held)
                QTest::mousePress(held, which, with, point);
            if (held)
                QTest::mouseRelease(held, which, with, point);
        }
        // Asked for by the window system, where the button alone does not.
        if (held && which == Qt::RightButton)
            if (QWidget* const below = QApplication::widgetAt(held->mapToGlobal(point))) {
                QContextMenuEvent menu(QContextMenuEvent::Mouse,
                                       below->mapFromGlobal(held->mapToGlobal(point)),
                                       held->mapToGlobal(point));
                QApplication::sendEvent(below, &menu);
            }
    }

    void drag(QWindow& window, QPoint point)
    {
        const QPointer<QWindow> held(&window);
        const Qt::MouseButton which = button();
        const Qt::KeyboardModifiers with = modifiers();
        QTest::mousePress(held, which, with, point);
        for (unsigned i = 0; i < 4 && held; ++i) {
            point.setX(static_cast<int>(below(static_cast<std::size_t>(std::max(1, held->width())))));
            point.setY(static_cast<int>(below(static_cast<std::size_t>(std::max(1, held->height())))));
            QTest::mouseMove(held, point);
        }
        if (held)
            QTest::mouseRelease(held, which, with, point);
    }

    void trigger(QWidget& window)
    {
        std::vector<QAction*> actions;
        for (QAction* const action : window.findChildren<QAction*>())
            if (action->isEnabled() && action->isVisible())
                actions.push_back(action);
        if (!actions.empty())
            oneOf(actions)->trigger();
    }

    std::mt19937 m_random;
    fs::path m_directory;
    std::vector<std::pair<fs::path, std::vector<unsigned char>>> m_files;
    std::chrono::steady_clock::time_point m_end;
    std::size_t m_steps = 0;
    int m_actingLevel = -1;
    bool m_isDone = false;
};

}  // namespace

TEST(Monkey, WhateverIsPressedWhileFilesChangeTheProgramStands)
{
    const TestDirectory directory;
    const FileSizeLimit limit(kMostBytes);
    qputenv("HOME", QByteArray::fromStdString(directory.path().string()));
    qputenv("TMPDIR", QByteArray::fromStdString(directory.path().string()));
    const unsigned seed = fromEnvironment("VELTRAC_MONKEY_SEED", 1);
    const unsigned seconds = fromEnvironment("VELTRAC_MONKEY_SECONDS", 4);
    ::alarm(seconds + 300);  // which ends the program where it hangs
    Monkey monkey(seed, directory.path());
    monkey.play(std::chrono::seconds(seconds));
    ::alarm(0);
    std::printf("seed %u: %zu steps\n", seed, monkey.steps());
    EXPECT_GT(monkey.steps(), 20U);
}
