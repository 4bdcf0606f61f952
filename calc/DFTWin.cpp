#include "calc/DFTWin.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QTableWidget>
#include <QToolBar>

#include <unistd.h>

#include <cmath>
#include <fstream>
#include <new>

#include "calc/Spectrum.h"
#include "calc/SpectrumSamples.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/HeaderText.h"
#include "share/JobProgress.h"
#include "share/NumberField.h"
#include "share/PlotCanvas.h"
#include "share/QtMessageWin.h"
#include "share/Resources.h"
#include "share/SourceChooser.h"
#include "share/hydaction.h"

namespace {

constexpr int kPanelWidth = 300;
constexpr std::size_t kPeaks = 10;
constexpr std::size_t kHarmonics = 40;
constexpr int kDoneMs = 6000;
constexpr double kEqualSteps = 0.001;
constexpr std::uint32_t kLeastSegment = 256;
constexpr std::uint32_t kMostSegment = 1048576;

struct ResultRow
{
    const char* name;    // in the box
    const char* column;  // in the file
    const char* unit;    // of a column in [%1]
};
// In the order of SpectrumResult.
constexpr ResultRow kResults[] = {{"Amplitude", "Amplitude", "%1"},
                                  {"RMS amplitude", "RMS", "%1"},
                                  {"Power density", "PSD", "(%1)^2/Hz"},
                                  {"Amplitude density", "ASD", "%1/sqrt(Hz)"},
                                  {"Real and imaginary", "Re", "%1"}};

// In the order of SpectrumTrend.
const char* const kTrends[] = {"Mean", "Straight line", "Nothing"};
const char* const kTitle = "Ts-FFT";

QString grouped(qulonglong number)
{
    QString text = QString::number(number);
    for (int i = text.size() - 3; i > 0; i -= 3)
        text.insert(i, QLatin1Char(' '));
    return text;
}

QString memoryText(std::uint64_t bytes)
{
    return bytes >= 1000000000U ? QStringLiteral("%1 GB").arg(static_cast<double>(bytes) / 1e9, 0, 'f', 1)
           : bytes >= 1000000U  ? QStringLiteral("%1 MB").arg(bytes / 1000000U)
                                : QStringLiteral("%1 kB").arg(bytes / 1000U + 1);
}

std::uint64_t machineMemory()
{
    return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) *
           static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

// The text in the last [ ] of a description.
QString unitOf(const QString& description)
{
    const int open = description.lastIndexOf(QLatin1Char('['));
    const int close = description.indexOf(QLatin1Char(']'), open);
    return open < 0 || close < 0 ? QString() : description.mid(open + 1, close - open - 1);
}

QComboBox* boxOf(const QStringList& entries)
{
    auto* const box = new QComboBox;
    box->addItems(entries);
    return box;
}

std::string localName(const QString& name)
{
    return name.toLocal8Bit().toStdString();
}

}  // namespace

DFTWin::DFTWin(const QString& file, unsigned column, QWidget* parent) : SubWindow(parent)
{
    loadResources();
    setWindowTitle(QLatin1String(kTitle));
    setWindowIcon(QIcon(QStringLiteral(":img_Dft")));
    auto* const centre = new QWidget(this);
    auto* const layout = new QHBoxLayout(centre);
    m_canvas = new PlotCanvas(centre);
    layout->addWidget(createPanel());
    layout->addWidget(m_canvas, 1);
    setCentralWidget(centre);
    createActions();

    connect(m_source, &SourceChooser::x_source_changed, this, &DFTWin::sourceChanged);
    connect(m_canvas, SIGNAL(x_cursor_moved(int, int, int)), this, SLOT(sl_cursor_moved(int, int, int)));
    connect(m_canvas, SIGNAL(x_got_resize_event()), this, SLOT(sl_plot()));
    connect(m_canvas, &PlotCanvas::x_told, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    m_source->choose(file, column);
    m_canvas->showText(QStringLiteral("Choose a file and a column, then execute the calculation."));
    statusBar()->showMessage(QStringLiteral("Welcome to Ts-FFT"));
    resize(1080, 700);
}

DFTWin::~DFTWin()
{
    dropResult();
}

// -- Building --

QWidget* DFTWin::createPanel()
{
    auto* const panel = new QWidget(this);
    auto* const layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    m_source = new SourceChooser(false, panel);
    auto* const form = new QFormLayout;
    createFields(*form);
    m_plan = new QLabel(panel);
    m_plan->setWordWrap(true);
    m_plan->setAccessibleName(QStringLiteral("What will be computed"));
    m_readout = new QLabel(panel);
    m_readout->setTextFormat(Qt::RichText);
    m_readout->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_readout->setAccessibleName(QStringLiteral("Values under the mouse"));
    createPeaks();
    layout->addWidget(m_source);
    layout->addLayout(form);
    layout->addWidget(m_plan);
    layout->addSpacing(6);
    layout->addWidget(m_peaksTitle);
    layout->addWidget(m_peakTable, 1);
    layout->addWidget(m_readout);
    panel->setFixedWidth(kPanelWidth);
    return panel;
}

void DFTWin::createFields(QFormLayout& form)
{
    m_from = new NumberField(QStringLiteral("1"));
    m_to = new NumberField(QStringLiteral("1"));
    QStringList trends;
    for (const char* const trend : kTrends)
        trends << QLatin1String(trend);
    QStringList windows;
    for (int w = 0; w < kSpectrumWindows; ++w)
        windows << QLatin1String(spectrumWindowName(static_cast<SpectrumWindow>(w)));
    QStringList results;
    for (const ResultRow& row : kResults)
        results << QLatin1String(row.name);
    m_trend = boxOf(trends);
    m_window = boxOf(windows);
    m_method = boxOf({QStringLiteral("Whole range"), QStringLiteral("Averaged segments")});
    m_segment = new QComboBox;
    for (std::uint32_t n = kLeastSegment; n <= kMostSegment; n *= 2)
        m_segment->addItem(QString::number(n));
    m_segment->setEditable(true);
    m_segment->setCurrentText(QStringLiteral("4096"));
    m_overlap = boxOf(
        {QStringLiteral("50 %"), QStringLiteral("0 %"), QStringLiteral("67 %"), QStringLiteral("75 %")});
    m_length = boxOf({QStringLiteral("Shorten"), QStringLiteral("Pad with zeros")});
    m_result = boxOf(results);
    m_decibel = new QCheckBox(QStringLiteral("&dB"));

    const std::pair<const char*, QWidget*> rows[] = {
        {"&From sample:", m_from}, {"&To sample:", m_to},  {"&Remove:", m_trend},
        {"&Window:", m_window},    {"&Method:", m_method}, {"Se&gment length:", m_segment},
        {"&Overlap:", m_overlap},  {"&Length:", m_length}, {"R&esult:", m_result},
        {"", m_decibel},
    };
    for (const auto& [label, field] : rows) {
        form.addRow(QLatin1String(label), field);
        field->setAccessibleName(
            QString::fromLatin1(label).remove(QLatin1Char('&')).remove(QLatin1Char(':')));
    }
    for (QComboBox* const box : {m_trend, m_window, m_method, m_overlap, m_length, m_result})
        connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, &DFTWin::fieldsChanged);
    connect(m_segment, &QComboBox::currentTextChanged, this, &DFTWin::fieldsChanged);
    connect(m_decibel, &QCheckBox::toggled, this, &DFTWin::fieldsChanged);
    for (NumberField* const field : {m_from, m_to})
        connect(field, &QLineEdit::textChanged, this, &DFTWin::fieldsChanged);
}

void DFTWin::createPeaks()
{
    m_peaksTitle = new QLabel(QStringLiteral("Peaks"));
    m_peakTable = new QTableWidget(0, 2);
    m_peakTable->setAccessibleName(QStringLiteral("Peaks"));
    m_peakTable->setHorizontalHeaderLabels({QStringLiteral("Freq [Hz]"), QStringLiteral("Value")});
    m_peakTable->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    m_peakTable->verticalHeader()->setDefaultSectionSize(20);
    m_peakTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_peakTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_peakTable->setSelectionMode(QAbstractItemView::SingleSelection);
    m_peakTable->setToolTip(
        QStringLiteral("A click moves cursor A there; H shows the harmonics, H again the peaks."));
    connect(m_peakTable, &QTableWidget::currentCellChanged, this, [this](int row) {
        if (row < 0 || m_peakTable->item(row, 0) == nullptr)
            return;
        m_canvas->plot().setCursor(Plot2D::A, m_peakTable->item(row, 0)->data(Qt::UserRole).toDouble());
        m_canvas->replot();
    });
    auto* const harmonics = new QShortcut(QKeySequence(Qt::Key_H), m_peakTable);
    harmonics->setContext(Qt::WidgetShortcut);
    connect(harmonics, &QShortcut::activated, this, &DFTWin::sl_harmonics);
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
    actions->addAction(QStringLiteral("Ha&rmonics of the chosen peak"), this, &DFTWin::sl_harmonics);
    actions->addAction(QStringLiteral("Read the &directory again"), m_source, &SourceChooser::refresh,
                       QKeySequence::Refresh);
    actions->addSeparator();
    actions->addAction(QStringLiteral("&Close"), this, &QWidget::close, QKeySequence::Close);
    m_canvas->fillViewMenu(*menuBar()->addMenu(QStringLiteral("&View")));
    m_canvas->fillCursorMenu(*menuBar()->addMenu(QStringLiteral("C&ursors")));
    QMenu* const axes = menuBar()->addMenu(QStringLiteral("A&xes"));
    for (const bool isX : {true, false}) {
        QAction* const log = axes->addAction(isX ? QStringLiteral("Logarithmic &frequency")
                                                 : QStringLiteral("Logarithmic &values"));
        log->setCheckable(true);
        connect(log, &QAction::toggled, this, [this, isX](bool on) {
            if (isX)
                m_canvas->setLogarithmicX(on);
            else
                m_canvas->setLogarithmicY(0, on);
        });
    }
    addToolBar(QStringLiteral("Actions"))->addActions({m_execute, m_save, help});
}

void DFTWin::sl_help()
{
    showHelp(nullptr, QStringLiteral("spectrum"), QStringLiteral("FFT info"))->show();
}

// -- Fields --

void DFTWin::sourceChanged()
{
    m_samples = 0;
    m_dt = 0.0;
    try {
        if (!m_source->file().isEmpty()) {
            const auto file = openTsFile(localName(m_source->file()), true);
            m_samples = file->samples();
            m_dt = file->dt();
        }
    } catch (const TS::Failure&) {
        // No samples: the line below the fields says so.
    }
    const QSignalBlocker quietFrom(m_from);
    const QSignalBlocker quietTo(m_to);
    m_from->setWhole(1, std::max(m_samples, 1U));
    m_to->setWhole(1, std::max(m_samples, 1U));
    m_from->setText(QStringLiteral("1"));
    m_to->setText(QString::number(m_samples));
    fieldsChanged();
}

SpectrumRequest DFTWin::request() const
{
    static constexpr int kOverlaps[] = {50, 0, 67, 75};
    SpectrumRequest request;
    request.column = m_source->column();
    request.from = static_cast<std::uint32_t>(m_from->number());
    request.to = static_cast<std::uint32_t>(m_to->number());
    request.trend = static_cast<SpectrumTrend>(m_trend->currentIndex());
    request.window = static_cast<SpectrumWindow>(m_window->currentIndex());
    request.averaged = m_method->currentIndex() == 1;
    request.segment = m_segment->currentText().toUInt();
    request.overlapPercent = kOverlaps[m_overlap->currentIndex()];
    request.pad = m_length->currentIndex() == 1;
    request.result = static_cast<SpectrumResult>(m_result->currentIndex());
    request.decibel = m_decibel->isChecked() && request.result != SpectrumResult::RealImaginary;
    request.dt = m_dt;
    return request;
}

QString DFTWin::reason() const
{
    if (m_source->file().isEmpty())
        return QStringLiteral("There is no ts-file in this directory.");
    if (m_source->column() == 0)
        return QStringLiteral("The file has no column that can be transformed.");
    if (!(m_dt > 0.0) || !std::isfinite(m_dt))
        return QStringLiteral("The sample time of the file is not above 0. Set it in the header editor.");
    for (const NumberField* const field : {m_from, m_to})
        if (!field->isValid())
            return field->reason();
    if (m_to->number() - m_from->number() < 1)
        return QStringLiteral("The range holds fewer than 2 samples.");
    const SpectrumRequest wanted = request();
    if (wanted.averaged && (wanted.segment < kLeastSegment || wanted.segment > kMostSegment))
        return QStringLiteral("A segment has 256 to 1 048 576 samples.");
    if (wanted.averaged && wanted.result == SpectrumResult::RealImaginary)
        return QStringLiteral(
            "Real and imaginary parts are those of the whole range; segments have none in common.");
    if (planSpectrum(wanted).segments == 0)
        return QStringLiteral("The range is shorter than one segment.");
    return QString();
}

QString DFTWin::planText() const
{
    const SpectrumRequest wanted = request();
    const SpectrumPlan plan = planSpectrum(wanted);
    const QString reach = QStringLiteral("resolution %1 Hz, up to %2 Hz, %3")
                              .arg(plan.resolution, 0, 'g', 4)
                              .arg(plan.highest, 0, 'g', 6)
                              .arg(memoryText(plan.bytes));
    if (wanted.averaged)
        return QStringLiteral("%1 segments of %2 samples, %3")
            .arg(grouped(plan.segments), grouped(plan.used), reach);
    return QStringLiteral("%1 of %2 samples, %3")
        .arg(grouped(plan.used), grouped(wanted.to - wanted.from + 1), reach);
}

void DFTWin::fieldsChanged()
{
    const bool averaged = m_method->currentIndex() == 1;
    m_segment->setEnabled(averaged);
    m_overlap->setEnabled(averaged);
    m_decibel->setEnabled(m_result->currentIndex() != static_cast<int>(SpectrumResult::RealImaginary));
    const QString wrong = reason();
    markField(*m_segment, !averaged || !wrong.contains(QStringLiteral("segment")));
    m_plan->setText(wrong.isEmpty() ? planText() : wrong);
    m_execute->setEnabled(wrong.isEmpty());
}

// -- Doubts --

bool DFTWin::askToGoOn(const QString& text, const QString& yes)
{
    QMessageBox box(QMessageBox::Question, QLatin1String(kTitle), text, QMessageBox::NoButton, this);
    box.setTextFormat(Qt::PlainText);
    QPushButton* const go = box.addButton(yes, QMessageBox::AcceptRole);
    QPushButton* const cancel = box.addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    box.setDefaultButton(go);
    box.setEscapeButton(cancel);
    box.exec();
    return box.clickedButton() == go;
}

bool DFTWin::askAboutMissing(TSFILE& source, SpectrumRequest& wanted)
{
    JobProgress progress(this, QStringLiteral("Looking for missing values"));
    std::uint64_t missing = 0;
    if (countMissing(source, wanted, missing, progress.callback()) == JobOutcome::Cancelled)
        return false;
    if (missing == 0)
        return true;
    wanted.interpolate = true;
    return askToGoOn(QStringLiteral("Column %1 has %2 missing values in the range.")
                         .arg(m_source->columns()->currentText(), grouped(missing)),
                     QStringLiteral("Interpolate"));
}

bool DFTWin::askAboutSteps(TSFILE& source, SpectrumRequest& wanted)
{
    JobProgress progress(this, QStringLiteral("Looking at the steps of time"));
    StepRange steps;
    if (readSteps(source, wanted.from, wanted.to, steps, progress.callback()) == JobOutcome::Cancelled)
        return false;
    if (source.timeColumn() == 0)
        return true;
    if (!(steps.mean > 0.0)) {
        showBox(QMessageBox::Warning, this, QLatin1String(kTitle),
                QStringLiteral("The times of %1 do not rise; there is no spectrum of them.")
                    .arg(m_source->file()));
        return false;
    }
    wanted.dt = steps.mean;
    if (steps.greatest - steps.least <= kEqualSteps * steps.mean)
        return true;
    return askToGoOn(QStringLiteral("The steps of %1 are not equal (%2 to %3 s). The spectrum assumes %4 s.")
                         .arg(m_source->file())
                         .arg(steps.least, 0, 'g', 4)
                         .arg(steps.greatest, 0, 'g', 4)
                         .arg(steps.mean, 0, 'g', 4),
                     QStringLiteral("Continue"));
}

bool DFTWin::askAboutMemory(SpectrumRequest& wanted)
{
    const SpectrumPlan plan = planSpectrum(wanted);
    if (wanted.averaged || plan.bytes <= machineMemory() / 4)
        return true;
    if (!askToGoOn(QStringLiteral("Whole range needs %1. Use averaged segments?").arg(memoryText(plan.bytes)),
                   QStringLiteral("Yes")))
        return false;
    m_method->setCurrentIndex(1);
    if (!reason().isEmpty())
        return false;
    wanted.averaged = true;
    wanted.segment = request().segment;
    return true;
}

bool DFTWin::clearDoubts(TSFILE& source, SpectrumRequest& wanted)
{
    return askAboutMissing(source, wanted) && askAboutSteps(source, wanted) && askAboutMemory(wanted);
}

// -- Computing --

void DFTWin::sl_execute()
{
    TsApplication* const application = TsApplication::instance();
    const std::unique_ptr<TSFILE> source(
        application == nullptr ? nullptr : application->OpenTs(m_source->file(), true));
    if (!source) {
        statusBar()->showMessage(QStringLiteral("%1 could not be opened").arg(m_source->file()));
        return;
    }
    SpectrumRequest wanted = request();
    QString failure;
    try {
        if (clearDoubts(*source, wanted) && compute(*source, wanted))
            showResult();
    } catch (const std::bad_alloc&) {
        failure = QStringLiteral("There is not enough memory for the whole range. Use averaged segments.");
    } catch (const TS::Failure&) {
        failure = QStringLiteral("%1 could not be read to its end, or the disk took no more.")
                      .arg(m_source->file());
    } catch (const std::exception& e) {
        failure =
            QStringLiteral("The scratch file could not be made: %1").arg(QString::fromLocal8Bit(e.what()));
    }
    if (!failure.isEmpty()) {
        dropResult();
        m_canvas->showText(QStringLiteral("Nothing was computed."));
        showBox(QMessageBox::Warning, this, QLatin1String(kTitle), failure);
    }
}

bool DFTWin::compute(TSFILE& source, const SpectrumRequest& wanted)
{
    dropResult();
    JobProgress progress(this, QStringLiteral("Spectrum of %1").arg(m_source->file()));
    QApplication::setOverrideCursor(Qt::WaitCursor);
    JobOutcome outcome = JobOutcome::Cancelled;
    try {
        const std::unique_ptr<TSFILE> target = createTarget(source, wanted);
        outcome = computeSpectrum(source, wanted, *target, m_mean, progress.callback());
        const QString name = headerText(source.columnName(wanted.column));
        target->description(headerBytes(QStringLiteral("FFT %1 %2 n=%3 mean=%4")
                                            .arg(name, QLatin1String(spectrumWindowName(wanted.window)))
                                            .arg(planSpectrum(wanted).length)
                                            .arg(m_mean, 0, 'g', 4),
                                        kFileDescriptionBytes)
                                .constData());
        target->flush(true);
    } catch (...) {
        QApplication::restoreOverrideCursor();
        throw;
    }
    QApplication::restoreOverrideCursor();
    if (outcome == JobOutcome::Cancelled) {
        dropResult();
        m_canvas->showText(QStringLiteral("Nothing was computed."));
        statusBar()->showMessage(QStringLiteral("Cancelled"));
        return false;
    }
    m_computedRequest = wanted;
    m_sourceName = QFileInfo(m_source->file()).absoluteFilePath();
    m_computed = true;
    m_saved = false;
    m_save->setEnabled(true);
    statusBar()->showMessage(QStringLiteral("%1, mean %2, in %3 s")
                                 .arg(planText())
                                 .arg(m_mean, 0, 'g', 6)
                                 .arg(progress.seconds(), 0, 'f', 1));
    return true;
}

// The scratch file is one that this window makes: a tempDFT.ts that is there already keeps its name.
std::unique_ptr<TSFILE> DFTWin::createTarget(TSFILE& source, const SpectrumRequest& wanted)
{
    const SpectrumPlan plan = planSpectrum(wanted);
    m_scratch.emplace(std::filesystem::current_path(), "tempDFT", ".ts");
    auto target = createTsFile(m_scratch->path().string(), plan.bins, spectrumColumns(wanted));
    const ResultRow& row = kResults[static_cast<std::size_t>(wanted.result)];
    const QString unit = unitOf(headerText(source.columnDescription(wanted.column)));
    const QString resultUnit = wanted.decibel   ? QStringLiteral("dB")
                               : unit.isEmpty() ? QString()
                                                : QString::fromLatin1(row.unit).arg(unit);
    const QString description =
        QStringLiteral("%1 of %2 [%3]")
            .arg(QLatin1String(row.name), headerText(source.columnName(wanted.column)), resultUnit);
    target->dt(static_cast<float>(plan.resolution));
    target->timeUnit("Frequency[Hz]");
    target->columnName(1, "Freq");
    target->columnDescription(1, "Frequency [Hz]");
    target->columnName(2, row.column);
    target->columnDescription(2, headerBytes(description, kColumnDescriptionBytes).constData());
    if (spectrumColumns(wanted) > 2) {
        const bool parts = wanted.result == SpectrumResult::RealImaginary;
        target->columnName(3, parts ? "Im" : "Phase");
        target->columnDescription(3, parts ? headerBytes(description, kColumnDescriptionBytes).constData()
                                           : "Phase at the first sample [deg]");
    }
    for (std::uint32_t c = 1; c <= target->columns(); ++c)
        target->stampColumn(c);
    return target;
}

void DFTWin::showResult()
{
    const QString file = QFile::decodeName(m_scratch->path().c_str());
    QVector<unsigned> columns{2};
    if (m_computedRequest.result == SpectrumResult::RealImaginary)
        columns << 3;
    m_canvas->showColumns(file, columns);
    m_canvas->setSuggestedName(QFileInfo(m_sourceName).completeBaseName() + QStringLiteral("_fft"));
    const auto spectrum = openTsFile(m_scratch->path().string(), true);
    m_peaks = findPeaks(*spectrum, 2, kPeaks, m_computedRequest.window);
    m_showsHarmonics = false;
    showPeaks(m_peaks, QStringLiteral("Peaks (mean %1)").arg(m_mean, 0, 'g', 5));
}

void DFTWin::showPeaks(const std::vector<SpectrumPeak>& peaks, const QString& title)
{
    const QSignalBlocker quiet(m_peakTable);
    m_peaksTitle->setText(title);
    m_peakTable->setRowCount(static_cast<int>(peaks.size()));
    for (int row = 0; row < m_peakTable->rowCount(); ++row) {
        const SpectrumPeak& peak = peaks[static_cast<std::size_t>(row)];
        auto* const frequency = new QTableWidgetItem(QString::number(peak.frequency, 'g', 7));
        frequency->setData(Qt::UserRole, peak.frequency);
        m_peakTable->setItem(row, 0, frequency);
        m_peakTable->setItem(row, 1, new QTableWidgetItem(QString::number(peak.value, 'g', 6)));
    }
    m_peakTable->setCurrentCell(-1, -1);
}

void DFTWin::sl_harmonics()
{
    if (!m_computed)
        return;
    if (m_showsHarmonics || m_peaks.empty()) {
        m_showsHarmonics = false;
        showPeaks(m_peaks, QStringLiteral("Peaks (mean %1)").arg(m_mean, 0, 'g', 5));
        return;
    }
    const int row = std::max(0, m_peakTable->currentRow());
    const double base = m_peaks[static_cast<std::size_t>(row)].frequency;
    try {
        const auto spectrum = openTsFile(m_scratch->path().string(), true);
        showPeaks(findHarmonics(*spectrum, 2, base, kHarmonics, m_computedRequest.window),
                  QStringLiteral("Harmonics of %1 Hz").arg(base, 0, 'g', 6));
        m_showsHarmonics = true;
    } catch (const TS::Failure&) {
        statusBar()->showMessage(QStringLiteral("The scratch file could not be read"));
    }
}

void DFTWin::sl_cursor_moved(int x, int /*y*/, int /*buttons*/)
{
    if (m_computed)
        m_readout->setText(readoutTable(m_canvas->readoutAt(x)));
}

void DFTWin::sl_plot()
{
    m_canvas->replot();
}

// -- Saving and closing --

void DFTWin::sl_saveResults()
{
    if (!m_computed)
        return;
    const QFileInfo source(m_sourceName);
    const QString suggestion =
        source.absolutePath() + QLatin1Char('/') + source.completeBaseName() + QStringLiteral("_fft.ts");
    QString name = QFileDialog::getSaveFileName(this, QStringLiteral("Save results."), suggestion,
                                                QStringLiteral("*.ts, *.Ts, *.TS, *.tS"), nullptr,
                                                QFileDialog::DontConfirmOverwrite);
    if (name.isEmpty()) {
        statusBar()->showMessage(QStringLiteral("Saving aborted"), kDoneMs);
        return;
    }
    if (QFileInfo(name).suffix().toLower() != QLatin1String("ts"))
        name += QStringLiteral(".ts");
    const TsApplication* const application = TsApplication::instance();
    if (application != nullptr && application->isOpenForWriting(name)) {
        showBox(QMessageBox::Warning, this, QLatin1String(kTitle),
                QStringLiteral("%1 is open for writing in another window.\nNothing was saved.").arg(name));
        return;
    }
    if (QFileInfo::exists(name) &&
        !askYesNo(QMessageBox::Question, this, QLatin1String(kTitle),
                  QStringLiteral("%1 exists.\nReplace it by the spectrum?").arg(name)))
        return;
    if (saveAs(name)) {
        m_saved = true;
        statusBar()->showMessage(QStringLiteral("File %1 saved").arg(name), kDoneMs);
        emit x_directory_changed();
    } else {
        showBox(QMessageBox::Warning, this, QLatin1String(kTitle),
                QStringLiteral("Saving file %1 failed").arg(name));
    }
}

bool DFTWin::saveAs(const QString& name)
{
    try {
        const std::filesystem::path target = localName(name);
        ScratchFile copy(target.parent_path(), "tempDFT-save", ".ts");
        std::filesystem::copy_file(m_scratch->path(), copy.path(),
                                   std::filesystem::copy_options::overwrite_existing);
        copy.putInPlace(target);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool DFTWin::mayClose()
{
    if (m_computed && !m_saved) {
        if (askYesNo(QMessageBox::Question, this, QLatin1String(kTitle),
                     QStringLiteral("Do you want to save the results?"))) {
            sl_saveResults();
            if (!m_saved)
                return false;
        }
    }
    dropResult();
    return true;
}

void DFTWin::dropResult()
{
    m_computed = false;
    m_peaks.clear();
    if (m_peakTable != nullptr)
        m_peakTable->setRowCount(0);
    if (m_save != nullptr)
        m_save->setEnabled(false);
    m_scratch.reset();
}
