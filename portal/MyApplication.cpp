#include "portal/MyApplication.h"

#include <QErrorMessage>

#include <clocale>

#include "core/TsExceptionTexts.h"
#include "portal/QuitSignals.h"
#include "portal/Veltrac.h"
#include "share/QtCompat.h"

using namespace veltrac;

namespace {

// The blanks and line breaks are wanted; READONLY_VIOLATION counts as unknown here.
constexpr TsExceptionTexts kTexts = {
    .createError = "Caught a TS::CREATE_ERROR exception on: ",
    .openError = "Caught a TS::OPEN_ERROR exception on: ",
    .notTsFile = "Caught a TS::NOT_TS_FILE exception\n",
    .ioError = "Caught a TS::IO_ERROR exception\n Offset =%1 \n nbyt =%2 ",
    .noTimeColumn = "Caught a TS::NO_TIME_COLUMN exception\n",
    .illSample = "Caught a TS::ILL_SAMPLE exception\n",
    .illColumn = "Caught a TS::ILL_COLUMN exception\n Val1 =%1 \n Val2 =%2 ",
    .illTime = "Caught a TS::ILL_TIME exception\n",
    .readOnlyOffset = nullptr,
    .readOnlyName = nullptr,
    .readOnly = nullptr,
    .unknown = "Caught an unknown exception\n",
};

}  // namespace

MyApplication::MyApplication(int& argc, char** argv) : QApplication(argc, argv)
{
    // Qt has just set the whole locale to the user's: numbers go back to the decimal point.
    std::setlocale(LC_NUMERIC, "C");
    useUnicodeNames();
    setApplicationName(QStringLiteral("veltrac"));
    setApplicationDisplayName(QString());

    m_mainWindow = std::make_unique<VeltracWin>();
    setWindowIcon(m_mainWindow->windowIcon());  // of every window that has none of its own
    m_mainWindow->show();
    m_errorBox = new QErrorMessage(m_mainWindow.get());
    m_errorBox->setWindowTitle(QStringLiteral("Veltrac, core"));
    m_quitSignals = std::make_unique<QuitSignals>();
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
            m_errorBox->showMessage(QString::fromLocal8Bit(textOfCurrentException(kTexts).c_str()));
        return false;
    }
}
