#include "share/TargetFile.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>

#include <filesystem>
#include <system_error>

#include "core/TsNames.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"

namespace veltrac {

namespace {

QString bareName(const QString& file)
{
    return QFileInfo(file).fileName();
}

QString withSuffix(const QString& typed, const QString& suffix)
{
    const QString ending = QLatin1Char('.') + suffix;
    if (typed.endsWith(ending, Qt::CaseInsensitive))
        return typed;
    if (suffix != QLatin1String("ts"))
        return typed + ending;
    const QFileInfo info(typed);
    return info.dir().filePath(
        QFile::decodeName(newTsFileName(QFile::encodeName(info.fileName()).toStdString()).c_str()));
}

bool isFree(QWidget* window, const QString& title, const QString& refusal)
{
    if (!refusal.isEmpty())
        showBox(QMessageBox::Warning, window, title, refusal);
    return refusal.isEmpty();
}

bool isRefused(QWidget* window, const SaveRequest& request, const QString& file)
{
    if (request.isSource && request.isSource(file)) {
        showBox(QMessageBox::Warning, window, request.title,
                QObject::tr("%1 is the source itself.\nChoose another name.").arg(bareName(file)));
        return true;
    }
    return file != request.own && !mayWrite(window, request.title, file);
}

}  // namespace

bool isSameFile(const QString& a, const QString& b)
{
    std::error_code none;
    return a == b || std::filesystem::equivalent(QFile::encodeName(a).toStdString(),
                                                 QFile::encodeName(b).toStdString(), none);
}

bool mayWrite(QWidget* window, const QString& title, const QString& file)
{
    return isFree(window, title, TsApplication::refusalToWrite(file));
}

bool mayMove(QWidget* window, const QString& title, const QString& file)
{
    return isFree(window, title, TsApplication::refusalToMove(file));
}

bool mayOverwrite(QWidget* window, const QString& title, const QString& file)
{
    return !QFileInfo::exists(file) ||
           askYesNo(QMessageBox::Warning, window, title,
                    QObject::tr("The file %1 exists.\nDo you want to overwrite the existing file?")
                        .arg(bareName(file)));
}

QString saveSuggestion(const QString& name)
{
    // A directory is there already, under whatever name.
    const auto begin = name.lastIndexOf(QLatin1Char('/')) + 1;
    QString file = name.mid(begin);
    file.replace(QLatin1Char('"'), QLatin1Char('\''));
    return name.left(begin) + file;
}

QString askSaveName(QWidget* window, const SaveRequest& request)
{
    const QString typed =
        QFileDialog::getSaveFileName(window, request.title, saveSuggestion(request.suggestion),
                                     request.filter, nullptr, QFileDialog::DontConfirmOverwrite);
    if (typed.isEmpty())
        return {};
    const QString file = withSuffix(typed, request.suffix);
    const bool isWanted = !isRefused(window, request, file) && mayOverwrite(window, request.title, file);
    return isWanted ? file : QString();
}

}  // namespace veltrac
