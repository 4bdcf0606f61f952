#include "calc/CalculusWin.h"

#include <QCheckBox>
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
#include "core/NumberTexts.h"
#include "core/ScratchFile.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsHeader.h"
#include "core/TsNames.h"
#include "portal/TsApplication.h"
#include "share/ActionRow.h"
#include "share/Boxes.h"
#include "share/GroupedNumber.h"
#include "share/JobProgress.h"
#include "share/PlotCanvas.h"
#include "share/QtMessageWin.h"
#include "share/RangeFields.h"
#include "share/ReadoutLabel.h"
#include "share/SourceChooser.h"
#include "share/TargetFile.h"
#include "share/hydaction.h"

namespace veltrac {

namespace {

constexpr int kDoneMs = 5000;
constexpr int kAbortedMs = 2000;
constexpr int kCalculusPanelWidth = 250;

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
    : ResultWindow(QString::fromLatin1(kind.title), QString::fromLatin1(kind.icon), kCalculusPanelWidth,
                   parent),
      m_kind(kind),
      m_ownTimes(new QCheckBox(QStringLiteral("By its o&wn times (\"Time\")")))
{
    m_ownTimes->setToolTip(
        QStringLiteral("The steps are those of the file's column \"Time\", else its sample time."));
    panel()->addWidget(m_ownTimes);
    panel()->addSpacing(8);
    panel()->addWidget(readout(), 1);
    createActions();
    connect(this, SIGNAL(windowGone(subWindow)), this, SLOT(sl_subwindowGone(subWindow)));
    source()->choose(file, column);
    canvas()->showText(QStringLiteral("Choose a file and a column, then execute the calculation."));
    statusBar()->showMessage(QString::fromLatin1(kind.greeting));
    resize(960, 560);
}

void CalculusWin::createActions()
{
    enum class Id { Execute, Save, Help };
    const ActionRow<Id> rows[] = {
        {Id::Execute, "Execute", "Ctrl+Return", SLOT(sl_execute()), "Execute calculation...",
         m_kind.executeTip},
        {Id::Save, m_kind.saveImage, "Ctrl+S", SLOT(sl_saveResults()), "Save results...", "Save results."},
        {Id::Help, "Help", "F1", SLOT(sl_help()), "&Help", "Open a brief help window"}};
    m_execute = makeAction(this, this, rows[0]);
    QAction* const save = makeAction(this, this, rows[1]);
    QAction* const help = makeAction(this, this, rows[2]);

    QMenu* const actions = menuBar()->addMenu(QStringLiteral("&Actions"));
    actions->addActions({m_execute, save, help});
    addWhatsThis(actions);
    actions->addSeparator();
    actions->addAction(QStringLiteral("&Close"), this, &QWidget::close)->setShortcut(QKeySequence::Close);
    if (m_kind.hasSelections)
        fillSourceMenu(*menuBar()->addMenu(QStringLiteral("&Selections")));
    addCanvasMenus();

    QToolBar* const bar = addToolBar(QStringLiteral("Actions"));
    bar->addActions({m_execute, save, help});
}

void CalculusWin::sl_help()
{
    showHelp(nullptr, QString::fromLatin1(m_kind.helpName), QString::fromLatin1(m_kind.helpTitle));
}

// -- Computing --

void CalculusWin::sourceChanged(TSFILE* file)
{
    const bool hasTimes = file != nullptr && file->timeColumn() != 0;
    m_ownTimes->setEnabled(hasTimes);
    if (!hasTimes)
        m_ownTimes->setChecked(false);
    rangeChanged();
}

void CalculusWin::rangeChanged()
{
    m_execute->setEnabled(range()->reason().isEmpty());
}

void CalculusWin::sl_execute()
{
    if (!requireSource() || !requireColumn("Y1", source()->column()))
        return;
    if (!range()->reason().isEmpty()) {
        statusBar()->showMessage(range()->reason());
        return;
    }
    QString remark;
    const auto job = [&](const Progress& progress, std::unique_ptr<ResultFile>& made) {
        const std::unique_ptr<TSFILE> file = openSource();
        if (!file)
            return JobOutcome::Done;
        const SourceColumn column(*file, source()->column(), range()->from(), range()->to());
        if (const QString reason = refusalOf(column); !reason.isEmpty())
            throw Refusal{reason};
        made = ResultFile::temporary(column.samples(), 2);
        if (!made) {
            statusBar()->showMessage(QStringLiteral("No scratch file can be made in %1. Is it full?")
                                         .arg(QFile::decodeName(scratchDirectory().c_str())));
            return JobOutcome::Done;
        }
        const bool own = m_ownTimes->isChecked() && file->timeColumn() != 0;
        if (file->timeColumn() != 0)
            remark =
                own ? QStringLiteral(", by the file's own times (\"Time\")")
                    : QStringLiteral(", taken at equal steps: the file's own times (\"Time\") are not used");
        TSFILE& work = made->file();
        if (takeSource(column, work, m_kind.resultName, m_kind.resultText, m_kind.resultUnit,
                       partOf(progress, 0, 50)) == JobOutcome::Cancelled ||
            m_kind.compute(column, work, own ? Steps::Own : Steps::Equal, partOf(progress, 50, 100)) ==
                JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
        work.stampColumn(2);
        return JobOutcome::Done;
    };
    if (!calculate(QStringLiteral("%1: %2").arg(windowTitle(), sourceName()), QStringLiteral("Computing..."),
                   job))
        return;
    statusBar()->showMessage(QString::fromLatin1(m_kind.doneText), kDoneMs);
    showResult(remark);
}

QString CalculusWin::refusalOf(const SourceColumn& source) const
{
    const double dt = source.file().dt();
    QString reason;
    if (!(dt > 0.0) || !std::isfinite(dt))
        reason = QStringLiteral("The sample time of %1 is not above 0.\nSet it in the header editor first.");
    else if (source.samples() == 0)
        reason = QStringLiteral("%1 has no samples.");
    else if (tsFileBytes(source.samples(), 2) >= kFileLimit)
        reason = QStringLiteral(
            "%1 is too long: column and result together are more than the 2 GB that a ts-file can have.");
    return reason.isEmpty() ? reason : reason.arg(sourceName());
}

void CalculusWin::showResult(const QString& remark)
{
    if (!canvas()->showColumns(resultFile(), {1, 2}, PlotCanvas::Axes::OneEach))
        return;
    canvas()->setSuggestedName(QFileInfo(resultSource()).completeBaseName() + QStringLiteral("_calc"));
    const Group::Variables shown = canvas()->plot().variables();
    if (shown.empty())
        return;
    const std::uint32_t samples = shown.back()->variable().rows();
    QString told = QStringLiteral("%1 samples in %2 s").arg(groupedNumber(samples)).arg(seconds(), 0, 'f', 1);
    const std::uint32_t missing = shown.back()->isBuilt() ? shown.back()->statistics(1, samples).missing : 0;
    if (missing > 0)
        told += QStringLiteral(", %1. ").arg(QString::fromStdString(counted(missing, "missing value"))) +
                QString::fromLatin1(m_kind.missingNote);
    readout()->showLine(told + remark);
}

// -- Saving --

void CalculusWin::sl_saveResults()
{
    if (!hasResult()) {
        statusBar()->showMessage(QStringLiteral("There is nothing to save: execute the calculation first"));
        return;
    }
    if (resultName().isEmpty()) {
        const QString name =
            QFileDialog::getSaveFileName(this, QStringLiteral("Save results."), QDir::currentPath(),
                                         kTsFileFilter, nullptr, QFileDialog::DontConfirmOverwrite);
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
        resultSaved();
        emit x_directory_changed();
    }
}

// Null where the results cannot, or shall not, go into the file; the user knows why.
std::unique_ptr<TSFILE> CalculusWin::openTarget(const QString& name)
{
    if (!mayReplace(name))
        return nullptr;
    const QString bare = QFileInfo(name).fileName();
    TsApplication* const application = TsApplication::instance();
    std::unique_ptr<TSFILE> target(application == nullptr ? nullptr : application->OpenTs(name, false));
    if (!target) {
        const QString needed =
            QStringLiteral(
                "the results go into an existing ts-file with two columns and %1 samples; F2 in the "
                "main window creates one")
                .arg(groupedNumber(resultSamples()));
        const bool exists = QFile::exists(name);
        const QString told =
            (exists ? QStringLiteral("%1 is no ts-file that can be written. Nothing was saved: %2")
                    : QStringLiteral("There is no file %1. Nothing was saved: %2"))
                .arg(bare, needed);
        statusBar()->showMessage(told);
        readout()->showLine(told);
        return nullptr;
    }
    if (target->columns() < 2) {
        warnInBox(
            QStringLiteral("%1 has only one column; the results need two.\nNothing was saved.").arg(name));
        return nullptr;
    }
    if (oldestRow(*target) != 1) {
        warnInBox(QStringLiteral("%1 is a ring file that does not begin with its oldest sample; the results "
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
    if (resultFirst() > 1 && isSameFile(name, resultSource())) {
        warnInBox(QStringLiteral("The results begin with sample %1 of the source; another file takes them.\n"
                                 "Nothing was saved.")
                      .arg(resultFirst()));
        return false;
    }
    return mayWrite(this, windowTitle(), name) &&
           (!isSameFile(name, resultSource()) ||
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
        const auto work = openTsFile(resultPath().string(), true);
        const CalculusSave save = saveResult(*work, target, progress.callback(), oldValues);
        if (save.outcome == JobOutcome::Cancelled) {
            statusBar()->showMessage(QStringLiteral("Saving aborted"), kAbortedMs);
            return false;
        }
        QString told = QStringLiteral("File %1 saved").arg(resultName());
        if (work->samples() != target.file->samples())
            told += QStringLiteral(" (%1 of %2 samples; the file has %3)")
                        .arg(save.copied)
                        .arg(work->samples())
                        .arg(target.file->samples());
        statusBar()->showMessage(told, kSavedMs);
        return true;
    } catch (...) {
        const QString kept = oldValues.empty()
                                 ? QStringLiteral("The file is as it was.")
                                 : QStringLiteral("Its old values could not be put back; they lie in %1.")
                                       .arg(QFile::decodeName(oldValues.c_str()));
        warnInBox(QStringLiteral("%1 could not be written.\n%2").arg(resultName(), kept));
        return false;
    }
}

// -- Closing --

void CalculusWin::sl_subwindowGone(subWindow window)
{
    if (window == this)
        dropResult();
}

}  // namespace veltrac
