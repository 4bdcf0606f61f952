#include "filter/FilterWin.h"

#include <QComboBox>
#include <QFileInfo>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

#include "core/NumberTexts.h"
#include "core/SourceColumn.h"
#include "core/TSFILE.h"
#include "filter/CharacteristicPlot.h"
#include "filter/FilterCharWin.h"
#include "filter/FilterFields.h"
#include "filter/FilterRun.h"
#include "filter/ResultSaver.h"
#include "filter/SaveResultsDialog.h"
#include "share/ActionRow.h"
#include "share/Boxes.h"
#include "share/GroupedNumber.h"
#include "share/NumberField.h"
#include "share/PlotCanvas.h"
#include "share/QtMessageWin.h"
#include "share/RangeFields.h"
#include "share/ReadoutLabel.h"
#include "share/SourceChooser.h"
#include "share/hydaction.h"

using namespace veltrac;

namespace {

const QString kFilterTitle = QStringLiteral("Ts-Filt");
const QString kNoPlot = QStringLiteral("Frequency plot of the moving average filter is not available.");
constexpr int kFinishedMs = 5000;
constexpr int kFilterPanelWidth = 330;
constexpr int kPreviewHeight = 150;
constexpr int kFirstType = 5;  // a Butterworth low-pass is what most come for

enum class FilterAction { Help, Refresh, Execute, PlotChar, Save };

const ActionRow<FilterAction> kActions[] = {
    {FilterAction::Execute, "Execute", "Ctrl+Return", SLOT(sl_execute()), "Execute calculation...",
     "Calculate the target acc. to the present algorithm."},
    {FilterAction::PlotChar, "PlotFilter", "Ctrl+F", SLOT(sl_plotFiltWin()), "Plot filter char...",
     "Plot the filter window.", "Plot the selected filter window."},
    {FilterAction::Save, "SaveTS", "Ctrl+S", SLOT(sl_saveResults()), "Save results...",
     "Save results to a .ts file"},
    {FilterAction::Refresh, "Refresh", "F5", SLOT(sl_updateCanvas()), "Refresh...", "Update the canvas."},
    {FilterAction::Help, "Help", "F1", SLOT(sl_help()), "&Help...", "Invoke the help system."},
};

}  // namespace

FilterWin::FilterWin(const QString& file, unsigned column, QWidget* parent)
    : ResultWindow(kFilterTitle, QStringLiteral(":img_Filter"), kFilterPanelWidth, parent)
{
    createPanel();
    createActions();
    connectFields();
    source()->choose(file, column);
    sl_cbFilterActivated(kFirstType);
    canvas()->showText(QStringLiteral("Choose a column and a filter, then execute the calculation."));
    statusBar()->showMessage(QStringLiteral("Welcome to Ts-Filt"));
    resize(1100, 620);
}

// -- Widgets --

void FilterWin::createPanel()
{
    QWidget* const widget = panel()->parentWidget();
    m_fields = new FilterFields(widget);
    m_preview = new PlotCanvas(widget);
    m_preview->setMinimumHeight(kPreviewHeight);
    m_preview->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);  // what the panel has left
    m_preview->setAccessibleName(QStringLiteral("Characteristic of the filter"));
    panel()->addWidget(m_fields);
    panel()->addWidget(m_preview, 1);
    panel()->addWidget(readout());
}

void FilterWin::createActions()
{
    using enum FilterAction;
    std::map<FilterAction, QAction*> made;
    makeActions(this, this, std::span<const ActionRow<FilterAction>>(kActions), made);
    m_execute = made[Execute];
    m_plotChar = made[PlotChar];

    QMenu* const file = menuBar()->addMenu(QStringLiteral("File &actions"));
    file->addActions({made[Save], made[Refresh], made[Help]});
    addWhatsThis(file);
    file->addSeparator();
    file->addAction(QStringLiteral("&Close"), this, &QWidget::close)->setShortcut(QKeySequence::Close);
    // F5 does more here than to read the directory.
    fillSourceMenu(*menuBar()->addMenu(QStringLiteral("&Source actions")))->setShortcut(QKeySequence());
    QMenu* const filter = menuBar()->addMenu(QStringLiteral("Fi&lter actions"));
    filter->addActions({made[Execute], made[PlotChar]});
    addCanvasMenus();

    addToolBar(QStringLiteral("Actions"))
        ->addActions({made[Execute], made[PlotChar], made[Save], made[Refresh], made[Help]});
}

void FilterWin::connectFields()
{
    connect(m_fields->types(), SIGNAL(currentIndexChanged(int)), this, SLOT(sl_cbFilterActivated(int)));
    const std::pair<FilterField, const char*> fields[] = {
        {FilterField::Freq0, SLOT(sl_fldFreq0Changed(QString))},
        {FilterField::Order, SLOT(sl_fldFiltOrderChanged(QString))},
        {FilterField::Freq1, SLOT(sl_fldFreq1Changed(QString))},
        {FilterField::Ripple, SLOT(sl_fldRippleChanged(QString))},
    };
    for (const auto& [use, slot] : fields)
        connect(m_fields->field(use), SIGNAL(textChanged(QString)), this, slot);
    connect(m_fields, &FilterFields::x_passChanged, this, &FilterWin::fieldChanged);
    connect(m_preview, &PlotCanvas::x_told, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    connect(this, &SubWindow::windowGone, this, [this] {
        const QVector<QPointer<QWidget>> windows = m_subWindows;
        for (const QPointer<QWidget>& window : windows)
            if (window)
                window->close();
    });
}

void FilterWin::sourceChanged(TSFILE* file)
{
    showRate(file == nullptr ? 0.0 : samplingFrequency(file->dt()));
    fieldChanged();
}

void FilterWin::rangeChanged()
{
    fieldChanged();
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

// Executing waits until the range is one and every field that counts holds a number.
void FilterWin::fieldChanged()
{
    const bool good = m_fields->isValid();
    m_execute->setEnabled(good && range()->reason().isEmpty());
    m_plotChar->setEnabled(good);
    showPreview();
}

void FilterWin::setField(FilterField use, const QString& text)
{
    // The same text set again would take the text cursor from where the user types.
    if (NumberField* const field = m_fields->field(use); field->text() != text)
        field->setText(text);
    fieldChanged();
}

void FilterWin::sl_fldFreq0Changed(const QString& text)
{
    setField(FilterField::Freq0, text);
}

void FilterWin::sl_fldFiltOrderChanged(const QString& text)
{
    setField(FilterField::Order, text);
}

void FilterWin::sl_fldFreq1Changed(const QString& text)
{
    setField(FilterField::Freq1, text);
}

void FilterWin::sl_fldRippleChanged(const QString& text)
{
    setField(FilterField::Ripple, text);
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
    warnInBox(QString::fromStdString(complaint));
    return false;
}

void FilterWin::warnOfReports(const QString& text)
{
    if (!text.isEmpty())
        warnInBox(text);
}

std::unique_ptr<TSFILE> FilterWin::openAnew()
{
    std::unique_ptr<TSFILE> file = openSource();
    if (file)
        showRate(samplingFrequency(file->dt()));
    return file;
}

// -- Calculating --

void FilterWin::sl_execute()
{
    if (!requireSource() || !requireColumn("Y1", source()->column()))
        return;
    if (!range()->reason().isEmpty()) {
        statusBar()->showMessage(range()->reason());
        return;
    }
    const FilterRequest asked = m_fields->request();
    const std::unique_ptr<TSFILE> file = openAnew();
    if (!file || !validate(asked))
        return;
    FidReports reports;
    FidFilterPtr filter;
    if (!asked.isMovingAverage()) {
        filter = designFilter(asked, m_samplingHz);
        if (!filter) {
            warnOfReports(QString::fromStdString(reports.text()));
            return;
        }
    }
    const std::string words = filterWords(asked);
    FilterOutcome outcome;
    const auto job = [&](const Progress& progress, std::unique_ptr<ResultFile>& made) {
        const SourceColumn column(*file, source()->column(), range()->from(), range()->to());
        made = std::make_unique<ResultFile>(isResultHere() ? "temp1" : "temp", column.samples(), 2);
        describeWork(column, made->file(), words);
        outcome = filter ? runFilter(column, made->file(), filter.get(), progress, asked.pass)
                         : runMovingAverage(column, made->file(), static_cast<std::uint32_t>(asked.order),
                                            progress);
        return outcome.outcome;
    };
    if (!calculate(QStringLiteral("Filtering %1").arg(sourceName()), QStringLiteral("Filtering ongoing..."),
                   job))
        return;
    m_words = QString::fromStdString(words);
    statusBar()->showMessage(QStringLiteral("Filtering...finished"), kFinishedMs);
    showResult(outcome, file->timeMode() != 0);
    warnOfReports(QString::fromStdString(reports.text()));
}

void FilterWin::showResult(const FilterOutcome& outcome, bool hasOwnTimes)
{
    // Whatever took the file away meanwhile: the canvas says what it met.
    if (!canvas()->showColumns(resultFile(), {1, 2}, PlotCanvas::Axes::ByUnit))
        return;
    Plot2D& plot = canvas()->plot();
    const Group::Variables shown = plot.variables();
    if (shown.empty())
        return;
    // Over one another even where the source's description tells no unit.
    if (std::vector<Group>& groups = plot.groups(); groups.size() == 2) {
        groups[0].variables().push_back(groups[1].variables().front());
        groups.pop_back();
        plot.fitAll();
    }
    plot.xTitle = "Time[s]";
    const QFileInfo computed(resultSource());
    plot.title = QStringLiteral("%1: %2").arg(computed.fileName(), m_words).toStdString();
    canvas()->setSuggestedName(computed.completeBaseName() + QStringLiteral("_filt"));
    canvas()->replot();
    QString told = QStringLiteral("%1 samples in %2 s")
                       .arg(groupedNumber(shown.front()->variable().rows()))
                       .arg(seconds(), 0, 'f', 1);
    if (outcome.missing > 0)
        told += QStringLiteral(", ") + QString::fromStdString(counted(outcome.missing, "missing value"));
    if (hasOwnTimes)
        told += QStringLiteral(", taken at equal steps: the file's own times (\"Time\") are not used");
    readout()->showLine(told);
}

void FilterWin::sl_saveResults()
{
    if (!hasResult()) {
        statusBar()->showMessage(QStringLiteral("There is nothing to save: execute the calculation first"));
        return;
    }
    const QString suggested = QFileInfo(resultSource()).completeBaseName() + QStringLiteral("_filt");
    QString name = suggested;
    for (int i = 2; QFileInfo::exists(name + QStringLiteral(".ts")); ++i)
        name = suggested + QString::number(i);
    SaveResultsDialog dialog(resultSource(), name + QStringLiteral(".ts"), this);
    if (dialog.exec() != QDialog::Accepted) {
        statusBar()->showMessage(QStringLiteral("Saving aborted"), kSavedMs);
        return;
    }
    ResultSaver saver(this, resultPath(), resultSource(), resultFirst());
    const ResultSaver::Outcome outcome = saver.save(dialog);
    statusBar()->showMessage(saver.summary(outcome), kSavedMs);
    if (outcome != ResultSaver::Outcome::Saved)
        return;
    resultSaved();
    if (saver.madeFile().isEmpty())
        emit x_directory_changed();
    else
        emit x_file_made(saver.madeFile());
}

// -- The canvas --

void FilterWin::sl_updateCanvas()
{
    source()->refresh();
    if (hasResult())
        canvas()->refresh(false);
    canvas()->replot();
}

// -- The characteristic --

void FilterWin::showPreview()
{
    const FilterRequest asked = m_fields->request();
    QString text;
    if (source()->file().isEmpty())
        text = QStringLiteral("No source file available");
    else if (asked.isMovingAverage())
        text = kNoPlot;
    else if (!m_fields->isValid())
        text = QStringLiteral("A field is not right: it is marked.");
    else
        text = QString::fromStdString(filterComplaint(asked, m_samplingHz));
    FidReports reports;
    FidFilterPtr filter;
    if (text.isEmpty())
        filter = designFilter(asked, m_samplingHz);
    if (filter)
        m_preview->showPlot(
            gainPlot(characteristicOf(filter.get(), m_samplingHz, asked.pass == FilterPass::ZeroPhase),
                     {true, true, false}));
    else
        m_preview->showText(text.isEmpty() ? QString::fromStdString(reports.text()) : text);
}

void FilterWin::sl_plotFiltWin()
{
    const FilterRequest asked = m_fields->request();
    if (asked.isMovingAverage()) {
        showBox(QMessageBox::Information, this, kFilterTitle, kNoPlot);
        return;
    }
    if (!requireSource() || !openAnew() || !validate(asked))
        return;
    FidReports reports;
    const FidFilterPtr filter = designFilter(asked, m_samplingHz);
    if (!filter) {
        warnOfReports(QString::fromStdString(reports.text()));
        return;
    }
    auto* const window =
        new FilterCharWin(filter.get(), m_samplingHz, asked.pass, QString::fromStdString(filterWords(asked)));
    connect(window, SIGNAL(windowGone(subWindow)), this, SLOT(sl_subwindowGone(subWindow)));
    m_subWindows.append(window);
    window->show();
}

void FilterWin::sl_subwindowGone(subWindow window)
{
    m_subWindows.removeAll(QPointer<QWidget>(window));
}
