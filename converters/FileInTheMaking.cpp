#include "converters/FileInTheMaking.h"

#include <system_error>

namespace veltrac {

namespace fs = std::filesystem;

FileInTheMaking::FileInTheMaking(fs::path target) : m_target(std::move(target))
{
    if (!fs::exists(fs::symlink_status(m_target)))
        return;
    m_old.emplace(m_target.parent_path(), m_target.filename().string(), ".old");
    fs::rename(m_target, m_old->path());
}

FileInTheMaking::~FileInTheMaking()
{
    if (m_kept)
        return;
    std::error_code error;
    fs::remove(m_target, error);
    if (!m_old)
        return;
    fs::rename(m_old->path(), m_target, error);
    m_old->keep();
}

void FileInTheMaking::keep()
{
    if (m_old)
        syncToDisk(m_target);
    m_kept = true;
}

}  // namespace veltrac
