// Calculating in Ts-Filt: from the fields to a work file, and its picture.
#include <QFile>
#include <QFileInfo>
#include <QStatusBar>

#include <new>
#include <system_error>

#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "filter/FilterFields.h"
#include "filter/FilterRun.h"
#include "filter/FilterWin.h"
#include "share/Boxes.h"
#include "share/GroupedNumber.h"
#include "share/JobProgress.h"
#include "share/PlotCanvas.h"
#include "share/ReadoutLabel.h"
#include "share/SourceChooser.h"
#include "share/WaitCursor.h"

using namespace veltrac;

namespace {

const QString kTitle = QStringLiteral("Ts-Filt");
constexpr int kFilteringMs = 60000;
constexpr int kFinishedMs = 5000;
constexpr double kWorthAskingSeconds = 5.0;

}  // namespace

std::unique_ptr<TSFILE> FilterWin::openAnew()
{
    std::unique_ptr<TSFILE> file = openSource();
    if (file)
        showRate(samplingFrequency(file->dt()));
    return file;
}

void FilterWin::sl_execute()
{
    if (!requireSource() || !requireColumn("Y1", source()->column()))
        return;
    const FilterRequest asked = m_fields->request();
    const std::unique_ptr<TSFILE> file = openAnew();
    if (!file || !validate(asked))
        return;
    QString failure;
    try {
        calculate(asked, *file);
    } catch (const TS::Failure&) {
        failure = QStringLiteral("%1 could not be read to its end, or the disk is full.").arg(sourceName());
    } catch (const std::system_error& e) {
        failure = QStringLiteral("No scratch file can be made in this directory: %1.")
                      .arg(QString::fromLocal8Bit(e.what()));
    } catch (const std::bad_alloc&) {
        failure = QStringLiteral("There is not enough memory for that many points.");
    }
    if (!failure.isEmpty()) {
        statusBar()->showMessage(QStringLiteral("Nothing was computed"));
        showBox(QMessageBox::Warning, this, kTitle,
                QStringLiteral("The calculation failed: %1\nNo file of yours was changed.").arg(failure));
    }
}

void FilterWin::calculate(const FilterRequest& asked, TSFILE& file)
{
    FidReports reports;
    FidFilterPtr filter;
    if (!asked.isMovingAverage()) {
        filter = designFilter(asked, m_samplingHz);
        if (!filter) {
            tellReports(QString::fromStdString(reports.text()));
            return;
        }
    }
    double seconds = 0.0;
    const FilterOutcome outcome = fillWork(asked, filter.get(), file, seconds);
    if (outcome.outcome == JobOutcome::Cancelled) {
        statusBar()->showMessage(QStringLiteral("Filtering cancelled"), kFinishedMs);
        return;
    }
    tellReports(QString::fromStdString(reports.text()));
    showResult(outcome, seconds, file.timeMode() != 0);
}

// Fills a new work file, which takes the place of the one before when it is whole. The wait cursor is gone
// before any box opens.
FilterOutcome FilterWin::fillWork(const FilterRequest& asked, const FidFilter* filter, TSFILE& file,
                                  double& seconds)
{
    const std::string words =
        filter ? filterSpec(asked) : "Moving average over " + std::to_string(asked.order);
    const WaitCursor waiting;
    statusBar()->showMessage(QStringLiteral("Filtering ongoing..."), kFilteringMs);
    const std::filesystem::path here = std::filesystem::current_path();
    const bool replaces = m_work && m_work->path().parent_path() == here;
    auto made = std::make_unique<ScratchFile>(here, replaces ? "temp1" : "temp", ".ts");
    FilterOutcome outcome;
    {
        const auto work = createTsFile(made->path().string(), file.samples(), 2);
        JobProgress progress(this, QStringLiteral("Filtering %1").arg(sourceName()));
        describeWork(file, source()->column(), *work, words);
        outcome = filter ? runFilter(file, source()->column(), *work, filter, progress.callback())
                         : runMovingAverage(file, source()->column(), *work,
                                            static_cast<std::uint32_t>(asked.order), progress.callback());
        if (outcome.outcome == JobOutcome::Cancelled)
            return outcome;
        work->flush(true);
        seconds = progress.seconds();
    }
    if (replaces)
        made->putInPlace(m_work->path());
    else
        m_work = std::move(made);
    m_sourceFile = QFileInfo(source()->file()).absoluteFilePath();
    m_words = QString::fromStdString(words);
    return outcome;
}

void FilterWin::showResult(const FilterOutcome& outcome, double seconds, bool hasOwnTimes)
{
    const QString work = QFile::decodeName(m_work->path().c_str());
    canvas()->showColumns(work, {1, 2}, PlotCanvas::Axes::ByUnit);
    // Over one another even where the source's description tells no unit.
    std::vector<Group>& groups = canvas()->plot().groups();
    if (groups.size() == 2) {
        groups[0].variables().push_back(groups[1].variables().front());
        groups.pop_back();
        canvas()->plot().fitAll();
    }
    canvas()->plot().xTitle = "Time[s]";
    canvas()->plot().title =
        QStringLiteral("%1: %2").arg(QFileInfo(m_sourceFile).fileName(), m_words).toStdString();
    canvas()->setSuggestedName(QFileInfo(m_sourceFile).completeBaseName() + QStringLiteral("_filt"));
    canvas()->replot();
    QString told = QStringLiteral("%1 samples in %2 s")
                       .arg(groupedNumber(canvas()->plot().variables().front()->variable().rows()))
                       .arg(seconds, 0, 'f', 1);
    if (outcome.missing > 0)
        told += QStringLiteral(", %1 missing values").arg(groupedNumber(outcome.missing));
    if (hasOwnTimes)
        told += QStringLiteral(", taken at equal steps: the file's own times (\"Time\") are not used");
    readout()->showLine(told);
    // Choosing a filter takes many trials, and one comes back with a key: only what took long is asked about.
    resultMade(seconds > kWorthAskingSeconds);
    statusBar()->showMessage(QStringLiteral("Filtering...finished"), kFinishedMs);
}
