#include "portal/FileCommands.h"

#include <QFile>
#include <QFileInfo>
#include <QInputDialog>

#include "core/CopyFile.h"
#include "core/FailureText.h"
#include "core/RingFile.h"
#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/TargetFile.h"

namespace veltrac {

namespace {

std::string pathOf(const QString& file)
{
    return QFile::encodeName(file).toStdString();
}

const QString kProgram = QStringLiteral("Veltrac");

void showWarningBox(QWidget* window, const QString& text)
{
    showBox(QMessageBox::Warning, window, kProgram, text);
}

// The name of a new file, or an empty one where the user gives up or the name is taken.
QString askFreeName(QWidget* window, const QString& title, const QString& suggestion)
{
    bool isChosen = false;
    const QString typed = QInputDialog::getText(window, title, QStringLiteral("New name:"), QLineEdit::Normal,
                                                suggestion, &isChosen);
    if (!isChosen || typed.trimmed().isEmpty())
        return {};
    QString name = QFile::decodeName(newTsFileName(pathOf(typed)).c_str());
    if (!QFileInfo::exists(name) && !QFileInfo(name).isSymLink())
        return name;
    showWarningBox(window, QStringLiteral("There is a file %1 already. It was kept.").arg(name));
    return {};
}

}  // namespace

QString copyTsFile(QWidget* window, const QString& file)
{
    QString name = askFreeName(window, QStringLiteral("Copy %1").arg(file),
                               QFileInfo(file).completeBaseName() + QStringLiteral("_copy.ts"));
    if (name.isEmpty())
        return {};
    try {
        JobProgress progress(window, QStringLiteral("Copying %1").arg(file));
        const auto from = openTsFile(pathOf(file), true);
        return copyWholeFile(from->descriptor(), pathOf(name), progress.callback()) == JobOutcome::Done
                   ? name
                   : QString();
    } catch (...) {
        showWarningBox(window, QStringLiteral("%1 was not copied: %2.")
                                   .arg(file, QString::fromLocal8Bit(reasonOfFailure().c_str())));
        return {};
    }
}

bool isRingFile(const QString& file)
{
    try {
        return openTsFile(pathOf(file), true)->ringStart() != 0;
    } catch (const TS::Failure&) {
        return false;
    }
}

QString unfoldTsFile(QWidget* window, const QString& file)
{
    QString name = askFreeName(window, QStringLiteral("Unfold %1 to a new file").arg(file),
                               QFileInfo(file).completeBaseName() + QStringLiteral("_unfolded.ts"));
    if (name.isEmpty())
        return {};
    try {
        JobProgress progress(window, QStringLiteral("Unfolding %1").arg(file));
        if (unfoldRing(pathOf(file), pathOf(name), progress.callback()) == JobOutcome::Done)
            return name;
        if (!progress.wasCancelled())
            showWarningBox(window, QStringLiteral("%1 holds no samples yet.").arg(file));
    } catch (...) {
        showWarningBox(window, QStringLiteral("%1 was not unfolded: %2.")
                                   .arg(file, QString::fromLocal8Bit(reasonOfFailure().c_str())));
    }
    return {};
}

QString renameTsFile(QWidget* window, const QString& file)
{
    if (!mayMove(window, kProgram, file))
        return {};
    QString name = askFreeName(window, QStringLiteral("Rename %1").arg(file), file);
    if (name.isEmpty())
        return {};
    QFile renamed(file);
    if (renamed.rename(name))
        return name;
    showWarningBox(window, QStringLiteral("%1 could not be renamed: %2.").arg(file, renamed.errorString()));
    return {};
}

}  // namespace veltrac
