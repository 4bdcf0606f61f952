// By what a widget differs from one of its kind as Qt makes it.
#pragma once

#include <QString>
#include <QWidget>

namespace veltrac {

// With bars for the ends of its lines.
QString quoted(const QString& text);

// As Qt makes it, of the nearest kind of Qt's own.
const QWidget& plainLike(const QWidget& widget);

// What it has been given besides what it holds.
QString traitsOf(const QWidget& widget);

}  // namespace veltrac
