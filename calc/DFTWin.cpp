#include "calc/DFTWin.h"

#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

#include <new>
#include <stdexcept>

#include "calc/PeakTable.h"
#include "calc/Spectrum.h"
#include "calc/SpectrumDoubts.h"
#include "calc/SpectrumFields.h"
#include "calc/SpectrumTexts.h"
#include "core/CopyFile.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/PlotCanvas.h"
#include "share/QtMessageWin.h"
#include "share/ReadoutLabel.h"
#include "share/SourceChooser.h"
#include "share/WaitCursor.h"
#include "share/hydaction.h"

using namespace veltrac;

namespace {

constexpr int kPanelWidth = 300;
constexpr int kSavedMs = 6000;

}  // namespace

DFTWin::DFTWin(const QString& file, unsigned column, QWidget* parent)
    : ResultWindow(QStringLiteral("Ts-FFT"), QStringLiteral(":img_Dft"), kPanelWidth, parent),
      m_fields(new SpectrumFields),
      m_peaks(new PeakTable)
{
    panel()->addWidget(m_fields);
    panel()->addSpacing(6);
    panel()->addWidget(m_peaks, 1);
    panel()->addWidget(readout());
    createActions();

    connect(source(), &SourceChooser::x_source_changed, this, &DFTWin::showSource);
    connect(m_fields, &SpectrumFields::x_changed, this,
            [this] { m_execute->setEnabled(m_fields->reason().isEmpty()); });
    connect(m_peaks, &PeakTable::x_chosen, this, [this](double frequency) {
        canvas()->plot().setCursor(Plot2D::A, frequency);
        canvas()->replot();
        emit canvas()->x_cursors_changed();
    });
    connect(m_peaks, &PeakTable::x_told, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    source()->choose(file, column);
    canvas()->showText(QStringLiteral("Choose a file and a column, then execute the calculation."));
    statusBar()->showMessage(QStringLiteral("Welcome to Ts-FFT"));
    resize(1080, 700);
}

DFTWin::~DFTWin()
{
    m_scratch.reset();
}

void DFTWin::createActions()
{
    m_execute = new HydAction(QStringLiteral("Execute"), QKeySequence(QStringLiteral("Ctrl+Return")), this,
                              SLOT(sl_execute()), QStringLiteral("&Execute calculation..."),
                              QStringLiteral("Calculate the spectrum."));
    m_save = new HydAction(QStringLiteral("Save"), QKeySequence(QStringLiteral("Ctrl+S")), this,
                           SLOT(sl_saveResults()), QStringLiteral("&Save results..."),
                           QStringLiteral("Save results."));
    auto* const help = new HydAction(QStringLiteral("Help"), QKeySequence(Qt::Key_F1), this, SLOT(sl_help()),
                                     QStringLiteral("&Help"), QStringLiteral("Open a brief help window"));
    m_save->setEnabled(false);
    QMenu* const actions = menuBar()->addMenu(QStringLiteral("&Actions"));
    actions->addActions({m_execute, m_save, help});
    addWhatsThis(actions);
    actions->addAction(QStringLiteral("Ha&rmonics of the chosen peak"), this, &DFTWin::sl_harmonics);
    actions->addSeparator();
    actions->addAction(QStringLiteral("&Close"), this, &QWidget::close, QKeySequence::Close);
    fillSourceMenu(*menuBar()->addMenu(QStringLiteral("&Selections")));
    addCanvasMenus();
    createAxesMenu();
    addToolBar(QStringLiteral("Actions"))->addActions({m_execute, m_save, help});
}

void DFTWin::createAxesMenu()
{
    QMenu* const axes = menuBar()->addMenu(QStringLiteral("A&xes"));
    m_logFrequency = axes->addAction(QStringLiteral("Logarithmic &frequency"));
    m_logValues = axes->addAction(QStringLiteral("Logarithmic &values"));
    for (QAction* const action : {m_logFrequency, m_logValues}) {
        action->setCheckable(true);
        connect(action, &QAction::triggered, this, &DFTWin::applyAxes);
    }
    // The canvas has the same choices in its own menu.
    connect(axes, &QMenu::aboutToShow, this, [this] {
        if (!hasResult())
            return;
        const Plot2D& plot = canvas()->plot();
        m_logFrequency->setChecked(plot.axis().logarithmic);
        m_logValues->setChecked(!plot.groups().empty() && plot.groups().front().isLogarithmic());
    });
}

void DFTWin::applyAxes()
{
    canvas()->setLogarithmicX(m_logFrequency->isChecked());
    canvas()->setLogarithmicY(0, m_logValues->isChecked());
}

void DFTWin::sl_help()
{
    showHelp(nullptr, QStringLiteral("spectrum"), QStringLiteral("FFT info"));
}

void DFTWin::showSource()
{
    const QString name = source()->file();
    const QString path = QFileInfo(name).absoluteFilePath();
    const bool anew = path != m_shownFile;
    m_shownFile = path;
    if (name.isEmpty()) {
        m_fields->refuseSource(source()->files()->count() == 0
                                   ? QStringLiteral("There is no ts-file in this directory.")
                                   : QStringLiteral("Choose a source file."));
        return;
    }
    if (source()->column() == 0) {
        m_fields->refuseSource(QStringLiteral("The file has no column that can be transformed."));
        return;
    }
    try {
        const auto file = openTsFile(QFile::encodeName(name).toStdString(), true);
        m_fields->setSource(source()->column(), file->samples(), file->dt(), anew);
    } catch (const TS::Failure&) {
        m_fields->refuseSource(QStringLiteral("%1 could not be opened").arg(name));
    }
}

// -- Computing --

void DFTWin::sl_execute()
{
    if (!m_fields->reason().isEmpty()) {
        statusBar()->showMessage(m_fields->reason());
        return;
    }
    const std::unique_ptr<TSFILE> file = openSource();
    if (!file)
        return;
    SpectrumRequest request = m_fields->request();
    QString failure;
    try {
        const bool averaged = request.averaged;
        if (!clearDoubts(this, *file, source()->file(), request)) {
            statusBar()->showMessage(QStringLiteral("Nothing was computed"));
            return;
        }
        if (request.averaged != averaged)
            m_fields->useSegments();
        if (m_fields->reason().isEmpty() && compute(*file, request))
            showResult(request);
    } catch (const std::bad_alloc&) {
        failure = QStringLiteral("There is not enough memory for the whole range. Use averaged segments.");
    } catch (const TS::Failure&) {
        failure =
            QStringLiteral("%1 could not be read to its end, or the disk took no more.").arg(sourceName());
    } catch (const std::exception& e) {
        failure =
            QStringLiteral("The scratch file could not be made: %1").arg(QString::fromLocal8Bit(e.what()));
    }
    if (!failure.isEmpty()) {
        dropResult();
        statusBar()->showMessage(QStringLiteral("Nothing was computed"));
        showBox(QMessageBox::Warning, this, windowTitle(), failure);
    }
}

bool DFTWin::compute(TSFILE& file, const SpectrumRequest& request)
{
    dropResult();
    const QString name = source()->file();
    double seconds = 0.0;
    {
        const WaitCursor waiting;
        JobProgress progress(this, QStringLiteral("Spectrum of %1").arg(name));
        // Only ever a file that this window makes: a tempDFT.ts that is there already keeps its name.
        m_scratch.emplace(std::filesystem::current_path(), "tempDFT", ".ts");
        const auto spectrum =
            createTsFile(m_scratch->path().string(), planSpectrum(request).bins, spectrumColumns(request));
        describeSpectrum(file, request, *spectrum);
        if (computeSpectrum(file, request, *spectrum, m_mean, progress.callback()) == JobOutcome::Done) {
            describeMean(file, request, m_mean, *spectrum);
            spectrum->flush(true);
            resultMade();
        }
        seconds = progress.seconds();
    }
    if (!hasResult()) {
        dropResult();
        statusBar()->showMessage(QStringLiteral("Cancelled"));
        return false;
    }
    m_sourceName = QFileInfo(name).absoluteFilePath();
    m_save->setEnabled(true);
    statusBar()->showMessage(QStringLiteral("%1, mean %2, in %3 s")
                                 .arg(planText(request))
                                 .arg(m_mean, 0, 'g', 6)
                                 .arg(seconds, 0, 'f', 1));
    return true;
}

void DFTWin::showResult(const SpectrumRequest& request)
{
    QVector<unsigned> columns{2};
    if (request.result == SpectrumResult::RealImaginary)
        columns << 3;
    canvas()->showColumns(QFile::decodeName(m_scratch->path().c_str()), columns);
    canvas()->setSuggestedName(QFileInfo(m_sourceName).completeBaseName() + QStringLiteral("_fft"));
    applyAxes();
    m_peaks->showSpectrum(m_scratch->path(), request.window, m_mean);
}

void DFTWin::sl_harmonics()
{
    m_peaks->sl_harmonics();
}

void DFTWin::dropResult()
{
    resultGone();
    m_save->setEnabled(false);
    m_peaks->clear();
    readout()->showLine(QString());
    canvas()->showText(QStringLiteral("Nothing was computed."));
    m_scratch.reset();
}

// -- Saving and closing --

void DFTWin::sl_saveResults()
{
    if (!hasResult()) {
        statusBar()->showMessage(QStringLiteral("There is nothing to save: execute the calculation first"));
        return;
    }
    const QFileInfo computed(m_sourceName);
    QString name = QFileDialog::getSaveFileName(
        this, QStringLiteral("Save results."),
        computed.absolutePath() + QLatin1Char('/') + computed.completeBaseName() + QStringLiteral("_fft.ts"),
        QStringLiteral("*.ts, *.Ts, *.TS, *.tS"), nullptr, QFileDialog::DontConfirmOverwrite);
    if (name.isEmpty()) {
        statusBar()->showMessage(QStringLiteral("Saving aborted"), kSavedMs);
        return;
    }
    const QFileInfo typed(name);
    if (typed.suffix().toLower() != QLatin1String("ts"))
        name = typed.absolutePath() + QLatin1Char('/') +
               QFile::decodeName(newTsFileName(QFile::encodeName(typed.fileName()).toStdString()).c_str());
    setResultName(name);
    const QString question =
        QFileInfo(name).canonicalFilePath() == computed.canonicalFilePath()
            ? QStringLiteral("%1 is the source file itself.\nReplace it by the spectrum?")
            : QStringLiteral("%1 exists.\nReplace it by the spectrum?");
    if (mayWrite(name) && (!QFileInfo::exists(name) ||
                           askYesNo(QMessageBox::Question, this, windowTitle(), question.arg(name))))
        saveAs(name);
    else
        statusBar()->showMessage(QStringLiteral("Saving aborted"), kSavedMs);
}

void DFTWin::saveAs(const QString& name)
{
    try {
        JobProgress progress(this, QStringLiteral("Saving %1").arg(name));
        QFile spectrum(QFile::decodeName(m_scratch->path().c_str()));
        if (!spectrum.open(QIODevice::ReadOnly))
            throw std::runtime_error("The scratch file could not be read.");
        if (copyWholeFile(spectrum.handle(), QFile::encodeName(name).toStdString(), progress.callback()) ==
            JobOutcome::Cancelled) {
            statusBar()->showMessage(QStringLiteral("Saving aborted"), kSavedMs);
            return;
        }
    } catch (const std::exception& e) {
        statusBar()->showMessage(QStringLiteral("Nothing was saved"), kSavedMs);
        showBox(QMessageBox::Warning, this, windowTitle(),
                QStringLiteral("Saving file %1 failed").arg(name) + QLatin1Char('\n') +
                    QString::fromLocal8Bit(e.what()));
        return;
    }
    resultSaved();
    statusBar()->showMessage(QStringLiteral("File %1 saved").arg(name), kSavedMs);
    if (QFileInfo(name).absolutePath() == QDir::currentPath())
        emit x_file_made(QFileInfo(name).fileName());
}

bool DFTWin::mayClose()
{
    if (!ResultWindow::mayClose())
        return false;
    dropResult();
    return true;
}
