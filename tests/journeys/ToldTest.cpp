// What every window tells and offers, as windows.txt records it: its title, its menus, its fields with what
// they hold, what is off. Where a window was changed on purpose, VELTRAC_TELL=tests/journeys/windows.txt
// writes the record anew, to be read before it is kept.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QSpinBox>
#include <QStatusBar>
#include <QTabBar>
#include <QTest>
#include <QToolBar>
#include <QToolButton>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "tests/journeys/EveryWindow.h"

using namespace veltrac;

namespace {

QString quoted(const QString& text)
{
    return QLatin1Char('"') + QString(text).replace(QLatin1Char('\n'), QLatin1Char('|')) + QLatin1Char('"');
}

QString stateOf(bool enabled, bool checkable, bool checked)
{
    return QLatin1String(!checkable ? "" : checked ? " [x]" : " [ ]") + QLatin1String(enabled ? "" : " off");
}

QString entryOf(const QAction& action)
{
    if (action.isSeparator())
        return QStringLiteral("-");
    return quoted(action.text()) + stateOf(action.isEnabled(), action.isCheckable(), action.isChecked()) +
           (action.icon().isNull() ? QString() : QStringLiteral(" with a picture")) + QLatin1Char(' ') +
           action.shortcut().toString(QKeySequence::PortableText);
}

QStringList rowOf(const QAbstractItemModel& model, int row)
{
    QStringList texts;
    for (int column = 0; column < model.columnCount(); ++column)
        texts << model.index(row, column).data().toString();
    return texts;
}

// The names of a table's columns, its first rows, and how many there are.
QString tableOf(const QAbstractItemView& view)
{
    constexpr int kFirst = 3;
    const QAbstractItemModel& model = *view.model();
    QStringList names;
    for (int column = 0; column < model.columnCount(); ++column)
        names << model.headerData(column, Qt::Horizontal).toString();
    QString text = names.join(QLatin1Char(';')) + QStringLiteral(" rows %1").arg(model.rowCount());
    for (int row = 0; row < std::min(model.rowCount(), kFirst); ++row)
        text += QStringLiteral(" / ") + rowOf(model, row).join(QLatin1Char(';'));
    return text;
}

// Nothing for what only holds others.
QString contentOf(const QWidget& widget)
{
    if (const auto* const label = qobject_cast<const QLabel*>(&widget)) {
        // What is shortened depends on the letters' size.
        const QString text = label->text();
        return text.contains(QChar(0x2026)) ? QStringLiteral("shortened ") + quoted(label->toolTip())
                                            : quoted(text);
    }
    if (const auto* const button = qobject_cast<const QAbstractButton*>(&widget))
        return quoted(button->text()) + stateOf(true, button->isCheckable(), button->isChecked());
    if (const auto* const field = qobject_cast<const QLineEdit*>(&widget))
        return QStringLiteral("field ") + quoted(field->text()) + QLatin1Char(' ') + field->placeholderText();
    if (const auto* const box = qobject_cast<const QComboBox*>(&widget)) {
        QStringList entries;
        for (int i = 0; i < box->count(); ++i)
            entries << box->itemText(i);
        return QStringLiteral("choice ") + quoted(box->currentText()) + QStringLiteral(" of ") +
               entries.join(QLatin1Char(';'));
    }
    if (const auto* const box = qobject_cast<const QAbstractSpinBox*>(&widget))
        return QStringLiteral("number ") + quoted(box->text());
    if (const auto* const group = qobject_cast<const QGroupBox*>(&widget))
        return QStringLiteral("group ") + quoted(group->title()) +
               stateOf(true, group->isCheckable(), group->isChecked());
    if (const auto* const view = qobject_cast<const QAbstractItemView*>(&widget))
        return qobject_cast<const QHeaderView*>(&widget) != nullptr
                   ? QString()
                   : QStringLiteral("table ") + tableOf(*view);
    if (const auto* const bar = qobject_cast<const QStatusBar*>(&widget))
        return QStringLiteral("status ") + quoted(bar->currentMessage());
    if (const auto* const tabs = qobject_cast<const QTabBar*>(&widget)) {
        QStringList texts;
        for (int i = 0; i < tabs->count(); ++i)
            texts << tabs->tabText(i);
        return QStringLiteral("tabs ") + texts.join(QLatin1Char(';'));
    }
    return qobject_cast<const QToolBar*>(&widget) != nullptr
               ? QStringLiteral("tools ") + quoted(widget.windowTitle())
               : QString();
}

// Fields within fields are told by those.
bool isPart(const QWidget& widget, const QWidget& window)
{
    for (const QWidget* w = widget.parentWidget(); w != nullptr && w != &window; w = w->parentWidget())
        if (qobject_cast<const QAbstractSpinBox*>(w) != nullptr ||
            qobject_cast<const QComboBox*>(w) != nullptr ||
            qobject_cast<const QAbstractItemView*>(w) != nullptr ||
            qobject_cast<const QTabBar*>(w) != nullptr || qobject_cast<const QMenuBar*>(w) != nullptr)
            return true;
    return widget.objectName().startsWith(QLatin1String("qt_"));
}

// The entries, with those of the menus behind them.
void tellMenu(QMenu& menu, const QString& margin, QStringList& lines)
{
    emit menu.aboutToShow();
    for (const QAction* const action : menu.actions()) {
        if (!action->isVisible())
            continue;
        lines << margin + entryOf(*action).trimmed();
        if (action->menu() != nullptr)
            tellMenu(*action->menu(), margin + QStringLiteral("    "), lines);
    }
}

QStringList menusOf(const QWidget& window)
{
    QStringList lines;
    for (const QMenuBar* const bar : window.findChildren<QMenuBar*>())
        for (const QAction* const action : bar->actions()) {
            lines << QStringLiteral("menu ") + entryOf(*action).trimmed();
            if (action->menu() != nullptr)
                tellMenu(*action->menu(), QStringLiteral("    "), lines);
        }
    for (const QToolButton* const button : window.findChildren<QToolButton*>())
        if (button->menu() != nullptr) {
            lines << QStringLiteral("menu of ") + quoted(button->text());
            tellMenu(*button->menu(), QStringLiteral("    "), lines);
        }
    return lines;
}

QStringList fieldsOf(const QWidget& window)
{
    QStringList lines;
    for (const QWidget* const widget : window.findChildren<QWidget*>()) {
        const QString content = contentOf(*widget);
        if (!widget->isVisibleTo(&window) || widget->window() != &window || isPart(*widget, window) ||
            content.isEmpty())
            continue;
        QString line = content + stateOf(widget->isEnabled(), false, false);
        if (!widget->accessibleName().isEmpty())
            line += QStringLiteral(" named ") + quoted(widget->accessibleName());
        if (!widget->toolTip().isEmpty() && !content.startsWith(QLatin1String("shortened")))
            line += QStringLiteral(" tip ") + quoted(widget->toolTip());
        lines << line.trimmed() + QLatin1String(widget->hasFocus() ? " *" : "");
    }
    return lines;
}

const QString kStart = QDir::currentPath();  // before any test has one of its own

// When what is counted and drawn in the background has come.
QString toldBy(const QWidget& window)
{
    QStringList fields = fieldsOf(window);
    for (int calm = 0, tries = 0; calm < 3 && tries < 200; ++tries) {
        QTest::qWait(30);
        const QStringList now = fieldsOf(window);
        calm = now == fields ? calm + 1 : 0;
        fields = now;
    }
    const QString title = QStringLiteral("== ") + window.windowTitle() +
                          QLatin1String(window.windowIcon().isNull() ? "" : " (with a picture)");
    return (QStringList(title) + menusOf(window) + fields)
               .join(QLatin1Char('\n'))
               .replace(kStart, QStringLiteral("DIRECTORY"))
               .replace(QRegularExpression(QStringLiteral(" in \\d+\\.\\d s")),
                        QStringLiteral(" in some time")) +
           QLatin1Char('\n');
}

using Told = EveryWindow;

TEST_F(Told, ByEveryWindowWhatTheRecordHolds)
{
    setenv("TZ", "UTC", 1);
    std::string told;
    forEachWindow([&](QWidget& window, const std::string&) { told += toldBy(window).toStdString(); });
    if (const char* const record = std::getenv("VELTRAC_TELL")) {
        std::ofstream(record) << told;
        return;
    }
    std::ifstream record(VELTRAC_TOLD);
    std::istringstream now(told);
    std::string window;
    for (std::string line, wanted; std::getline(now, line);) {
        window = line.starts_with("==") ? line : window;
        std::getline(record, wanted);
        ASSERT_EQ(line, wanted) << window;
    }
    EXPECT_EQ(record.peek(), std::ifstream::traits_type::eof());
}

}  // namespace
