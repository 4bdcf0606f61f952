#include "share/PlotWindow.h"

#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>

#include "core/RingFile.h"
#include "core/TsExceptions.h"
#include "share/ActionIcon.h"
#include "share/CursorDock.h"
#include "share/IntervalSaving.h"
#include "share/JobProgress.h"
#include "share/NoticeStrip.h"
#include "share/OverviewStrip.h"
#include "share/PlotCanvas.h"
#include "share/PlotFileNames.h"
#include "share/PlotFollower.h"
#include "share/PlotVariables.h"
#include "share/QtMessageWin.h"
#include "share/VariableDock.h"
#include "share/VariableMenu.h"
#include "share/hydaction.h"

namespace veltrac {

namespace {

constexpr std::size_t kShownAtOpening = 8;
constexpr int kFollowPlace = 7;  // in the tool bar: behind the views

QString pathOf(const PlotFile& file)
{
    return QString::fromLocal8Bit(file.path().c_str());
}

}  // namespace

PlotWindow::PlotWindow(QWidget* parent)
    : SubWindow(parent),
      m_canvas(new PlotCanvas),
      m_overview(new OverviewStrip(m_canvas)),
      m_changed(new NoticeStrip),
      m_notice(new NoticeStrip),
      m_follower(nullptr),
      m_rings(new QLabel),
      m_variables(new VariableDock(m_canvas)),
      m_cursors(new CursorDock(m_canvas)),
      m_menu(new VariableMenu(m_canvas, this))
{
    auto* const content = new QWidget;
    auto* const column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    auto* const following = new NoticeStrip;
    m_follower = new PlotFollower(m_canvas, following, this);
    column->addWidget(m_changed);
    column->addWidget(m_notice);
    column->addWidget(following);
    column->addWidget(m_canvas, 1);
    column->addWidget(m_overview);
    setCentralWidget(content);
    addDockWidget(Qt::LeftDockWidgetArea, m_variables);
    addDockWidget(Qt::BottomDockWidgetArea, m_cursors);
    setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
    m_canvas->setTakesDrops(true);
    createMenus();
    createToolBar();
    connectCanvas();
    connectDocks();
    resize(1100, 720);
    resizeDocks({m_variables}, {260}, Qt::Horizontal);
    resizeDocks({m_cursors}, {150}, Qt::Vertical);
    m_canvas->setFocus();
    m_rings->setTextFormat(Qt::PlainText);
    statusBar()->addPermanentWidget(m_rings);

    connect(&m_watch, &FileWatch::x_changed, this, &PlotWindow::sl_checkFiles);
    connect(m_follower, &PlotFollower::x_loaded, this, [this] { shownChanged(false); });
    connect(m_follower, &PlotFollower::x_rows_came, this, &PlotWindow::tellRings);
}

void PlotWindow::createMenus()
{
    m_fileMenu = menuBar()->addMenu(tr("&File"));
    m_fileMenu->addAction(new HydAction(QStringLiteral("Add"), QKeySequence(QStringLiteral("Ctrl+O")), this,
                                        SLOT(sl_addFile()), tr("&Add file…"),
                                        tr("Add the columns of a file.")));
    m_fileMenu->addSeparator();
    m_fileMenu->addAction(new HydAction(QStringLiteral("SaveTS"), QKeySequence(), this,
                                        SLOT(sl_saveInterval()), tr("Save &interval as ts-file…"),
                                        tr("Save the samples between the cursors, else those in view.")));
    m_fileMenu->addAction(tr("Save interval as &tsa…"), this, &PlotWindow::sl_exportInterval);
    m_fileMenu->addSeparator();

    m_viewMenu = menuBar()->addMenu(tr("&View"));
    m_canvas->fillViewMenu(*m_viewMenu);
    PlotCanvas::holdInWindow(*m_viewMenu);
    m_viewMenu->addSeparator();
    m_viewMenu->addAction(new HydAction(QStringLiteral("Refresh"), QKeySequence(Qt::Key_F5), this,
                                        SLOT(sl_refresh()), tr("&Refresh"),
                                        tr("Read what is not read yet, and look for changes.")));
    // The window answers the key itself: as a shortcut it would take the letter away from an open menu.
    m_follow = new QAction(actionIcon(QStringLiteral("Follow")), tr("Fo&llow\tL"), this);
    m_follow->setToolTip(tr("Follow (L): keep the newest samples in view while they come"));
    m_follow->setStatusTip(m_follow->toolTip());
    m_follow->setCheckable(true);
    connect(m_follow, &QAction::triggered, this, &PlotWindow::sl_follow);
    m_viewMenu->addAction(m_follow);
    m_viewMenu->addAction(m_variables->toggleViewAction());
    m_viewMenu->addAction(m_cursors->toggleViewAction());
    QAction* const overview = m_viewMenu->addAction(tr("Overview"));
    overview->setCheckable(true);
    overview->setChecked(true);
    connect(overview, &QAction::toggled, m_overview, &QWidget::setVisible);

    m_canvas->fillCursorMenu(*menuBar()->addMenu(tr("&Cursors")));
    QMenu* const plot = menuBar()->addMenu(tr("&Plot"));
    connect(plot, &QMenu::aboutToShow, this, [this, plot] {
        plot->clear();
        m_canvas->fillAxesMenu(*plot);
        plot->addSeparator();
        plot->addAction(tr("&Colors…"), m_menu, &VariableMenu::editColors);
    });
    m_canvas->fillOutputMenu(*m_fileMenu);
    PlotCanvas::holdInWindow(*m_fileMenu);
    m_fileMenu->addSeparator();
    m_fileMenu->addAction(tr("C&lose"), this, &QWidget::close)
        ->setShortcut(QKeySequence(QStringLiteral("Ctrl+W")));

    QMenu* const help = menuBar()->addMenu(tr("&Help"));
    help->addAction(new HydAction(QStringLiteral("Help"), QKeySequence(Qt::Key_F1), this, SLOT(sl_help()),
                                  tr("&Help"), tr("How to use this window")));
    addWhatsThis(help);
}

void PlotWindow::createToolBar()
{
    struct Row
    {
        const char* image;
        const char* slot;
        const char* text;
    };
    static const Row rows[] = {{"ZoomFit", SLOT(sl_fitAll()), "Fit all (F)"},
                               {"ZoomIn", SLOT(sl_zoomIn()), "Zoom in (+)"},
                               {"ZoomOut", SLOT(sl_zoomOut()), "Zoom out (−)"},
                               {"Cursors", SLOT(sl_zoomToCursors()), "Zoom to the cursors (Z)"},
                               {"Back", SLOT(sl_previousView()), "Previous view (Backspace)"},
                               {"Forward", SLOT(sl_nextView()), "Next view (Alt+Right)"},
                               {"GoTo", SLOT(sl_goTo()), "Go to… (Ctrl+G)"},
                               {"", "", ""},
                               {"HardCopy", SLOT(sl_hardCopy()), "Hard copy (EPS)… (Ctrl+E)"},
                               {"SavePicture", SLOT(sl_savePicture()), "Save picture (PNG)…"},
                               {"Copy", SLOT(sl_copyReadout()), "Copy read-out (Ctrl+C)"}};
    m_toolBar = addToolBar(tr("Plot"));
    m_toolBar->setObjectName(QStringLiteral("plotTools"));
    for (const Row& row : rows) {
        if (*row.image == '\0')
            m_toolBar->addSeparator();
        else
            m_toolBar->addAction(new HydAction(QString::fromLatin1(row.image), QKeySequence(), m_canvas,
                                               row.slot, QString::fromUtf8(row.text),
                                               QString::fromUtf8(row.text)));
    }
    m_toolBar->insertAction(m_toolBar->actions().at(kFollowPlace), m_follow);
}

void PlotWindow::connectCanvas()
{
    connect(m_canvas, &PlotCanvas::x_hovered, this, [this](const QString& text) {
        if (text.isEmpty())
            statusBar()->clearMessage();
        else
            statusBar()->showMessage(text);
    });
    connect(m_canvas, &PlotCanvas::x_told, this, &PlotWindow::showStatus);
    connect(m_canvas, &PlotCanvas::x_files_dropped, this, [this](const QStringList& files) {
        for (const QString& file : files)
            addFile(file);
    });
    connect(m_canvas, &PlotCanvas::x_variable_dropped, this, [this](int variable, int group) {
        const Group::Variables all = m_canvas->plot().variables();
        if (variable >= 0 && variable < static_cast<int>(all.size()))
            m_menu->moveToGroup(all[static_cast<std::size_t>(variable)], group);
    });
    connect(m_menu, &VariableMenu::x_changed, m_variables, &VariableDock::rebuild);
    connect(m_menu, &VariableMenu::x_told, this, &PlotWindow::showStatus);
}

void PlotWindow::connectDocks()
{
    // Later, because the item that was checked is going to be rebuilt.
    connect(
        m_variables, &VariableDock::x_shown_changed, this, [this] { shownChanged(false); },
        Qt::QueuedConnection);
    connect(m_variables, &VariableDock::x_add_file, this, &PlotWindow::sl_addFile);
    connect(m_variables, &VariableDock::x_remove_file, this, &PlotWindow::removeFile);
    connect(m_variables, &VariableDock::x_align_start, this, &PlotWindow::alignStart);
    connect(m_variables, &VariableDock::x_menu, this, [this](int file, unsigned column, const QPoint& place) {
        const auto source = m_canvas->files().file(static_cast<std::size_t>(file));
        if (const auto v = m_canvas->plot().find(*source, column))
            m_menu->popUp(v, place);
    });
    connect(m_changed, &NoticeStrip::x_pressed, this, &PlotWindow::reloadChanged);
}

void PlotWindow::showStatus(const QString& text)
{
    statusBar()->showMessage(text, kMessageMs);
}

void PlotWindow::sl_saveInterval()
{
    const IntervalOutcome outcome = saveIntervalAsTs(this, *m_canvas);
    if (!outcome.status.isEmpty())
        showStatus(outcome.status);
    if (outcome.isSaved)
        emit x_directory_changed();
}

void PlotWindow::sl_exportInterval()
{
    const IntervalOutcome outcome = saveIntervalAsTsa(this, *m_canvas);
    if (!outcome.status.isEmpty())
        showStatus(outcome.status);
}

void PlotWindow::sl_refresh()
{
    shownChanged(false);
    m_toldChange.clear();
    sl_checkFiles();
}

void PlotWindow::sl_help()
{
    showHelp(this, QStringLiteral("plot"), tr("Plot windows"));
}

// -- Files --

std::shared_ptr<PlotFile> PlotWindow::openFile(const QString& file)
{
    try {
        // The working directory may change under an open window.
        const QString path = QFileInfo(file).absoluteFilePath();
        auto opened = m_canvas->files().add(path.toLocal8Bit().toStdString());
        m_watch.watch(pathOf(*opened));
        return opened;
    } catch (const TS::Failure&) {
        const QString text = tr("%1 cannot be read.").arg(QFileInfo(file).fileName());
        if (m_canvas->files().size() == 0)
            m_canvas->showText(text);
        showStatus(text);
        return nullptr;
    }
}

void PlotWindow::addFile(const QString& file)
{
    const bool isFirst = m_canvas->files().size() == 0;
    const std::size_t before = m_canvas->files().size();
    const auto source = openFile(file);
    if (!source)
        return;
    if (m_canvas->files().size() == before) {
        showStatus(tr("%1 is here already.").arg(fileNameOf(*source)));
        return;
    }
    try {
        std::vector<std::uint32_t> columns = plottableColumns(*source);
        columns.resize(std::min(columns.size(), kShownAtOpening));
        for (const std::uint32_t column : columns)
            m_variables->setShown(source, column, true);
    } catch (const TS::Failure&) {
        showStatus(tr("The columns of %1 cannot be read.").arg(QFileInfo(file).fileName()));
    }
    if (isFirst)
        m_canvas->showText(QString());
    shownChanged(isFirst);
    if (!isFirst)
        m_canvas->sl_fitAll();
}

void PlotWindow::shownChanged(bool fit)
{
    Plot2D& plot = m_canvas->plot();
    try {
        plot.findOrigin();
        if (fit)
            chooseXAxis(plot);
    } catch (const TS::Failure&) {
        // The variable tells it in its group.
    }
    if (!m_canvas->refresh(fit))
        showStatus(tr("The reading was cancelled; F5 reads on."));
    // Where all were hidden for a while, the view may lie elsewhere than those that came.
    if (seesNothing())
        m_canvas->sl_fitAll();
    m_variables->rebuild();
    tellNotices();
}

void PlotWindow::sl_addFile()
{
    const QStringList files = QFileDialog::getOpenFileNames(this, tr("Add file"), QDir::currentPath(),
                                                            tr("Ts-files (*.ts);;All files (*)"));
    for (const QString& file : files)
        addFile(file);
}

void PlotWindow::removeFile(int file)
{
    const auto source = m_canvas->files().file(static_cast<std::size_t>(file));
    for (const auto& v : m_canvas->plot().variables())
        if (v->variable().source() == source)
            m_canvas->plot().remove(*v);
    m_canvas->files().remove(static_cast<std::size_t>(file));
    m_watch.stop(pathOf(*source));
    sl_checkFiles();
    shownChanged(false);
}

// Shifts the other files onto the first sample of the first one, or back to their own times.
void PlotWindow::alignStart(bool on)
{
    Plot2D& plot = m_canvas->plot();
    try {
        for (const auto& v : plot.variables())
            v->variable().timeShift = 0.0;
        const auto first = plot.reference();
        if (on && first) {
            XAxis times = plot.axis();
            times.mode = XMode::Elapsed;
            const double start = times.xOf(first->variable(), first->variable().firstRow());
            for (const auto& v : plot.variables())
                if (v->variable().rows() > 0)
                    v->variable().timeShift = start - times.xOf(v->variable(), v->variable().firstRow());
        }
    } catch (const TS::Failure&) {
        showStatus(tr("The times cannot be read."));
    }
    m_canvas->sl_fitAll();
    emit m_canvas->x_plot_changed();
}

// -- Files that are being written --

void PlotWindow::sl_follow(bool on)
{
    m_follow->setChecked(on);
    m_follower->setOn(on);
    sl_checkFiles();
}

void PlotWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_L && event->modifiers() == Qt::NoModifier)
        m_follow->trigger();
    else
        SubWindow::keyPressEvent(event);
}

void PlotWindow::tellRings()
{
    QStringList rings;
    const FileArray& files = m_canvas->files();
    for (std::size_t i = 0; i < files.size(); ++i) {
        const std::string ring = ringText(files.file(i)->file());
        if (!ring.empty())
            rings << (files.size() == 1 ? QString() : fileNameOf(*files.file(i)) + QStringLiteral(": ")) +
                         QString::fromStdString(ring);
    }
    m_rings->setText(rings.join(QStringLiteral(";  ")));
}

// -- Files that change on the disk --

bool PlotWindow::event(QEvent* event)
{
    if (event->type() == QEvent::WindowActivate)
        sl_checkFiles();
    return SubWindow::event(event);
}

void PlotWindow::sl_checkFiles()
{
    if (JobProgress::isRunning())
        return;
    if (m_follower->isOn()) {
        m_changed->hide();
        m_toldChange.clear();
        return;
    }
    QStringList changed;
    QStringList gone;
    FileArray& files = m_canvas->files();
    for (std::size_t i = 0; i < files.size(); ++i)
        if (files.changedOnDisk(i))
            (QFileInfo::exists(pathOf(*files.file(i))) ? changed : gone).append(fileNameOf(*files.file(i)));
    if (changed.isEmpty() && gone.isEmpty()) {
        m_changed->hide();
        m_toldChange.clear();
        return;
    }
    QStringList news;
    if (!changed.isEmpty())
        news << (changed.size() == 1 ? tr("%1 has changed.") : tr("%1 have changed."))
                    .arg(changed.join(QStringLiteral(", ")));
    if (!gone.isEmpty())
        news << (gone.size() == 1 ? tr("%1 is gone; what was read of it is still shown.")
                                  : tr("%1 are gone; what was read of them is still shown."))
                    .arg(gone.join(QStringLiteral(", ")));
    const QString text = news.join(QStringLiteral("  "));
    // A strip that the user has hidden comes back only with other news.
    if (text != m_toldChange)
        m_changed->showNotice(text, changed.isEmpty() ? QString() : tr("&Reload"));
    m_toldChange = text;
}

void PlotWindow::reloadChanged()
{
    FileArray& files = m_canvas->files();
    // Who sees all of a file that grows wants to see what has come.
    const bool sawAll = showsAll();
    for (std::size_t i = 0; i < files.size(); ++i) {
        const auto file = files.file(i);
        if (!files.changedOnDisk(i) || !QFileInfo::exists(pathOf(*file)))
            continue;
        try {
            file->reload();
            m_watch.watch(pathOf(*file));
        } catch (const TS::Failure&) {
            showStatus(tr("%1 cannot be read.").arg(fileNameOf(*file)));
            continue;
        }
        showStatus(tr("%1 was read again.").arg(fileNameOf(*file)));
        for (const auto& v : m_canvas->plot().variables()) {
            if (v->variable().source() != file)
                continue;
            v->forget();
            if (v->variable().column() > file->columns())
                m_canvas->plot().remove(*v);
        }
    }
    sl_checkFiles();
    shownChanged(false);
    if (sawAll || showsAll())
        m_canvas->sl_fitAll();
    else  // the data may end elsewhere now
        m_canvas->showRange(m_canvas->plot().x1(), m_canvas->plot().x2(), 0);
}

bool PlotWindow::showsAll() const
{
    const Plot2D& plot = m_canvas->plot();
    try {
        const Plot2D::Extent all = plot.extent();
        return plot.x1() <= all.x1 && plot.x2() >= all.x2;
    } catch (const TS::Failure&) {
        return false;
    }
}

bool PlotWindow::seesNothing() const
{
    const Plot2D& plot = m_canvas->plot();
    try {
        const Plot2D::Extent all = plot.extent();
        return plot.reference() && (plot.x2() < all.x1 || plot.x1() > all.x2);
    } catch (const TS::Failure&) {
        return false;
    }
}

void PlotWindow::tellNotices()
{
    tellRings();
    QStringList notes;
    if (const auto v = backwardsVariable(m_canvas->plot()))
        notes.append(
            tr("%1 has no times that rise: sample numbers are shown.").arg(fileNameOf(v->variable())));
    for (std::size_t i = 0; i < m_canvas->files().size(); ++i) {
        const auto file = m_canvas->files().file(i);
        if (file->missingRows() > 0)
            notes.append(tr("%1 is cut short: %2 of its %3 samples are there.")
                             .arg(fileNameOf(*file))
                             .arg(file->rows())
                             .arg(std::uint64_t{file->rows()} + file->missingRows()));
    }
    if (notes.isEmpty())
        m_notice->hide();
    else
        m_notice->showNotice(notes.join(QStringLiteral("  ")));
}

}  // namespace veltrac
