#include "calc/CalculusWin.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QScrollArea>
#include <QStatusBar>
#include <QToolBar>

#include <cmath>

#include "core/ScratchFile.h"
#include "core/TsExceptions.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/PlotCanvas.h"
#include "share/QtMessageWin.h"
#include "share/Resources.h"
#include "share/SourceChooser.h"
#include "share/hydaction.h"

namespace {

constexpr int kComputingMs = 60000;
constexpr int kDoneMs = 5000;
constexpr int kSavedMs = 6000;
constexpr int kAbortedMs = 2000;
constexpr int kPanelWidth = 250;
const char* const kFilter = "*.ts, *.Ts, *.TS, *.tS";

// Half of a job's progress: 0 the first, 1 the second.
Progress half(JobProgress& whole, int which)
{
    return [&whole, which](std::uint64_t done, std::uint64_t total) {
        return whole(done + static_cast<std::uint64_t>(which) * total, 2 * total);
    };
}

bool isSameFile(const QString& a, const QString& b)
{
    return QFileInfo(a).canonicalFilePath() == QFileInfo(b).canonicalFilePath();
}

}  // namespace

CalculusWin::CalculusWin(const CalculusKind& kind, const QString& file, unsigned column, QWidget* parent)
    : SubWindow(parent), m_kind(kind)
{
    loadResources();
    setWindowTitle(title());
    setWindowIcon(QIcon(QLatin1String(kind.icon)));
    auto* const centre = new QWidget(this);
    auto* const layout = new QHBoxLayout(centre);
    m_canvas = new PlotCanvas(centre);
    layout->addWidget(createPanel());
    layout->addWidget(m_canvas, 1);
    setCentralWidget(centre);
    createActions();

    connect(m_source->files(), SIGNAL(activated(int)), this, SLOT(sl_cbSourceFileActivated(int)));
    connect(m_source->columns(), SIGNAL(activated(int)), this, SLOT(sl_cbSourceColActivated(int)));
    connect(m_canvas, SIGNAL(x_cursor_moved(int, int, int)), this, SLOT(sl_cursor_moved(int, int, int)));
    connect(m_canvas, SIGNAL(x_got_resize_event()), this, SLOT(sl_plot()));
    connect(m_canvas, &PlotCanvas::x_told, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    connect(this, SIGNAL(windowGone(subWindow)), this, SLOT(sl_subwindowGone(subWindow)));
    m_source->choose(file, column);
    m_canvas->showText(QStringLiteral("Choose a file and a column, then execute the calculation."));
    statusBar()->showMessage(QString::fromLatin1(kind.greeting));
    resize(960, 560);
}

CalculusWin::~CalculusWin()
{
    dropWork();
}

QString CalculusWin::title() const
{
    return QString::fromLatin1(m_kind.title);
}

QWidget* CalculusWin::createPanel()
{
    auto* const panel = new QWidget(this);
    auto* const layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    m_source = new SourceChooser(false, panel);
    m_readout = new QLabel(panel);
    m_readout->setTextFormat(Qt::RichText);
    m_readout->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_readout->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_readout->setAccessibleName(QStringLiteral("Values under the mouse"));
    layout->addWidget(m_source);
    layout->addSpacing(8);
    layout->addWidget(m_readout, 1);
    panel->setFixedWidth(kPanelWidth);
    return panel;
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
    actions->addSeparator();
    actions->addAction(QStringLiteral("&Close"), this, &QWidget::close, QKeySequence::Close);
    if (m_kind.hasSelections) {
        QMenu* const selections = menuBar()->addMenu(QStringLiteral("&Selections"));
        selections->addAction(QStringLiteral("Source &file"), this,
                              [this] { m_source->files()->showPopup(); });
        selections->addAction(QStringLiteral("Source &column"), this,
                              [this] { m_source->columns()->showPopup(); });
        selections->addAction(QStringLiteral("&Read the directory again"), m_source, &SourceChooser::refresh,
                              QKeySequence::Refresh);
    }
    m_canvas->fillViewMenu(*menuBar()->addMenu(QStringLiteral("&View")));
    m_canvas->fillCursorMenu(*menuBar()->addMenu(QStringLiteral("C&ursors")));

    QToolBar* const bar = addToolBar(QStringLiteral("Actions"));
    bar->addActions({execute, save, help});
}

void CalculusWin::sl_cbSourceFileActivated(int /*index*/)
{
    statusBar()->showMessage(m_source->file());
}

void CalculusWin::sl_cbSourceColActivated(int /*index*/)
{
    statusBar()->showMessage(m_source->columns()->currentText());
}

void CalculusWin::sl_help()
{
    auto* const window =
        new MessageWin(nullptr, QStringLiteral("messageWin"), helpText(QString::fromLatin1(m_kind.helpName)),
                       QString::fromLatin1(m_kind.helpTitle), 850, 650, QStringLiteral("Times"), 11);
    window->show();
}

// -- Computing --

void CalculusWin::sl_execute()
{
    m_computed = m_saved = false;
    if (!requireColumn("Y1", m_source->column()))
        return;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    statusBar()->showMessage(QStringLiteral("Computing..."), kComputingMs);
    JobOutcome outcome = JobOutcome::Done;
    QString failure;
    double seconds = 0.0;
    try {
        JobProgress progress(this, QStringLiteral("%1: %2").arg(title(), m_source->file()));
        if (!prepare(half(progress, 0), outcome))
            return;  // the wait cursor stays: nothing has come to an end here
        if (m_work && outcome == JobOutcome::Done)
            outcome = m_kind.compute(*m_work, m_work->dt(), half(progress, 1));
        if (m_work && outcome == JobOutcome::Done) {
            m_work->stampColumn(2);
            m_work->flush(true);
        }
        seconds = progress.seconds();
    } catch (const TS::Failure&) {
        failure = QStringLiteral(
                      "The calculation failed: %1 could not be read to its end, or the scratch directory "
                      "took no more.\nNo file of yours was changed.")
                      .arg(m_source->file());
    }
    QApplication::restoreOverrideCursor();

    if (!failure.isEmpty() || outcome == JobOutcome::Cancelled || !m_work) {
        dropWork();
        m_canvas->showText(QStringLiteral("Nothing was computed."));
        statusBar()->showMessage(outcome == JobOutcome::Cancelled ? QStringLiteral("Cancelled")
                                                                  : QStringLiteral("Nothing was computed"));
        if (!failure.isEmpty())
            showBox(QMessageBox::Warning, this, title(), failure);
        return;
    }
    m_computed = true;
    statusBar()->showMessage(QString::fromLatin1(m_kind.doneText), kDoneMs);
    m_readout->setText(QStringLiteral("%1 samples in %2 s").arg(m_work->samples()).arg(seconds, 0, 'f', 1));
    showResult();
}

// Makes the scratch file and fills its first column. False where there is no scratch file; a source that is
// refused leaves none behind and is told to the user.
bool CalculusWin::prepare(const Progress& progress, JobOutcome& outcome)
{
    TsApplication* const application = TsApplication::instance();
    if (application == nullptr)
        return false;
    const std::unique_ptr<TSFILE> source(application->OpenTs(m_source->file(), true));
    if (!source) {
        statusBar()->showMessage(QStringLiteral("%1 could not be opened").arg(m_source->file()));
        return false;
    }
    dropWork();
    if (refuses(*source))
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
    m_work.reset(application->CreateTs(name, source->samples(), 2));
    if (!m_work) {
        statusBar()->showMessage(
            QStringLiteral("The scratch file could not be made. Is %1 full?").arg(QFileInfo(name).path()));
        return false;
    }
    m_workName = name + QStringLiteral(".ts");
    m_sourceName = QFileInfo(m_source->file()).absoluteFilePath();
    const unsigned column = m_source->column();
    m_work->dt(source->dt());
    m_work->timeUnit(source->timeUnit());
    m_work->columnName(1, std::string(source->columnName(column)).c_str());
    m_work->columnName(2, m_kind.resultName);
    m_work->columnDescription(1, std::string(source->columnDescription(column)).c_str());
    outcome = copyColumn(*source, column, *m_work, progress);
    return true;
}

bool CalculusWin::refuses(TSFILE& source)
{
    QString reason;
    if (!(source.dt() > 0.0F) || !std::isfinite(source.dt()))
        reason = QStringLiteral("The sample time of %1 is not above 0.\nSet it in the header editor first.");
    else if (source.samples() == 0)
        reason = QStringLiteral("%1 has no samples.");
    if (reason.isEmpty())
        return false;
    showBox(QMessageBox::Warning, this, title(), reason.arg(m_source->file()));
    return true;
}

bool CalculusWin::requireColumn(const char* axis, unsigned column)
{
    if (column != 0)
        return true;
    showBox(
        QMessageBox::Warning, this, QStringLiteral("Ts Column name error"),
        QStringLiteral("The selected %1 column name is invalid (==0).\n Select a valid name and try again!")
            .arg(QLatin1String(axis)));
    return false;
}

void CalculusWin::showResult()
{
    const unsigned columns = m_work ? m_work->columns() : 0;
    if (!requireColumn("Y1", columns > 0 ? 1 : 0) || !requireColumn("Y2", columns > 1 ? 2 : 0))
        return;
    m_canvas->showColumns(m_workName, {1, 2}, PlotCanvas::Axes::OneEach);
    m_canvas->setSuggestedName(QFileInfo(m_sourceName).completeBaseName() + QStringLiteral("_calc"));
}

void CalculusWin::sl_plot()
{
    m_canvas->replot();
}

void CalculusWin::sl_cursor_moved(int x, int /*y*/, int /*buttons*/)
{
    if (m_computed)
        m_readout->setText(readoutTable(m_canvas->readoutAt(x)));
}

// -- Saving --

void CalculusWin::sl_saveResults()
{
    if (!m_work) {
        statusBar()->showMessage(QStringLiteral("There is nothing to save: execute the calculation first"));
        return;
    }
    if (m_resultName.isEmpty()) {
        const QString name =
            QFileDialog::getSaveFileName(this, QStringLiteral("Save results."), QDir::currentPath(),
                                         QLatin1String(kFilter), nullptr, QFileDialog::DontConfirmOverwrite);
        if (name.isEmpty()) {
            statusBar()->showMessage(QStringLiteral("Saving aborted"), kAbortedMs);
            return;
        }
        m_resultName = name;
    }
    if (!mayReplace(m_resultName)) {
        m_resultName.clear();
        return;
    }
    TsApplication* const application = TsApplication::instance();
    const std::unique_ptr<TSFILE> target(application == nullptr ? nullptr
                                                                : application->OpenTs(m_resultName, false));
    if (!target) {
        statusBar()->showMessage(QStringLiteral("%1 is no ts-file that can be written. Nothing was saved")
                                     .arg(QFileInfo(m_resultName).fileName()));
        m_resultName.clear();
        return;
    }
    if (target->columns() < 2) {
        showBox(QMessageBox::Warning, this, title(),
                QStringLiteral("%1 has only one column; the results need two.\nNothing was saved.")
                    .arg(m_resultName));
        m_resultName.clear();
        return;
    }
    if (saveInto(*target)) {
        m_work.reset();
        m_saved = true;
        emit x_directory_changed();
    }
}

bool CalculusWin::mayReplace(const QString& name)
{
    const TsApplication* const application = TsApplication::instance();
    if (application != nullptr && application->isOpenForWriting(name)) {
        showBox(QMessageBox::Warning, this, title(),
                QStringLiteral("%1 is open for writing in another window.\nNothing was saved.").arg(name));
        return false;
    }
    return !isSameFile(name, m_sourceName) ||
           askYesNo(
               QMessageBox::Question, this, title(),
               QStringLiteral("%1 is the source file itself.\nIts columns 1 and 2 will be replaced. Proceed?")
                   .arg(name));
}

bool CalculusWin::saveInto(TSFILE& target)
{
    std::filesystem::path oldValues;
    try {
        JobProgress progress(this, QStringLiteral("Saving %1").arg(m_resultName));
        const CalculusSave save = saveResult(*m_work, target, progress.callback(), oldValues);
        if (save.outcome == JobOutcome::Cancelled) {
            statusBar()->showMessage(QStringLiteral("Saving aborted"), kAbortedMs);
            return false;
        }
        QString told = QStringLiteral("File %1 saved").arg(m_resultName);
        if (m_work->samples() != target.samples())
            told += QStringLiteral(" (%1 of %2 samples; the file has %3)")
                        .arg(save.copied)
                        .arg(m_work->samples())
                        .arg(target.samples());
        statusBar()->showMessage(told, kSavedMs);
        return true;
    } catch (...) {
        const QString kept = oldValues.empty()
                                 ? QStringLiteral("The file is as it was.")
                                 : QStringLiteral("Its old values could not be put back; they lie in %1.")
                                       .arg(QFile::decodeName(oldValues.c_str()));
        showBox(QMessageBox::Warning, this, title(),
                QStringLiteral("%1 could not be written.\n%2").arg(m_resultName, kept));
        return false;
    }
}

// -- Closing --

bool CalculusWin::mayClose()
{
    if (!m_computed || m_saved)
        return true;
    if (askYesNo(QMessageBox::Question, this, title(), QStringLiteral("Do you want to save the results?"))) {
        sl_saveResults();
        // What could not be saved is not thrown away.
        return m_saved;
    }
    statusBar()->showMessage(QStringLiteral("Saving %1 was aborted").arg(m_resultName), kSavedMs);
    return true;
}

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
