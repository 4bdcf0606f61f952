#include "share/ResultFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <system_error>

#include "core/LateRelease.h"
#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "portal/TsApplication.h"

namespace veltrac {

ResultFile::ResultFile(const std::string& stem, std::uint32_t samples, std::uint32_t columns)
{
    m_scratch.emplace(std::filesystem::current_path(), stem, ".ts");
    m_path = m_scratch->path();
    m_file = createTsFile(m_path.string(), samples, columns);
}

namespace {

// No dot in the name: what follows one would be taken for an extension.
const QString kTemporaryName = QStringLiteral("veltrac-XXXXXX");

// What a program that was killed has left: an empty file that held the name, and the ts-file beside it.
void removeLeftResults(const QDir& directory)
{
    const QString pattern = QString(kTemporaryName).replace(QLatin1Char('X'), QLatin1Char('?'));
    for (const QFileInfo& name : directory.entryInfoList({pattern}, QDir::Files | QDir::NoSymLinks))
        if (name.size() == 0 && name.suffix().isEmpty() &&
            removeIfStale(QFile::encodeName(name.filePath()).toStdString()))
            removeIfStale(QFile::encodeName(name.filePath() + QStringLiteral(".ts")).toStdString());
}

}  // namespace

std::unique_ptr<ResultFile> ResultFile::temporary(std::uint32_t samples, std::uint32_t columns)
{
    std::unique_ptr<ResultFile> made(new ResultFile);
    const QDir directory(QFile::decodeName(scratchDirectory().c_str()));
    removeLeftResults(directory);
    made->m_reservation = std::make_unique<QTemporaryFile>(directory.filePath(kTemporaryName));
    TsApplication* const application = TsApplication::instance();
    if (application == nullptr || !made->m_reservation->open())
        return nullptr;
    lockAsOwner(made->m_reservation->handle());
    const QString name = made->m_reservation->fileName();
    // Known before: a file that is made and cannot be opened goes, too.
    made->m_path = QFile::encodeName(name + QStringLiteral(".ts")).toStdString();
    made->m_file.reset(application->CreateTs(name, samples, columns));
    if (!made->m_file)
        return nullptr;
    return made;
}

ResultFile::~ResultFile()
{
    m_file.reset();
    if (m_reservation && !m_path.empty()) {
        const LateRelease contents(m_path);
        QFile::remove(QFile::decodeName(m_path.c_str()));
    }
}

void ResultFile::finish()
{
    m_file->flush(true);
    m_file.reset();
}

bool ResultFile::takeContentsOf(ResultFile& newer)
{
    if (!m_scratch || !newer.m_scratch || m_path.parent_path() != newer.m_path.parent_path())
        return false;
    newer.m_scratch->takePlaceOf(*m_scratch);
    return true;
}

}  // namespace veltrac
