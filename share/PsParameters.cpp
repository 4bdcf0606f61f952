#include "share/PsParameters.h"

#include <cstring>

#include "core/Utf8.h"

using namespace veltrac;

double PsParameters::gridThickness(GridStyle style) const
{
    switch (style) {
        case GridStyle::Gray:
            return grayGridThickness;
        case GridStyle::Dotted:
            return dottedGridThickness;
        case GridStyle::Black:
            return blackGridThickness;
        case GridStyle::None:
            break;
    }
    return 0.0;
}

void PsParameters::setText(char (&field)[128], const char* text)
{
    const std::size_t length = wholeCharacters(text, sizeof field - 1);
    std::memcpy(field, text, length);
    std::memset(field + length, 0, sizeof field - length);
}

const Paper& veltrac::paperOf(const PsParameters& parameters)
{
    const bool known = parameters.paper >= 0 && parameters.paper < static_cast<int>(kPapers.size());
    return kPapers[known ? static_cast<std::size_t>(parameters.paper) : 0U];
}
