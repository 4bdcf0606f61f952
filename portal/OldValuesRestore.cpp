#include "portal/OldValuesRestore.h"

#include <QFile>
#include <QFileDialog>
#include <QFileInfo>

#include "core/ColumnBackup.h"
#include "core/FailureText.h"
#include "core/ScratchFile.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "share/Boxes.h"
#include "share/GroupedNumber.h"
#include "share/JobProgress.h"
#include "share/TargetFile.h"

namespace veltrac {

namespace {

constexpr std::size_t kMostRangesTold = 5;
const QString kRestoreTitle = QStringLiteral("Ts-Edit");

QString rangesText(const KeptValues& kept)
{
    QString text;
    for (std::size_t i = 0; i < kept.ranges.size() && i < kMostRangesTold; ++i) {
        const KeptValues::Range& range = kept.ranges[i];
        text +=
            QStringLiteral("\ncolumn %1, samples %2 to %3")
                .arg(range.column)
                .arg(groupedNumber(range.first), groupedNumber(std::uint64_t{range.first} + range.count - 1));
    }
    if (kept.ranges.size() > kMostRangesTold)
        text +=
            QStringLiteral("\nand %1 more ranges").arg(groupedNumber(kept.ranges.size() - kMostRangesTold));
    return text;
}

QString question(const KeptValues& kept, const QString& path)
{
    const QString owner = QFile::decodeName(kept.file.c_str());
    const QString name = QFileInfo(path).fileName();
    QString text = QStringLiteral("Old values of %1, kept %2:%3\n\n")
                       .arg(owner, QString::fromStdString(kept.when), rangesText(kept));
    if (QFileInfo(owner) != QFileInfo(path))
        text += QStringLiteral("They belong to another file than the one that is shown.\n");
    return text + QStringLiteral("Put them into %1?").arg(name);
}

}  // namespace

bool askAndRestoreOldValues(QWidget* parent, const QString& path)
{
    const QString chosen = QFileDialog::getOpenFileName(
        parent, QStringLiteral("Restore old values"), QFile::decodeName(scratchDirectory().c_str()),
        QStringLiteral("Old values (veltrac-old-values*.bin);;All files (*)"));
    if (chosen.isEmpty() || !mayWrite(parent, kRestoreTitle, path))
        return false;
    try {
        const std::filesystem::path scratch = QFile::encodeName(chosen).toStdString();
        if (!askYesNo(QMessageBox::Question, parent, kRestoreTitle, question(readOldValues(scratch), path)))
            return false;
        const auto file = openTsFile(path.toLocal8Bit().toStdString(), false);
        JobProgress progress(parent, QStringLiteral("Restoring old values"));
        restoreOldValues(scratch, *file, progress.callback());
        return true;
    } catch (...) {
        showBox(QMessageBox::Warning, parent, kRestoreTitle,
                QStringLiteral("The old values were not put back: %1.")
                    .arg(QString::fromStdString(reasonOfFailure())),
                QStringLiteral("&Ok"));
        return false;
    }
}

}  // namespace veltrac
