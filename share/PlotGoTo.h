// "Go to" in a plot: where a text leads that a user types.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/Plot2D.h"

namespace veltrac {

struct PlaceInPlot
{
    std::optional<double> x{};
    std::string reason{};  // why there is none
    std::string note{};    // what is to be said of the time: that the clock skips it, or shows it twice
};

// "250000" (a sample, by the number that the plot shows), "50%" (of all that is shown), and every time and
// date that core/FileTime.h knows: times lead to the same sample as in the list of the file. They are those
// of the plot's first variable, else of the first whose file has them. Values that are no file go to a number
// of the x axis' own unit. Throws the TS exceptions.
PlaceInPlot placeInPlot(const Plot2D& plot, std::string_view text);

}  // namespace veltrac
