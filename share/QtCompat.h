// What Qt 5 and Qt 6 call by different names. Everything else in the program is the same with both.
#pragma once

#include <QApplication>
#include <QColor>
#include <QFontDatabase>
#include <QList>
#include <QPaintEngine>
#include <QPoint>
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QTextCodec>
#endif

class QTreeWidgetItem;

namespace veltrac {

// Where in the widget the mouse was when the event came.
template <typename Event>
QPoint mousePlace(const Event& event)
{
    if constexpr (requires { event.position(); })
        return event.position().toPoint();
    else
        return event.pos();
}

// What the parts of a colour are counted in.
using ColorPart = decltype(QColor().redF());

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)

// How a tree of widgets hands over the items that are dragged.
using DraggedItems = const QList<QTreeWidgetItem*>;

inline constexpr QPaintEngine::Type kPostScriptEngine = QPaintEngine::PostScript;

inline bool hasFontFamily(const QString& family)
{
    return QFontDatabase().hasFamily(family);
}

// What is to be said before there is an application.
inline void prepareApplication()
{
    // Without effect on today's displays, and so no longer liked by Qt.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    QApplication::setColorSpec(QApplication::CustomColor);
    QT_WARNING_POP
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
}

// In the plain "C" locale names with umlauts would be cut to question marks. File systems hold UTF-8.
inline void useUnicodeNames()
{
    constexpr int kMibOfAscii = 3;
    if (QTextCodec::codecForLocale()->mibEnum() == kMibOfAscii)
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

#else

using DraggedItems = const QList<QTreeWidgetItem*>&;

// Qt 6 knows no such engine: one that somebody brings along stands for it.
inline constexpr QPaintEngine::Type kPostScriptEngine = QPaintEngine::User;

inline bool hasFontFamily(const QString& family)
{
    return QFontDatabase::hasFamily(family);
}

// Sharp screens and all colours go without saying, and names are UTF-8 in every locale.
inline void prepareApplication() {}
inline void useUnicodeNames() {}

#endif

}  // namespace veltrac
