#include "portal/TsApplication.h"

#include <QFileInfo>
#include <QMessageBox>

#include <algorithm>
#include <memory>
#include <system_error>

#include "core/ErrorReport.h"
#include "core/SafeChange.h"
#include "core/TSFILE.h"
#include "core/TsExceptionTexts.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"

using namespace veltrac;

namespace {

// A file name as the core takes it.
std::string localBytes(const QString& name)
{
    return name.toLocal8Bit().toStdString();
}

bool isNumber(const QString& name)
{
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), [](QChar c) {
        return c >= QLatin1Char('0') && c <= QLatin1Char('9');
    });
}

// Three kinds go without "Caught a", and the last is spelled so: both are wanted, reports are compared by
// text.
constexpr TsExceptionTexts kTexts = {
    .createError = "Caught a TS::CREATE_ERROR exception on: ",
    .openError = "Caught a TS::OPEN_ERROR exception on: ",
    .notTsFile = "Caught a TS::NOT_TS_FILE exception",
    .ioError = "Caught a TS::IO_ERROR exception<br> Offset = %1<br> last byte = %2",
    .noTimeColumn = "Caught a TS::NO_TIME_COLUMN exception",
    .illSample = "TS::ILL_SAMPLE exception<br> Sample = %1<br> max allowed = %2",
    .illColumn = "TS::ILL_COLUMN exception<br> Val1 = %1<br> Val2 = %2",
    .illTime = "Caught a TS::ILL_TIME exception",
    .readOnlyOffset = "TS::READONLY_VIOLATION exception, offset: %1",
    .readOnlyName = "TS::READONLY_VIOLATION exception, name: ",
    .readOnly = "TS::READONLY_VIOLATION exception",
    .unknown = "Caught an uspecified exception",
};

// File names are shown as they are, also those with a '<' in them.
QMessageBox::StandardButton ask(const QString& text, QMessageBox::StandardButtons buttons,
                                QMessageBox::StandardButton preset)
{
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Veltrac"), text, buttons);
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(preset);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

// True where there is no old file, or the user gives it up.
bool mayMake(const QString& fileName)
{
    if (!QFile::exists(fileName))
        return true;
    if (const QString refusal = TsApplication::refusalToWrite(fileName); !refusal.isEmpty()) {
        ask(refusal, QMessageBox::Ok, QMessageBox::Ok);
        return false;
    }
    return ask(QStringLiteral("The file ") + fileName + QStringLiteral(" exists.\n") +
                   QStringLiteral("Do you want to overwrite the existing file?"),
               QMessageBox::Yes | QMessageBox::Cancel, QMessageBox::Yes) == QMessageBox::Yes;
}

// The file that CreateTs() makes of a name.
QString createdName(const QString& name)
{
    return isNumber(name) ? QString::fromLocal8Bit(TSFILE::tsFileName(localBytes(name).c_str()))
                          : name + QStringLiteral(".ts");
}

// Makes the file beside its place and puts it there when nothing is left to be written.
void makeWhole(const std::string& target, unsigned samples, unsigned columns,
               const std::function<void(TSFILE& file)>& fill)
{
    const auto pending = [&] {
        try {
            return std::make_unique<PendingFile>(target, ".veltrac-new", ".ts");
        } catch (const std::system_error&) {
            throw TS::CREATE_ERROR(literalTsName(target));
        }
    }();
    {
        const auto file = createTsFile(pending->path().string(), samples, columns);
        fill(*file);
        file->flush(true);
    }
    pending->commit();
}

}  // namespace

TsApplication::~TsApplication()
{
    if (s_instance == this)
        setInstance(nullptr);
}

void TsApplication::setInstance(TsApplication* application) noexcept
{
    s_instance = application;
    setErrorListener([](const char* text) {
        if (s_instance != nullptr)
            s_instance->ShowTsError(text);
    });
}

void TsApplication::ShowTsMessage(const QString& /*text*/) {}

void TsApplication::ShowTsError(const char* /*text*/) {}

void TsApplication::ReportTsException(const char* where)
{
    const QString text = QString::fromLocal8Bit(textOfCurrentException(kTexts).c_str());
    if (!text.isEmpty())
        ShowTsMessage(text + QStringLiteral(": ") + QString::fromLatin1(where));
}

void TsApplication::registerWriter(const QString& /*path*/) {}

void TsApplication::unregisterWriter(const QString& /*path*/) {}

QString TsApplication::refusalToMove(const QString& path)
{
    if (s_instance == nullptr || !s_instance->isOpenForWriting(path))
        return {};
    return QStringLiteral("The file %1 is open for writing in another window.\nClose that window first.")
        .arg(QFileInfo(path).fileName());
}

QString TsApplication::refusalToWrite(const QString& path)
{
    QString refusal = refusalToMove(path);
    if (refusal.isEmpty() && isWriteProtected(localBytes(path)))
        refusal = QStringLiteral("The file %1 is write-protected.").arg(QFileInfo(path).fileName());
    return refusal;
}

bool TsApplication::isOpenForWriting(const QString& /*path*/) const
{
    return false;
}

QWidget* TsApplication::openSubProgram(SubProgram /*kind*/, const QString& /*file*/, unsigned /*column*/)
{
    return nullptr;
}

bool TsApplication::exportInterval(const QString& /*file*/, std::uint32_t /*first*/, std::uint32_t /*last*/)
{
    return false;
}

const PsParameters* TsApplication::psParameters() const
{
    return nullptr;
}

TSFILE* TsApplication::OpenTs(const QString& name, bool readOnly)
{
    const bool isMeant = name.endsWith(QLatin1String(".ts"), Qt::CaseInsensitive) || QFileInfo(name).isFile();
    try {
        return openTsFile(localBytes(isMeant ? name : createdName(name)), readOnly).release();
    } catch (...) {
        ReportTsException("OpenTs");
        return nullptr;
    }
}

TSFILE* TsApplication::CreateTs(const QString& name, unsigned samples, unsigned columns)
{
    return CreateTs(name, samples, columns, [](TSFILE& /*file*/) {});
}

TSFILE* TsApplication::CreateTs(const QString& name, unsigned samples, unsigned columns,
                                const std::function<void(TSFILE& file)>& fill)
{
    // The question and the creation are about one and the same file, whatever the name holds.
    const QString fileName = createdName(name);
    if (!mayMake(fileName))
        return nullptr;
    try {
        const std::string target = localBytes(fileName);
        makeWhole(target, samples, columns, fill);
        return openTsFile(target, false).release();
    } catch (...) {
        ReportTsException("CreateTs");
        return nullptr;
    }
}
