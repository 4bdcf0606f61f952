#include "filter/FilterWin.h"

#include <QComboBox>
#include <QFile>
#include <QFileInfo>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

#include <array>

#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "filter/CharacteristicPlot.h"
#include "filter/FilterCharWin.h"
#include "filter/FilterFields.h"
#include "filter/FilterRun.h"
#include "share/Boxes.h"
#include "share/NumberField.h"
#include "share/PlotCanvas.h"
#include "share/QtMessageWin.h"
#include "share/ReadoutLabel.h"
#include "share/SourceChooser.h"
#include "share/hydaction.h"

using namespace veltrac;

namespace {

const QString kTitle = QStringLiteral("Ts-Filt");
const QString kNoSource = QStringLiteral("No source file available");
const QString kNoPlot = QStringLiteral("Frequency plot of the moving average filter is not available.");
constexpr int kNoSourceMs = 6000;
constexpr int kPanelWidth = 330;
constexpr int kPreviewHeight = 150;
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

}  // namespace

FilterWin::FilterWin(const QString& file, unsigned column, QWidget* parent)
    : ResultWindow(kTitle, QStringLiteral(":img_Filter"), kPanelWidth, parent)
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

FilterWin::~FilterWin()
{
    dropWork();
}

// -- Widgets --

void FilterWin::createPanel()
{
    QWidget* const widget = panel()->parentWidget();
    m_fields = new FilterFields(widget);
    m_preview = new PlotCanvas(widget);
    m_preview->setMinimumHeight(kPreviewHeight);
    m_preview->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
    m_preview->setAccessibleName(QStringLiteral("Characteristic of the filter"));
    panel()->addWidget(m_fields);
    panel()->addWidget(m_preview, 1);
    panel()->addWidget(readout());
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
    addWhatsThis(file);
    file->addSeparator();
    file->addAction(QStringLiteral("&Close"), this, &QWidget::close, QKeySequence::Close);
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
    connect(source(), &SourceChooser::x_source_changed, this, &FilterWin::showSource);
    connect(m_fields->types(), SIGNAL(currentIndexChanged(int)), this, SLOT(sl_cbFilterActivated(int)));
    const std::pair<FilterField, const char*> fields[] = {
        {FilterField::Freq0, SLOT(sl_fldFreq0Changed(QString))},
        {FilterField::Order, SLOT(sl_fldFiltOrderChanged(QString))},
        {FilterField::Freq1, SLOT(sl_fldFreq1Changed(QString))},
        {FilterField::Ripple, SLOT(sl_fldRippleChanged(QString))},
    };
    for (const auto& [use, slot] : fields)
        connect(m_fields->field(use), SIGNAL(textChanged(QString)), this, slot);
    connect(m_preview, &PlotCanvas::x_told, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
}

void FilterWin::showSource()
{
    double rate = 0.0;
    if (!source()->file().isEmpty()) {
        try {
            rate =
                samplingFrequency(openTsFile(QFile::encodeName(source()->file()).toStdString(), true)->dt());
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

bool FilterWin::requireSource()
{
    if (source()->file().isEmpty())
        statusBar()->showMessage(kNoSource, kNoSourceMs);
    return !source()->file().isEmpty();
}

// -- The canvas --

void FilterWin::sl_updateCanvas()
{
    source()->refresh();
    showSource();
    if (m_work)
        canvas()->refresh(false);
    canvas()->replot();
}

// -- The characteristic --

void FilterWin::showPreview()
{
    const FilterRequest asked = m_fields->request();
    QString text;
    if (source()->file().isEmpty())
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
    if (!requireSource() || !openAnew() || !validate(asked))
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
