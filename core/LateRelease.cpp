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
    if (m_descriptor >= 0)
        closeLate(m_descriptor);
}

void closeLate(int descriptor) noexcept
{
    struct stat state = {};
    if (::fstat(descriptor, &state) == 0 && state.st_nlink == 0 && state.st_size >= kLarge) {
        try {
            std::thread([descriptor] { ::close(descriptor); }).detach();
            return;
        } catch (const std::system_error&) {
            // There are too many threads.
        }
    }
    ::close(descriptor);
}

}  // namespace veltrac
