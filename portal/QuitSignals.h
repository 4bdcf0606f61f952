// Ends the program in good order when the system asks it to with SIGTERM or SIGHUP, so that windows remove
// their scratch files: nobody is asked anything, a job that runs is cancelled.
#pragma once

#include <QObject>

namespace veltrac {

// There is one at a time; the signals have their defaults again when it goes.
class QuitSignals : public QObject
{
    Q_OBJECT

public:
    explicit QuitSignals(QObject* parent = nullptr);
    ~QuitSignals() override;
    QuitSignals(const QuitSignals&) = delete;
    QuitSignals& operator=(const QuitSignals&) = delete;

private:
    void quit();
};

}  // namespace veltrac
