#include "share/EpsFile.h"

#include <cerrno>
#include <system_error>

#include "core/SafeChange.h"
#include "share/PostscriptDriver.h"
#include "share/SvgDriver.h"

namespace veltrac {

namespace fs = std::filesystem;

namespace {

// Draws into the scratch file of `pending` by a driver that has it open, and puts it in its place.
template <typename Driver>
void drawPage(PendingFile& pending, const fs::path& target, Driver& driver,
              const std::function<void(Driver&)>& draw)
{
    driver.BeginPage(0);
    draw(driver);
    driver.EndPage();
    if (!driver.finish())
        throw std::system_error(driver.outputError() != 0 ? driver.outputError() : EIO,
                                std::generic_category(), target.string());
    pending.commit();
}

}  // namespace

void writeEps(const fs::path& target, const PsParameters& parameters,
              const std::function<void(PostscriptDriver&)>& draw)
{
    PendingFile pending(target, ".veltrac-part", target.extension().string());
    PostscriptDriver driver(pending.path().c_str(), &parameters);
    drawPage(pending, target, driver, draw);
}

void writeSvg(const fs::path& target, const PsParameters& parameters,
              const std::function<void(SvgDriver&)>& draw)
{
    PendingFile pending(target, ".veltrac-part", target.extension().string());
    SvgDriver driver(pending.path().c_str(), parameters);
    drawPage(pending, target, driver, draw);
}

}  // namespace veltrac
