// What a window tells and offers, line by line: its title, its menus, its fields with what they hold, what is
// off, how they take keys, and what lies beside what. Letters, styles and versions of Qt change nothing of
// it.
#pragma once

#include <QMenu>
#include <QString>
#include <QStringList>
#include <QWidget>

namespace veltrac {

QStringList menusOf(const QWidget& window);
// The entries, with those of the menus behind them.
QStringList entriesIn(QMenu& menu);

// When what is counted and drawn in the background has come.
QStringList calmFieldsOf(const QWidget& window);

// All of it, without what differs between two runs.
QString allToldBy(const QWidget& window);

}  // namespace veltrac
