// Lets a file lose its name at once: the system needs up to a second to take back what hundreds of megabytes
// held, and does so when the last who has the file open lets it go.
#pragma once

#include <filesystem>

namespace veltrac {

// Holds the contents of a large file that is about to be removed or replaced; once the object goes, a thread
// lets go of them. Does nothing for a small file, or where there is none.
class LateRelease
{
public:
    explicit LateRelease(const std::filesystem::path& file) noexcept;
    ~LateRelease();
    LateRelease(const LateRelease&) = delete;
    LateRelease& operator=(const LateRelease&) = delete;

private:
    int m_descriptor;
};

// Lets go of an open file in the same way.
void closeLate(int descriptor) noexcept;

}  // namespace veltrac
