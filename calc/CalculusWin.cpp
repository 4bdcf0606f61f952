#include "calc/CalculusWin.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

#include <cmath>

#include "core/ColumnCopy.h"
#include "core/ScratchFile.h"
#include "core/TsExceptions.h"
#include "core/TsHeader.h"
#include "core/Variable.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/GroupedNumber.h"
#include "share/HeaderText.h"
#include "share/JobProgress.h"
#include "share/PlotCanvas.h"
#include "share/QtMessageWin.h"
#include "share/ReadoutLabel.h"
#include "share/SourceChooser.h"
#include "share/hydaction.h"

namespace veltrac {

namespace {

constexpr int kComputingMs = 60000;
constexpr int kDoneMs = 5000;
constexpr int kSavedMs = 6000;
constexpr int kAbortedMs = 2000;
constexpr int kPanelWidth = 250;
const char* const kFilter = "*.ts, *.Ts, *.TS, *.tS";

bool isSameFile(const QString& a, const QString& b)
{
    return QFileInfo(a).canonicalFilePath() == QFileInfo(b).canonicalFilePath();
}

// What the user means who types "result": the file result.ts, unless one of just that name is there.
QString targetName(const QString& typed)
{
    const bool isWhole = typed.endsWith(QLatin1String(".ts"), Qt::CaseInsensitive) || QFile::exists(typed);
    return isWhole ? typed : typed + QStringLiteral(".ts");
}

bool replacesTimes(const TSFILE& target)
{
    const auto isReplaced = [](std::uint32_t column) { return column == 1 || column == 2; };
    return isReplaced(target.timeColumn()) || isReplaced(target.time32Column());
}

}  // namespace

CalculusWin::CalculusWin(const CalculusKind& kind, const QString& file, unsigned column, QWidget* parent)
    : ResultWindow(QString::fromLatin1(kind.title), QString::fromLatin1(kind.icon), kPanelWidth, parent),
      m_kind(kind)
{
    panel()->addSpacing(8);
    panel()->addWidget(readout(), 1);
    createActions();
    connect(this, SIGNAL(windowGone(subWindow)), this, SLOT(sl_subwindowGone(subWindow)));
    source()->choose(file, column);
    canvas()->showText(QStringLiteral("Choose a file and a column, then execute the calculation."));
    statusBar()->showMessage(QString::fromLatin1(kind.greeting));
    resize(960, 560);
}

CalculusWin::~CalculusWin()
{
    dropWork();
}

void CalculusWin::createActions()
{
    auto* const help = new HydAction(QStringLiteral("Help"), QKeySequence(Qt::Key_F1), this, SLOT(sl_help()),
                                     QStringLiteral("&Help"), QStringLiteral("Open a brief help window"));
    const QString tip = QString::fromLatin1(m_kind.executeTip);
    auto* const execute = new HydAction(
        QStringLiteral("Execute"), QKeySequence(QStringLiteral("Ctrl+Return")), this, SLOT(sl_execute()),
        QStringLiteral("Execute calculation..."), tip, whatsThisText(QStringLiteral("Execute"), tip));
    auto* const save = new HydAction(QString::fromLatin1(m_kind.saveImage),
                                     QKeySequence(QStringLiteral("Ctrl+S")), this, SLOT(sl_saveResults()),
                                     QStringLiteral("Save results..."), QStringLiteral("Save results."));

    QMenu* const actions = menuBar()->addMenu(QStringLiteral("&Actions"));
    actions->addActions({execute, save, help});
    addWhatsThis(actions);
    actions->addSeparator();
    actions->addAction(QStringLiteral("&Close"), this, &QWidget::close, QKeySequence::Close);
    if (m_kind.hasSelections)
        fillSourceMenu(*menuBar()->addMenu(QStringLiteral("&Selections")));
    addCanvasMenus();

    QToolBar* const bar = addToolBar(QStringLiteral("Actions"));
    bar->addActions({execute, save, help});
}

void CalculusWin::sl_help()
{
    showHelp(nullptr, QString::fromLatin1(m_kind.helpName), QString::fromLatin1(m_kind.helpTitle));
}

// -- Computing --

void CalculusWin::sl_execute()
{
    if (!requireColumn("Y1", source()->column()))
        return;
    resultGone();
    m_cursor.emplace();
    statusBar()->showMessage(QStringLiteral("Computing..."), kComputingMs);
    JobOutcome outcome = JobOutcome::Done;
    QString failure;
    double seconds = 0.0;
    try {
        JobProgress progress(this, QStringLiteral("%1: %2").arg(windowTitle(), sourceName()));
        if (!prepare(partOf(progress.callback(), 0, 50), outcome))
            return;  // the wait cursor stays on purpose until the next calculation
        if (m_work && outcome == JobOutcome::Done)
            outcome = m_kind.compute(*m_work, m_work->dt(), partOf(progress.callback(), 50, 100));
        if (m_work && outcome == JobOutcome::Done) {
            m_work->stampColumn(2);
            m_work->flush(true);
        }
        seconds = progress.seconds();
    } catch (const TS::Failure&) {
        failure = QStringLiteral(
                      "The calculation failed: %1 could not be read to its end, or the scratch directory "
                      "took no more.\nNo file of yours was changed.")
                      .arg(sourceName());
    }
    m_cursor.reset();

    if (!failure.isEmpty() || outcome == JobOutcome::Cancelled || !m_work) {
        dropWork();
        canvas()->showText(QStringLiteral("Nothing was computed."));
        statusBar()->showMessage(outcome == JobOutcome::Cancelled ? QStringLiteral("Cancelled")
                                                                  : QStringLiteral("Nothing was computed"));
        if (!failure.isEmpty())
            showBox(QMessageBox::Warning, this, windowTitle(), failure);
        return;
    }
    resultMade();
    statusBar()->showMessage(QString::fromLatin1(m_kind.doneText), kDoneMs);
    showResult();
    tellResult(seconds);
}

// Makes the scratch file and fills its first column. False where there is no scratch file; a source that is
// refused leaves none behind and is told to the user.
bool CalculusWin::prepare(const Progress& progress, JobOutcome& outcome)
{
    const std::unique_ptr<TSFILE> file = openSource();
    if (!file)
        return false;
    dropWork();
    if (refuses(*file))
        return true;

    // No dot in the name: what follows one would be taken for an extension.
    const QString pattern = QFile::decodeName(scratchDirectory().c_str()) + QStringLiteral("/veltrac-XXXXXX");
    m_reservation = std::make_unique<QTemporaryFile>(pattern);
    if (!m_reservation->open()) {
        statusBar()->showMessage(
            QStringLiteral("No scratch file can be made in %1").arg(QFileInfo(pattern).path()));
        return false;
    }
    const QString name = m_reservation->fileName();
    m_work.reset(TsApplication::instance()->CreateTs(name, file->samples(), 2));
    if (!m_work) {
        statusBar()->showMessage(
            QStringLiteral("The scratch file could not be made. Is %1 full?").arg(QFileInfo(name).path()));
        dropWork();
        return false;
    }
    m_workName = name + QStringLiteral(".ts");
    m_sourceName = QFileInfo(source()->file()).absoluteFilePath();
    const unsigned column = source()->column();
    // Oldest first, as plots show a ring file: neighbours in time are neighbours here.
    const std::uint32_t oldest = oldestRow(*file);
    copyHeaderFromOldest(*file, *m_work);
    m_work->columnName(1, std::string(file->columnName(column)).c_str());
    m_work->columnName(2, m_kind.resultName);
    m_work->columnDescription(1, std::string(file->columnDescription(column)).c_str());
    describeResult();
    outcome = walkRuns(m_work->samples(), progress, [&](std::uint32_t first, std::span<float> run) {
        file->readColumn(column, oldest - 1 + first, run);
        m_work->writeColumn(1, first, run);
    });
    return true;
}

// The unit of "Force [kN]" becomes kN/s or kN·s; one that is a quotient itself gets parentheses.
void CalculusWin::describeResult()
{
    const auto text = [](std::string_view utf8) { return QString::fromStdString(std::string(utf8)); };
    const QString source = headerText(m_work->columnName(1));
    const std::string description = headerText(m_work->columnDescription(1)).toStdString();
    const std::string times = headerText(m_work->timeUnit()).toStdString();
    QString unit = text(unitIn(description));
    if (unit.contains(QLatin1Char('/')))
        unit = QStringLiteral("(%1)").arg(unit);
    if (!unit.isEmpty())
        unit = QString::fromUtf8(m_kind.resultUnit)
                   .arg(unit, unitIn(times).empty() ? QStringLiteral("s") : text(unitIn(times)));
    m_work->columnDescription(
        2, descriptionBytes(QString::fromUtf8(m_kind.resultText).arg(source), unit).constData());
}

bool CalculusWin::refuses(TSFILE& file)
{
    QString reason;
    if (!(file.dt() > 0.0F) || !std::isfinite(file.dt()))
        reason = QStringLiteral("The sample time of %1 is not above 0.\nSet it in the header editor first.");
    else if (file.samples() == 0)
        reason = QStringLiteral("%1 has no samples.");
    else if (tsFileBytes(file.samples(), 2) >= kFileLimit)
        reason = QStringLiteral(
            "%1 is too long: column and result together are more than the 2 GB that a ts-file can have.");
    if (reason.isEmpty())
        return false;
    m_cursor.reset();
    showBox(QMessageBox::Warning, this, windowTitle(), reason.arg(sourceName()));
    return true;
}

void CalculusWin::showResult()
{
    const unsigned columns = m_work ? m_work->columns() : 0;
    if (!requireColumn("Y1", columns > 0 ? 1 : 0) || !requireColumn("Y2", columns > 1 ? 2 : 0))
        return;
    canvas()->showColumns(m_workName, {1, 2}, PlotCanvas::Axes::OneEach);
    canvas()->setSuggestedName(QFileInfo(m_sourceName).completeBaseName() + QStringLiteral("_calc"));
}

void CalculusWin::tellResult(double seconds)
{
    QString told =
        QStringLiteral("%1 samples in %2 s").arg(groupedNumber(m_work->samples())).arg(seconds, 0, 'f', 1);
    const Group::Variables shown = canvas()->plot().variables();
    const std::uint64_t missing = shown.empty() || !shown.back()->isBuilt()
                                      ? 0
                                      : shown.back()->statistics(1, m_work->samples()).missing;
    if (missing > 0)
        told += QStringLiteral(", %1 missing values. ").arg(groupedNumber(missing)) +
                QString::fromLatin1(m_kind.missingNote);
    readout()->showLine(told);
}

// -- Saving --

void CalculusWin::sl_saveResults()
{
    if (!m_work) {
        statusBar()->showMessage(QStringLiteral("There is nothing to save: execute the calculation first"));
        return;
    }
    if (resultName().isEmpty()) {
        const QString name =
            QFileDialog::getSaveFileName(this, QStringLiteral("Save results."), QDir::currentPath(),
                                         QLatin1String(kFilter), nullptr, QFileDialog::DontConfirmOverwrite);
        if (name.isEmpty()) {
            statusBar()->showMessage(QStringLiteral("Saving aborted"), kAbortedMs);
            return;
        }
        setResultName(targetName(name));
    }
    statusBar()->clearMessage();  // it told of the calculation, or of another file
    std::unique_ptr<TSFILE> target = openTarget(resultName());
    if (!target) {
        setResultName(QString());
        return;
    }
    if (saveInto({std::move(target), QFile::encodeName(resultName()).toStdString()})) {
        m_work.reset();
        resultSaved();
        emit x_directory_changed();
    }
}

// Null where the results cannot, or shall not, go into the file; the user knows why.
std::unique_ptr<TSFILE> CalculusWin::openTarget(const QString& name)
{
    if (!mayReplace(name))
        return nullptr;
    TsApplication* const application = TsApplication::instance();
    std::unique_ptr<TSFILE> target(application == nullptr ? nullptr : application->OpenTs(name, false));
    if (!target) {
        statusBar()->showMessage(QStringLiteral("%1 is no ts-file that can be written. Nothing was saved")
                                     .arg(QFileInfo(name).fileName()));
        return nullptr;
    }
    if (target->columns() < 2) {
        showBox(
            QMessageBox::Warning, this, windowTitle(),
            QStringLiteral("%1 has only one column; the results need two.\nNothing was saved.").arg(name));
        return nullptr;
    }
    if (oldestRow(*target) != 1) {
        showBox(QMessageBox::Warning, this, windowTitle(),
                QStringLiteral("%1 is a ring file that does not begin with its oldest sample; the results "
                               "do.\nNothing was saved.")
                    .arg(name));
        return nullptr;
    }
    if (replacesTimes(*target) &&
        !askYesNo(QMessageBox::Question, this, windowTitle(),
                  QStringLiteral("The times of %1 stand in the columns that will be replaced.\nProceed?")
                      .arg(name)))
        return nullptr;
    return target;
}

bool CalculusWin::mayReplace(const QString& name)
{
    return mayWrite(name) &&
           (!isSameFile(name, m_sourceName) ||
            askYesNo(QMessageBox::Question, this, windowTitle(),
                     QStringLiteral(
                         "%1 is the source file itself.\nIts columns 1 and 2 will be replaced. Proceed?")
                         .arg(name)));
}

bool CalculusWin::saveInto(ColumnTarget target)
{
    std::filesystem::path oldValues;
    try {
        JobProgress progress(this, QStringLiteral("Saving %1").arg(resultName()));
        const CalculusSave save = saveResult(*m_work, target, progress.callback(), oldValues);
        if (save.outcome == JobOutcome::Cancelled) {
            statusBar()->showMessage(QStringLiteral("Saving aborted"), kAbortedMs);
            return false;
        }
        QString told = QStringLiteral("File %1 saved").arg(resultName());
        if (m_work->samples() != target.file->samples())
            told += QStringLiteral(" (%1 of %2 samples; the file has %3)")
                        .arg(save.copied)
                        .arg(m_work->samples())
                        .arg(target.file->samples());
        statusBar()->showMessage(told, kSavedMs);
        return true;
    } catch (...) {
        const QString kept = oldValues.empty()
                                 ? QStringLiteral("The file is as it was.")
                                 : QStringLiteral("Its old values could not be put back; they lie in %1.")
                                       .arg(QFile::decodeName(oldValues.c_str()));
        showBox(QMessageBox::Warning, this, windowTitle(),
                QStringLiteral("%1 could not be written.\n%2").arg(resultName(), kept));
        return false;
    }
}

// -- Closing --

void CalculusWin::sl_subwindowGone(subWindow /*window*/)
{
    dropWork();
}

void CalculusWin::dropWork()
{
    m_work.reset();
    if (!m_workName.isEmpty())
        QFile::remove(m_workName);
    m_workName.clear();
    m_reservation.reset();
}

}  // namespace veltrac
