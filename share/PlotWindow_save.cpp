// PlotWindow: saving an interval.

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "core/FailureText.h"
#include "core/Interval.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/PlotCanvas.h"
#include "share/PlotVariables.h"
#include "share/PlotWindow.h"
#include "share/SaveDialog.h"

namespace veltrac {

namespace {

QString samplesText(std::uint32_t count)
{
    return count == 1 ? QStringLiteral("1 sample") : QStringLiteral("%1 samples").arg(count);
}

}  // namespace

std::shared_ptr<PlotFile> PlotWindow::chooseFile()
{
    std::vector<std::shared_ptr<PlotFile>> files;
    QStringList names;
    for (const auto& v : m_canvas->plot().variables()) {
        const auto file = plotFileOf(v->variable());
        if (!v->variable().visible || !file || std::find(files.begin(), files.end(), file) != files.end())
            continue;
        files.push_back(file);
        names.append(fileNameOf(*file));
    }
    if (files.empty()) {
        tell(tr("No variable is shown."));
        return nullptr;
    }
    if (files.size() == 1)
        return files.front();
    bool ok = false;
    const QString name =
        QInputDialog::getItem(this, tr("Save interval"), tr("Of which file?"), names, 0, false, &ok);
    return ok ? files[static_cast<std::size_t>(names.indexOf(name))] : nullptr;
}

SampleRange PlotWindow::intervalOf(const std::shared_ptr<PlotFile>& file)
{
    const Plot2D& plot = m_canvas->plot();
    // Of a file that could not be read nobody has chosen an interval: the view belongs to something else.
    for (const auto& v : plot.variables()) {
        if (v->variable().source() != file || !v->variable().visible || v->isBuilt())
            continue;
        showBox(QMessageBox::Warning, this, tr("Save interval"),
                tr("Nothing was saved: the column %1 of %2 could not be read.")
                    .arg(QString::fromStdString(v->variable().label), fileNameOf(*file)));
        return {};
    }
    const Plot2D::Extent interval = plot.interval();
    for (const auto& v : plot.variables()) {
        if (v->variable().source() != file)
            continue;
        if (const SampleRange rows = plot.samplesIn(interval, v->variable()); !rows.isEmpty())
            return rows;
    }
    tell(tr("There are no samples in the interval."));
    return {};
}

bool PlotWindow::mayReplace(const QString& target)
{
    std::error_code error;
    for (std::size_t i = 0; i < m_canvas->files().size(); ++i) {
        if (std::filesystem::equivalent(m_canvas->files().file(i)->path(), target.toLocal8Bit().toStdString(),
                                        error)) {
            showBox(QMessageBox::Warning, this, tr("Save interval"),
                    tr("%1 is shown in this window. Choose another name.").arg(QFileInfo(target).fileName()));
            return false;
        }
    }
    if (TsApplication::instance() != nullptr && TsApplication::instance()->isOpenForWriting(target)) {
        showBox(QMessageBox::Warning, this, tr("Save interval"),
                tr("The file %1 is open for writing in another window.\nClose that window first.")
                    .arg(QFileInfo(target).fileName()));
        return false;
    }
    return true;
}

void PlotWindow::sl_saveInterval()
{
    const auto file = chooseFile();
    if (!file)
        return;
    SampleRange rows;
    try {
        rows = intervalOf(file);
    } catch (const TS::Failure&) {
        tell(tr("%1 cannot be read.").arg(fileNameOf(*file)));
    }
    if (rows.isEmpty())
        return;
    const QFileInfo source(QString::fromLocal8Bit(file->path().c_str()));
    const QString typed = QFileDialog::getSaveFileName(
        this, tr("Save interval"),
        saveSuggestion(source.dir().filePath(source.completeBaseName() + QStringLiteral("_part.ts"))),
        tr("Ts-files (*.ts)"));
    if (typed.isEmpty())
        return;
    const QFileInfo chosen(typed);
    const QString name =
        QString::fromLocal8Bit(newTsFileName(chosen.fileName().toLocal8Bit().toStdString()).c_str());
    const QString target = chosen.dir().filePath(name);
    // The dialog has asked about the name as it was typed.
    if (target != typed && QFile::exists(target) &&
        !askYesNo(QMessageBox::Warning, this, tr("Save interval"),
                  tr("The file %1 exists.\nDo you want to overwrite the existing file?").arg(name)))
        return;
    if (!mayReplace(target))
        return;
    try {
        JobProgress progress(this, tr("Saving %1").arg(name));
        if (saveInterval(*file, rows.first, rows.last, target.toLocal8Bit().toStdString(),
                         progress.callback()) == JobOutcome::Cancelled) {
            tell(tr("Cancelled; nothing was saved."));
            return;
        }
        tell(tr("%1 saved as %2 in %3 s")
                 .arg(samplesText(rows.count()), name)
                 .arg(progress.seconds(), 0, 'f', 1));
        emit x_directory_changed();
    } catch (...) {
        showBox(QMessageBox::Warning, this, tr("Save interval"),
                tr("%1 could not be saved: %2.").arg(name, QString::fromStdString(reasonOfFailure())));
    }
}

void PlotWindow::sl_exportInterval()
{
    TsApplication* const application = TsApplication::instance();
    const auto file = application == nullptr ? nullptr : chooseFile();
    if (!file)
        return;
    try {
        const SampleRange rows = intervalOf(file);
        if (!rows.isEmpty() &&
            application->exportInterval(QString::fromLocal8Bit(file->path().c_str()),
                                        file->sampleOf(rows.first), file->sampleOf(rows.last)))
            tell(tr("%1 saved").arg(samplesText(rows.count())));
    } catch (const TS::Failure&) {
        tell(tr("%1 cannot be read.").arg(fileNameOf(*file)));
    }
}

}  // namespace veltrac
