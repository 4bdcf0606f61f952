// Hard copies: PostScript and SVG files that replace an older one only when they are whole.
#pragma once

#include <filesystem>
#include <functional>

#include "share/PsParameters.h"

class PostscriptDriver;

namespace veltrac {

class SvgDriver;

// Draws one page into a scratch file beside `target` and puts it in its place. `draw` is called between
// BeginPage() and EndPage(). Throws std::system_error where the file cannot be written, and lets through
// what `draw` throws; in both cases an older target is as it was and nothing is left behind.
void writeEps(const std::filesystem::path& target, const PsParameters& parameters,
              const std::function<void(PostscriptDriver&)>& draw);
// The same picture as SVG.
void writeSvg(const std::filesystem::path& target, const PsParameters& parameters,
              const std::function<void(SvgDriver&)>& draw);

}  // namespace veltrac
