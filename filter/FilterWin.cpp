#include "filter/FilterWin.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QScopeGuard>
#include <QStatusBar>
#include <QToolBar>

#include <array>
#include <new>
#include <system_error>

#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "filter/CharacteristicPlot.h"
#include "filter/FilterCharWin.h"
#include "filter/FilterFields.h"
#include "filter/FilterRun.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/NumberField.h"
#include "share/PlotCanvas.h"
#include "share/QtMessageWin.h"
#include "share/Resources.h"
#include "share/SourceChooser.h"
#include "share/hydaction.h"

namespace {

const QString kTitle = QStringLiteral("Ts-Filt");
const QString kNoSource = QStringLiteral("No source file available");
const QString kNoPlot = QStringLiteral("Frequency plot of the moving average filter is not available.");
constexpr int kNoSourceMs = 6000;
constexpr int kFilteringMs = 60000;
constexpr int kFinishedMs = 5000;
constexpr int kPanelWidth = 330;
constexpr int kPreviewHeight = 150;
constexpr int kReadoutLines = 4;  // sample, time, input, output
constexpr double kWorthAskingSeconds = 5.0;
constexpr int kFirstType = 5;  // a Butterworth low-pass is what most come for

struct ActionRow
{
    const char* image;
    const char* shortcut;
    const char* slot;
    const char* text;
    const char* tip;
    const char* whatsThis;
};

enum ActionIndex { Help, Refresh, Execute, PlotChar, Save };

constexpr std::array<ActionRow, 5> kActions = {{
    {"Help", "F1", SLOT(sl_help()), "&Help...", "Invoke the help system.", "Invoke the help system."},
    {"Refresh", "F5", SLOT(sl_updateCanvas()), "Refresh...", "Update the canvas.", "Update the canvas."},
    {"Execute", "Ctrl+Return", SLOT(sl_execute()), "Execute calculation...",
     "Calculate the target acc. to the present algorithm.",
     "Calculate the target acc. to the present algorithm."},
    {"PlotFilter", "Ctrl+F", SLOT(sl_plotFiltWin()), "Plot filter char...", "Plot the filter window.",
     "Plot the selected filter window."},
    {"SaveTS", "Ctrl+S", SLOT(sl_saveResults()), "Save results...", "Save results to a .ts file",
     "Save results to a .ts file"},
}};

// One column of fields, though they stand in two widgets.
void alignLabels(const QWidget& panel)
{
    int widest = 0;
    const QList<QLabel*> labels = panel.findChildren<QLabel*>();
    for (const QLabel* const label : labels) {
        if (label->buddy() != nullptr)
            widest = std::max(widest, label->sizeHint().width());
    }
    for (QLabel* const label : labels) {
        if (label->buddy() != nullptr)
            label->setMinimumWidth(widest);
    }
}

}  // namespace

FilterWin::FilterWin(const QString& file, unsigned column, QWidget* parent) : SubWindow(parent)
{
    loadResources();
    setWindowTitle(kTitle);
    setWindowIcon(QIcon(QStringLiteral(":img_Filter")));
    auto* const centre = new QWidget(this);
    auto* const layout = new QHBoxLayout(centre);
    m_canvas = new PlotCanvas(centre);
    layout->addWidget(createPanel());
    layout->addWidget(m_canvas, 1);
    setCentralWidget(centre);
    createActions();
    connectFields();
    m_source->choose(file, column);
    sl_cbFilterActivated(kFirstType);
    m_canvas->showText(QStringLiteral("Choose a column and a filter, then execute the calculation."));
    statusBar()->showMessage(QStringLiteral("Welcome to Ts-Filt"));
    resize(1100, 620);
}

FilterWin::~FilterWin()
{
    dropWork();
}

// -- Widgets --

QWidget* FilterWin::createPanel()
{
    auto* const panel = new QWidget(this);
    auto* const layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    m_source = new SourceChooser(false, panel);
    m_fields = new FilterFields(panel);
    m_preview = new PlotCanvas(panel);
    m_preview->setMinimumHeight(kPreviewHeight);
    m_preview->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
    m_preview->setAccessibleName(QStringLiteral("Characteristic of the filter"));
    m_readout = new QLabel(panel);
    m_readout->setTextFormat(Qt::RichText);
    m_readout->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_readout->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_readout->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_readout->setAccessibleName(QStringLiteral("Values under the mouse"));
    m_readout->setMinimumHeight(kReadoutLines *
                                (fontMetrics().height() + 2));  // what is above keeps its place
    layout->addWidget(m_source);
    layout->addWidget(m_fields);
    layout->addWidget(m_preview, 1);
    layout->addWidget(m_readout);
    alignLabels(*panel);
    panel->setMinimumWidth(kPanelWidth);
    panel->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    return panel;
}

void FilterWin::createActions()
{
    QVector<QAction*> made;
    for (const ActionRow& row : kActions) {
        const QString image = QLatin1String(row.image);
        made << new HydAction(image, QKeySequence(QLatin1String(row.shortcut)), this, row.slot,
                              QLatin1String(row.text), QLatin1String(row.tip),
                              whatsThisText(image, QLatin1String(row.whatsThis)));
    }
    m_execute = made[Execute];
    m_plotChar = made[PlotChar];

    QMenu* const file = menuBar()->addMenu(QStringLiteral("&File actions"));
    file->addActions({made[Save], made[Refresh], made[Help]});
    file->addSeparator();
    file->addAction(QStringLiteral("&Close"), this, &QWidget::close, QKeySequence::Close);
    QMenu* const source = menuBar()->addMenu(QStringLiteral("&Source actions"));
    source->addAction(QStringLiteral("Source &file"), this, [this] { m_source->files()->showPopup(); });
    source->addAction(QStringLiteral("Source &column"), this, [this] { m_source->columns()->showPopup(); });
    source->addAction(QStringLiteral("&Read the directory again"), m_source, &SourceChooser::refresh);
    QMenu* const filter = menuBar()->addMenu(QStringLiteral("Fi&lter actions"));
    filter->addActions({made[Execute], made[PlotChar]});
    m_canvas->fillViewMenu(*menuBar()->addMenu(QStringLiteral("&View")));
    m_canvas->fillCursorMenu(*menuBar()->addMenu(QStringLiteral("C&ursors")));

    addToolBar(QStringLiteral("Actions"))
        ->addActions({made[Execute], made[PlotChar], made[Save], made[Refresh], made[Help]});
}

void FilterWin::connectFields()
{
    connect(m_source->files(), SIGNAL(activated(int)), this, SLOT(sl_cbSourceFileActivated(int)));
    connect(m_source->columns(), SIGNAL(activated(int)), this, SLOT(sl_cbSourceColActivated(int)));
    connect(m_source, &SourceChooser::x_source_changed, this, &FilterWin::showSource);
    connect(m_fields->types(), SIGNAL(currentIndexChanged(int)), this, SLOT(sl_cbFilterActivated(int)));
    const std::pair<FilterField, const char*> fields[] = {
        {FilterField::Freq0, SLOT(sl_fldFreq0Changed(QString))},
        {FilterField::Order, SLOT(sl_fldFiltOrderChanged(QString))},
        {FilterField::Freq1, SLOT(sl_fldFreq1Changed(QString))},
        {FilterField::Ripple, SLOT(sl_fldRippleChanged(QString))},
    };
    for (const auto& [use, slot] : fields)
        connect(m_fields->field(use), SIGNAL(textChanged(QString)), this, slot);
    connect(m_canvas, SIGNAL(x_cursor_moved(int, int, int)), this, SLOT(sl_cursor_moved(int, int, int)));
    connect(m_canvas, SIGNAL(x_got_resize_event()), this, SLOT(sl_plot()));
    for (const PlotCanvas* const canvas : {m_canvas, m_preview})
        connect(canvas, &PlotCanvas::x_told, this,
                [this](const QString& text) { statusBar()->showMessage(text); });
}

void FilterWin::sl_cbSourceFileActivated(int index)
{
    m_source->files()->setCurrentIndex(index);
    statusBar()->showMessage(m_source->file());
}

void FilterWin::sl_cbSourceColActivated(int index)
{
    m_source->columns()->setCurrentIndex(index);
    statusBar()->showMessage(m_source->columns()->currentText());
}

void FilterWin::showSource()
{
    double rate = 0.0;
    if (!m_source->file().isEmpty()) {
        try {
            rate =
                samplingFrequency(openTsFile(QFile::encodeName(m_source->file()).toStdString(), true)->dt());
        } catch (const TS::Failure&) {
            // The column box is empty then, and executing says so.
        }
    }
    showRate(rate);
    showPreview();
}

void FilterWin::showRate(double samplingHz)
{
    m_samplingHz = samplingHz;
    m_fields->showRate(samplingHz);
}

void FilterWin::sl_cbFilterActivated(int type)
{
    m_fields->showType(type);
    statusBar()->showMessage(QLatin1String(filterTypes()[static_cast<std::size_t>(type)].toolTip));
    fieldChanged();
}

// Executing waits until every field that counts holds a number.
void FilterWin::fieldChanged()
{
    const bool good = m_fields->isValid();
    m_execute->setEnabled(good);
    m_plotChar->setEnabled(good);
    showPreview();
}

void FilterWin::sl_fldFreq0Changed(const QString& /*text*/)
{
    fieldChanged();
}

void FilterWin::sl_fldFiltOrderChanged(const QString& /*text*/)
{
    fieldChanged();
}

void FilterWin::sl_fldFreq1Changed(const QString& /*text*/)
{
    fieldChanged();
}

void FilterWin::sl_fldRippleChanged(const QString& /*text*/)
{
    fieldChanged();
}

void FilterWin::sl_help()
{
    showHelp(nullptr, QStringLiteral("filter"), QStringLiteral("Ts-Filt help"))->show();
}

// -- The request --

bool FilterWin::validate(const FilterRequest& asked)
{
    const std::string complaint = filterComplaint(asked, m_samplingHz);
    if (complaint.empty())
        return true;
    showBox(QMessageBox::Warning, this, kTitle, QString::fromStdString(complaint));
    return false;
}

void FilterWin::tellReports(const QString& text)
{
    if (!text.isEmpty())
        showBox(QMessageBox::Warning, this, kTitle, text);
}

bool FilterWin::requireColumn(const char* axis, unsigned column)
{
    if (column != 0)
        return true;
    showBox(
        QMessageBox::Warning, this, QStringLiteral("Ts Column name error"),
        QStringLiteral("The selected %1 column name is invalid (==0).\n Select a valid name and try again!")
            .arg(QLatin1String(axis)));
    return false;
}

// -- Calculating --

// The sample time is taken anew: the header may have been edited since the file was chosen.
std::unique_ptr<TSFILE> FilterWin::openSource()
{
    const QString file = m_source->file();
    std::unique_ptr<TSFILE> source;
    try {
        if (TsApplication* const application = TsApplication::instance())
            source.reset(application->OpenTs(file, true));
        else
            source = openTsFile(QFile::encodeName(file).toStdString(), true);
    } catch (const TS::Failure&) {
        // told below
    }
    if (source)
        showRate(samplingFrequency(source->dt()));
    else
        statusBar()->showMessage(QStringLiteral("%1 could not be opened").arg(file));
    return source;
}

void FilterWin::sl_execute()
{
    if (m_source->file().isEmpty()) {
        statusBar()->showMessage(kNoSource, kNoSourceMs);
        return;
    }
    if (!requireColumn("Y1", m_source->column()))
        return;
    const FilterRequest asked = m_fields->request();
    const std::unique_ptr<TSFILE> source = openSource();
    if (!source || !validate(asked))
        return;
    QString failure;
    try {
        calculate(asked, *source);
    } catch (const TS::Failure&) {
        failure =
            QStringLiteral("%1 could not be read to its end, or the disk is full.").arg(m_source->file());
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

void FilterWin::calculate(const FilterRequest& asked, TSFILE& source)
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
    const FilterOutcome outcome = fillWork(asked, filter.get(), source, seconds);
    if (outcome.outcome == JobOutcome::Cancelled) {
        statusBar()->showMessage(QStringLiteral("Filtering cancelled"), kFinishedMs);
        return;
    }
    tellReports(QString::fromStdString(reports.text()));
    showResult(outcome, seconds);
}

// Fills a new work file, which takes the place of the one before when it is whole. The wait cursor is gone
// before any box opens.
FilterOutcome FilterWin::fillWork(const FilterRequest& asked, const FidFilter* filter, TSFILE& source,
                                  double& seconds)
{
    const std::string words =
        filter ? filterSpec(asked) : "Moving average over " + std::to_string(asked.order);
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const auto restore = qScopeGuard([] { QApplication::restoreOverrideCursor(); });
    statusBar()->showMessage(QStringLiteral("Filtering ongoing..."), kFilteringMs);
    const std::filesystem::path here = std::filesystem::current_path();
    const bool replaces = m_work && m_work->path().parent_path() == here;
    auto made = std::make_unique<ScratchFile>(here, replaces ? "temp1" : "temp", ".ts");
    FilterOutcome outcome;
    {
        const auto work = createTsFile(made->path().string(), source.samples(), 2);
        JobProgress progress(this, QStringLiteral("Filtering %1").arg(m_source->file()));
        describeWork(source, m_source->column(), *work, words);
        outcome = filter ? runFilter(source, m_source->column(), *work, filter, progress.callback())
                         : runMovingAverage(source, m_source->column(), *work,
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
    m_worthAsking = seconds > kWorthAskingSeconds;
    m_sourceFile = QFileInfo(m_source->file()).absoluteFilePath();
    m_words = QString::fromStdString(words);
    return outcome;
}

void FilterWin::showResult(const FilterOutcome& outcome, double seconds)
{
    const QString work = QFile::decodeName(m_work->path().c_str());
    m_canvas->showColumns(work, {1, 2}, PlotCanvas::Axes::ByUnit);
    // Over one another even where the source's description tells no unit.
    std::vector<Group>& groups = m_canvas->plot().groups();
    if (groups.size() == 2) {
        groups[0].variables().push_back(groups[1].variables().front());
        groups.pop_back();
        m_canvas->plot().fitAll();
    }
    m_canvas->plot().xTitle = "Time[s]";
    m_canvas->plot().title =
        QStringLiteral("%1: %2").arg(QFileInfo(m_sourceFile).fileName(), m_words).toStdString();
    m_canvas->setSuggestedName(QFileInfo(m_sourceFile).completeBaseName() + QStringLiteral("_filt"));
    m_canvas->replot();
    QString told =
        QStringLiteral("%1 samples in %2 s")
            .arg(QLocale(QLocale::C).toString(m_canvas->plot().variables().front()->variable().rows()))
            .arg(seconds, 0, 'f', 1);
    if (outcome.missing > 0)
        told += QStringLiteral(", %1 missing values").arg(outcome.missing);
    m_readout->setText(told);
    statusBar()->showMessage(QStringLiteral("Filtering...finished"), kFinishedMs);
}

void FilterWin::sl_updateCanvas()
{
    m_source->refresh();
    showSource();
    if (m_work)
        m_canvas->refresh(false);
    m_canvas->replot();
}

void FilterWin::sl_plot()
{
    m_canvas->replot();
}

void FilterWin::sl_cursor_moved(int x, int /*y*/, int /*buttons*/)
{
    if (m_work)
        m_readout->setText(readoutTable(m_canvas->readoutAt(x)));
}

// -- The characteristic --

void FilterWin::showPreview()
{
    const FilterRequest asked = m_fields->request();
    QString text;
    if (m_source->file().isEmpty())
        text = kNoSource;
    else if (asked.isMovingAverage())
        text = kNoPlot;
    else if (m_fields->isValid())
        text = QString::fromStdString(filterComplaint(asked, m_samplingHz));
    FidReports reports;
    FidFilterPtr filter;
    if (text.isEmpty() && m_fields->isValid())
        filter = designFilter(asked, m_samplingHz);
    if (filter)
        showCharacteristic(*m_preview, characteristicOf(filter.get(), m_samplingHz), {true, true, false});
    else
        m_preview->showText(text.isEmpty() ? QString::fromStdString(reports.text()) : text);
}

void FilterWin::sl_plotFiltWin()
{
    const FilterRequest asked = m_fields->request();
    if (asked.isMovingAverage()) {
        showBox(QMessageBox::Information, this, kTitle, kNoPlot);
        return;
    }
    if (m_source->file().isEmpty()) {
        statusBar()->showMessage(kNoSource, kNoSourceMs);
        return;
    }
    if (!openSource() || !validate(asked))
        return;
    FidReports reports;
    const FidFilterPtr filter = designFilter(asked, m_samplingHz);
    if (!filter) {
        tellReports(QString::fromStdString(reports.text()));
        return;
    }
    auto* const window = new FilterCharWin(characteristicOf(filter.get(), m_samplingHz),
                                           QString::fromStdString(filterSpec(asked)));
    connect(window, SIGNAL(windowGone(subWindow)), this, SLOT(sl_subwindowGone(subWindow)));
    m_subWindows.append(window);
    window->show();
}

void FilterWin::sl_subwindowGone(subWindow window)
{
    m_subWindows.removeAll(QPointer<QWidget>(window));
}
