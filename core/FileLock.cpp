#include "core/FileLock.h"

#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>

namespace veltrac {

FileLock::FileLock(int descriptor) : m_descriptor(descriptor)
{
    if (::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        throw std::system_error(EWOULDBLOCK, std::generic_category());
    try {
        requireNamed();
    } catch (...) {
        release();
        throw;
    }
}

void FileLock::release() noexcept
{
    if (m_descriptor >= 0)
        ::flock(m_descriptor, LOCK_UN);
    m_descriptor = -1;
}

void FileLock::requireNamed() const
{
    struct stat found = {};
    if (::fstat(m_descriptor, &found) == 0 && found.st_nlink == 0)
        throw std::system_error(ESTALE, std::generic_category());
}

}  // namespace veltrac
