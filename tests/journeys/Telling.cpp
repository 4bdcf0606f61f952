#include "tests/journeys/Telling.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QDockWidget>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QScrollArea>
#include <QSpinBox>
#include <QStatusBar>
#include <QStyle>
#include <QTabBar>
#include <QTableView>
#include <QTest>
#include <QToolBar>
#include <QToolButton>

#include <cmath>

#include "share/PlotCanvas.h"
#include "tests/journeys/WidgetTraits.h"

namespace veltrac {

namespace {

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
           QKeySequence::listToString(action.shortcuts(), QKeySequence::PortableText) +
           (action.toolTip() == QAction(action.text()).toolTip()
                ? QString()
                : QStringLiteral(" tip ") + quoted(action.toolTip())) +
           (action.whatsThis().isEmpty() || action.whatsThis() == action.toolTip()
                ? QString()
                : QStringLiteral(" explained ") + quoted(action.whatsThis())) +
           (action.statusTip().isEmpty() ? QString() : QStringLiteral(" told ") + quoted(action.statusTip()));
}

QString tipOf(const QVariant& text)
{
    return text.toString().isEmpty() ? QString() : QStringLiteral(" tip ") + quoted(text.toString());
}

// A cell with all that is seen of it.
QString cellOf(const QModelIndex& cell)
{
    QString text = cell.data().toString();
    const QVariant check = cell.data(Qt::CheckStateRole);
    text += QLatin1String(!check.isValid() ? "" : check.toInt() == Qt::Checked ? " [x]" : " [ ]");
    text += QLatin1String((cell.flags() & Qt::ItemIsEnabled) == 0 ? " off" : "");
    text += QLatin1String((cell.flags() & Qt::ItemIsEditable) != 0 ? " typed" : "");
    text += QLatin1String(cell.data(Qt::TextAlignmentRole).toInt() & Qt::AlignRight ? " right" : "");
    for (const int role : {Qt::ForegroundRole, Qt::BackgroundRole, Qt::DecorationRole, Qt::FontRole})
        text += cell.data(role).isValid() ? QStringLiteral(" %1").arg(role) : QString();
    return text + tipOf(cell.data(Qt::ToolTipRole));
}

// The names of the columns, the first rows with those below them, and how many there are.
QString rowsOf(const QAbstractItemModel& model, const QModelIndex& parent = {})
{
    constexpr int kFirst = 3;
    QString text = QStringLiteral(" rows %1").arg(model.rowCount(parent));
    for (int row = 0; row < std::min(model.rowCount(parent), kFirst); ++row) {
        QStringList cells;
        for (int column = 0; column < model.columnCount(parent); ++column)
            cells << cellOf(model.index(row, column, parent));
        text += QStringLiteral(" / ") + cells.join(QLatin1Char(';'));
        if (model.rowCount(model.index(row, 0, parent)) > 0)
            text += rowsOf(model, model.index(row, 0, parent));
    }
    return text;
}

QString tableOf(const QAbstractItemView& view)
{
    const QAbstractItemModel& model = *view.model();
    QStringList names;
    for (int column = 0; column < model.columnCount(); ++column) {
        names << model.headerData(column, Qt::Horizontal).toString();
        for (const int role : {Qt::ToolTipRole, Qt::WhatsThisRole})
            names.last() += tipOf(model.headerData(column, Qt::Horizontal, role));
    }
    const QModelIndex at = view.currentIndex();
    QString cut;
    if (const auto* const table = qobject_cast<const QTableView*>(&view)) {
        for (int column = 0; column < model.columnCount(); ++column)
            if (const QAbstractItemView& hints = *table;
                hints.sizeHintForColumn(column) > table->columnWidth(column))
                cut += QStringLiteral(" cut %1").arg(column);
        const auto* const height = table->window()->findChild<QSpinBox*>();
        if (height != nullptr && height->value() == table->rowHeight(0))
            cut += QStringLiteral(" as high as asked");
    }
    return names.join(QLatin1Char(';')) + rowsOf(model) + cut +
           (at.isValid() ? QStringLiteral(" at %1;%2").arg(at.row()).arg(at.column()) : QString());
}

// What of the data is in view, and what is marked there.
QString plotOf(const PlotCanvas& canvas)
{
    const Plot2D& plot = canvas.plot();
    QString text = QStringLiteral("plot ") + quoted(canvas.text()) +
                   QStringLiteral(" %1 to %2").arg(plot.x1()).arg(plot.x2());
    for (const Group& group : plot.groups()) {
        // Where it begins hangs on the pixel about which was zoomed.
        text += QStringLiteral(" / over %1 mode %2 height %3")
                    .arg(group.toScale(group.y2()) - group.toScale(group.y1()), 0, 'g', 4)
                    .arg(static_cast<int>(group.mode))
                    .arg(group.share);
        text += QLatin1String(group.isLogarithmic() ? " log" : "");
        for (const auto& variable : group.variables())
            text += QLatin1Char(' ') + QString::fromStdString(variable->variable().label) +
                    QLatin1String(variable->variable().visible ? "" : " hidden");
    }
    for (const auto which : {Plot2D::A, Plot2D::B})
        if (plot.cursor(which))
            text += QStringLiteral(" cursor %1").arg(*plot.cursor(which));
    return text + QStringLiteral(" grid %1 legend %2 ").arg(static_cast<int>(plot.grid)).arg(plot.legend) +
           QString::fromStdString(plot.title);
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
            entries << box->itemText(i) + tipOf(box->itemData(i, Qt::ToolTipRole));
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
                   ? QStringLiteral("header")
                   : QStringLiteral("table ") + tableOf(*view);
    if (const auto* const bar = qobject_cast<const QStatusBar*>(&widget))
        return QStringLiteral("status ") + quoted(bar->currentMessage());
    if (const auto* const tabs = qobject_cast<const QTabBar*>(&widget)) {
        QStringList texts;
        for (int i = 0; i < tabs->count(); ++i)
            texts << tabs->tabText(i);
        return QStringLiteral("tabs ") + texts.join(QLatin1Char(';'));
    }
    if (const auto* const canvas = qobject_cast<const PlotCanvas*>(&widget))
        return plotOf(*canvas);
    if (qobject_cast<const QScrollArea*>(&widget) != nullptr)
        return QStringLiteral("scrolled");
    return qobject_cast<const QToolBar*>(&widget) != nullptr
               ? QStringLiteral("tools ") + quoted(widget.windowTitle())
               : QString();
}

// Fields within fields are told by those.
bool isPart(const QWidget& widget, const QWidget& window)
{
    if (qobject_cast<const QHeaderView*>(&widget) != nullptr)
        return false;
    for (const QWidget* w = widget.parentWidget(); w != nullptr && w != &window; w = w->parentWidget())
        if (qobject_cast<const QAbstractSpinBox*>(w) != nullptr ||
            // That which clears the field fades away after a while.
            (qobject_cast<const QLineEdit*>(w) != nullptr &&
             qobject_cast<const QAbstractButton*>(&widget) != nullptr) ||
            qobject_cast<const QComboBox*>(w) != nullptr ||
            (qobject_cast<const QAbstractItemView*>(w) != nullptr && widget.accessibleName().isEmpty()) ||
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

QStringList fieldsOf(const QWidget& window)
{
    QStringList lines;
    for (const QWidget* const widget : window.findChildren<QWidget*>()) {
        const QString content = contentOf(*widget);
        if (widget->window() != &window || isPart(*widget, window) || content.isEmpty())
            continue;
        QString line = QLatin1String(widget->isVisibleTo(&window) ? "" : "hidden ") + content +
                       stateOf(widget->isEnabled(), false, false);
        if (!widget->accessibleName().isEmpty())
            line += QStringLiteral(" named ") + quoted(widget->accessibleName());
        if (!widget->toolTip().isEmpty() && !content.startsWith(QLatin1String("shortened")))
            line += QStringLiteral(" tip ") + quoted(widget->toolTip());
        lines << line.trimmed() + traitsOf(*widget) +
                     QLatin1String(widget->hasFocus() && qobject_cast<const PlotCanvas*>(widget) == nullptr
                                       ? " *"
                                       : "");
    }
    return lines;
}

QString nameOf(const QLayoutItem* item);

// A layout with all that lies in it.
QString layoutOf(const QLayout& layout)
{
    QStringList items;
    const auto* const grid = qobject_cast<const QGridLayout*>(&layout);
    const auto* const form = qobject_cast<const QFormLayout*>(&layout);
    const auto* const box = qobject_cast<const QBoxLayout*>(&layout);
    for (int i = 0; i < layout.count(); ++i) {
        QString place;
        if (grid != nullptr) {
            int row = 0, column = 0, rows = 0, columns = 0;
            grid->getItemPosition(i, &row, &column, &rows, &columns);
            place = QStringLiteral("%1;%2+%3;%4 ").arg(row).arg(column).arg(rows).arg(columns);
        } else if (form != nullptr) {
            int row = 0;
            QFormLayout::ItemRole role = QFormLayout::LabelRole;
            form->getItemPosition(i, &row, &role);
            place = QStringLiteral("%1;%2 ").arg(row).arg(role);
        } else if (box != nullptr && box->stretch(i) != 0) {
            place = QStringLiteral("x%1 ").arg(box->stretch(i));
        }
        items << place + nameOf(layout.itemAt(i));
    }
    const QMargins margins = layout.contentsMargins();
    const int usual = QApplication::style()->pixelMetric(QStyle::PM_LayoutHorizontalSpacing);
    return QLatin1String(layout.metaObject()->className()) + QLatin1String(margins.isNull() ? " flush" : "") +
           (layout.spacing() == usual ? QString() : QStringLiteral(" apart %1").arg(layout.spacing())) +
           QStringLiteral(" (") + items.join(QStringLiteral(", ")) + QLatin1Char(')');
}

QString nameOf(const QLayoutItem* item)
{
    // Qt asks for what is no const here.
    auto* const held = const_cast<QLayoutItem*>(item);
    if (const QLayout* const layout = held->layout())
        return layoutOf(*layout);
    const QWidget* const widget = held->widget();
    if (widget == nullptr)
        return QStringLiteral("gap");
    const QString text = widget->accessibleName();
    return QLatin1String(plainLike(*widget).metaObject()->className()) +
           (text.isEmpty() ? QString() : QLatin1Char(' ') + quoted(text));
}

// What stands in which part of the window.
QStringList layoutsOf(const QWidget& window)
{
    QStringList lines;
    QList<const QWidget*> parts{&window};
    for (const QWidget* const widget : window.findChildren<QWidget*>())
        parts << widget;
    for (const QWidget* const part : parts) {
        if (part->window() != &window || isPart(*part, window))
            continue;
        if (const auto* const frame = qobject_cast<const QMainWindow*>(part)) {
            QString line =
                QStringLiteral("middle ") +
                (frame->centralWidget() == nullptr
                     ? QStringLiteral("none")
                     : QLatin1String(plainLike(*frame->centralWidget()).metaObject()->className()));
            for (QDockWidget* const dock : frame->findChildren<QDockWidget*>())
                line += QStringLiteral(", %1 at %2")
                            .arg(quoted(dock->windowTitle()))
                            .arg(frame->dockWidgetArea(dock));
            for (QToolBar* const bar : frame->findChildren<QToolBar*>())
                line +=
                    QStringLiteral(", %1 at %2").arg(quoted(bar->windowTitle())).arg(frame->toolBarArea(bar));
            lines << line;
        } else if (part->layout() != nullptr && !part->inherits("QToolBar") &&
                   !part->inherits("QStatusBar") && !part->inherits("QDockWidget"))
            lines << layoutOf(*part->layout());
    }
    return lines;
}

// The last digits of what was computed are those of a processor.
QString rounded(const QString& line)
{
    static const QRegularExpression number(
        QStringLiteral("-?\\d+\\.\\d{4,}(e[-+]?\\d+)?|-?\\d+(\\.\\d+)?e-\\d+"));
    QString text;
    decltype(line.size()) at = 0;
    for (auto matches = number.globalMatch(line); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        const double value = match.captured().toDouble();
        text += line.mid(at, match.capturedStart() - at) +
                (std::fabs(value) < 1e-9 ? QStringLiteral("0") : QString::number(value, 'g', 4));
        at = match.capturedEnd();
    }
    return text + line.mid(at);
}

const QString kStart = QDir::currentPath();  // before any test has one of its own

}  // namespace

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
        if (button->menu() != nullptr && !button->objectName().startsWith(QLatin1String("qt_"))) {
            lines << QStringLiteral("menu of ") + quoted(button->text());
            tellMenu(*button->menu(), QStringLiteral("    "), lines);
        }
    return lines;
}

QStringList entriesIn(QMenu& menu)
{
    QStringList lines;
    tellMenu(menu, QStringLiteral("    "), lines);
    return lines;
}

QStringList calmFieldsOf(const QWidget& window)
{
    QStringList fields = fieldsOf(window);
    for (int calm = 0, tries = 0; calm < 3 && tries < 200; ++tries) {
        QTest::qWait(30);
        const QStringList now = fieldsOf(window);
        calm = now == fields ? calm + 1 : 0;
        fields = now;
    }
    fields.replaceInStrings(QDir::currentPath(), QStringLiteral("FOLDER"));
    fields.replaceInStrings(kStart, QStringLiteral("DIRECTORY"));
    fields.replaceInStrings(QRegularExpression(QStringLiteral(" in \\d+\\.\\d s")),
                            QStringLiteral(" in some time"));
    for (QString& line : fields)
        line = rounded(line);
    return fields;
}

QString allToldBy(const QWidget& window)
{
    const QStringList fields = calmFieldsOf(window);
    const QString title =
        QStringLiteral("== ") + window.windowTitle() +
        QLatin1String(window.windowIcon().cacheKey() == QApplication::windowIcon().cacheKey()
                          ? ""
                          : " (with a picture)") +
        QLatin1String(!window.isModal() && window.width() > window.height() ? " (wide)" : "") +
        traitsOf(window);
    return (QStringList(title) + menusOf(window) + fields + layoutsOf(window)).join(QLatin1Char('\n')) +
           QLatin1Char('\n');
}

}  // namespace veltrac
