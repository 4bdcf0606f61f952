// What a user sees of a long job: when its progress box comes, how long the program does not answer at the
// longest, and how soon it obeys Cancel. Each job is started as the windows do it, on the offscreen platform.
//
// Usage: veltrac_bench_gaps [samples, 50000000 by default] [part of a job's name]
#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QProgressDialog>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "calc/SpectrumFields.h"
#include "converters/STLObject.h"
#include "converters/TsaDialogs.h"
#include "core/ColumnCopy.h"
#include "core/CopyFile.h"
#include "core/Interval.h"
#include "core/PlotFile.h"
#include "core/Rebuild.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "formula/EditTsWin1.h"
#include "formula/EditVariable.h"
#include "portal/MyApplication.h"
#include "portal/TsApplication.h"
#include "share/JobProgress.h"
#include "share/PlotCanvas.h"
#include "share/SubWindow.h"
#include "share/ValuePlots.h"

using namespace veltrac;

namespace {

// -- The watch --

// Beats in the event loop while a job runs, answers the job's questions, and cancels it where that is asked.
class Watch
{
public:
    Watch()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(1);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { beat(); });
    }

    // `cancelAt`: milliseconds; below 0 never. What a file dialog answers is `answer`.
    void begin(double cancelAt, const QString& answer)
    {
        m_cancelAt = cancelAt;
        m_answer = answer;
        longestGap = 0.0;
        gapAt = 0.0;
        shownAfter = cancelledAt = -1.0;
        m_clock.start();
        m_last = 0.0;
        m_timer.start();
    }

    double end()
    {
        gap(now());
        m_timer.stop();
        return m_last;
    }

    double longestGap = 0.0;
    double gapAt = 0.0;        // when it ended
    double shownAfter = -1.0;  // below 0: there was no box
    double cancelledAt = -1.0;

private:
    double now() const { return static_cast<double>(m_clock.nsecsElapsed()) / 1e6; }

    void gap(double at)
    {
        if (at - m_last > longestGap) {
            longestGap = at - m_last;
            gapAt = at;
        }
        m_last = at;
    }

    void beat()
    {
        gap(now());
        QWidget* const box = QApplication::activeModalWidget();
        if (auto* const progress = qobject_cast<QProgressDialog*>(box)) {
            if (shownAfter < 0.0)
                shownAfter = m_last;
            if (m_cancelAt >= 0.0 && m_last >= m_cancelAt && cancelledAt < 0.0) {
                cancelledAt = m_last;
                progress->cancel();
            }
        } else if (box != nullptr) {
            answer(*box);
            m_last = now();  // the user thought meanwhile
        }
    }

    void answer(QWidget& box) const
    {
        if (auto* const files = qobject_cast<QFileDialog*>(&box)) {
            files->selectFile(m_answer);
            QMetaObject::invokeMethod(files, "accept", Qt::QueuedConnection);
        } else if (auto* const input = qobject_cast<QInputDialog*>(&box)) {
            input->setTextValue(m_answer);
            input->accept();
        } else if (auto* const message = qobject_cast<QMessageBox*>(&box);
                   message && message->defaultButton()) {
            message->defaultButton()->click();
        } else {
            box.close();
        }
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    double m_last = 0.0;
    double m_cancelAt = -1.0;
    QString m_answer;
};

// -- The files --

const char* const kOne = "one.ts";
const char* const kTwo = "two.ts";
const char* const kText = "text.tsa";
const char* const kLog = "log.stl";

void makeFile(const char* name, std::uint32_t samples, std::uint32_t columns)
{
    const auto file = createTsFile(name, samples, columns);
    file->dt(0.001F);
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0.0F, 0.1F);
    std::vector<float> rows(std::size_t{columns} << 14);
    for (float& v : rows)
        v = noise(random) + std::sin(static_cast<float>(&v - rows.data()) * 0.01F);
    const std::uint32_t run = 1U << 14;
    for (std::uint32_t done = 0; done < samples; done += run)
        file->writeRows(done + 1, std::min(run, samples - done), rows.data());
    file->flush(true);
}

void makeLog(std::uint32_t samples)
{
    std::FILE* const file = std::fopen(kLog, "wb");
    std::fputs("Time;Temp\n", file);
    for (std::uint32_t i = 0; i < samples; ++i)
        std::fprintf(file, "%u,%03u;%u,%02u\n", i / 1000, i % 1000, 20 + i % 7, i % 100);
    std::fclose(file);
}

// -- The jobs --

struct Job
{
    const char* name;
    // Opens what the job is started in; may be empty.
    std::function<QWidget*()> window;
    std::function<void(QWidget*)> run;
    const char* answer = "";
};

QWidget* open(SubProgram kind, const char* file)
{
    return TsApplication::instance()->openSubProgram(kind, QString::fromLatin1(file), 1);
}

std::function<QWidget*()> windowOf(SubProgram kind, const char* file = kOne)
{
    return [kind, file] { return open(kind, file); };
}

std::function<void(QWidget*)> slot(const char* name)
{
    return [name](QWidget* window) { QMetaObject::invokeMethod(window, name); };
}

void removeMade()
{
    for (const char* const name : {"made.ts", "made.tsa", "new.ts", "log.ts"})
        std::filesystem::remove(name);
}

// What a window does that has no slot for it.
std::function<void(QWidget*)> withProgress(std::function<JobOutcome(const Progress&)> job)
{
    return [job = std::move(job)](QWidget*) {
        JobProgress progress(nullptr, QStringLiteral("Working"));
        job(progress.callback());
    };
}

QWidget* formulaWindow()
{
    QWidget* const window = open(SubProgram::Formula, kTwo);
    dynamic_cast<EditTsWin*>(window)->sl_addSource();
    window->findChildren<EditVariable*>().at(1)->choose(QString::fromLatin1(kTwo), 2);
    for (QComboBox* const box : window->findChildren<QComboBox*>())
        if (box->accessibleName() == QLatin1String("Target row"))
            box->setCurrentIndex(1);
    for (QLineEdit* const field : window->findChildren<QLineEdit*>())
        if (field->accessibleName() == QLatin1String("Formula"))
            field->setText(QStringLiteral("sqrt(x1^2+x1)*1.5"));
    return window;
}

QWidget* averagedSpectrum()
{
    QWidget* const window = open(SubProgram::Spectrum, kOne);
    window->findChild<SpectrumFields*>()->useSegments();
    return window;
}

QWidget* movingAverage()
{
    QWidget* const window = open(SubProgram::Filter, kOne);
    for (QComboBox* const box : window->findChildren<QComboBox*>())
        if (box->findText(QStringLiteral("Moving"), Qt::MatchStartsWith) >= 0)
            box->setCurrentIndex(box->findText(QStringLiteral("Moving"), Qt::MatchStartsWith));
    return window;
}

// Opens a plot of values by the first entry of its menu.
std::function<void(QWidget*)> valuePlot(void (*addMenu)(QMenu&, SubWindow&, PlotCanvas&))
{
    return [addMenu](QWidget* window) {
        QMenu menu;
        addMenu(menu, dynamic_cast<SubWindow&>(*window), *window->findChild<PlotCanvas*>());
        QAction* entry = menu.actions().front();
        while (entry->menu() != nullptr)
            entry = entry->menu()->actions().front();
        entry->trigger();
    };
}

// Until nothing is left to be computed beside the event loop.
void selectAll(QWidget* window)
{
    QMetaObject::invokeMethod(window, "sl_selectAll");
    for (QElapsedTimer clock =
             [] {
                 QElapsedTimer t;
                 t.start();
                 return t;
             }();
         clock.elapsed() < 4000;)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

std::vector<Job> jobs(std::uint32_t samples)
{
    const auto executed = slot("sl_execute");
    const auto result = [](SubProgram kind) {
        return [kind] {
            QWidget* const window = open(kind, kOne);
            QMetaObject::invokeMethod(window, "sl_execute");
            return window;
        };
    };
    return {
        {"first picture, all columns", {}, [](QWidget*) { open(SubProgram::Plot, kTwo); }},
        {"first picture, one column", {}, [](QWidget*) { open(SubProgram::PlotColumn, kOne); }},
        {"histogram", windowOf(SubProgram::Plot, kTwo), valuePlot(addHistogramMenu)},
        {"X-Y plot", windowOf(SubProgram::Plot, kTwo), valuePlot(addXyMenus)},
        {"derivative", windowOf(SubProgram::Derivative), executed},
        {"integral", windowOf(SubProgram::Integral), executed},
        {"filter", windowOf(SubProgram::Filter), executed},
        {"moving average", movingAverage, executed},
        {"spectrum, whole range", windowOf(SubProgram::Spectrum), executed},
        {"spectrum, averaged", averagedSpectrum, executed},
        {"formula", formulaWindow, slot("sl_calculate")},
        {"derivative, saved", result(SubProgram::Derivative), slot("sl_saveResults"), kTwo},
        {"spectrum, saved", result(SubProgram::Spectrum), slot("sl_saveResults"), "made.ts"},
        {"list: maximum", windowOf(SubProgram::List), slot("sl_findmax")},
        {"list: average", windowOf(SubProgram::List), slot("sl_findaverage")},
        {"list: statistics", windowOf(SubProgram::List), selectAll},
        {"create 2 GB",
         {},
         [](QWidget*) {
             delete TsApplication::instance()->CreateTs(QStringLiteral("made"), 500'000'000, 1);
         }},
        {"save as", {}, withProgress([](const Progress& progress) {
             const auto from = openTsFile(kOne, true);
             return copyWholeFile(from->descriptor(), "made.ts", progress);
         })},
        {"interval", {}, withProgress([samples](const Progress& progress) {
             return saveInterval(PlotFile(kOne), 3, samples - 3, "made.ts", progress);
         })},
        {"rebuild", {}, withProgress([samples](const Progress& progress) {
             return rebuildTsFileAs(kOne, "made.ts", samples, 2, progress, {});
         })},
        {"tsa export",
         {},
         [](QWidget*) {
             exportTsaTo(nullptr, QString::fromLatin1(kOne), QStringLiteral("made.tsa"), 1, UINT32_MAX);
         }},
        {"tsa import", {}, [](QWidget*) { importTsa(nullptr, QString::fromLatin1(kText)); }},
        {"stl check", {}, withProgress([](const Progress& progress) {
             STLObject log(kLog);
             log.detect();
             return log.check(progress);
         })},
        {"stl import", {}, withProgress([](const Progress& progress) {
             STLObject log(kLog);
             log.detect();
             return log.check(partOf(progress, 0, 50)) == JobOutcome::Cancelled
                        ? JobOutcome::Cancelled
                        : importSTL(log, "made.ts", partOf(progress, 50, 100));
         })},
    };
}

// -- The report --

struct Outcome
{
    double took = 0.0;
    double gap = 0.0;
    double gapAt = 0.0;
    double shown = -1.0;
    double afterCancel = -1.0;
};

Outcome runOnce(const Job& job, double cancelAt)
{
    removeMade();
    Watch watch;
    const QPointer<QWidget> window = job.window ? job.window() : nullptr;
    for (int i = 0; i < 20; ++i)
        QApplication::processEvents();
    watch.begin(cancelAt, QString::fromLatin1(job.answer));
    job.run(window);
    // What the job leaves to be drawn belongs to it.
    QApplication::processEvents();
    Outcome outcome;
    outcome.took = watch.end();
    outcome.gap = watch.longestGap;
    outcome.gapAt = watch.gapAt;
    outcome.shown = watch.shownAfter;
    if (watch.cancelledAt >= 0.0)
        outcome.afterCancel = outcome.took - watch.cancelledAt;
    for (QWidget* const widget : QApplication::topLevelWidgets())
        if (widget != dynamic_cast<QWidget*>(TsApplication::instance()) && widget->isVisible()) {
            QTimer::singleShot(0, [] {
                if (auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
                    for (QAbstractButton* const button : box->buttons())
                        if (button->text().contains(QLatin1String("No")))
                            button->click();
            });
            widget->close();
        }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return outcome;
}

void report(const Job& job)
{
    const Outcome whole = runOnce(job, -1.0);
    double slowest = -1.0;
    for (const double share : {0.0, 0.3, 0.5, 0.7, 0.9, 0.97})
        slowest = std::max(slowest, runOnce(job, share * whole.took).afterCancel);
    const auto cell = [](double ms) {
        return ms < 0.0 ? std::string("      -") : QString::asprintf("%7.0f", ms).toStdString();
    };
    std::printf("%-28s %s %s %s %s %s\n", job.name, cell(whole.took).c_str(), cell(whole.shown).c_str(),
                cell(whole.gap).c_str(), cell(whole.gapAt).c_str(), cell(slowest).c_str());
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    // What the platform cannot do is no news.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QTemporaryDir directory;
    std::filesystem::current_path(QFile::encodeName(directory.path()).toStdString());
    setenv("TMPDIR", std::filesystem::current_path().c_str(), 1);
    const std::uint32_t samples = argc > 1 ? static_cast<std::uint32_t>(std::atol(argv[1])) : 50'000'000;
    const std::string wanted = argc > 2 ? argv[2] : "";
    makeFile(kOne, samples, 1);
    makeFile(kTwo, samples, 2);
    int count = 1;
    MyApplication application(count, argv);
    const auto contains = [&](const char* name) {
        return std::string(name).find(wanted) != std::string::npos;
    };
    if (contains("tsa import"))
        exportTsaTo(nullptr, QString::fromLatin1(kOne), QString::fromLatin1(kText), 1, UINT32_MAX);
    if (contains("stl check") || contains("stl import"))
        makeLog(samples);
    std::printf("%u samples; milliseconds\n%-28s %7s %7s %7s %7s %7s\n", samples, "", "took", "box", "gap",
                "at", "cancel");
    for (const Job& job : jobs(samples))
        if (contains(job.name))
            report(job);
    return 0;
}
