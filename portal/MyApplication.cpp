#include "portal/MyApplication.h"

#include <QErrorMessage>
#include <QTextCodec>

#include <clocale>
#include <exception>

#include "core/TsExceptions.h"
#include "portal/Veltrac.h"

namespace {

constexpr int kMibOfAscii = 3;

// In the plain "C" locale names with umlauts would be cut to question marks. File systems hold UTF-8.
void useUnicodeNames()
{
    if (QTextCodec::codecForLocale()->mibEnum() == kMibOfAscii)
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

// The text of the exception in flight. Its blanks and line breaks have always been these; READONLY_VIOLATION
// counts as unknown here.
QString textOfEscapedException()
{
    try {
        throw;
    } catch (const TS::CREATE_ERROR& e) {
        return QStringLiteral("Caught a TS::CREATE_ERROR exception on: ") +
               QString::fromLocal8Bit(e.name.c_str());
    } catch (const TS::OPEN_ERROR& e) {
        return QStringLiteral("Caught a TS::OPEN_ERROR exception on: ") +
               QString::fromLocal8Bit(e.name.c_str());
    } catch (const TS::NOT_TS_FILE&) {
        return QStringLiteral("Caught a TS::NOT_TS_FILE exception\n");
    } catch (const TS::IO_ERROR& e) {
        return QStringLiteral("Caught a TS::IO_ERROR exception\n Offset =%1 \n nbyt =%2 ")
            .arg(e.value1)
            .arg(e.value2);
    } catch (const TS::NO_TIME_COLUMN&) {
        return QStringLiteral("Caught a TS::NO_TIME_COLUMN exception\n");
    } catch (const TS::ILL_SAMPLE&) {
        return QStringLiteral("Caught a TS::ILL_SAMPLE exception\n");
    } catch (const TS::ILL_COLUMN& e) {
        return QStringLiteral("Caught a TS::ILL_COLUMN exception\n Val1 =%1 \n Val2 =%2 ")
            .arg(e.value1)
            .arg(e.value2);
    } catch (const TS::ILL_TIME&) {
        return QStringLiteral("Caught a TS::ILL_TIME exception\n");
    } catch (const std::exception& e) {
        return QString::fromLocal8Bit(e.what());
    } catch (...) {
        return QStringLiteral("Caught an unknown exception\n");
    }
}

}  // namespace

MyApplication::MyApplication(int& argc, char** argv) : QApplication(argc, argv)
{
    // Qt has just set the whole locale to the user's: numbers go back to the decimal point.
    std::setlocale(LC_NUMERIC, "C");
    useUnicodeNames();
    setApplicationName(QStringLiteral("veltrac"));
    setApplicationDisplayName(QString());

    m_mainWindow = std::make_unique<VeltracWin>();
    m_mainWindow->show();
    m_errorBox = new QErrorMessage(m_mainWindow.get());
    m_errorBox->setWindowTitle(QStringLiteral("Veltrac, core"));
}

MyApplication::~MyApplication()
{
    m_errorBox = nullptr;
}

bool MyApplication::notify(QObject* receiver, QEvent* event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        // Before the main window stands, and while it goes, there is nobody to tell.
        if (m_errorBox != nullptr)
            m_errorBox->showMessage(textOfEscapedException());
        return false;
    }
}
