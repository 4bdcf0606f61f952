#include "share/ResultFile.h"

#include <QFile>

#include <system_error>

#include "core/LateRelease.h"
#include "core/TsNames.h"
#include "portal/TsApplication.h"

namespace veltrac {

ResultFile::ResultFile(const std::string& stem, std::uint32_t samples, std::uint32_t columns)
{
    m_scratch.emplace(std::filesystem::current_path(), stem, ".ts");
    m_path = m_scratch->path();
    m_file = createTsFile(m_path.string(), samples, columns);
}

std::unique_ptr<ResultFile> ResultFile::temporary(std::uint32_t samples, std::uint32_t columns)
{
    std::unique_ptr<ResultFile> made(new ResultFile);
    // No dot in the name: what follows one would be taken for an extension.
    made->m_reservation = std::make_unique<QTemporaryFile>(QFile::decodeName(scratchDirectory().c_str()) +
                                                           QStringLiteral("/veltrac-XXXXXX"));
    TsApplication* const application = TsApplication::instance();
    if (application == nullptr || !made->m_reservation->open())
        return nullptr;
    const QString name = made->m_reservation->fileName();
    made->m_file.reset(application->CreateTs(name, samples, columns));
    if (!made->m_file)
        return nullptr;
    made->m_path = QFile::encodeName(name + QStringLiteral(".ts")).toStdString();
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
    newer.m_scratch->putInPlace(m_path);
    return true;
}

}  // namespace veltrac
