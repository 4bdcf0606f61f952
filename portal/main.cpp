#include <QApplication>

#include <clocale>

#include "portal/MyApplication.h"

int main(int argc, char** argv)
{
    std::setlocale(LC_NUMERIC, "C");
    // Without effect on today's displays, and so no longer liked by Qt.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    QApplication::setColorSpec(QApplication::CustomColor);
    QT_WARNING_POP
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    MyApplication application(argc, argv);
    // A window that fails under a busy cursor leaves the event loop with a code; the program then goes on
    // with a normal cursor.
    while (MyApplication::exec() != 0)
        QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
    return 0;
}
