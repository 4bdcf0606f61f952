#include "share/ResultWindow.h"

#include <QFile>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QStatusBar>

#include <algorithm>
#include <vector>

#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/PlotCanvas.h"
#include "share/ReadoutLabel.h"
#include "share/Resources.h"
#include "share/SourceChooser.h"

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
    auto* const layout = new QHBoxLayout(centre);
    layout->addWidget(panel);
    layout->addWidget(m_canvas, 1);
    setCentralWidget(centre);

    connect(m_source->files(), SIGNAL(activated(int)), this, SLOT(sl_cbSourceFileActivated(int)));
    connect(m_source->columns(), SIGNAL(activated(int)), this, SLOT(sl_cbSourceColActivated(int)));
    connect(m_canvas, SIGNAL(x_cursor_moved(int, int, int)), this, SLOT(sl_cursor_moved(int, int, int)));
    connect(m_canvas, SIGNAL(x_got_resize_event()), this, SLOT(sl_plot()));
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
    m_canvas->fillViewMenu(*menuBar()->addMenu(QStringLiteral("&View")));
    m_canvas->fillCursorMenu(*menuBar()->addMenu(QStringLiteral("C&ursors")));
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
}

void ResultWindow::showEvent(QShowEvent* event)
{
    // The forms of the panel stand one below another: all their labels are as wide as the widest.
    std::vector<QWidget*> labels;
    int widest = 0;
    for (const QFormLayout* const form : m_panel->parentWidget()->findChildren<QFormLayout*>())
        for (int row = 0; row < form->rowCount(); ++row)
            if (QLayoutItem* const item = form->itemAt(row, QFormLayout::LabelRole)) {
                labels.push_back(item->widget());
                widest = std::max(widest, item->sizeHint().width());
            }
    for (QWidget* const label : labels)
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
