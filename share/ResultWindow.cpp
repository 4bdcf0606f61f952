#include "share/ResultWindow.h"

#include <QAbstractItemView>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QSplitter>
#include <QStatusBar>

#include <algorithm>
#include <vector>

#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/CursorTable.h"
#include "share/PlotCanvas.h"
#include "share/ReadoutLabel.h"
#include "share/Resources.h"
#include "share/SourceChooser.h"

namespace veltrac {

namespace {

constexpr int kAbortedMs = 6000;

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
    layout->addWidget(panel);
    layout->addWidget(plot, 1);
    setCentralWidget(centre);

    connect(m_source->files(), SIGNAL(activated(int)), this, SLOT(sl_cbSourceFileActivated(int)));
    connect(m_source->columns(), SIGNAL(activated(int)), this, SLOT(sl_cbSourceColActivated(int)));
    connect(m_canvas, SIGNAL(x_cursor_moved(int, int, int)), this, SLOT(sl_cursor_moved(int, int, int)));
    connect(m_canvas, SIGNAL(x_got_resize_event()), this, SLOT(sl_plot()));
    // A result that was saved beside the others can be the next source.
    connect(this, &SubWindow::x_directory_changed, m_source, &SourceChooser::refresh);
    connect(m_canvas, &PlotCanvas::x_told, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
}

QAction* ResultWindow::fillSourceMenu(QMenu& menu)
{
    menu.addAction(QStringLiteral("Source &file"), this, [this] { m_source->files()->showPopup(); });
    menu.addAction(QStringLiteral("Source &column"), this, [this] { m_source->columns()->showPopup(); });
    return menu.addAction(QStringLiteral("&Read the directory again"), m_source, &SourceChooser::refresh,
                          QKeySequence::Refresh);
}

void ResultWindow::addCanvasMenus()
{
    QMenu* const view = menuBar()->addMenu(QStringLiteral("&View"));
    m_canvas->fillViewMenu(*view);
    PlotCanvas::holdInWindow(*view);
    view->addSeparator();
    m_showsCursors = view->addAction(QStringLiteral("Cursors"));
    m_showsCursors->setCheckable(true);
    m_showsCursors->setChecked(true);
    connect(m_showsCursors, &QAction::toggled, this, &ResultWindow::showCursorTable);
    m_canvas->fillCursorMenu(*menuBar()->addMenu(QStringLiteral("C&ursors")));
    QMenu* const output = menuBar()->addMenu(QStringLiteral("Out&put"));
    m_canvas->fillOutputMenu(*output);
    PlotCanvas::holdInWindow(*output);
}

void ResultWindow::showCursorTable()
{
    m_cursors->setVisible(m_computed && (m_showsCursors == nullptr || m_showsCursors->isChecked()));
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
    if (m_computed)
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

bool ResultWindow::mayWrite(const QString& file)
{
    const TsApplication* const application = TsApplication::instance();
    if (application == nullptr || !application->isOpenForWriting(file))
        return true;
    showBox(QMessageBox::Warning, this, windowTitle(),
            QStringLiteral("%1 is open for writing in another window.\nNothing was saved.")
                .arg(QFileInfo(file).fileName()));
    return false;
}

void ResultWindow::resultMade(bool worthAsking)
{
    m_computed = true;
    m_asksOnClose = worthAsking;
    showCursorTable();
}

void ResultWindow::resultGone()
{
    m_computed = false;
    showCursorTable();
}

void ResultWindow::showEvent(QShowEvent* event)
{
    // The forms of the panel stand one below another: all their labels are as wide as the widest.
    std::vector<QLabel*> labels;
    int widest = 0;
    for (QLabel* const label : m_panel->parentWidget()->findChildren<QLabel*>()) {
        // The title above a table is no label of a form.
        if (label->buddy() == nullptr || qobject_cast<QAbstractItemView*>(label->buddy()) != nullptr)
            continue;
        labels.push_back(label);
        widest = std::max(widest, label->sizeHint().width());
    }
    for (QLabel* const label : labels)
        label->setMinimumWidth(widest);
    SubWindow::showEvent(event);
}

bool ResultWindow::mayClose()
{
    if (!m_computed || !m_asksOnClose)
        return true;
    if (!askYesNo(QMessageBox::Question, this, windowTitle(),
                  QStringLiteral("Do you want to save the results?"))) {
        statusBar()->showMessage(QStringLiteral("Saving %1 was aborted").arg(m_resultName), kAbortedMs);
        return true;
    }
    sl_saveResults();
    // What could not be saved is not thrown away.
    return !m_asksOnClose;
}

}  // namespace veltrac
