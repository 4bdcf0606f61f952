#include "core/CopyFile.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <span>
#include <system_error>
#include <vector>

#include "core/BlockFile.h"
#include "core/SafeChange.h"

namespace veltrac {

namespace {

constexpr std::size_t kRunBytes = 1U << 20;

struct Close
{
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

[[noreturn]] void fail()
{
    throw std::system_error(errno != 0 ? errno : EIO, std::generic_category());
}

}  // namespace

JobOutcome copyBytes(int descriptor, const std::filesystem::path& to, const Progress& progress)
{
    const int own = BlockFile::duplicate(descriptor);
    if (own < 0)
        fail();
    const BlockFile from(own, true);
    const std::uint64_t total = from.size();
    std::unique_ptr<std::FILE, Close> out(std::fopen(to.c_str(), "wb"));
    if (!out)
        fail();
    std::vector<unsigned char> bytes(kRunBytes);
    std::uint64_t done = 0;
    for (;;) {
        const std::size_t n = [&] {
            const std::lock_guard guard(BlockFile::lock());
            return from.readRun(done, bytes);
        }();
        errno = 0;
        if (std::fwrite(bytes.data(), 1, n, out.get()) != n)
            fail();
        done += n;
        if (n < bytes.size())
            break;
        if (!goesOn(progress, done, total))
            return JobOutcome::Cancelled;
    }
    if (done < total)
        throw std::system_error(EIO, std::generic_category());
    errno = 0;
    if (std::fclose(out.release()) != 0)
        fail();
    return JobOutcome::Done;
}

JobOutcome copyWholeFile(int descriptor, const std::filesystem::path& target, const Progress& progress)
{
    PendingFile pending(target, "copy", ".ts");
    if (copyBytes(descriptor, pending.path(), progress) == JobOutcome::Cancelled)
        return JobOutcome::Cancelled;
    pending.commit();
    return JobOutcome::Done;
}

}  // namespace veltrac
