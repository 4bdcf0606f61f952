#include "calc/DFTWin.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QInputDialog>
#include <QKeyEvent>
#include <QMenuBar>
#include <QScopedValueRollback>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <exception>

#include "calc/AnalysisPlot.h"
#include "calc/OctaveBands.h"
#include "calc/PeakTable.h"
#include "calc/SecondColumnFields.h"
#include "calc/Spectrogram.h"
#include "calc/SpectrogramCuts.h"
#include "calc/Spectrum.h"
#include "calc/SpectrumFields.h"
#include "calc/SpectrumPlan.h"
#include "calc/SpectrumQuestions.h"
#include "calc/SpectrumTexts.h"
#include "core/CopyFile.h"
#include "core/FailureText.h"
#include "core/NumberTexts.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "core/Variable.h"
#include "share/ActionRow.h"
#include "share/AxisLimitsDialog.h"
#include "share/Boxes.h"
#include "share/HeaderText.h"
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
constexpr int kCutHeight = 150;
constexpr double kLagParts = 1000.0;  // of a sample, finer than a greatest is found

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
    connectPeaks();
    connect(canvas(), &PlotCanvas::x_cursors_changed, this, &DFTWin::showCuts);
    connect(canvas(), &PlotCanvas::x_cursors_changed, this, &DFTWin::showLines);
    connect(m_cut, &PlotCanvas::x_told, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    source()->choose(file, column);
    canvas()->showText(QStringLiteral("Choose a file and a column, then execute the calculation."));
    statusBar()->showMessage(QStringLiteral("Welcome to Ts-FFT"));
    resize(1080, 700);
}

void DFTWin::connectPeaks()
{
    connect(m_peaks, &PeakTable::x_chosen, this, [this](double frequency) {
        const QScopedValueRollback<bool> choosing(m_choosesLine, true);
        canvas()->placeCursor(Plot2D::A, frequency);
    });
    connect(m_peaks, &PeakTable::x_harmonics_wanted, this, &DFTWin::sl_harmonics);
    connect(m_peaks, &PeakTable::x_peaks_shown, this, &DFTWin::markHarmonics);
    connect(m_peaks, &PeakTable::x_told, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
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
    // The window answers the letter itself: as a shortcut it would take it away from an open menu.
    actions->addAction(QStringLiteral("Ha&rmonics of cursor A\tH"), this, &DFTWin::sl_harmonics);
    actions->addSeparator();
    actions->addAction(QStringLiteral("Save the spectrum at &A..."), this, &DFTWin::sl_saveSpectrumAt);
    actions->addAction(QStringLiteral("Save the c&ourse..."), this, &DFTWin::sl_saveCourse);
    actions->addSeparator();
    actions->addAction(QStringLiteral("&Keep this spectrum..."), this, &DFTWin::sl_keep)
        ->setShortcut(QKeySequence(QStringLiteral("Ctrl+K")));
    actions->addAction(QStringLiteral("Remove the kep&t spectra"), this, &DFTWin::sl_dropKept);
    actions->addSeparator();
    actions->addAction(QStringLiteral("&Close"), this, &QWidget::close)->setShortcut(QKeySequence::Close);
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
        m_logValues->setEnabled(!m_shown.isDecibel);
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
    if (m_shown.isDecibel)
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
    const bool isAgreed = askSpectrumDoubts(this, file, name, request);
    if (!isAgreed)
        statusBar()->showMessage(QStringLiteral("Nothing was computed"));
    return isAgreed;
}

void DFTWin::compute(TSFILE& file, const SpectrumRequest& request)
{
    double mean = 0.0;
    const auto job = [&](const Progress& progress, std::unique_ptr<ResultFile>& made) {
        // Only ever a file that this window makes: a tempDFT.ts that is there already keeps its name.
        made = std::make_unique<ResultFile>("tempDFT", spectrumRows(request), spectrumColumns(request));
        describeSpectrum(file, request, made->file());
        const JobOutcome outcome = computeSpectrum(file, request, made->file(), mean, progress);
        if (outcome == JobOutcome::Done)
            describeMean(file, request, mean, made->file());
        return outcome;
    };
    if (!calculate(QStringLiteral("Spectrum of %1").arg(sourceName()), QStringLiteral("Computing..."), job))
        return;
    m_shown.mean = mean;
    m_shown.isDecibel = request.decibel;
    tellResult(QStringLiteral("%1, mean %2")
                   .arg(QString::fromStdString(planText(request)))
                   .arg(m_shown.mean, 0, 'g', 6));
    showResult(request, headerText(file.columnDescription(request.column)).toStdString());
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
    m_shown.isDecibel = true;
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
    m_shown.isDecibel = true;  // the picture has no axis of values
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
        if (canvas()->plot().groups().front().level)
            showCourse(*canvas(), *canvas()->plot().groups().front().level);
        canvas()->showHoverAgain();  // the course takes some of the picture's height
    } catch (const TS::Failure&) {
        statusBar()->showMessage(QStringLiteral("The scratch file could not be read"));
    }
}

void DFTWin::sl_saveSpectrumAt()
{
    const auto& a = canvas()->plot().cursor(Plot2D::A);
    const std::uint32_t row = hasResult() && picture() != nullptr && a ? pictureRow(*canvas(), *a) : 0;
    if (row == 0) {
        statusBar()->showMessage(
            QStringLiteral("A click into a spectrogram chooses the spectrum to be saved"));
        return;
    }
    const double step = picture()->step();
    const std::string when = xText(canvas()->plot(), *a);
    saveCut(QStringLiteral("Save the spectrum at cursor A."), QStringLiteral("_at"),
            [&](TSFILE& whole, const std::string& file, const Progress& /*progress*/) {
                const auto made = createTsFile(file, whole.columns(), 2);
                writeSpectrumAt(whole, row, step, when, *made);
                made->flush(true);
                return JobOutcome::Done;
            });
}

void DFTWin::sl_saveCourse()
{
    if (!hasResult() || picture() == nullptr || !canvas()->plot().groups().front().level) {
        statusBar()->showMessage(QStringLiteral("A click into a spectrogram chooses the course to be saved"));
        return;
    }
    const std::uint32_t column = courseColumn(*picture(), *canvas()->plot().groups().front().level);
    saveCut(QStringLiteral("Save the course at the frequency."), QStringLiteral("_course"),
            [&](TSFILE& whole, const std::string& file, const Progress& progress) {
                const auto made = createTsFile(file, whole.samples(), 1);
                const JobOutcome outcome = writeCourse(whole, column, *made, progress);
                made->flush(true);
                return outcome;
            });
}

void DFTWin::saveCut(const QString& title, const QString& ending, const CutJob& job)
{
    const QFileInfo computed(resultSource());
    const QString name =
        askSaveName(this, {title,
                           computed.absolutePath() + QLatin1Char('/') + computed.completeBaseName() + ending +
                               QStringLiteral(".ts"),
                           QStringLiteral("*.ts, *.Ts, *.TS, *.tS"), QStringLiteral("ts"),
                           [this](const QString& file) { return isSameFile(file, resultSource()); }});
    if (name.isEmpty()) {
        statusBar()->showMessage(QStringLiteral("Saving aborted"), kSavedMs);
        return;
    }
    writeNamed(name, [&](const Progress& progress) {
        PendingFile pending(QFile::encodeName(name).toStdString(), ".veltrac-new", ".ts");
        const auto whole = openTsFile(resultPath().string(), true);
        if (job(*whole, pending.path().string(), progress) == JobOutcome::Cancelled)
            return JobOutcome::Cancelled;
        return pending.commit(progress);
    });
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
            if (std::isfinite(level))
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
    m_shown.isDecibel = true;  // it may be negative: there is no logarithm of it
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

void DFTWin::showResult(const SpectrumRequest& request, const std::string& description)
{
    m_harmonics.reset();
    m_peaks->clear();
    m_cut->hide();
    m_peaks->show();
    m_shown.resolution = planSpectrum(request).resolution;
    m_shown.hasParts = request.result == SpectrumResult::RealImaginary;
    QVector<unsigned> columns{2};
    if (m_shown.hasParts)
        columns << 3;
    const bool isShown = hasBands(request.result) ? showBands(*canvas(), resultFile())
                                                  : canvas()->showColumns(resultFile(), columns);
    if (!isShown)
        return;
    canvas()->setSuggestedName(QFileInfo(resultSource()).completeBaseName() + QStringLiteral("_fft"));
    if (!hasBands(request.result))
        applyAxes();
    if (!m_kept.isEmpty()) {
        m_kept.addTo(canvas()->plot());
        canvas()->refresh(true);
    }
    try {
        m_peaks->showSpectrum(resultPath(), request, m_shown.mean, std::string(unitIn(description)));
    } catch (const TS::Failure&) {
        m_peaks->clear();
        statusBar()->showMessage(QStringLiteral("The scratch file could not be read"));
    }
}

// -- Lines --

// Where the axis shows sample numbers, those are of bins.
double DFTWin::frequencyAt(const std::optional<double>& cursor) const
{
    const double x = cursor.value_or(0.0);
    return canvas()->plot().axis().mode == XMode::Sample ? x * m_shown.resolution : x;
}

void DFTWin::sl_harmonics()
{
    if (m_peaks->showsHarmonics()) {
        m_peaks->showPeaks();
        return;
    }
    const auto& a = canvas()->plot().cursor(Plot2D::A);
    const std::optional<double> base = a ? frequencyAt(a) : m_peaks->chosenFrequency();
    if (!hasResult() || m_peaks->isHidden() || !base) {
        statusBar()->showMessage(
            QStringLiteral("Harmonics are those of a spectrum at cursor A, or of one of its peaks"));
        return;
    }
    m_peaks->showHarmonics(*base);
    markHarmonics();
}

void DFTWin::markHarmonics()
{
    if (m_harmonics) {
        canvas()->plot().remove(*m_harmonics);
        m_harmonics.reset();
    }
    const Plot2D& plot = canvas()->plot();
    if (m_peaks->showsHarmonics() && !m_shown.hasParts && !plot.groups().empty() &&
        plot.axis().mode != XMode::Sample)
        m_harmonics = markLines(*canvas(), m_peaks->harmonics(), m_peaks->title());
    else
        canvas()->replot();
}

void DFTWin::showLines()
{
    if (!hasResult() || m_peaks->isHidden())
        return;
    const auto& a = canvas()->plot().cursor(Plot2D::A);
    const auto& b = canvas()->plot().cursor(Plot2D::B);
    if (a && b)
        m_peaks->showPowerBetween(frequencyAt(a), frequencyAt(b));
    else
        m_peaks->showPowerBetween(std::nullopt, std::nullopt);
    // The harmonics follow the cursor, unless it is one of them that it stands at.
    if (a && m_peaks->showsHarmonics() && !m_choosesLine) {
        m_peaks->showHarmonics(frequencyAt(a));
        markHarmonics();
    }
}

void DFTWin::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_H && event->modifiers() == Qt::NoModifier)
        sl_harmonics();
    else
        ResultWindow::keyPressEvent(event);
}

// -- Spectra that stay --

void DFTWin::sl_keep()
{
    std::vector<Group>& groups = canvas()->plot().groups();
    if (!hasResult() || m_peaks->isHidden() || groups.empty()) {
        statusBar()->showMessage(QStringLiteral("There is no spectrum to be kept"));
        return;
    }
    const std::shared_ptr<HsVariable> shown = groups.front().variables().front();
    if (m_kept.has(shown)) {
        statusBar()->showMessage(QStringLiteral("It is kept already"));
        return;
    }
    bool ok = false;
    const QString name =
        QInputDialog::getText(
            this, QStringLiteral("Keep this spectrum"),
            QStringLiteral("It stays in the plot while others are computed, under the name:"),
            QLineEdit::Normal, QFileInfo(resultSource()).completeBaseName(), &ok)
            .trimmed();
    if (!ok || name.isEmpty())
        return;
    m_kept.keep(shown, name.toStdString());
    canvas()->replot();
    emit canvas()->x_plot_changed();
    statusBar()->showMessage(QStringLiteral("%1 stays in the plot").arg(name));
}

void DFTWin::sl_dropKept()
{
    const bool isShown = !m_peaks->isHidden() && hasResult();
    const auto current = isShown && !canvas()->plot().groups().empty()
                             ? canvas()->plot().groups().front().variables().front()
                             : nullptr;
    m_kept.drop(canvas()->plot(), current);
    canvas()->replot();
    emit canvas()->x_plot_changed();
    statusBar()->showMessage(QStringLiteral("Only the last result is shown"));
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
    const bool isSaved = writeNamed(name, [&](const Progress& progress) {
        const auto spectrum = openTsFile(resultPath().string(), true);
        return copyWholeFile(spectrum->descriptor(), QFile::encodeName(name).toStdString(), progress);
    });
    if (isSaved)
        resultSaved();
}

// Writes a file of that name and tells how that ended.
bool DFTWin::writeNamed(const QString& name, const std::function<JobOutcome(const Progress&)>& write)
{
    QString failure;
    try {
        JobProgress progress(this, QStringLiteral("Saving %1").arg(name));
        if (write(progress.callback()) == JobOutcome::Cancelled) {
            statusBar()->showMessage(QStringLiteral("Saving aborted"), kSavedMs);
            return false;
        }
    } catch (...) {
        failure = QString::fromLocal8Bit(reasonOfFailure().c_str());
    }
    if (!failure.isEmpty()) {
        statusBar()->showMessage(QStringLiteral("Nothing was saved"), kSavedMs);
        warnInBox(QStringLiteral("Saving file %1 failed\n%2.").arg(name, failure));
        return false;
    }
    statusBar()->showMessage(QStringLiteral("File %1 saved").arg(name), kSavedMs);
    if (QFileInfo(name).absolutePath() == QDir::currentPath())
        emit x_file_made(QFileInfo(name).fileName());
    return true;
}
