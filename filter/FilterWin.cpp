#include "filter/FilterWin.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QFileInfo>
#include <QFormLayout>
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
#include "filter/FilterCharWin.h"
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
constexpr int kNoSourceMs = 6000;
constexpr int kFilteringMs = 60000;
constexpr int kFinishedMs = 5000;
constexpr int kPanelWidth = 330;
constexpr double kMostPoints = 4294967295.0;
constexpr int kFirstType = 5;  // a Butterworth low-pass is what most come for

// Half of a job's progress: 0 the first, 1 the second.
Progress half(JobProgress& whole, int which)
{
    return [&whole, which](std::uint64_t done, std::uint64_t total) {
        return whole(done + static_cast<std::uint64_t>(which) * total, 2 * total);
    };
}

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
    m_type->setCurrentIndex(kFirstType);
    sl_cbFilterActivated(kFirstType);
    showSource();
    m_canvas->showText(QStringLiteral("Choose a column and a filter, then execute the calculation."));
    statusBar()->showMessage(QStringLiteral("Welcome to Ts-Filt"));
    resize(1100, 620);
}

FilterWin::~FilterWin()
{
    dropWork();
}

// -- Widgets --

NumberField* FilterWin::addField(QFormLayout& form, FilterField use, const QString& label,
                                 const QString& text, const QString& tip, const char* slot)
{
    auto* const field = new NumberField(text, this);
    field->setToolTip(tip);
    field->setWhatsThis(tip);
    field->setAccessibleName(label);
    auto* const name = new QLabel(label, this);
    name->setBuddy(field);
    auto* const reason = new QLabel(this);
    reason->setWordWrap(true);
    reason->hide();
    form.addRow(name, field);
    form.addRow(reason);
    field->setReasonLabel(reason);
    m_fields.append({use, name, field, reason});
    connect(field, SIGNAL(textChanged(QString)), this, slot);
    return field;
}

QWidget* FilterWin::createPanel()
{
    auto* const panel = new QWidget(this);
    auto* const layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    m_source = new SourceChooser(false, panel);
    m_rate = new QLabel(panel);
    m_type = new QComboBox(panel);
    for (const FilterType& type : filterTypes()) {
        m_type->addItem(QLatin1String(type.entry));
        m_type->setItemData(m_type->count() - 1, QLatin1String(type.toolTip), Qt::ToolTipRole);
    }
    m_type->setMaxVisibleItems(m_type->count());
    auto* const form = new QFormLayout;
    form->addRow(QStringLiteral("Sampling freq [Hz]:"), m_rate);
    form->addRow(QStringLiteral("Filter &type:"), m_type);
    addField(*form, FilterField::Freq0, QStringLiteral("Freq&0 [Hz]:"), QStringLiteral("10"),
             QStringLiteral("Lowpass/Highpass corner frequency."), SLOT(sl_fldFreq0Changed(QString)));
    addField(*form, FilterField::Order, QStringLiteral("Filter &order:"), m_orderText,
             QStringLiteral("For Low/Highpass=no of poles, Bandpass/stop= 0.5 x no of poles."),
             SLOT(sl_fldFiltOrderChanged(QString)))
        ->setWhole(-kMostPoints, kMostPoints);
    addField(*form, FilterField::Freq1, QStringLiteral("Freq&1 [Hz]:"), QStringLiteral("40"),
             QStringLiteral("Bandpass/Bandstop upper corner frequency."), SLOT(sl_fldFreq1Changed(QString)));
    addField(*form, FilterField::Ripple, QStringLiteral("&Ripple [dB]:"), QStringLiteral("-0.1"),
             QStringLiteral("Ripple in dB (negative)."), SLOT(sl_fldRippleChanged(QString)));
    m_readout = new QLabel(panel);
    m_readout->setTextFormat(Qt::RichText);
    m_readout->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_readout->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_readout->setAccessibleName(QStringLiteral("Values under the mouse"));
    layout->addWidget(m_source);
    layout->addLayout(form);
    layout->addSpacing(8);
    layout->addWidget(m_readout, 1);
    panel->setFixedWidth(kPanelWidth);
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
    connect(m_type, SIGNAL(activated(int)), this, SLOT(sl_cbFilterActivated(int)));
    connect(m_canvas, SIGNAL(x_cursor_moved(int, int, int)), this, SLOT(sl_cursor_moved(int, int, int)));
    connect(m_canvas, SIGNAL(x_got_resize_event()), this, SLOT(sl_plot()));
    connect(m_canvas, &PlotCanvas::x_told, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
}

void FilterWin::sl_cbSourceFileActivated(int /*index*/)
{
    statusBar()->showMessage(m_source->file());
}

void FilterWin::sl_cbSourceColActivated(int /*index*/)
{
    statusBar()->showMessage(m_source->columns()->currentText());
}

void FilterWin::showSource()
{
    m_samplingHz = 0.0;
    if (!m_source->file().isEmpty()) {
        try {
            m_samplingHz =
                samplingFrequency(openTsFile(QFile::encodeName(m_source->file()).toStdString(), true)->dt());
        } catch (const TS::Failure&) {
            // The column box is empty then, and executing says so.
        }
    }
    m_rate->setText(m_samplingHz > 0 ? QString::number(m_samplingHz, 'g', 7) : QStringLiteral("none"));
}

void FilterWin::sl_cbFilterActivated(int type)
{
    const FilterType& chosen = filterTypes()[static_cast<std::size_t>(type)];
    const bool points = type == 0;
    m_type->setToolTip(QLatin1String(chosen.toolTip));
    for (const Field& f : m_fields) {
        const bool used = chosen.uses(f.use);
        f.field->setEnabled(used);
        f.label->setEnabled(used);
        if (f.use == FilterField::Order && m_shownType >= 0 && points != (m_shownType == 0)) {
            (points ? m_orderText : m_pointsText) = f.field->text();
            f.field->setText(points ? m_pointsText : m_orderText);
        }
        if (f.use == FilterField::Order)
            f.label->setText(points ? QStringLiteral("No &of points:") : QStringLiteral("Filter &order:"));
    }
    m_shownType = type;
    statusBar()->showMessage(QLatin1String(chosen.toolTip));
    fieldChanged();
}

// Executing waits until every field that counts holds a number.
void FilterWin::fieldChanged()
{
    bool good = true;
    for (const Field& f : m_fields) {
        const bool wrong = f.field->isEnabled() && !f.field->isValid();
        f.reason->setVisible(wrong);
        good = good && !wrong;
    }
    m_execute->setEnabled(good);
    m_plotChar->setEnabled(good);
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

FilterRequest FilterWin::request() const
{
    FilterRequest asked;
    asked.type = m_type->currentIndex();
    for (const Field& f : m_fields) {
        const double number = f.field->number();
        switch (f.use) {
            case FilterField::Freq0:
                asked.freq0 = number;
                break;
            case FilterField::Freq1:
                asked.freq1 = number;
                break;
            case FilterField::Ripple:
                asked.rippleDb = number;
                break;
            default:
                asked.order = static_cast<int>(std::clamp(number, -1.0, 2147483647.0));
                break;
        }
    }
    return asked;
}

bool FilterWin::validate(const FilterRequest& asked)
{
    QString complaint;
    if (!asked.isMovingAverage() && !(m_samplingHz > 0))
        complaint =
            QStringLiteral("The sample time of %1 is not above 0.\nSet it in the header editor first.")
                .arg(m_source->file());
    else
        complaint = QString::fromStdString(filterComplaint(asked, m_samplingHz));
    if (complaint.isEmpty())
        return true;
    showBox(QMessageBox::Warning, this, kTitle, complaint);
    return false;
}

bool FilterWin::tellReports(const QString& text)
{
    if (text.isEmpty())
        return false;
    showBox(QMessageBox::Warning, this, kTitle, text);
    return true;
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

std::unique_ptr<TSFILE> FilterWin::openSource()
{
    if (TsApplication* const application = TsApplication::instance())
        return std::unique_ptr<TSFILE>(application->OpenTs(m_source->file(), true));
    try {
        return openTsFile(QFile::encodeName(m_source->file()).toStdString(), true);
    } catch (const TS::Failure&) {
        return nullptr;
    }
}

void FilterWin::sl_execute()
{
    if (m_source->file().isEmpty()) {
        statusBar()->showMessage(QStringLiteral("No source file available"), kNoSourceMs);
        return;
    }
    const FilterRequest asked = request();
    if (!requireColumn("Y1", m_source->column()) || !validate(asked))
        return;
    const std::unique_ptr<TSFILE> source = openSource();
    if (!source) {
        statusBar()->showMessage(QStringLiteral("%1 could not be opened").arg(m_source->file()));
        return;
    }
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

// Fills a new work file; it takes the place of the one before when it is whole. The wait cursor is gone
// before any box opens.
bool FilterWin::calculate(const FilterRequest& asked, TSFILE& source)
{
    FidReports reports;
    FidFilterPtr filter;
    if (!asked.isMovingAverage()) {
        filter = designFilter(asked, m_samplingHz);
        if (!filter) {
            tellReports(QString::fromStdString(reports.text()));
            return false;
        }
    }
    FilterOutcome outcome;
    double seconds = 0.0;
    const std::string words =
        asked.isMovingAverage() ? "Moving average over " + std::to_string(asked.order) : filterSpec(asked);
    std::unique_ptr<ScratchFile> made;
    {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        const auto restore = qScopeGuard([] { QApplication::restoreOverrideCursor(); });
        statusBar()->showMessage(QStringLiteral("Filtering ongoing..."), kFilteringMs);
        made =
            std::make_unique<ScratchFile>(std::filesystem::current_path(), m_work ? "temp1" : "temp", ".ts");
        const auto work = createTsFile(made->path().string(), source.samples(), 2);
        JobProgress progress(this, QStringLiteral("Filtering %1").arg(m_source->file()));
        outcome.outcome = copyToWork(source, m_source->column(), *work, words, half(progress, 0));
        if (outcome.outcome == JobOutcome::Done)
            outcome =
                filter ? runFilter(*work, filter.get(), half(progress, 1))
                       : runMovingAverage(*work, static_cast<std::uint32_t>(asked.order), half(progress, 1));
        work->flush(true);
        seconds = progress.seconds();
    }
    if (outcome.outcome == JobOutcome::Cancelled) {
        statusBar()->showMessage(QStringLiteral("Filtering cancelled"), kFinishedMs);
        return false;
    }
    if (m_work)
        made->putInPlace(m_work->path());
    else
        m_work = std::move(made);
    m_saved = false;
    m_sourceFile = QFileInfo(m_source->file()).absoluteFilePath();
    m_words = QString::fromStdString(words);
    tellReports(QString::fromStdString(reports.text()));
    showResult(outcome, seconds);
    return true;
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

void FilterWin::sl_plotFiltWin()
{
    const FilterRequest asked = request();
    if (asked.isMovingAverage()) {
        showBox(QMessageBox::Information, this, kTitle,
                QStringLiteral("Frequency plot of the moving average filter is not available."));
        return;
    }
    if (m_source->file().isEmpty()) {
        statusBar()->showMessage(QStringLiteral("No source file available"), kNoSourceMs);
        return;
    }
    if (!validate(asked))
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
