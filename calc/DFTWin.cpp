#include "calc/DFTWin.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMenuBar>
#include <QPushButton>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <exception>

#include "calc/AnalysisPlot.h"
#include "calc/PeakTable.h"
#include "calc/SecondColumnFields.h"
#include "calc/Spectrogram.h"
#include "calc/Spectrum.h"
#include "calc/SpectrumDoubts.h"
#include "calc/SpectrumFields.h"
#include "calc/SpectrumPlan.h"
#include "calc/SpectrumTexts.h"
#include "core/CopyFile.h"
#include "core/NumberTexts.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "share/ActionRow.h"
#include "share/AxisLimitsDialog.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/PlotCanvas.h"
#include "share/QtMessageWin.h"
#include "share/RangeFields.h"
#include "share/ReadoutLabel.h"
#include "share/SourceChooser.h"
#include "share/TargetFile.h"
#include "share/hydaction.h"

using namespace veltrac;

namespace {

constexpr int kSpectrumPanelWidth = 300;
constexpr int kCutHeight = 170;
constexpr double kLagParts = 1000.0;  // of a sample, finer than a greatest is found

bool askToGoOn(QWidget* window, const QString& text, const QString& yes)
{
    QMessageBox box(QMessageBox::Question, window->windowTitle(), text, QMessageBox::NoButton, window);
    box.setTextFormat(Qt::PlainText);
    QPushButton* const go = box.addButton(yes, QMessageBox::AcceptRole);
    QPushButton* const cancel = box.addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    box.setDefaultButton(go);
    box.setEscapeButton(cancel);
    box.exec();
    return box.clickedButton() == go;
}

}  // namespace

DFTWin::DFTWin(const QString& file, unsigned column, QWidget* parent)
    : ResultWindow(QStringLiteral("Ts-FFT"), QStringLiteral(":img_Dft"), kSpectrumPanelWidth, parent),
      m_fields(new SpectrumFields),
      m_peaks(new PeakTable)
{
    panel()->addWidget(m_fields);
    panel()->addSpacing(6);
    panel()->addWidget(m_peaks, 1);
    m_cut = new PlotCanvas(panel()->parentWidget());
    m_cut->setMinimumHeight(kCutHeight);
    m_cut->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);  // what the panel has left
    m_cut->setAccessibleName(QStringLiteral("Spectrum at cursor A"));
    m_cut->hide();
    panel()->addWidget(m_cut, 1);
    panel()->addWidget(readout());
    panel()->addStretch();  // takes what the peaks leave where they are hidden
    createActions();

    connect(m_fields, &SpectrumFields::x_changed, this,
            [this] { m_execute->setEnabled(m_fields->reason().isEmpty()); });
    connect(m_peaks, &PeakTable::x_chosen, this, [this](double frequency) {
        canvas()->plot().setCursor(Plot2D::A, frequency);
        canvas()->replot();
        emit canvas()->x_cursors_changed();
    });
    connect(m_peaks, &PeakTable::x_told, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    connect(canvas(), &PlotCanvas::x_cursors_changed, this, &DFTWin::showCuts);
    connect(m_cut, &PlotCanvas::x_told, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    source()->choose(file, column);
    canvas()->showText(QStringLiteral("Choose a file and a column, then execute the calculation."));
    statusBar()->showMessage(QStringLiteral("Welcome to Ts-FFT"));
    resize(1080, 700);
}

void DFTWin::createActions()
{
    enum class Id { Execute, Save, Help };
    static const ActionRow<Id> rows[] = {
        {Id::Execute, "Execute", "Ctrl+Return", SLOT(sl_execute()), "&Execute calculation...",
         "Calculate the spectrum."},
        {Id::Save, "Save", "Ctrl+S", SLOT(sl_saveResults()), "&Save results...", "Save results."},
        {Id::Help, "Help", "F1", SLOT(sl_help()), "&Help", "Open a brief help window"}};
    m_execute = makeAction(this, this, rows[0]);
    m_save = makeAction(this, this, rows[1]);
    QAction* const help = makeAction(this, this, rows[2]);
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
    axes->addSeparator();
    m_colorRange = axes->addAction(QStringLiteral("&Colour range..."), this, &DFTWin::sl_colorRange);
    m_means = axes->addAction(QStringLiteral("&Mean of the cells under a pixel"));
    m_means->setCheckable(true);
    connect(m_means, &QAction::toggled, this, [this](bool on) {
        if (CellImage* const image = picture()) {
            image->showsMeans = on;
            canvas()->replot();
        }
    });
    // The canvas has the same choices in its own menu.
    connect(axes, &QMenu::aboutToShow, this, [this] {
        if (!hasResult())
            return;
        const Plot2D& plot = canvas()->plot();
        m_colorRange->setEnabled(picture() != nullptr);
        m_means->setEnabled(picture() != nullptr);
        m_logFrequency->setChecked(picture() != nullptr ? plot.groups().front().isLogarithmic()
                                                        : plot.axis().logarithmic);
        if (picture() != nullptr)
            return;
        m_logValues->setEnabled(!m_isDecibel);
        m_logValues->setChecked(!plot.groups().empty() && plot.groups().front().isLogarithmic());
    });
}

void DFTWin::applyAxes()
{
    if (picture() != nullptr) {
        canvas()->setLogarithmicY(0, m_logFrequency->isChecked());
        return;
    }
    // Levels in dB are logarithms already, and most of them are below 0.
    if (m_isDecibel)
        m_logValues->setChecked(false);
    canvas()->setLogarithmicX(m_logFrequency->isChecked());
    canvas()->setLogarithmicY(0, m_logValues->isChecked());
}

void DFTWin::sl_help()
{
    showHelp(nullptr, QStringLiteral("spectrum"), QStringLiteral("FFT info"));
}

void DFTWin::sourceChanged(TSFILE* file)
{
    m_dt = file == nullptr ? 0.0 : static_cast<double>(file->dt());
    if (source()->file().isEmpty())
        m_fields->refuseSource(source()->files()->count() == 0
                                   ? QStringLiteral("There is no ts-file in this directory.")
                                   : QStringLiteral("Choose a source file."));
    else if (file == nullptr)
        m_fields->refuseSource(QStringLiteral("%1 could not be opened").arg(sourceName()));
    else if (source()->column() == 0)
        m_fields->refuseSource(QStringLiteral("The file has no column that can be transformed."));
    else
        rangeChanged();
}

void DFTWin::rangeChanged()
{
    if (range()->reason().isEmpty())
        m_fields->setSource(source()->file(), source()->column(), range()->from(), range()->to(), m_dt);
    else
        m_fields->refuseSource(range()->reason());
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
    if (m_fields->method() == SpectrumMethod::Correlation) {
        computeCorrelation(*file, request);
        return;
    }
    if (m_fields->method() == SpectrumMethod::Spectrogram) {
        computeSpectrogram(*file, request);
        return;
    }
    if (m_fields->second().hasTwoChannels()) {
        computeTwoChannels(*file, request);
        return;
    }
    const bool averaged = request.averaged;
    if (!clearDoubts(*file, source()->file(), request))
        return;
    if (request.averaged != averaged)
        m_fields->useSegments();
    if (m_fields->reason().isEmpty())
        compute(*file, request);
}

bool DFTWin::clearDoubts(TSFILE& file, const QString& name, SpectrumRequest& request)
{
    bool isAgreed = false;
    try {
        isAgreed = askDoubts(file, name, request);
    } catch (const TS::Failure&) {
        warnInBox(QStringLiteral("%1 could not be read to its end.").arg(QFileInfo(name).fileName()));
    }
    if (!isAgreed)
        statusBar()->showMessage(QStringLiteral("Nothing was computed"));
    return isAgreed;
}

bool DFTWin::askDoubts(TSFILE& file, const QString& name, SpectrumRequest& request)
{
    for (const SpectrumCheck& check : spectrumChecks()) {
        SpectrumDoubt doubt;
        {
            JobProgress progress(this, QString::fromLatin1(check.title));
            doubt = check.look(file, name.toStdString(), request, progress.callback());
        }
        const QString text = QString::fromStdString(doubt.text);
        if (doubt.kind == SpectrumDoubt::Kind::Impossible)
            warnInBox(text);
        const bool goesOn = doubt.kind == SpectrumDoubt::Kind::None ||
                            (doubt.kind == SpectrumDoubt::Kind::Question &&
                             askToGoOn(this, text, QString::fromStdString(doubt.answer)));
        if (!goesOn)
            return false;
    }
    return true;
}

void DFTWin::compute(TSFILE& file, const SpectrumRequest& request)
{
    double mean = 0.0;
    const auto job = [&](const Progress& progress, std::unique_ptr<ResultFile>& made) {
        // Only ever a file that this window makes: a tempDFT.ts that is there already keeps its name.
        made = std::make_unique<ResultFile>("tempDFT", planSpectrum(request).bins, spectrumColumns(request));
        describeSpectrum(file, request, made->file());
        const JobOutcome outcome = computeSpectrum(file, request, made->file(), mean, progress);
        if (outcome == JobOutcome::Done)
            describeMean(file, request, mean, made->file());
        return outcome;
    };
    if (!calculate(QStringLiteral("Spectrum of %1").arg(sourceName()), QStringLiteral("Computing..."), job))
        return;
    m_mean = mean;
    m_isDecibel = request.decibel;
    tellResult(
        QStringLiteral("%1, mean %2").arg(QString::fromStdString(planText(request))).arg(m_mean, 0, 'g', 6));
    showResult(request);
}

void DFTWin::tellResult(const QString& what)
{
    m_save->setEnabled(true);
    readout()->showLine(QString());
    statusBar()->showMessage(QStringLiteral("%1, in %2 s").arg(what).arg(seconds(), 0, 'f', 1));
}

// -- Two channels --

std::unique_ptr<TSFILE> DFTWin::openSecond()
{
    const QString name = m_fields->second().file();
    try {
        return openTsFile(QFile::encodeName(name).toStdString(), true);
    } catch (const TS::Failure&) {
        statusBar()->showMessage(QStringLiteral("%1 could not be opened").arg(QFileInfo(name).fileName()));
        return nullptr;
    }
}

void DFTWin::computeTwoChannels(TSFILE& file, const SpectrumRequest& request)
{
    const std::unique_ptr<TSFILE> second = openSecond();
    if (!second)
        return;
    TwoChannelRequest both = m_fields->second().twoChannels(request);
    SpectrumRequest output = outputRequest(both);
    if (!clearDoubts(file, source()->file(), both.input) ||
        !clearDoubts(*second, m_fields->second().file(), output))
        return;
    both.interpolateOutput = output.interpolate;
    const auto job = [&](const Progress& progress, std::unique_ptr<ResultFile>& made) {
        made = std::make_unique<ResultFile>("tempDFT", planSpectrum(both.input).bins,
                                            twoChannelColumns(both.result));
        describeTwoChannels(file, *second, both, made->file());
        return veltrac::computeTwoChannels(file, *second, both, made->file(), progress);
    };
    if (!calculate(
            QStringLiteral("%1 of %2").arg(QLatin1String(twoChannelResultName(both.result)), sourceName()),
            QStringLiteral("Computing..."), job))
        return;
    m_isDecibel = true;
    m_peaks->hide();
    m_cut->hide();
    tellResult(m_fields->planText());
    if (!showTwoChannels(*canvas(), resultFile(), twoChannelColumns(both.result)))
        return;
    canvas()->setSuggestedName(QFileInfo(resultSource()).completeBaseName() + QStringLiteral("_fft"));
    applyAxes();
}

// -- Over time --

CellImage* DFTWin::picture() const
{
    const std::vector<Group>& groups = canvas()->plot().groups();
    return groups.empty() ? nullptr : groups.front().image.get();
}

void DFTWin::computeSpectrogram(TSFILE& file, SpectrumRequest request)
{
    if (!clearDoubts(file, source()->file(), request))
        return;
    const SpectrumPlan plan = planSpectrum(request);
    const std::string unit = spectrumUnit(file, request);
    const auto job = [&](const Progress& progress, std::unique_ptr<ResultFile>& made) {
        made = std::make_unique<ResultFile>("tempDFT", plan.segments, plan.bins);
        describeSpectrogram(file, request, made->file());
        return veltrac::computeSpectrogram(file, request, made->file(), progress);
    };
    if (!calculate(QStringLiteral("Spectrogram of %1").arg(sourceName()), QStringLiteral("Computing..."),
                   job))
        return;
    m_isDecibel = true;  // the picture has no axis of values
    m_peaks->hide();
    tellResult(QStringLiteral("%1 samples of %2 columns")
                   .arg(QString::fromStdString(groupedDigits(plan.segments)),
                        QString::fromStdString(groupedDigits(plan.bins))));
    if (!showSpectrogram(*canvas(), resultFile(), plan.resolution, unit))
        return;
    canvas()->setSuggestedName(QFileInfo(resultSource()).completeBaseName() + QStringLiteral("_spec"));
    picture()->showsMeans = m_means->isChecked();
    canvas()->setLogarithmicY(0, m_logFrequency->isChecked());
    m_cut->showText(QStringLiteral("A click sets cursor A, whose spectrum stands here."));
    m_cut->show();
}

void DFTWin::showCuts()
{
    if (picture() == nullptr)
        return;
    try {
        if (canvas()->plot().cursor(Plot2D::A))
            showCut(*canvas(), *canvas()->plot().cursor(Plot2D::A), *m_cut);
        if (canvas()->groupAt(m_mouse) == 0 && canvas()->plotArea().contains(m_mouse))
            showCourse(*canvas(), canvas()->yAt(0, m_mouse.y()));
    } catch (const TS::Failure&) {
        statusBar()->showMessage(QStringLiteral("The scratch file could not be read"));
    }
}

void DFTWin::sl_cursor_moved(int x, int y, int buttons)
{
    m_mouse = QPoint(x, y);
    if (picture() == nullptr || !hasResult()) {
        ResultWindow::sl_cursor_moved(x, y, buttons);
        return;
    }
    Readout rows = canvas()->readoutAt(x);
    try {
        if (canvas()->groupAt(m_mouse) == 0) {
            const double frequency = canvas()->yAt(0, y);
            const std::uint32_t row = pictureRow(*canvas(), canvas()->xAt(x));
            const double level = picture()->valueAt(row, frequency);
            rows.push_back({"Frequency", generalNumber(frequency, 5) + " Hz"});
            rows.push_back({"Level", generalNumber(level, 5) + " " + picture()->unit()});
        }
    } catch (const TS::Failure&) {
        statusBar()->showMessage(QStringLiteral("The scratch file could not be read"));
    }
    readout()->showTable(rows);
}

void DFTWin::sl_colorRange()
{
    CellImage* const image = picture();
    if (image == nullptr)
        return;
    AxisLimits limits{image->low, image->high, false, false};
    if (!askAxisLimits(this, QStringLiteral("Colour range"), false, limits))
        return;
    image->low = std::min(limits.from, limits.to);
    image->high = std::max(limits.from, limits.to);
    canvas()->replot();
}

// -- Lags --

void DFTWin::computeCorrelation(TSFILE& file, const SpectrumRequest& request)
{
    const std::unique_ptr<TSFILE> second = openSecond();
    if (!second)
        return;
    CorrelationRequest lags = m_fields->second().correlation(request);
    SpectrumRequest later = secondRequest(lags);
    if (!clearDoubts(file, source()->file(), lags.first) ||
        (lags.secondColumn != 0 && !clearDoubts(*second, m_fields->second().file(), later)))
        return;
    lags.interpolateSecond = later.interpolate;
    CorrelationTop top;
    const auto job = [&](const Progress& progress, std::unique_ptr<ResultFile>& made) {
        made = std::make_unique<ResultFile>("tempDFT", 2 * lags.mostLag + 1, 2);
        describeCorrelation(file, *second, lags, made->file());
        return veltrac::computeCorrelation(file, *second, lags, made->file(), top, progress);
    };
    if (!calculate(QStringLiteral("Correlation of %1").arg(sourceName()), QStringLiteral("Computing..."),
                   job))
        return;
    m_isDecibel = true;  // it may be negative: there is no logarithm of it
    m_peaks->hide();
    m_cut->hide();
    tellResult(m_fields->planText());
    if (!canvas()->showColumns(resultFile(), {2}))
        return;
    canvas()->setSuggestedName(QFileInfo(resultSource()).completeBaseName() + QStringLiteral("_corr"));
    if (!top.isThere)
        return;
    const double lag = std::round(top.lag * kLagParts) / kLagParts;
    canvas()->placeCursor(Plot2D::A, lag * lags.first.dt);
    readout()->showLine(QStringLiteral("Greatest %1 at a lag of %2 s (%3 samples)")
                            .arg(top.value, 0, 'g', 4)
                            .arg(lag * lags.first.dt, 0, 'g', 6)
                            .arg(lag, 0, 'f', 2));
}

void DFTWin::showResult(const SpectrumRequest& request)
{
    QVector<unsigned> columns{2};
    if (request.result == SpectrumResult::RealImaginary)
        columns << 3;
    m_cut->hide();
    m_peaks->show();
    if (!canvas()->showColumns(resultFile(), columns))
        return;
    canvas()->setSuggestedName(QFileInfo(resultSource()).completeBaseName() + QStringLiteral("_fft"));
    applyAxes();
    try {
        m_peaks->showSpectrum(resultPath(), request, m_mean);
    } catch (const TS::Failure&) {
        m_peaks->clear();
        statusBar()->showMessage(QStringLiteral("The scratch file could not be read"));
    }
}

void DFTWin::sl_harmonics()
{
    m_peaks->sl_harmonics();
}

// -- Saving --

void DFTWin::sl_saveResults()
{
    if (!hasResult()) {
        statusBar()->showMessage(QStringLiteral("There is nothing to save: execute the calculation first"));
        return;
    }
    const QFileInfo computed(resultSource());
    const auto isSource = [this](const QString& file) { return isSameFile(file, resultSource()); };
    const QString name = askSaveName(
        this,
        {QStringLiteral("Save results."),
         computed.absolutePath() + QLatin1Char('/') + computed.completeBaseName() + QStringLiteral("_fft.ts"),
         QStringLiteral("*.ts, *.Ts, *.TS, *.tS"), QStringLiteral("ts"), isSource});
    if (name.isEmpty()) {
        statusBar()->showMessage(QStringLiteral("Saving aborted"), kSavedMs);
        return;
    }
    setResultName(name);
    saveAs(name);
}

void DFTWin::saveAs(const QString& name)
{
    QString failure;
    try {
        JobProgress progress(this, QStringLiteral("Saving %1").arg(name));
        const auto spectrum = openTsFile(resultPath().string(), true);
        if (copyWholeFile(spectrum->descriptor(), QFile::encodeName(name).toStdString(),
                          progress.callback()) == JobOutcome::Cancelled) {
            statusBar()->showMessage(QStringLiteral("Saving aborted"), kSavedMs);
            return;
        }
    } catch (const TS::Failure&) {
        failure = QStringLiteral("The scratch file could not be read.");
    } catch (const std::exception& e) {
        failure = QString::fromLocal8Bit(e.what());
    }
    if (!failure.isEmpty()) {
        statusBar()->showMessage(QStringLiteral("Nothing was saved"), kSavedMs);
        warnInBox(QStringLiteral("Saving file %1 failed").arg(name) + QLatin1Char('\n') + failure);
        return;
    }
    resultSaved();
    statusBar()->showMessage(QStringLiteral("File %1 saved").arg(name), kSavedMs);
    if (QFileInfo(name).absolutePath() == QDir::currentPath())
        emit x_file_made(QFileInfo(name).fileName());
}
