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

#include <algorithm>
#include <iostream>
#include <iterator>
#include <set>
#include <vector>

#include "tests/journeys/EveryWindow.h"

using namespace veltrac;

namespace {

constexpr QSize kSmallScreen(1024, 600);

using Desktop = EveryWindow;

bool isOfQt(const QWidget& widget)
{
    return widget.objectName().startsWith(QLatin1String("qt_"));
}

QWidgetList shownIn(const QWidget& window)
{
    QWidgetList shown;
    for (QWidget* const widget : window.findChildren<QWidget*>())
        if (widget->isVisibleTo(&window) && widget->window() == &window)
            shown << widget;
    return shown;
}

// What Tab stops at, in its order: by the keys that the window gets, for within some tables Tab goes on by
// cells.
std::vector<QWidget*> stopsOf(QWidget& window)
{
    std::vector<QWidget*> stops;
    window.setFocus();
    QTest::keyClick(&window, Qt::Key_Tab);
    for (QWidget* stop = QApplication::focusWidget();
         stop != nullptr && stop != &window && std::count(stops.begin(), stops.end(), stop) == 0;
         stop = QApplication::focusWidget()) {
        stops.push_back(stop);
        QTest::keyClick(&window, Qt::Key_Tab);
    }
    return stops;
}

std::string nameOf(QWidget& widget)
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
    std::size_t windows = 0;
    qsizetype widgets = 0;
    std::size_t named = 0;
    std::size_t tabStops = 0;
    forEachWindow([&](QWidget& window, const std::string& title) {
        const QWidgetList shown = shownIn(window);
        for (QWidget* const widget : shown) {
            const QAccessibleInterface* const face = QAccessible::queryAccessibleInterface(widget);
            const bool isNamed = face != nullptr && !face->text(QAccessible::Name).isEmpty();
            EXPECT_TRUE(widget->focusPolicy() == Qt::NoFocus || widget->focusProxy() != nullptr ||
                        isOfQt(*widget) || isNamed)
                << title << ": " << widget->metaObject()->className();
            named += isNamed ? 1 : 0;
        }
        const std::vector<QWidget*> stops = stopsOf(window);
        EXPECT_FALSE(stops.empty()) << title;
        ++windows;
        widgets += shown.size();
        tabStops += stops.size();
        for (QWidget* const stop : stops) {
            bool takesKeys = false;
            for (const char* const kind :
                 {"QAbstractButton", "QLineEdit", "QComboBox", "QAbstractSpinBox", "QAbstractItemView",
                  "QTextEdit", "QPlainTextEdit", "QTabBar", "veltrac::PlotPicture"})
                takesKeys = takesKeys || stop->inherits(kind);
            EXPECT_TRUE(takesKeys) << title << ": " << nameOf(*stop);
        }
    });
    std::cout << windows << " windows, " << widgets << " widgets, " << named << " of them named, " << tabStops
              << " tab stops\n";
}

TEST_F(Desktop, NoLetterStandsForTwoThings)
{
    forEachWindow([](QWidget& window, const std::string& title) {
        QStringList texts;
        // The main window's menus and their entries are what they have always been.
        const bool isMain = &window == mainWindow();
        for (const QMenuBar* const bar : window.findChildren<QMenuBar*>())
            texts << (isMain ? QStringList() : textsOf(*bar));
        for (const QWidget* const widget : shownIn(window))
            texts << mnemonicTextOf(*widget);
        expectEachLetterOnce(texts, title);
        for (QMenu* const menu : window.findChildren<QMenu*>()) {
            emit menu->aboutToShow();
            if (!isMain)
                expectEachLetterOnce(textsOf(*menu), title + ", " + menu->title().toStdString());
        }
    });
}

bool leadsUp(const QWidget& from, const QWidget& to)
{
    return placeOf(to).bottom() < placeOf(from).top() && placeOf(to).left() < placeOf(from).right();
}

TEST_F(Desktop, TabGoesThroughEachPartAsItIsRead)
{
    forEachWindow([](QWidget& window, const std::string& title) {
        std::vector<QWidget*> stops = stopsOf(window);
        // Up it goes once, from the last to the first.
        const auto up =
            std::adjacent_find(stops.begin(), stops.end(),
                               [](const QWidget* from, const QWidget* to) { return leadsUp(*from, *to); });
        if (up != stops.end())
            std::rotate(stops.begin(), up + 1, stops.end());
        for (std::size_t i = 1; i < stops.size(); ++i)
            EXPECT_FALSE(leadsUp(*stops[i - 1], *stops[i]))
                << title << ": " << nameOf(*stops[i - 1]) << " leads up to " << nameOf(*stops[i]);
        // What stands in one part of the window is gone through before the next part.
        std::set<const QWidget*> left;
        std::set<const QWidget*> present;
        for (const QWidget* const stop : stops) {
            std::set<const QWidget*> parts;
            for (const QWidget* w = stop->parentWidget(); w != nullptr && w != &window; w = w->parentWidget())
                parts.insert(w);
            for (const QWidget* const part : parts)
                EXPECT_FALSE(left.contains(part)) << title << ": back to " << part->metaObject()->className();
            std::set_difference(present.begin(), present.end(), parts.begin(), parts.end(),
                                std::inserter(left, left.end()));
            present = parts;
        }
    });
}

TEST_F(Desktop, WhereWhatsThisIsOfferedEverythingAnswers)
{
    forEachWindow([](QWidget& window, const std::string& title) {
        if (!offersWhatsThis(window))
            return;
        for (QWidget* const stop : stopsOf(window))
            EXPECT_TRUE(isExplained(*stop)) << title << ": " << nameOf(*stop);
        for (const QWidget* const widget : shownIn(window)) {
            const auto* const label = qobject_cast<const QLabel*>(widget);
            EXPECT_TRUE(label == nullptr || label->buddy() == nullptr || isExplained(*label))
                << title << ": " << label->text().toStdString();
        }
        for (const QToolBar* const bar : window.findChildren<QToolBar*>())
            for (QAction* const action : bar->actions()) {
                if (action->isSeparator() || !bar->isVisibleTo(&window))
                    continue;
                EXPECT_TRUE(!action->whatsThis().isEmpty() || isExplained(*bar->widgetForAction(action)))
                    << title << ": " << action->text().toStdString();
            }
    });
}

// What was not given a place lies in a corner, over others.
bool areApart(const QWidget& a, const QWidget& b)
{
    return &a == &b || a.parentWidget() != b.parentWidget() || a.parentWidget()->layout() == nullptr ||
           isOfQt(a) || isOfQt(b) || !a.geometry().intersects(b.geometry());
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
    for (const int points : {before.pointSize(), 12}) {
        QApplication::setFont(QFont(before.family(), points));
        forEachWindow([points](QWidget& window, const std::string& title) {
            const std::string where = title + " at " + std::to_string(points) + " points: ";
            window.resize(kSmallScreen);
            QApplication::processEvents();
            EXPECT_LE(window.width(), kSmallScreen.width()) << where;
            EXPECT_LE(window.height(), kSmallScreen.height()) << where;
            const QWidgetList shown = shownIn(window);
            for (QWidget* const widget : shown) {
                if (isOfQt(*widget))
                    continue;
                for (QWidget* const other : shown)
                    EXPECT_TRUE(areApart(*widget, *other))
                        << where << nameOf(*widget) << " over " << nameOf(*other);
                // Forms are scrolled from top to bottom alone.
                const auto* const area = qobject_cast<const QScrollArea*>(widget);
                EXPECT_TRUE(area == nullptr ||
                            area->viewport()->width() >= area->widget()->minimumSizeHint().width())
                    << where << area->metaObject()->className() << " is narrower than its form";
                // What is shortened had no room for more.
                const auto* const label = qobject_cast<const QLabel*>(widget);
                EXPECT_FALSE(label != nullptr && label->text().endsWith(QChar(0x2026)) &&
                             label->fontMetrics().horizontalAdvance(label->toolTip()) <= label->width())
                    << where << nameOf(*widget);
                const QSize needed = neededBy(*widget);
                EXPECT_TRUE(widget->width() >= needed.width() && widget->height() >= needed.height())
                    << where << nameOf(*widget) << " is cut";
                const bool isScrolled = !needed.isValid() || isInScrollArea(*widget);
                EXPECT_TRUE(isScrolled || window.rect().contains(placeOf(*widget)))
                    << where << nameOf(*widget) << " is outside";
            }
        });
    }
    QApplication::setFont(before);
}

}  // namespace
