#include "core/LateRelease.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <system_error>
#include <thread>

namespace veltrac {

namespace {

constexpr off_t kLarge = 16 * 1024 * 1024;

}  // namespace

LateRelease::LateRelease(const std::filesystem::path& file) noexcept : m_descriptor(-1)
{
    struct stat state = {};
    // Opening a pipe would wait for its other end.
    if (::stat(file.c_str(), &state) == 0 && S_ISREG(state.st_mode) && state.st_size >= kLarge)
        m_descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
}

LateRelease::~LateRelease()
{
    if (m_descriptor < 0)
        return;
    try {
        std::thread([descriptor = m_descriptor] { ::close(descriptor); }).detach();
    } catch (const std::system_error&) {
        ::close(m_descriptor);  // there are too many threads
    }
}

}  // namespace veltrac
