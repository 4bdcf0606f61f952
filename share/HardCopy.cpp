#include "share/HardCopy.h"

#include <QFile>
#include <QFileInfo>

#include <stdexcept>
#include <system_error>

#include "core/FailureText.h"
#include "share/Boxes.h"
#include "share/EpsFile.h"
#include "share/PostscriptDriver.h"
#include "share/SvgDriver.h"
#include "share/TargetFile.h"

namespace veltrac {

namespace {

bool isSvg(const QString& fileName)
{
    return fileName.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive);
}

}  // namespace

QString writeHardCopy(const QString& fileName, const PsParameters& parameters,
                      const std::function<void(BasicDriver&)>& draw)
{
    const QString bareName = QFileInfo(fileName).fileName();
    QString reason;
    try {
        const std::string file = QFile::encodeName(fileName).toStdString();
        if (isSvg(fileName))
            writeSvg(file, parameters, [&draw](SvgDriver& driver) { draw(driver); });
        else
            writeEps(file, parameters, [&draw](PostscriptDriver& driver) { draw(driver); });
        return {};
    } catch (const std::runtime_error& error) {
        reason = dynamic_cast<const std::system_error*>(&error) == nullptr
                     ? QString::fromUtf8(error.what())
                     : QString::fromStdString(reasonOfFailure());
    } catch (...) {
        reason = QString::fromStdString(reasonOfFailure());
    }
    return QStringLiteral("The hard copy \"%1\" could not be written: %2.").arg(bareName, reason);
}

QString hardCopy(QWidget* window, const QString& suggestion, const PsParameters& parameters,
                 const std::function<void(BasicDriver&)>& draw)
{
    QString fileName =
        askSaveName(window, {QStringLiteral("Hard copy"), suggestion,
                             QStringLiteral("PostScript files (*.eps)"), QStringLiteral("eps")});
    if (fileName.isEmpty())
        return {};
    const QString failure = writeHardCopy(fileName, parameters, draw);
    if (failure.isEmpty())
        return fileName;
    showBox(QMessageBox::Warning, window, QStringLiteral("Hard copy"), failure);
    return {};
}

}  // namespace veltrac
