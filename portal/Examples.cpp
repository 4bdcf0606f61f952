#include "portal/Examples.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QStandardPaths>

#include <stdexcept>

#include "core/CopyFile.h"
#include "core/FailureText.h"
#include "share/Boxes.h"

namespace veltrac {

namespace {

const QString kFolder = QStringLiteral("Veltrac examples");

void copyOne(const QString& from, const QString& to)
{
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly))
        throw std::runtime_error(source.errorString().toLocal8Bit().toStdString());
    copyWholeFile(source.handle(), QFile::encodeName(to).toStdString(), {});
}

QString askFolder(QWidget* window)
{
    QFileDialog dialog(window, QStringLiteral("Choose a folder for the examples"), QDir::homePath());
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

}  // namespace

QString exampleDirectory()
{
    // Beside the program, wherever its package was unpacked; where packages keep such things; beside the
    // sources.
    const QDir programs(QCoreApplication::applicationDirPath());
    for (const QString& place :
         {programs.filePath(QStringLiteral(VELTRAC_EXAMPLES_FROM_PROGRAM)),
          QStandardPaths::locate(QStandardPaths::GenericDataLocation, QStringLiteral("doc/veltrac/examples"),
                                 QStandardPaths::LocateDirectory),
          programs.filePath(QStringLiteral("../../examples"))})
        if (QFile::exists(place + QStringLiteral("/ecg.ts")))
            return QDir::cleanPath(place);
    return {};
}

ExampleCopies copyExamples(QWidget* window)
{
    const QString title = QStringLiteral("Veltrac");
    const QString source = exampleDirectory();
    if (source.isEmpty()) {
        showBox(QMessageBox::Warning, window, title,
                QStringLiteral("The examples are not installed: there is no folder doc/veltrac/examples."));
        return {};
    }
    const QString folder = askFolder(window);
    if (folder.isEmpty())
        return {};
    const QDir target(QDir(folder).filePath(kFolder));
    ExampleCopies copies;
    QString present = target.path();
    try {
        if (!target.mkpath(QStringLiteral(".")))
            throw std::runtime_error("the folder cannot be made");
        for (const QString& name : QDir(source).entryList(QDir::Files)) {
            present = target.filePath(name);
            if (QFile::exists(present)) {
                ++copies.kept;
                continue;
            }
            copyOne(QDir(source).filePath(name), present);
            ++copies.copied;
        }
    } catch (...) {
        showBox(QMessageBox::Warning, window, title,
                QStringLiteral("The examples were not all copied. %1: %2.")
                    .arg(present, QString::fromLocal8Bit(reasonOfFailure().c_str())));
        return {};
    }
    copies.directory = target.path();
    return copies;
}

}  // namespace veltrac
