#include "converters/ImportTexts.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <exception>
#include <system_error>

#include "core/TsExceptions.h"
#include "portal/TsApplication.h"
#include "share/Boxes.h"

std::filesystem::path pathOf(const QString& file)
{
    return QFile::encodeName(file).toStdString();
}

QString shown(const std::string& file)
{
    return QFile::decodeName(file.c_str());
}

QString grouped(std::uint64_t n)
{
    QString text = QString::number(n);
    for (int i = text.size() - 3; i > 0; i -= 3)
        text.insert(i, QLatin1Char(' '));
    return text;
}

QString counted(std::uint64_t n, const char* one, const char* many)
{
    return grouped(n) + QLatin1Char(' ') + QString::fromLatin1(n == 1 ? one : many);
}

QString durationText(double seconds)
{
    struct Unit
    {
        double from;
        double seconds;
        const char* name;
    };
    static constexpr std::array<Unit, 5> kUnits = {
        {{172800, 86400, "d"}, {7200, 3600, "h"}, {600, 60, "min"}, {0.1, 1, "s"}, {0, 1e-3, "ms"}}};
    for (const Unit& unit : kUnits)
        if (seconds >= unit.from)
            return QString::number(seconds / unit.seconds, 'g', 4) + QLatin1Char(' ') +
                   QString::fromLatin1(unit.name);
    return QString::number(seconds, 'g', 4) + QStringLiteral(" s");
}

QString sizeText(std::uint64_t bytes)
{
    const auto size = static_cast<double>(bytes);
    if (size < 1e6)
        return QString::number(size / 1e3, 'f', 1) + QStringLiteral(" kB");
    return size < 1e9 ? QString::number(size / 1e6, 'f', 1) + QStringLiteral(" MB")
                      : QString::number(size / 1e9, 'f', 2) + QStringLiteral(" GB");
}

bool askOverwrite(QWidget* parent, const QString& file)
{
    return askYesNo(QMessageBox::Question, parent, QStringLiteral("Overwrite File? "),
                    QStringLiteral("A file called %1 already exists.Do you want to overwrite it?").arg(file));
}

bool clearTarget(QWidget* parent, const QString& file)
{
    if (!QFileInfo::exists(file) && !QFileInfo(file).isSymLink())
        return true;
    const TsApplication* const application = TsApplication::instance();
    if (application != nullptr && application->isOpenForWriting(file)) {
        showBox(QMessageBox::Warning, parent, QStringLiteral("Veltrac"),
                QStringLiteral("The file %1 is open for writing in another window.\n"
                               "Close that window first.")
                    .arg(file));
        return false;
    }
    return askOverwrite(parent, file);
}

QString reasonOfFailure()
{
    try {
        throw;
    } catch (const std::system_error& e) {
        return QString::fromLocal8Bit(e.code().message().c_str());
    } catch (const TS::CREATE_ERROR& e) {
        return QStringLiteral("Caught a TS::CREATE_ERROR exception on: ") + shown(e.name);
    } catch (const TS::Failure& e) {
        return QStringLiteral(
                   "A block of the ts-file could not be read or written (offset %1). "
                   "Is the disk full?")
            .arg(e.value1);
    } catch (const std::exception& e) {
        return QString::fromLocal8Bit(e.what());
    }
}
