#include "tests/journeys/WidgetTraits.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QDialog>
#include <QDockWidget>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMetaProperty>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QSpinBox>
#include <QSplitter>
#include <QStatusBar>
#include <QTabBar>
#include <QTableWidget>
#include <QTextBrowser>
#include <QTextEdit>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>

#include <algorithm>
#include <map>
#include <string>
#include <utility>

namespace veltrac {

namespace {

// By which those of a kind may differ, and no letter, style or version of Qt makes them.
const char* const kTraits[] = {"acceptDrops",
                               "allowedAreas",
                               "alternatingRowColors",
                               "autoDefault",
                               "autoRaise",
                               "calendarPopup",
                               "checkable",
                               "childrenCollapsible",
                               "clearButtonEnabled",
                               "contextMenuPolicy",
                               "cornerButtonEnabled",
                               "default",
                               "displayFormat",
                               "documentMode",
                               "dragDropMode",
                               "dragEnabled",
                               "editable",
                               "editTriggers",
                               "expanding",
                               "features",
                               "flat",
                               "floatable",
                               "focusPolicy",
                               "frame",
                               "frameShape",
                               "headerHidden",
                               "highlightSections",
                               "horizontalScrollBarPolicy",
                               "horizontalScrollMode",
                               "insertPolicy",
                               "lineWrapMode",
                               "maximum",
                               "maxLength",
                               "minimum",
                               "modal",
                               "mouseTracking",
                               "movable",
                               "openExternalLinks",
                               "openLinks",
                               "orientation",
                               "popupMode",
                               "readOnly",
                               "rootIsDecorated",
                               "selectionBehavior",
                               "selectionMode",
                               "showGrid",
                               "showSortIndicator",
                               "singleStep",
                               "sizeGripEnabled",
                               "sortingEnabled",
                               "specialValueText",
                               "statusTip",
                               "stretchLastSection",
                               "suffix",
                               "tabChangesFocus",
                               "tabKeyNavigation",
                               "textFormat",
                               "textInteractionFlags",
                               "toolButtonStyle",
                               "undoRedoEnabled",
                               "uniformRowHeights",
                               "verticalScrollBarPolicy",
                               "verticalScrollMode",
                               "widgetResizable",
                               "wordWrap"};

template <typename Kind>
QWidget* made()
{
    return new Kind;
}

QString traitOf(const QWidget& widget, const char* name)
{
    const QMetaObject& kind = *widget.metaObject();
    const QMetaProperty property = kind.property(kind.indexOfProperty(name));
    const QVariant value = property.read(&widget);
    return QLatin1String(name) + QLatin1Char('=') +
           (property.isEnumType() ? QString::number(value.toInt()) : value.toString());
}

}  // namespace

QString quoted(const QString& text)
{
    return QLatin1Char('"') + QString(text).replace(QLatin1Char('\n'), QLatin1Char('|')) + QLatin1Char('"');
}

const QWidget& plainLike(const QWidget& widget)
{
    static const std::map<std::string, QWidget* (*)()> makers = {
        {"QHeaderView", []() -> QWidget* { return new QHeaderView(Qt::Horizontal); }},
        {"QCheckBox", made<QCheckBox>},
        {"QDateTimeEdit", made<QDateTimeEdit>},
        {"QFrame", made<QFrame>},
        {"QListWidget", made<QListWidget>},
        {"QTextEdit", made<QTextEdit>},
        {"QComboBox", made<QComboBox>},
        {"QDialog", made<QDialog>},
        {"QDockWidget", made<QDockWidget>},
        {"QGroupBox", made<QGroupBox>},
        {"QLabel", made<QLabel>},
        {"QLineEdit", made<QLineEdit>},
        {"QMainWindow", made<QMainWindow>},
        {"QPlainTextEdit", made<QPlainTextEdit>},
        {"QPushButton", made<QPushButton>},
        {"QScrollArea", made<QScrollArea>},
        {"QSpinBox", made<QSpinBox>},
        {"QSplitter", made<QSplitter>},
        {"QStatusBar", made<QStatusBar>},
        {"QTabBar", made<QTabBar>},
        {"QTableView", made<QTableView>},
        {"QTableWidget", made<QTableWidget>},
        {"QTextBrowser", made<QTextBrowser>},
        {"QToolBar", made<QToolBar>},
        {"QToolButton", made<QToolButton>},
        {"QTreeWidget", made<QTreeWidget>},
        {"QWidget", made<QWidget>}};
    static auto& plain = *new std::map<std::string, QWidget*>;  // as long as there are widgets
    const QMetaObject* kind = widget.metaObject();
    while (makers.count(kind->className()) == 0)
        kind = kind->superClass();
    QWidget*& own = plain[kind->className()];
    if (own == nullptr)
        own = makers.at(kind->className())();
    return *own;
}

QString traitsOf(const QWidget& widget)
{
    // Those of an action are told where the menus are.
    if (const auto* const button = qobject_cast<const QToolButton*>(&widget);
        button != nullptr && button->defaultAction() != nullptr)
        return QString();
    QStringList traits;
    const QWidget& plain = plainLike(widget);
    for (const char* const name : kTraits)
        if (plain.metaObject()->indexOfProperty(name) >= 0 && traitOf(widget, name) != traitOf(plain, name))
            traits << traitOf(widget, name);
    if (!widget.whatsThis().isEmpty() && widget.whatsThis() != widget.toolTip())
        traits << QStringLiteral("explained ") + quoted(widget.whatsThis());
    const QSizePolicy policy = widget.sizePolicy();
    if (policy.horizontalPolicy() != plain.sizePolicy().horizontalPolicy() ||
        policy.verticalPolicy() != plain.sizePolicy().verticalPolicy())
        traits << QStringLiteral("policy %1;%2").arg(policy.horizontalPolicy()).arg(policy.verticalPolicy());
    const std::pair<bool, const char*> limits[] = {{widget.minimumWidth() > 0, "least width"},
                                                   {widget.maximumWidth() < QWIDGETSIZE_MAX, "most width"},
                                                   {widget.minimumHeight() > 0, "least height"},
                                                   {widget.maximumHeight() < QWIDGETSIZE_MAX, "most height"}};
    for (const auto& [isSet, name] : limits)
        if (isSet)
            traits << QLatin1String(name);
    if (widget.palette().color(QPalette::Active, QPalette::Base) !=
        QApplication::palette(&widget).color(QPalette::Active, QPalette::Base))
        traits << QStringLiteral("coloured");
    if (const auto* const label = qobject_cast<const QLabel*>(&widget);
        label != nullptr && label->buddy() != nullptr)
        traits << QStringLiteral("of ") + QLatin1String(plainLike(*label->buddy()).metaObject()->className());
    if (widget.focusProxy() != nullptr)
        traits << QStringLiteral("leads to ") +
                      QLatin1String(plainLike(*widget.focusProxy()).metaObject()->className());
    const auto* const header = qobject_cast<const QHeaderView*>(&widget);
    if (header != nullptr && header->orientation() == Qt::Horizontal &&
        header->minimumSectionSize() != QHeaderView(header->orientation()).minimumSectionSize())
        traits << QStringLiteral("least %1").arg(header->minimumSectionSize());
    if (header != nullptr)
        for (int i = 0; i < std::min(header->count(), 8); ++i)
            traits << QString::number(header->sectionResizeMode(i)) +
                          QLatin1String(header->isSectionHidden(i) ? "-" : "");
    for (const QShortcut* const keys : widget.findChildren<QShortcut*>(QString(), Qt::FindDirectChildrenOnly))
        traits << QStringLiteral("key ") + keys->key().toString(QKeySequence::PortableText);
    for (const QAction* const action : widget.actions())
        if (widget.isWindow() && !action->shortcut().isEmpty())
            traits << QStringLiteral("action ") + action->shortcut().toString(QKeySequence::PortableText);
    return traits.isEmpty() ? QString()
                            : QStringLiteral(" {") + traits.join(QStringLiteral(", ")) + QLatin1Char('}');
}

}  // namespace veltrac
