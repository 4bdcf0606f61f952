#include "share/ResultWindow.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSplitter>
#include <QStatusBar>

#include <algorithm>
#include <new>
#include <stdexcept>
#include <vector>

#include "core/FailureText.h"
#include "core/FileTime.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/CursorTable.h"
#include "share/JobProgress.h"
#include "share/NoticeStrip.h"
#include "share/PlotCanvas.h"
#include "share/RangeFields.h"
#include "share/ReadoutLabel.h"
#include "share/Resources.h"
#include "share/SourceChooser.h"

namespace veltrac {

namespace {

constexpr int kAbortedMs = 6000;
constexpr int kBusyMs = 60000;
constexpr int kNoSourceMs = 6000;

}  // namespace

ResultWindow::ResultWindow(const QString& title, const QString& icon, int panelWidth, QWidget* parent)
    : SubWindow(parent)
{
    loadResources();
    setWindowTitle(title);
    setWindowIcon(QIcon(icon));
    auto* const centre = new QWidget(this);
    auto* const panel = new QWidget(centre);
    panel->setMinimumWidth(panelWidth);
    panel->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    m_panel = new QVBoxLayout(panel);
    m_panel->setContentsMargins(0, 0, 0, 0);
    m_source = new SourceChooser(false, panel);
    m_panel->addWidget(m_source);
    m_range = new RangeFields(panel);
    m_panel->addWidget(m_range);
    m_readout = new ReadoutLabel(panel);
    m_canvas = new PlotCanvas(centre);
    m_cursors = new CursorTable(m_canvas, centre);
    m_cursors->hide();
    auto* const plot = new QSplitter(Qt::Vertical, centre);
    plot->setChildrenCollapsible(false);
    plot->addWidget(m_canvas);
    plot->addWidget(m_cursors);
    plot->setStretchFactor(0, 1);
    auto* const layout = new QHBoxLayout(centre);
    // On a low screen the panel is scrolled rather than that its texts are cut.
    m_scroll = new QScrollArea(centre);
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setWidgetResizable(true);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    m_scroll->setWidget(panel);
    m_scroll->setFocusPolicy(Qt::NoFocus);  // it follows the field that has the focus
    layout->addWidget(m_scroll);
    m_changed = new NoticeStrip(centre);
    auto* const noticed = new QVBoxLayout;
    noticed->addWidget(m_changed);
    noticed->addWidget(plot, 1);
    layout->addLayout(noticed, 1);
    setCentralWidget(centre);

    connect(m_source->files(), SIGNAL(activated(int)), this, SLOT(sl_cbSourceFileActivated(int)));
    connect(m_source->columns(), SIGNAL(activated(int)), this, SLOT(sl_cbSourceColActivated(int)));
    connect(m_canvas, SIGNAL(x_cursor_moved(int, int, int)), this, SLOT(sl_cursor_moved(int, int, int)));
    connect(m_canvas, SIGNAL(x_got_resize_event()), this, SLOT(sl_plot()));
    connect(m_source, &SourceChooser::x_source_changed, this, &ResultWindow::lookAtSource);
    connect(m_range, &RangeFields::x_changed, this, [this] { rangeChanged(); });
    connect(&m_watch, &FileWatch::x_changed, this, &ResultWindow::followSource);
    connect(m_changed, &NoticeStrip::x_pressed, this, &ResultWindow::sl_execute);
    connect(this, &SubWindow::windowGone, this, &ResultWindow::dropResult);
    // A result that was saved beside the others can be the next source.
    connect(this, &SubWindow::x_directory_changed, m_source, &SourceChooser::refresh);
    connect(m_canvas, &PlotCanvas::x_told, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
}

QAction* ResultWindow::fillSourceMenu(QMenu& menu)
{
    menu.addAction(QStringLiteral("Source &file"), this, [this] { m_source->files()->showPopup(); });
    menu.addAction(QStringLiteral("Source &column"), this, [this] { m_source->columns()->showPopup(); });
    QAction* const again =
        menu.addAction(QStringLiteral("&Read the directory again"), m_source, &SourceChooser::refresh);
    again->setShortcut(QKeySequence::Refresh);
    return again;
}

void ResultWindow::addCanvasMenus()
{
    QMenu* const view = m_canvas->addMenus(*menuBar()).view;
    view->addSeparator();
    m_showsCursors = view->addAction(QStringLiteral("Cursors"));
    m_showsCursors->setCheckable(true);
    m_showsCursors->setChecked(true);
    connect(m_showsCursors, &QAction::toggled, this, &ResultWindow::showCursorTable);
}

void ResultWindow::showCursorTable()
{
    m_cursors->setVisible(hasResult() && (m_showsCursors == nullptr || m_showsCursors->isChecked()));
}

void ResultWindow::sl_cbSourceFileActivated(int index)
{
    m_source->files()->setCurrentIndex(index);
    statusBar()->showMessage(m_source->file());
}

void ResultWindow::sl_cbSourceColActivated(int index)
{
    m_source->columns()->setCurrentIndex(index);
    statusBar()->showMessage(m_source->columns()->currentText());
}

void ResultWindow::sl_cursor_moved(int x, int /*y*/, int /*buttons*/)
{
    if (hasResult())
        m_readout->showTable(m_canvas->readoutAt(x));
}

void ResultWindow::sl_plot()
{
    m_canvas->replot();
}

QString ResultWindow::sourceName() const
{
    return QFileInfo(m_source->file()).fileName();
}

std::unique_ptr<TSFILE> ResultWindow::openSource()
{
    std::unique_ptr<TSFILE> file;
    try {
        if (TsApplication* const application = TsApplication::instance())
            file.reset(application->OpenTs(m_source->file(), true));
        else
            file = openTsFile(QFile::encodeName(m_source->file()).toStdString(), true);
    } catch (const TS::Failure&) {
        // told below
    }
    if (!file)
        statusBar()->showMessage(QStringLiteral("%1 could not be opened").arg(sourceName()));
    return file;
}

bool ResultWindow::requireColumn(const char* axis, unsigned column)
{
    if (column != 0)
        return true;
    showBox(
        QMessageBox::Warning, this, QStringLiteral("Ts Column name error"),
        QStringLiteral("The selected %1 column name is invalid (==0).\n Select a valid name and try again!")
            .arg(QLatin1String(axis)));
    return false;
}

void ResultWindow::warnInBox(const QString& text)
{
    showBox(QMessageBox::Warning, this, windowTitle(), text);
}

// -- The source --

void ResultWindow::offerRange(const SampleRange& range)
{
    if (!range.isEmpty())
        m_range->choose(range.first, range.last);
}

void ResultWindow::lookAtSource()
{
    const QString path =
        m_source->file().isEmpty() ? QString() : QFileInfo(m_source->file()).absoluteFilePath();
    std::unique_ptr<TSFILE> file;
    std::uint32_t rows = 0;
    if (!path.isEmpty()) {
        try {
            file = openTsFile(QFile::encodeName(path).toStdString(), true);
            rows = FileTime(*file).rows();
        } catch (const TS::Failure&) {
            file.reset();  // the window says so when it is to compute
        }
    }
    const bool anew = path != m_shownSource;
    m_shownSource = path;
    if (anew) {
        m_watch.watchOnly(path.isEmpty() ? QStringList() : QStringList(path));
        m_changed->setVisible(path.isEmpty() && m_changed->isVisible());  // it may tell why there is none
    }
    {
        const QSignalBlocker quiet(m_range);
        m_range->setFile(path, rows, anew);
    }
    sourceChanged(file.get());
}

// Another program has changed the source: the fields follow, and a result tells that it is of what was there.
void ResultWindow::followSource()
{
    const QString name = sourceName();
    const bool hasIts = hasResult() && resultSource() == m_shownSource;
    switch (m_watch.state(m_shownSource)) {
        case FileWatch::State::Same:
            m_changed->hide();
            break;
        case FileWatch::State::Gone:
            m_changed->showNotice((hasIts ? QStringLiteral("%1 is gone; the result is of what it held.")
                                          : QStringLiteral("%1 is gone."))
                                      .arg(name));
            break;
        case FileWatch::State::Changed:
            if (QApplication::activePopupWidget() == nullptr)
                m_source->refresh();
            if (hasIts)
                m_changed->showNotice(QStringLiteral("%1 has changed since the calculation.").arg(name),
                                      QStringLiteral("E&xecute again"));
            else
                m_changed->showNotice(QStringLiteral("%1 has changed and was read again.").arg(name));
            break;
    }
}

bool ResultWindow::requireSource()
{
    if (m_source->file().isEmpty())
        statusBar()->showMessage(QStringLiteral("No source file available"), kNoSourceMs);
    return !m_source->file().isEmpty();
}

// -- The result --

bool ResultWindow::calculate(const QString& title, const QString& busy, const Job& job)
{
    std::unique_ptr<ResultFile> made;
    JobOutcome outcome = JobOutcome::Done;
    QString failure;
    QString refusal;
    m_cursor.emplace();
    statusBar()->showMessage(busy, kBusyMs);
    m_watch.watch(m_shownSource);  // what is changed while the job reads is told, too
    try {
        JobProgress progress(this, title);
        outcome = job(progress.callback(), made);
        if (!made && outcome == JobOutcome::Done)
            return false;  // the wait cursor stays on purpose until the next calculation
        if (outcome == JobOutcome::Done) {
            const std::uint32_t samples = made->file().samples();
            made->finish();
            m_result.seconds = progress.seconds();
            m_result.samples = samples;
            keep(std::move(made));
        }
    } catch (const Refusal& refused) {
        refusal = refused.text;
    } catch (...) {
        failure = QString::fromLocal8Bit(reasonOfFailure().c_str());
    }
    m_cursor.reset();
    if (!failure.isEmpty())
        refusal = QStringLiteral("The calculation failed: %1\nNo file of yours was changed.").arg(failure);
    if (refusal.isEmpty() && outcome == JobOutcome::Done)
        return true;
    made.reset();
    QString told = refusal.isEmpty() ? QStringLiteral("Cancelled") : QStringLiteral("Nothing was computed");
    if (hasResult())
        told += QStringLiteral("; the last result is still there");
    else
        m_canvas->showText(QStringLiteral("Nothing was computed."));
    statusBar()->showMessage(told);
    if (!refusal.isEmpty())
        warnInBox(refusal);
    return false;
}

// The new result takes the place, and where it can the name, of the one before.
void ResultWindow::keep(std::unique_ptr<ResultFile> made)
{
    if (!m_result.file || !m_result.file->takeContentsOf(*made))
        m_result.file = std::move(made);
    m_result.source = QFileInfo(m_source->file()).absoluteFilePath();
    m_result.first = m_range->from();
    m_result.isSaved = false;
    m_changed->hide();
    showCursorTable();
}

void ResultWindow::resultSaved()
{
    m_result.isSaved = true;
    m_watch.watch(m_shownSource);  // which may be where it was saved
}

void ResultWindow::dropResult()
{
    m_canvas->showText(QString());
    m_result.file.reset();
    showCursorTable();
}

bool ResultWindow::isResultHere() const
{
    return m_result.file && m_result.file->path().parent_path() == std::filesystem::current_path();
}

QString ResultWindow::resultFile() const
{
    return QFile::decodeName(m_result.file->path().c_str());
}

void ResultWindow::showEvent(QShowEvent* event)
{
    // The forms of the panel stand one below another: all their labels are as wide as the widest.
    std::vector<QLabel*> labels;
    int widest = 0;
    for (QLabel* const label : m_panel->parentWidget()->findChildren<QLabel*>()) {
        // The title above a table, and a label between two fields, stand in no column of labels.
        if (label->buddy() == nullptr || label->maximumWidth() < QWIDGETSIZE_MAX ||
            qobject_cast<QAbstractItemView*>(label->buddy()) != nullptr)
            continue;
        labels.push_back(label);
        widest = std::max(widest, label->sizeHint().width());
    }
    for (QLabel* const label : labels)
        label->setMinimumWidth(widest);
    const QWidget* const panel = m_panel->parentWidget();
    m_scroll->setFixedWidth(std::max(panel->minimumWidth(), panel->minimumSizeHint().width()) +
                            m_scroll->verticalScrollBar()->sizeHint().width());
    SubWindow::showEvent(event);
}

bool ResultWindow::mayClose()
{
    if (!hasResult() || m_result.isSaved)
        return true;
    if (!askYesNo(QMessageBox::Question, this, windowTitle(),
                  QStringLiteral("Do you want to save the results?"))) {
        statusBar()->showMessage(QStringLiteral("Saving %1 was aborted").arg(m_resultName), kAbortedMs);
        return true;
    }
    sl_saveResults();
    // What could not be saved is not thrown away.
    return m_result.isSaved;
}

}  // namespace veltrac
