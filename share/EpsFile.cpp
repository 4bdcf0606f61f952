#include "share/EpsFile.h"

#include <cerrno>
#include <system_error>

#include "core/ScratchFile.h"
#include "share/PostscriptDriver.h"

namespace veltrac {

namespace fs = std::filesystem;

void writeEps(const fs::path& target, const PsParameters& parameters,
              const std::function<void(PostscriptDriver&)>& draw)
{
    std::error_code unknown;
    const fs::file_status old = fs::status(target, unknown);
    if (fs::exists(old) && !fs::is_regular_file(old))
        throw std::system_error(fs::is_directory(old) ? EISDIR : EINVAL, std::generic_category(),
                                target.string());
    const fs::path directory = target.parent_path();
    ScratchFile scratch(directory.empty() ? fs::path(".") : directory, target.stem().string() + "_part",
                        target.extension().string());
    PostscriptDriver driver(scratch.path().c_str(), &parameters);
    driver.BeginPage(0);
    draw(driver);
    driver.EndPage();
    if (!driver.finish())
        throw std::system_error(driver.outputError() != 0 ? driver.outputError() : EIO,
                                std::generic_category(), target.string());
    scratch.putInPlace(target);
}

}  // namespace veltrac
