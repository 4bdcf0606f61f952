#include "share/EpsFile.h"

#include <cerrno>
#include <system_error>

#include "core/SafeChange.h"
#include "share/PostscriptDriver.h"

namespace veltrac {

namespace fs = std::filesystem;

void writeEps(const fs::path& target, const PsParameters& parameters,
              const std::function<void(PostscriptDriver&)>& draw)
{
    PendingFile pending(target, target.stem().string() + "_part", target.extension().string());
    PostscriptDriver driver(pending.path().c_str(), &parameters);
    driver.BeginPage(0);
    draw(driver);
    driver.EndPage();
    if (!driver.finish())
        throw std::system_error(driver.outputError() != 0 ? driver.outputError() : EIO,
                                std::generic_category(), target.string());
    pending.commit();
}

}  // namespace veltrac
