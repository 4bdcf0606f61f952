#include <clocale>

#include "portal/MyApplication.h"
#include "share/QtCompat.h"

int main(int argc, char** argv)
{
    std::setlocale(LC_NUMERIC, "C");
    veltrac::prepareApplication();
    MyApplication application(argc, argv);
    // A window that fails under a busy cursor leaves the event loop with a code; the program then goes on
    // with a normal cursor.
    while (MyApplication::exec() != 0)
        QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
    return 0;
}
