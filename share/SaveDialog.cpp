#include "share/SaveDialog.h"

#include <QFileDialog>
#include <QFileInfo>

#include "share/Boxes.h"

namespace veltrac {

QString saveSuggestion(const QString& name)
{
    // A directory is there already, under whatever name.
    const int begin = name.lastIndexOf(QLatin1Char('/')) + 1;
    QString file = name.mid(begin);
    file.replace(QLatin1Char('"'), QLatin1Char('\''));
    return name.left(begin) + file;
}

QString askSaveName(QWidget* window, const QString& title, const QString& suggestion, const QString& filter,
                    const QString& suffix)
{
    QString file = QFileDialog::getSaveFileName(window, title, saveSuggestion(suggestion), filter, nullptr,
                                                QFileDialog::DontConfirmOverwrite);
    if (file.isEmpty())
        return {};
    const QString ending = QLatin1Char('.') + suffix;
    if (!file.endsWith(ending, Qt::CaseInsensitive))
        file += ending;
    const bool isWanted =
        !QFileInfo::exists(file) ||
        askYesNo(QMessageBox::Warning, window, title,
                 QObject::tr("The file %1 exists.\nDo you want to overwrite the existing file?")
                     .arg(QFileInfo(file).fileName()));
    return isWanted ? file : QString();
}

}  // namespace veltrac
