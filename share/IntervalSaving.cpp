#include "share/IntervalSaving.h"

#include <QDir>
#include <QFileInfo>
#include <QInputDialog>

#include <algorithm>
#include <memory>
#include <vector>

#include "core/FailureText.h"
#include "core/Interval.h"
#include "core/TsExceptions.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/PlotCanvas.h"
#include "share/PlotFileNames.h"
#include "share/PlotVariables.h"
#include "share/TargetFile.h"

namespace veltrac {

namespace {

const QString kIntervalTitle = QStringLiteral("Save interval");

QString samplesText(std::uint32_t count)
{
    return count == 1 ? QStringLiteral("1 sample") : QStringLiteral("%1 samples").arg(count);
}

QString localName(const PlotFile& file)
{
    return QString::fromLocal8Bit(file.path().c_str());
}

// Rows of one of the files.
struct Part
{
    std::shared_ptr<PlotFile> file;
    SampleRange rows;
    QString reason;  // why there are none; empty where the user knows
};

// The file that is shown, or the user's choice among several.
Part choosePart(QWidget* window, const Plot2D& plot)
{
    std::vector<std::shared_ptr<PlotFile>> files;
    QStringList names;
    for (const auto& v : plot.variables()) {
        const auto file = plotFileOf(v->variable());
        if (!v->variable().visible || !file || std::find(files.begin(), files.end(), file) != files.end())
            continue;
        files.push_back(file);
        // Files of one name, from two directories, are told apart.
        const QString name = fileNameOf(*file);
        names.append(names.contains(name) ? localName(*file) : name);
    }
    if (files.empty())
        return {{}, {}, QObject::tr("No variable is shown.")};
    if (files.size() == 1)
        return {files.front(), {}, {}};
    bool isChosen = false;
    const QString name = QInputDialog::getItem(window, kIntervalTitle, QObject::tr("Of which file?"), names,
                                               0, false, &isChosen);
    return isChosen ? Part{files[static_cast<std::size_t>(names.indexOf(name))], {}, {}} : Part{};
}

// Of a file that could not be read nobody has chosen an interval: the view belongs to something else.
bool isRead(QWidget* window, const Plot2D& plot, const std::shared_ptr<PlotFile>& file)
{
    for (const auto& v : plot.variables()) {
        if (v->variable().source() != file || !v->variable().visible || v->isBuilt())
            continue;
        showBox(QMessageBox::Warning, window, kIntervalTitle,
                QObject::tr("Nothing was saved: the column %1 of %2 could not be read.")
                    .arg(QString::fromStdString(v->variable().label), fileNameOf(*file)));
        return false;
    }
    return true;
}

// The rows of the chosen file in the interval A–B, else in view.
Part partToSave(QWidget* window, const Plot2D& plot)
{
    Part part = choosePart(window, plot);
    if (!part.file)
        return part;
    try {
        if (!isRead(window, plot, part.file))
            return part;
        const Plot2D::Extent interval = plot.interval();
        for (const auto& v : plot.variables())
            if (v->variable().source() == part.file && part.rows.isEmpty())
                part.rows = plot.samplesIn(interval, v->variable());
        if (part.rows.isEmpty())
            part.reason = QObject::tr("There are no samples in the interval.");
    } catch (const TS::Failure&) {
        part.rows = {};
        part.reason = QObject::tr("%1 cannot be read.").arg(fileNameOf(*part.file));
    }
    return part;
}

}  // namespace

IntervalOutcome saveIntervalAsTs(QWidget* window, PlotCanvas& canvas)
{
    const Part part = partToSave(window, canvas.plot());
    if (part.rows.isEmpty())
        return {part.reason};
    const QFileInfo source(localName(*part.file));
    const auto isShown = [&canvas](const QString& file) {
        for (std::size_t i = 0; i < canvas.files().size(); ++i)
            if (isSameFile(localName(*canvas.files().file(i)), file))
                return true;
        return false;
    };
    const QString target =
        askSaveName(window, {kIntervalTitle,
                             source.dir().filePath(source.completeBaseName() + QStringLiteral("_part.ts")),
                             QObject::tr("Ts-files (*.ts)"), QStringLiteral("ts"), isShown});
    if (target.isEmpty())
        return {};
    const QString name = QFileInfo(target).fileName();
    try {
        JobProgress progress(window, QObject::tr("Saving %1").arg(name));
        if (saveInterval(*part.file, part.rows.first, part.rows.last, target.toLocal8Bit().toStdString(),
                         progress.callback()) == JobOutcome::Cancelled)
            return {QObject::tr("Cancelled; nothing was saved.")};
        return {QObject::tr("%1 saved as %2 in %3 s")
                    .arg(samplesText(part.rows.count()), name)
                    .arg(progress.seconds(), 0, 'f', 1),
                true};
    } catch (...) {
        showBox(
            QMessageBox::Warning, window, kIntervalTitle,
            QObject::tr("%1 could not be saved: %2.").arg(name, QString::fromStdString(reasonOfFailure())));
        return {};
    }
}

IntervalOutcome saveIntervalAsTsa(QWidget* window, PlotCanvas& canvas)
{
    TsApplication* const application = TsApplication::instance();
    if (application == nullptr)
        return {};
    const Part part = partToSave(window, canvas.plot());
    if (part.rows.isEmpty())
        return {part.reason};
    try {
        if (application->exportInterval(localName(*part.file), part.file->sampleOf(part.rows.first),
                                        part.file->sampleOf(part.rows.last)))
            return {QObject::tr("%1 saved").arg(samplesText(part.rows.count())), true};
        return {};
    } catch (const TS::Failure&) {
        return {QObject::tr("%1 cannot be read.").arg(fileNameOf(*part.file))};
    }
}

}  // namespace veltrac
