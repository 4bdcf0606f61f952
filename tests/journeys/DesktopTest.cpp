// Every window as somebody meets it who has no mouse, who hears the screen instead of seeing it, or whose
// screen is small and letters large.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QAccessible>
#include <QAction>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QScrollArea>
#include <QTest>
#include <QToolBar>
#include <QToolButton>

#include <functional>
#include <vector>

#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "filter/SaveResultsDialog.h"
#include "portal/TsApplication.h"
#include "share/ColorConfigDialog.h"
#include "share/PsConfigDialog.h"
#include "share/QtMessageWin.h"
#include "share/SubWindow.h"
#include "tests/BoxAnswer.h"
#include "tests/core/TsFileBytes.h"

using namespace veltrac;

namespace {

constexpr QSize kSmallScreen(1024, 600);

// A window for each sub-program and each of the windows that belong to them, on a directory of its own.
class Desktop : public testing::Test
{
protected:
    Desktop()
    {
        const auto ecg = openTsFile(VELTRAC_EXAMPLES "/ecg.ts", true);
        const auto copy = createTsFile("bed 3.ts", 3000, 3);
        copy->dt(ecg->dt());
        for (std::uint32_t col = 1; col <= 3; ++col)
            for (std::uint32_t s = 1; s <= copy->samples(); ++s)
                copy->setValue(s, col, ecg->value(s * col, 1));
        copy->columnName(1, "MLII");
        copy->columnDescription(1, "Lead MLII [mV]");
    }

    static QWidget* portal() { return dynamic_cast<QWidget*>(TsApplication::instance()); }

    // Calls `look` with each window, shown, and closes it again.
    void forEachWindow(const std::function<void(QWidget& window, const std::string& title)>& look)
    {
        using enum SubProgram;
        const QString file = QStringLiteral("bed 3.ts");
        std::vector<std::function<QWidget*()>> windows;
        for (const SubProgram kind :
             {Create, Plot, PlotColumn, List, Edit, Header, Formula, Derivative, Integral, Spectrum, Filter})
            windows.emplace_back([=] { return TsApplication::instance()->openSubProgram(kind, file, 2); });
        const QString texts = QStringLiteral(VELTRAC_TEXTS);
        windows.emplace_back(
            [=] { return TsApplication::instance()->openSubProgram(StlImport, texts + "/troubles.stl", 0); });
        windows.emplace_back(
            [=] { return TsApplication::instance()->openSubProgram(SclImport, texts + "/clock.scl", 0); });
        windows.emplace_back([this] { return new PsConfigDialog(&m_settings, portal()); });
        windows.emplace_back([this] { return new ColorConfigDialog(&m_colors, m_colors, nullptr); });
        windows.emplace_back([=] { return new SaveResultsDialog(file, "bed 3_filt.ts", nullptr); });
        windows.emplace_back([] { return showHelp(nullptr, "intro", "Veltrac info"); });

        look(*portal(), "Veltrac");
        for (const auto& open : windows) {
            const QPointer<QWidget> window = open();
            ASSERT_NE(window, nullptr);
            window->show();
            QApplication::setActiveWindow(window);
            QApplication::processEvents();
            look(*window, window->windowTitle().toStdString());
            const BoxAnswer no(QStringLiteral("&No"));
            window->close();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            delete window;
        }
    }

private:
    const TestDirectory m_directory;
    PsParameters m_settings;
    std::vector<QColor> m_colors{Qt::darkBlue, Qt::darkRed, Qt::darkGreen};
};

bool isOfQt(const QWidget& widget)
{
    return widget.objectName().startsWith(QLatin1String("qt_"));
}

// What Tab stops at, in its order.
std::vector<QWidget*> stopsOf(const QWidget& window)
{
    std::vector<QWidget*> stops;
    for (QWidget* w = window.nextInFocusChain(); w != &window; w = w->nextInFocusChain())
        if (w->window() == &window && w->isVisibleTo(&window) && w->isEnabled() && !isOfQt(*w) &&
            (w->focusPolicy() & Qt::TabFocus) != 0 && w->focusProxy() == nullptr)
            stops.push_back(w);
    return stops;
}

std::string nameOf(const QWidget& widget)
{
    const QAccessibleInterface* const face = QAccessible::queryAccessibleInterface(&widget);
    return widget.metaObject()->className() + std::string(" ") +
           (face == nullptr ? "" : face->text(QAccessible::Name).toStdString());
}

QRect placeOf(const QWidget& widget)
{
    return {widget.mapTo(widget.window(), QPoint()), widget.size()};
}

// What a widget shows behind Alt and a letter.
QString mnemonicTextOf(const QWidget& widget)
{
    if (const auto* const label = qobject_cast<const QLabel*>(&widget))
        return label->buddy() == nullptr ? QString() : label->text();
    if (const auto* const button = qobject_cast<const QToolButton*>(&widget))
        return button->toolButtonStyle() == Qt::ToolButtonIconOnly ? QString() : button->text();
    if (const auto* const button = qobject_cast<const QAbstractButton*>(&widget))
        return button->text();
    const auto* const group = qobject_cast<const QGroupBox*>(&widget);
    return group == nullptr ? QString() : group->title();
}

void expectEachLetterOnce(const QStringList& texts, const std::string& where)
{
    QStringList letters;
    for (const QString& text : texts) {
        const QString letter = QKeySequence::mnemonic(text).toString();
        EXPECT_FALSE(!letter.isEmpty() && letters.contains(letter)) << where << ": " << text.toStdString();
        letters << letter;
    }
}

QStringList textsOf(const QWidget& menu)
{
    QStringList texts;
    for (const QAction* const action : menu.actions())
        if (action->isVisible())
            texts << action->text();
    return texts;
}

// Whether a click with the question mark on the widget shows a text.
bool isExplained(const QWidget& widget)
{
    for (const QWidget* w = &widget; w != nullptr && !w->isWindow(); w = w->parentWidget())
        if (!w->whatsThis().isEmpty())
            return true;
    return false;
}

bool offersWhatsThis(const QWidget& window)
{
    for (const QAction* const action : window.findChildren<QAction*>())
        if (action->text() == QLatin1String("&What's this?"))
            return true;
    return false;
}

TEST_F(Desktop, WhatTakesKeysHasANameAndDoesSomething)
{
    forEachWindow([](QWidget& window, const std::string& title) {
        for (const QWidget* const stop : stopsOf(window)) {
            const QAccessibleInterface* const face = QAccessible::queryAccessibleInterface(stop);
            EXPECT_TRUE(face != nullptr && !face->text(QAccessible::Name).isEmpty())
                << title << ": " << nameOf(*stop);
            bool takesKeys = false;
            for (const char* const kind :
                 {"QAbstractButton", "QLineEdit", "QComboBox", "QAbstractSpinBox", "QAbstractItemView",
                  "QTextEdit", "QPlainTextEdit", "QTabBar", "veltrac::PlotPicture"})
                takesKeys = takesKeys || stop->inherits(kind);
            EXPECT_TRUE(takesKeys) << title << ": " << nameOf(*stop);
        }
    });
}

TEST_F(Desktop, NoLetterStandsForTwoThings)
{
    forEachWindow([](QWidget& window, const std::string& title) {
        QStringList texts;
        for (const QMenuBar* const bar : window.findChildren<QMenuBar*>())
            texts << textsOf(*bar);
        for (const QWidget* const widget : window.findChildren<QWidget*>())
            if (widget->isVisibleTo(&window) && widget->window() == &window)
                texts << mnemonicTextOf(*widget);
        expectEachLetterOnce(texts, title);
        // The entries of the main window's menus are what they have always been.
        for (QMenu* const menu : window.findChildren<QMenu*>()) {
            emit menu->aboutToShow();
            if (&window != portal())
                expectEachLetterOnce(textsOf(*menu), title + ", " + menu->title().toStdString());
        }
    });
}

TEST_F(Desktop, TabGoesThroughEachPartAsItIsRead)
{
    forEachWindow([](QWidget& window, const std::string& title) {
        const std::vector<QWidget*> stops = stopsOf(window);
        for (std::size_t i = 1; i < stops.size(); ++i) {
            const QRect before = placeOf(*stops[i - 1]);
            const QRect here = placeOf(*stops[i]);
            EXPECT_TRUE(here.bottom() >= before.top() || here.left() >= before.right())
                << title << ": " << nameOf(*stops[i - 1]) << " leads up to " << nameOf(*stops[i]);
        }
        // What stands in one part of the window is gone through before the next part.
        std::vector<const QWidget*> left;
        std::vector<const QWidget*> present;
        for (const QWidget* const stop : stops) {
            std::vector<const QWidget*> parts;
            for (const QWidget* w = stop->parentWidget(); w != nullptr && w != &window; w = w->parentWidget())
                parts.push_back(w);
            for (const QWidget* const part : parts)
                EXPECT_EQ(std::count(left.begin(), left.end(), part), 0)
                    << title << ": back to the part of " << nameOf(*stop);
            for (const QWidget* const part : present)
                if (std::count(parts.begin(), parts.end(), part) == 0)
                    left.push_back(part);
            present = parts;
        }
    });
}

TEST_F(Desktop, WhereWhatsThisIsOfferedEverythingAnswers)
{
    forEachWindow([](QWidget& window, const std::string& title) {
        if (!offersWhatsThis(window))
            return;
        for (const QWidget* const stop : stopsOf(window))
            EXPECT_TRUE(isExplained(*stop)) << title << ": " << nameOf(*stop);
        for (const QLabel* const label : window.findChildren<QLabel*>())
            if (label->buddy() != nullptr && label->isVisibleTo(&window) && label->window() == &window)
                EXPECT_TRUE(isExplained(*label)) << title << ": " << label->text().toStdString();
        for (const QToolBar* const bar : window.findChildren<QToolBar*>())
            for (QAction* const action : bar->actions())
                if (!action->isSeparator() && bar->isVisibleTo(&window))
                    EXPECT_TRUE(!action->whatsThis().isEmpty() || isExplained(*bar->widgetForAction(action)))
                        << title << ": " << action->text().toStdString();
    });
}

// What a widget needs to show its whole text.
QSize neededBy(const QWidget& widget)
{
    if (const auto* const label = qobject_cast<const QLabel*>(&widget)) {
        if (label->wordWrap())
            return {0, label->heightForWidth(label->width())};
        // Where a long path is cut, this is wanted.
        return label->sizePolicy().horizontalPolicy() == QSizePolicy::Ignored ? QSize() : label->sizeHint();
    }
    if (qobject_cast<const QAbstractButton*>(&widget) != nullptr)
        return widget.minimumSizeHint();
    return {};
}

bool isInScrollArea(const QWidget& widget)
{
    for (const QWidget* w = widget.parentWidget(); w != nullptr; w = w->parentWidget())
        if (qobject_cast<const QAbstractScrollArea*>(w) != nullptr)
            return true;
    return false;
}

TEST_F(Desktop, FitsASmallScreenWithLargeLettersAndCutsNoText)
{
    const QFont before = QApplication::font();
    for (const int points : {8, 12}) {
        QApplication::setFont(QFont(before.family(), points));
        forEachWindow([points](QWidget& window, const std::string& title) {
            const std::string where = title + " at " + std::to_string(points) + " points: ";
            window.resize(kSmallScreen);
            QApplication::processEvents();
            EXPECT_LE(window.width(), kSmallScreen.width()) << where;
            EXPECT_LE(window.height(), kSmallScreen.height()) << where;
            for (const QWidget* const widget : window.findChildren<QWidget*>()) {
                if (widget->window() != &window || !widget->isVisibleTo(&window) || isOfQt(*widget))
                    continue;
                const QSize needed = neededBy(*widget);
                EXPECT_TRUE(widget->width() >= needed.width() && widget->height() >= needed.height())
                    << where << nameOf(*widget) << " is cut";
                if (needed.isValid() && !isInScrollArea(*widget))
                    EXPECT_TRUE(window.rect().contains(placeOf(*widget)))
                        << where << nameOf(*widget) << " is outside";
            }
        });
    }
    QApplication::setFont(before);
}

}  // namespace
