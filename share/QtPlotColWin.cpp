#include "share/QtPlotColWin.h"

#include <QComboBox>
#include <QFileInfo>
#include <QIcon>
#include <QMenu>
#include <QToolBar>

#include <filesystem>
#include <system_error>

#include "core/CopyFile.h"
#include "core/FailureText.h"
#include "core/TsExceptions.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/PlotCanvas.h"
#include "share/PlotVariables.h"
#include "share/Resources.h"
#include "share/TargetFile.h"
#include "share/VariableDock.h"
#include "share/hydaction.h"

using namespace veltrac;

QtPlotColWin::QtPlotColWin(const QString& file, unsigned column, QWidget* parent)
    : PlotWindow(parent), m_columns(new QComboBox)
{
    loadResources();
    setWindowIcon(QIcon(QStringLiteral(":/img_PlotColumn")));
    setWindowTitle(tr("Ts-Plot: %1").arg(QFileInfo(file).fileName()));
    canvas()->setSuggestedName(QFileInfo(file).completeBaseName());
    createActions();
    m_file = openFile(file);
    if (!m_file)
        return;
    try {
        for (const std::uint32_t c : plottableColumns(*m_file))
            m_columns->addItem(QString::fromStdString(makeVariable(m_file, c)->variable().label), c);
    } catch (const TS::Failure&) {
        canvas()->showText(tr("The columns of %1 cannot be read.").arg(QFileInfo(file).fileName()));
        return;
    }
    m_columns->setCurrentIndex(std::max(0, m_columns->findData(column)));
    connect(m_columns, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &QtPlotColWin::showColumn);
    showColumn(m_columns->currentIndex());
    canvas()->sl_fitAll();
}

void QtPlotColWin::createActions()
{
    auto* const next =
        new HydAction(QStringLiteral("Down"), QKeySequence(QStringLiteral("Ctrl+PgDown")), this,
                      SLOT(sl_nextColumn()), tr("N&ext column"), tr("Plot the next column."));
    auto* const previous =
        new HydAction(QStringLiteral("Up"), QKeySequence(QStringLiteral("Ctrl+PgUp")), this,
                      SLOT(sl_previousColumn()), tr("Previo&us column"), tr("Plot the previous column."));
    auto* const save = new HydAction(QStringLiteral("Save"), QKeySequence(QStringLiteral("Ctrl+Shift+S")),
                                     this, SLOT(sl_saveAs()), tr("Sa&ve as…"), tr("Copy the ts-file."));
    viewMenu()->addSeparator();
    viewMenu()->addAction(previous);
    viewMenu()->addAction(next);
    fileMenu()->insertAction(fileMenu()->actions().at(1), save);
    m_columns->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_columns->setAccessibleName(tr("Column"));
    m_columns->setWhatsThis(tr("The column that is plotted."));
    m_columns->setFocusPolicy(Qt::ClickFocus);
    toolBar()->addSeparator();
    toolBar()->addAction(previous);
    toolBar()->addWidget(m_columns);
    toolBar()->addAction(next);
}

unsigned QtPlotColWin::column() const
{
    return m_columns->currentData().toUInt();
}

// The columns before it keep what was read of them, and their looks.
void QtPlotColWin::showColumn(int index)
{
    if (index < 0 || !m_file)
        return;
    const bool isFirst = canvas()->plot().variables().empty();
    try {
        canvas()->plot().showOnly(
            *variableDock()->setShown(m_file, m_columns->itemData(index).toUInt(), true));
    } catch (const TS::Failure&) {
        showStatus(tr("The column cannot be read."));
        return;
    }
    shownChanged(isFirst);
    emit canvas()->x_cursors_changed();
}

void QtPlotColWin::step(int by)
{
    const int index = m_columns->currentIndex() + by;
    if (index >= 0 && index < m_columns->count())
        m_columns->setCurrentIndex(index);
    else
        showStatus(by > 0 ? tr("This is the last column.") : tr("This is the first column."));
}

void QtPlotColWin::sl_nextColumn()
{
    step(1);
}

void QtPlotColWin::sl_previousColumn()
{
    step(-1);
}

// -- Save as --

void QtPlotColWin::sl_saveAs()
{
    if (!m_file)
        return;
    const QString source = QString::fromLocal8Bit(m_file->path().c_str());
    const auto isSource = [&source](const QString& file) { return isSameFile(file, source); };
    const QString target =
        askSaveName(this, {tr("Save as"), source, tr("Ts-files (*.ts)"), QStringLiteral("ts"), isSource});
    if (target.isEmpty() || !copyTo(target))
        return;
    showStatus(tr("Saved %1").arg(target));
    emit x_directory_changed();
}

bool QtPlotColWin::copyTo(const QString& target)
{
    const std::filesystem::path path(target.toLocal8Bit().toStdString());
    const QString name = QFileInfo(target).fileName();
    try {
        JobProgress progress(this, tr("Copying %1").arg(name));
        if (copyWholeFile(m_file->descriptor(), path, progress.callback()) == JobOutcome::Done)
            return true;
        showStatus(tr("Cancelled; nothing was saved."));
    } catch (const std::system_error&) {
        showBox(QMessageBox::Warning, this, tr("Save as"),
                tr("%1 could not be saved: %2.").arg(name, QString::fromStdString(reasonOfFailure())));
    }
    return false;
}
