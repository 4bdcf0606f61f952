// Shows how far a long job is, with a Cancel button, before it has taken half a second.
//
// Jobs run on the GUI thread; while one runs, the dialog is modal to the whole program, so no window
// starts another one or closes under it. Until it comes, windows are drawn but hear no key and no mouse: what
// the user presses meanwhile reaches them when a short job is done. Of a long one, Escape cancels it and the
// rest counts for nothing, as it does behind the dialog.
#pragma once

#include <QElapsedTimer>
#include <QString>

#include <memory>

#include "core/Progress.h"

class QProgressDialog;
class QWidget;

namespace veltrac {

class JobProgress
{
public:
    // `what` is shown above the bar: "Reading test.tsa". The parent may be null.
    JobProgress(QWidget* parent, const QString& what);
    ~JobProgress();
    JobProgress(const JobProgress&) = delete;
    JobProgress& operator=(const JobProgress&) = delete;

    // False once the user has cancelled. Looks at the clock, and lets windows be drawn and the dialog be
    // used twenty times a second, for which it has to be called as often.
    bool operator()(std::uint64_t done, std::uint64_t total);
    // This object as the job takes it; it must outlive the job.
    Progress callback();
    bool wasCancelled() const noexcept { return m_cancelled; }
    // Seconds since the job began, for "… in 0.4 s".
    double seconds() const;

    // Lives while the job waits for the user's answer to a question, which is none of the job's time.
    class Pause
    {
    public:
        explicit Pause(JobProgress& job) : m_job(job), m_began(job.m_clock.elapsed()) {}
        ~Pause() { m_job.m_paused += m_job.m_clock.elapsed() - m_began; }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        JobProgress& m_job;
        qint64 m_began;
    };

    // True while any job runs in the program.
    static bool isRunning() noexcept { return s_running > 0; }
    // The number of the job that was begun last: tells one calculation from the next.
    static std::uint64_t serial() noexcept { return s_serial; }

private:
    void show();
    bool takeEarlyInput() const;
    qint64 elapsed() const { return m_clock.elapsed() - m_paused; }

    QWidget* m_parent;
    QString m_what;
    std::unique_ptr<QProgressDialog> m_dialog;
    QElapsedTimer m_clock;
    qint64 m_paused = 0;    // milliseconds
    qint64 m_nextLook = 0;  // milliseconds
    bool m_cancelled = false;
    inline static int s_running = 0;
    inline static std::uint64_t s_serial = 0;
};

}  // namespace veltrac
