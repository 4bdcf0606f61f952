#include "core/CopyFile.h"

#include <cerrno>
#include <mutex>
#include <optional>
#include <span>
#include <system_error>
#include <vector>

#include "core/BlockFile.h"
#include "core/SafeChange.h"

namespace veltrac {

namespace {

constexpr std::size_t kRunBytes = 256 * 1024;
// Inside the platform: short enough that even a slow disk hears of a cancel soon.
constexpr std::size_t kInsideBytes = 8 * 1024 * 1024;

[[noreturn]] void fail()
{
    throw std::system_error(errno != 0 ? errno : EIO, std::generic_category());
}

// Copies what follows each other from an offset on; fewer bytes than asked for where the file ends.
class FileCopier
{
public:
    FileCopier(const BlockFile& from, BlockFile& to) : m_from(from), m_to(to) {}

    std::size_t copy(std::uint64_t offset)
    {
        const std::lock_guard guard(BlockFile::lock());
        if (m_inside) {
            const std::optional<std::size_t> moved = m_to.copyRun(m_from, offset, kInsideBytes);
            if (moved && *moved > 0)
                return *moved;
            // Some file systems call their end what is none: the runs look for themselves.
            m_inside = false;
            m_bytes.resize(kRunBytes);
        }
        const std::size_t n = m_from.readRun(offset, m_bytes);
        errno = 0;
        if (m_to.writeRun(offset, std::span(m_bytes).first(n)) != n)
            fail();
        return n;
    }

private:
    const BlockFile& m_from;
    BlockFile& m_to;
    bool m_inside = true;
    std::vector<unsigned char> m_bytes;
};

}  // namespace

JobOutcome copyBytes(int descriptor, const std::filesystem::path& to, const Progress& progress)
{
    errno = 0;
    const int own = BlockFile::duplicate(descriptor);
    if (own < 0)
        fail();
    const BlockFile from(own, true);
    const std::uint64_t total = from.size();
    const int made = BlockFile::create(to.c_str());
    if (made < 0)
        fail();
    BlockFile target(made, false);
    FileCopier copier(from, target);
    std::uint64_t done = 0;
    while (const std::size_t moved = copier.copy(done)) {
        done += moved;
        if (!goesOn(progress, done, total))
            return JobOutcome::Cancelled;
    }
    if (done < total)
        throw std::system_error(EIO, std::generic_category());
    return JobOutcome::Done;
}

JobOutcome copyWholeFile(int descriptor, const std::filesystem::path& target, const Progress& progress)
{
    PendingFile pending(target, ".veltrac-new", ".ts");
    if (copyBytes(descriptor, pending.path(), progress) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    return pending.commit(progress);
}

}  // namespace veltrac
