// The application object: the one main window, and the last line of defence around all events.
#pragma once

#include <QApplication>

#include <memory>

class QErrorMessage;
class VeltracWin;

namespace veltrac {

class QuitSignals;

}  // namespace veltrac

class MyApplication : public QApplication
{
    Q_OBJECT

public:
    // Builds and shows the main window. `argc` must live as long as the application.
    MyApplication(int& argc, char** argv);
    ~MyApplication() override;

    // An exception that escapes an event handler is shown in a box; the event counts as not handled and the
    // program goes on.
    bool notify(QObject* receiver, QEvent* event) override;

private:
    std::unique_ptr<VeltracWin> m_mainWindow;
    std::unique_ptr<veltrac::QuitSignals> m_quitSignals;
    QErrorMessage* m_errorBox = nullptr;  // the main window owns it
};
