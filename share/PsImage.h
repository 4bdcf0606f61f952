// Pixels as PostScript of level 2 takes them: as indices of their colours where these are few, equal
// neighbours as runs. A picture of a few cells is small then, however fine its paper.
#pragma once

#include <string>
#include <vector>

#include "share/ImageDevice.h"

namespace veltrac {

// The lines that draw the picture into the unit square, from its upper left corner on. No colour space but
// that of the surrounding gsave is touched.
std::vector<std::string> psImageLines(const PixelImage& image);

}  // namespace veltrac
